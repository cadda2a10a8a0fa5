#include "adapters/tracking/csv_reader.h"
#include "platform/runtime_error.h"

#include <gtest/gtest.h>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace wxl::tracking {
namespace {

using Record = std::vector<std::string>;

std::vector<Record> rest_of(CsvReader& reader) {
    std::vector<Record> records;
    while (reader.Next()) records.emplace_back(reader.Cells().begin(), reader.Cells().end());
    return records;
}

std::vector<Record> read_all(const std::string& text) {
    std::istringstream source(text);
    CsvReader reader(source, "f.csv");
    return rest_of(reader);
}

/// The same where it is known that commas part the cells and the first line is the header.
std::vector<Record> read_commas(const std::string& text) {
    std::istringstream source(text);
    CsvReader reader(source, "f.csv", {});
    return rest_of(reader);
}

std::string refusal(const std::string& text) {
    try {
        read_all(text);
    } catch (const platform::RuntimeError& error) {
        return error.Description;
    }
    return "";
}

TEST(CsvReader, Every_kind_of_line_end_ends_a_record) {
    const std::vector<Record> expected{{"a", "b"}, {"1", "2"}, {"3", "4"}};
    EXPECT_EQ(read_all("a,b\n1,2\n3,4\n"), expected);
    EXPECT_EQ(read_all("a,b\r\n1,2\r\n3,4\r\n"), expected);
    EXPECT_EQ(read_all("a,b\r1,2\r3,4\r"), expected);
    EXPECT_EQ(read_all("a,b\r\n1,2\r3,4"), expected);
}

TEST(CsvReader, Empty_cells_stay) {
    EXPECT_EQ(read_all("a,b,c\n,,\n1,,\n"), (std::vector<Record>{{"a", "b", "c"}, {"", "", ""}, {"1", "", ""}}));
    EXPECT_EQ(read_all("a,b\n1,"), (std::vector<Record>{{"a", "b"}, {"1", ""}}));
}

TEST(CsvReader, Quotes_hold_separators_line_ends_and_quotes) {
    EXPECT_EQ(read_all("a,b\n\"x, y\",\"he said \"\"go\"\"\"\n\"1\n2\r\n3\",\"\"\n"),
              (std::vector<Record>{{"a", "b"}, {"x, y", "he said \"go\""}, {"1\n2\r\n3", ""}}));
}

TEST(CsvReader, Quotes_inside_a_plain_cell_and_text_after_a_closing_quote_are_kept) {
    EXPECT_EQ(read_all("a,b\n5\" tag,\"x\"y\n"), (std::vector<Record>{{"a", "b"}, {"5\" tag", "xy"}}));
}

TEST(CsvReader, Utf8_mark_and_blank_lines_are_skipped) {
    EXPECT_EQ(read_all("\xEF\xBB\xBF"
                       "a,b\n\n  \n1,2\n\r\n"),
              (std::vector<Record>{{"a", "b"}, {"1", "2"}}));
    EXPECT_EQ(read_all("\xEF\xBB\xBF\"a\",b\n"), (std::vector<Record>{{"a", "b"}}));
}

TEST(CsvReader, Nothing_in_gives_nothing) {
    EXPECT_TRUE(read_all("").empty());
    EXPECT_TRUE(read_all("\n\r\n").empty());
    EXPECT_TRUE(read_all("\xEF\xBB\xBF").empty());
}

TEST(CsvReader, Separator_is_what_the_first_line_has_most_of) {
    EXPECT_EQ(read_all("a;b;c,d\n1;2;3\n"), (std::vector<Record>{{"a", "b", "c,d"}, {"1", "2", "3"}}));
    EXPECT_EQ(read_all("a\tb\n1\t2,5\n"), (std::vector<Record>{{"a", "b"}, {"1", "2,5"}}));
    EXPECT_EQ(read_all("\"a;b;c\",d\n"), (std::vector<Record>{{"a;b;c", "d"}}));
}

TEST(CsvReader, A_line_that_names_the_separator_is_taken_and_no_record) {
    const std::vector<Record> records = {{"a,b,c", "d"}, {"1", "2"}};
    for (const char* start : {"sep=;\n", "sep=;\r\n", "SEP=;\r", "\xEF\xBB\xBFsep=;\n"})
        EXPECT_EQ(read_all(std::string(start) + "a,b,c;d\n1;2\n"), records) << start;
    EXPECT_EQ(read_all("sep=\t\na;b;c\td\n"), (std::vector<Record>{{"a;b;c", "d"}}));
    EXPECT_TRUE(read_all("sep=;").empty());
    EXPECT_EQ(read_all("sep=;x\n1;2\n"), (std::vector<Record>{{"sep=", "x"}, {"1", "2"}}));
    EXPECT_EQ(read_all("sep=|\n1\n"), std::vector<Record>{{"1"}});
    EXPECT_EQ(read_all("sep=x\n1\n"), (std::vector<Record>{{"sep=x"}, {"1"}}));

    std::istringstream source("sep=;\r\na;b\r\n1;2\r\n");
    CsvReader reader(source, "f.csv");
    ASSERT_TRUE(reader.Next());
    EXPECT_EQ(reader.Line(), 2);
    ASSERT_TRUE(reader.Next());
    EXPECT_EQ(reader.Line(), 3);
    EXPECT_FALSE(reader.Next());
}

TEST(CsvReader, Line_is_where_the_record_starts) {
    std::istringstream source("a\r\n\"1\r\n2\rx\ny\"\r\n\r\n3\n4");
    CsvReader reader(source, "f.csv");
    std::vector<std::int64_t> lines;
    while (reader.Next()) lines.push_back(reader.Line());
    EXPECT_EQ(lines, (std::vector<std::int64_t>{1, 2, 7, 8}));
}

TEST(CsvReader, Quote_that_never_closes_is_told_with_its_line) {
    EXPECT_EQ(refusal("a,b\n1,2\n\"3,4\n5,6\n"), "f.csv, line 3: a quote is opened and never closed");
}

TEST(CsvReader, Endless_record_is_refused_before_memory_runs_out) {
    EXPECT_EQ(refusal("a,b\n\"" + std::string(std::size_t{40} << 20, 'x')),
              "f.csv, line 2: a record of more than 16 MB; is a quote never closed?");
}

TEST(CsvReader, A_record_can_be_read_again) {
    const std::string text = "a,b\r\n1,\"x\r\ny\"\r\n3,4\r5,6\n";
    std::istringstream source(text);
    CsvReader reader(source, "f.csv");
    std::vector<std::pair<std::uint64_t, std::int64_t>> places;
    std::vector<Record> records;
    while (reader.Next()) {
        places.emplace_back(reader.Offset(), reader.Line());
        records.emplace_back(reader.Cells().begin(), reader.Cells().end());
    }
    EXPECT_EQ(places, (std::vector<std::pair<std::uint64_t, std::int64_t>>{{0, 1}, {5, 2}, {15, 4}, {19, 5}}));
    for (const std::size_t i : {3U, 0U, 2U, 1U}) {
        reader.Seek(places[i].first, places[i].second);
        ASSERT_TRUE(reader.Next());
        EXPECT_EQ(Record(reader.Cells().begin(), reader.Cells().end()), records[i]);
        EXPECT_EQ(reader.Line(), places[i].second);
    }
}

TEST(CsvReader, Records_far_apart_are_read_again_in_any_order) {
    std::string text = "n,filler\n";
    for (int i = 0; i < 40000; ++i) text += std::to_string(i) + "," + std::string(60, 'x') + "\n";
    std::istringstream source(text);
    CsvReader reader(source, "f.csv");
    std::vector<std::uint64_t> offsets;
    while (reader.Next()) offsets.push_back(reader.Offset());
    ASSERT_EQ(offsets.size(), 40001U);
    for (std::size_t i = 0; i < 200; ++i) {
        const std::size_t row = (i * 19937) % 40000;
        reader.Seek(offsets[row + 1], static_cast<std::int64_t>(row) + 2);
        ASSERT_TRUE(reader.Next());
        ASSERT_EQ(reader.Cells()[0], std::to_string(row));
    }
}

/// Plain reading of the same grammar, one character at a time.
std::vector<Record> read_plainly(const std::string& text) {
    std::vector<Record> records;
    Record record;
    std::string cell;
    bool cellStarted = false;
    const auto end_cell = [&] {
        record.push_back(std::exchange(cell, ""));
        cellStarted = false;
    };
    const auto end_record = [&] {
        end_cell();
        if (record.size() > 1 || record[0].find_first_not_of(" \t") != std::string::npos) records.push_back(record);
        record.clear();
    };
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '"' && !cellStarted) {
            for (++i; i < text.size(); ++i) {
                if (text[i] != '"') {
                    cell += text[i];
                } else if (i + 1 < text.size() && text[i + 1] == '"') {
                    cell += text[i++];
                } else {
                    break;
                }
            }
            cellStarted = true;
        } else if (c == ',') {
            end_cell();
        } else if (c == '\r' || c == '\n') {
            if (c == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
            end_record();
        } else {
            cell += c;
            cellStarted = true;
        }
    }
    if (cellStarted || !record.empty()) end_record();
    return records;
}

TEST(CsvReader, Reads_as_plain_reading_does) {
    std::mt19937 random(20261120);
    const std::string letters = "ab,,\"\"\r\n\n ";
    for (int round = 0; round < 20000; ++round) {
        std::string text = "h,k\n";
        const std::size_t length = random() % 40;
        for (std::size_t i = 0; i < length; ++i) text += letters[random() % letters.size()];
        std::vector<Record> records;
        try {
            records = read_commas(text);
        } catch (const platform::RuntimeError&) {
            continue;  // an open quote
        }
        ASSERT_EQ(records, read_plainly(text)) << text;
    }
}

TEST(CsvReader, Records_across_the_ends_of_blocks_stay_whole) {
    std::string text = "a,b,c\r\n";
    for (int i = 0; text.size() < (std::size_t{3} << 20); ++i)
        text +=
            std::to_string(i) + ",\"x \"\"" + std::string(static_cast<std::size_t>(i % 97), 'y') + "\r\n\"\"\",z\r\n";
    EXPECT_EQ(read_commas(text), read_plainly(text));
}

}  // namespace
}  // namespace wxl::tracking
