// Broken and cut-off shapefiles through every command that reads points: a message that names the file, little time
// and memory, and neither a crash nor a result over part of the fixes.

#include "tests/robustness/malformed.h"

#include <cmath>
#include <filesystem>
#include <limits>
#include <map>

namespace wxl::tests {
namespace {

namespace fs = std::filesystem;
using Parts = std::map<std::string, std::string>;  // bytes by extension; without an entry: no such file

constexpr std::size_t kFixes = 24;

class MalformedShapefile : public testing::Test {
protected:
    void SetUp() override {
        std::string rows = "animal,x,y,timestamp\n";
        for (std::size_t i = 0; i < kFixes; ++i)
            rows += (i % 2 == 0 ? "a," : "b,") + std::to_string(500000 + 37 * i % 400) + "," +
                    std::to_string(6000000 + 91 * i % 300) + ",2018-05-09 14:00:" + (i < 10 ? "0" : "") +
                    std::to_string(i) + "\n";
        write_bytes(m_folder / "good.csv", rows);
        const LimitedRun made = run_limited(
            {"import", m_folder / "good.csv", m_folder / "good.shp", "--from-crs", "EPSG:32633"}, m_folder.Path());
        ASSERT_EQ(made.Code, 0) << made.Err;
        for (const char* extension : {"shp", "shx", "dbf", "prj", "cpg"})
            m_good[extension] = bytes_of(m_folder / (std::string("good.") + extension));
    }

    void Write(const Parts& parts) const {
        fs::remove_all(m_folder / "case");
        fs::create_directory(m_folder / "case");
        for (const auto& [extension, bytes] : parts) write_bytes(m_folder.Path() / "case" / ("l." + extension), bytes);
    }

    /// Runs one command over the files.
    void Expect(const Parts& parts, const std::vector<std::string>& command, Expected expected) const {
        Write(parts);
        std::vector<std::string> arguments = {command[0], m_folder.Path() / "case" / "l.shp"};
        arguments.insert(arguments.end(), command.begin() + 1, command.end());
        const LimitedRun run = run_limited(arguments, m_folder.Path());
        SCOPED_TRACE("wxl " + command[0]);
        expect_defined(run, expected, "/case/");
        if (expected == Expected::kRefused) {
            EXPECT_EQ(run.Out, "");
        }
    }

    void ExpectEverywhere(const std::string& name, const Parts& parts, Expected expected) const {
        SCOPED_TRACE(name);
        const std::string out = m_folder.Path() / "case";
        Expect(parts, {"info", "--id-field", "animal"}, expected);
        Expect(parts, {"kde", "--id-field", "animal", "--out", out + "/o", "--cell-size", "50", "--extent", "min"},
               expected);
        Expect(parts, {"obs-fields", "--answer", "yes"}, expected);
        Expect(parts, {"remove-duplicates", "--by", "time2", "--answer", "yes"}, expected);
        Expect(parts, {"track", out + "/t.shp"}, expected);
    }

    /// The good files with one changed.
    template <class Change>
    Parts With(const std::string& extension, Change&& change) const {
        Parts parts = m_good;
        change(parts[extension]);
        return parts;
    }
    Parts Without(const std::string& extension) const {
        Parts parts = m_good;
        parts.erase(extension);
        return parts;
    }

    ScratchFolder m_folder;
    Parts m_good;
};

TEST_F(MalformedShapefile, The_good_one_is_read_by_every_command) {
    SCOPED_TRACE("good");
    Expect(m_good, {"info", "--id-field", "animal"}, Expected::kEither);
    Write(m_good);
    const fs::path file = m_folder.Path() / "case" / "l.shp";
    EXPECT_EQ(run_limited({"info", file}, m_folder.Path()).Code, 0);
    EXPECT_EQ(run_limited({"track", file, m_folder.Path() / "case" / "t.shp"}, m_folder.Path()).Code, 0);
    EXPECT_EQ(run_limited({"remove-duplicates", file, "--by", "xy", "--answer", "yes"}, m_folder.Path()).Code, 0);
    EXPECT_EQ(run_limited({"obs-fields", file, "--answer", "yes"}, m_folder.Path()).Code, 0);
    EXPECT_EQ(run_limited({"kde", file, "--id-field", "animal", "--out", m_folder / "o", "--cell-size", "50",
                           "--extent", "min"},
                          m_folder.Path())
                  .Code,
              0);
}

TEST_F(MalformedShapefile, Cut_off_at_every_32nd_of_each_of_its_files) {
    for (const char* extension : {"shp", "shx", "dbf"})
        for (std::size_t part = 0; part < 32; ++part) {
            SCOPED_TRACE(std::string(extension) + " cut at " + std::to_string(part) + "/32");
            const Parts parts = With(extension, [&](std::string& bytes) { bytes.resize(bytes.size() * part / 32); });
            Expect(parts, {"info"}, Expected::kRefused);
            if (part % 8 == 5) ExpectEverywhere("", parts, Expected::kRefused);
        }
    for (std::size_t part = 0; part < 32; ++part)
        Expect(With("prj", [&](std::string& bytes) { bytes.resize(bytes.size() * part / 32); }), {"info"},
               Expected::kEither);
}

TEST_F(MalformedShapefile, Missing_files) {
    ExpectEverywhere("no shx", Without("shx"), Expected::kRefused);
    ExpectEverywhere("no dbf", Without("dbf"), Expected::kRefused);
    ExpectEverywhere("no shp", Without("shp"), Expected::kRefused);
    Expect(Without("cpg"), {"info"}, Expected::kEither);
    Expect(Without("prj"), {"info"}, Expected::kEither);
}

TEST_F(MalformedShapefile, Wrong_headers) {
    for (const char* extension : {"shp", "shx"}) {
        SCOPED_TRACE(extension);
        ExpectEverywhere("magic", With(extension, [](std::string& b) { put_big(b, 0, 0xDEADBEEF); }),
                         Expected::kRefused);
        ExpectEverywhere("length beyond the end", With(extension, [](std::string& b) { put_big(b, 24, 0x7FFFFFFF); }),
                         Expected::kRefused);
        ExpectEverywhere("negative length", With(extension, [](std::string& b) { put_big(b, 24, 0xFFFFFFFF); }),
                         Expected::kRefused);
        ExpectEverywhere("length 0", With(extension, [](std::string& b) { put_big(b, 24, 0); }), Expected::kRefused);
        ExpectEverywhere("noise",
                         With(extension,
                              [](std::string& b) {
                                  std::uint32_t state = 1;
                                  for (char& c : b)
                                      c = static_cast<char>((state = state * 1664525U + 1013904223U) >> 24U);
                              }),
                         Expected::kRefused);
    }
    ExpectEverywhere("shape type 99", With("shp", [](std::string& b) { put(b, 32, std::uint32_t{99}); }),
                     Expected::kRefused);
    ExpectEverywhere("shape type line", With("shp", [](std::string& b) { put(b, 32, std::uint32_t{3}); }),
                     Expected::kRefused);
    ExpectEverywhere("shape type null", With("shp", [](std::string& b) { put(b, 32, std::uint32_t{0}); }),
                     Expected::kRefused);
}

TEST_F(MalformedShapefile, Extents_that_are_no_numbers_or_absurd) {
    for (const double value :
         {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(), 1e300, -1e300}) {
        const Parts parts = With("shp", [&](std::string& b) {
            for (std::size_t at = 36; at < 68; at += 8) put(b, at, value);
        });
        ExpectEverywhere("extent " + std::to_string(value), parts, Expected::kEither);
    }
}

TEST_F(MalformedShapefile, Records_in_the_wrong_place) {
    const auto entry = [](std::size_t row) { return 100 + 8 * row; };
    ExpectEverywhere("offset beyond the end", With("shx", [&](std::string& b) { put_big(b, entry(3), 0x7FFFFFF0); }),
                     Expected::kRefused);
    ExpectEverywhere("offset in the header", With("shx", [&](std::string& b) { put_big(b, entry(3), 10); }),
                     Expected::kRefused);
    ExpectEverywhere("length beyond the end",
                     With("shx", [&](std::string& b) { put_big(b, entry(3) + 4, 0x7FFFFFF0); }), Expected::kRefused);
    ExpectEverywhere("length 0", With("shx", [&](std::string& b) { put_big(b, entry(3) + 4, 0); }), Expected::kRefused);
    ExpectEverywhere("every record is the whole file",
                     With("shx",
                          [&](std::string& b) {
                              for (std::size_t row = 0; row < kFixes; ++row) {
                                  put_big(b, entry(row), 50);
                                  put_big(b, entry(row) + 4, 300);
                              }
                          }),
                     Expected::kRefused);
    ExpectEverywhere("all records are the first",
                     With("shx",
                          [&](std::string& b) {
                              for (std::size_t row = 0; row < kFixes; ++row) put_big(b, entry(row), 50);
                          }),
                     Expected::kRefused);
    ExpectEverywhere("records change places",
                     With("shx",
                          [&](std::string& b) {
                              put_big(b, entry(0), 50 + 14);
                              put_big(b, entry(1), 50);
                          }),
                     Expected::kEither);
    ExpectEverywhere("more entries than shapes", With("shx", [&](std::string& b) { b.append(800, '\xFF'); }),
                     Expected::kEither);
}

TEST_F(MalformedShapefile, Records_of_another_kind) {
    const auto record = [](std::size_t row) { return 100 + 28 * row; };
    ExpectEverywhere("a polygon among points", With("shp", [&](std::string& b) { put(b, record(2) + 8, 5U); }),
                     Expected::kRefused);
    ExpectEverywhere("an unknown shape among points", With("shp", [&](std::string& b) { put(b, record(2) + 8, 77U); }),
                     Expected::kRefused);
    ExpectEverywhere("one null shape", With("shp", [&](std::string& b) { put(b, record(2) + 8, 0U); }),
                     Expected::kEither);
    ExpectEverywhere("null shapes only",
                     With("shp",
                          [&](std::string& b) {
                              for (std::size_t row = 0; row < kFixes; ++row) put(b, record(row) + 8, 0U);
                          }),
                     Expected::kEither);
    for (const double value :
         {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(), 1e308})
        ExpectEverywhere("a fix at " + std::to_string(value),
                         With("shp", [&](std::string& b) { put(b, record(2) + 12, value); }), Expected::kEither);
}

TEST_F(MalformedShapefile, Wrong_tables) {
    ExpectEverywhere("one row too many", With("dbf", [](std::string& b) { put(b, 4, std::uint32_t{kFixes + 1}); }),
                     Expected::kRefused);
    ExpectEverywhere("one row too few", With("dbf", [](std::string& b) { put(b, 4, std::uint32_t{kFixes - 1}); }),
                     Expected::kRefused);
    ExpectEverywhere("2^32 - 1 rows", With("dbf", [](std::string& b) { put(b, 4, 0xFFFFFFFFU); }), Expected::kRefused);
    ExpectEverywhere("header of 65535 bytes", With("dbf", [](std::string& b) { put(b, 8, std::uint16_t{65535}); }),
                     Expected::kRefused);
    ExpectEverywhere("header of 33 bytes", With("dbf", [](std::string& b) { put(b, 8, std::uint16_t{33}); }),
                     Expected::kRefused);
    ExpectEverywhere("header of 0 bytes", With("dbf", [](std::string& b) { put(b, 8, std::uint16_t{0}); }),
                     Expected::kRefused);
    ExpectEverywhere("records of 0 bytes", With("dbf", [](std::string& b) { put(b, 10, std::uint16_t{0}); }),
                     Expected::kRefused);
    ExpectEverywhere("records of 65535 bytes", With("dbf", [](std::string& b) { put(b, 10, std::uint16_t{65535}); }),
                     Expected::kRefused);
    ExpectEverywhere("a column wider than the record", With("dbf", [](std::string& b) { b[32 + 16] = '\xFF'; }),
                     Expected::kRefused);
    ExpectEverywhere("a column of no width", With("dbf", [](std::string& b) { b[32 + 16] = '\0'; }), Expected::kEither);
    ExpectEverywhere("an unknown type", With("dbf", [](std::string& b) { b[32 + 11] = '\x01'; }), Expected::kEither);
    ExpectEverywhere("names without an end", With("dbf", [](std::string& b) { b.replace(32, 11, 11, 'x'); }),
                     Expected::kEither);
    ExpectEverywhere("no end of the columns", With("dbf", [](std::string& b) { b[b.find('\x0D', 32 + 4 * 32)] = 'x'; }),
                     Expected::kEither);
    ExpectEverywhere("as many columns as a header can hold",
                     With("dbf",
                          [](std::string& b) {
                              std::string table = b.substr(0, 32);
                              for (int i = 0; i < 2046; ++i)
                                  table +=
                                      b.substr(32, 11) + "C" + std::string(4, '\0') + "\x20" + std::string(15, '\0');
                              table += "\x0D";
                              table.append(kFixes * 65473, ' ');
                              put(table, 8, std::uint16_t{65505});
                              put(table, 10, std::uint16_t{65473});
                              b = table;
                          }),
                     Expected::kEither);
    ExpectEverywhere("cells of noise",
                     With("dbf",
                          [](std::string& b) {
                              for (std::size_t at = b.size() / 2; at < b.size(); ++at)
                                  b[at] = static_cast<char>(at * 7);
                          }),
                     Expected::kEither);
    ExpectEverywhere("rows marked with a strange letter",
                     With("dbf", [](std::string& b) { b[b.size() - 2 - (b.size() - 2) % 8] = '?'; }),
                     Expected::kEither);
}

TEST_F(MalformedShapefile, Wrong_coordinate_systems_and_encodings) {
    for (const std::string& text :
         {std::string(1 << 20, '['), std::string(1 << 20, 'A'), std::string("PROJCS[\"") + std::string(1 << 20, 'x'),
          std::string("\0\0\0\0", 4), std::string("GEOGCS[]"), std::string("PROJCS[\"a\",GEOGCS[\"b\"]]"),
          std::string("Projection UTM\nZone 99999999999\nUnits METERS\nParameters\n")})
        ExpectEverywhere("prj " + text.substr(0, 30), With("prj", [&](std::string& b) { b = text; }),
                         Expected::kEither);
    for (const std::string& text : {std::string("../../../etc/passwd"), std::string(1 << 20, '9'), std::string()})
        Expect(With("cpg", [&](std::string& b) { b = text; }), {"info"}, Expected::kEither);
}

TEST_F(MalformedShapefile, Messages_name_the_file_and_say_what_to_do) {
    const auto told = [&](const Parts& parts) {
        Write(parts);
        return run_limited({"info", m_folder.Path() / "case" / "l.shp"}, m_folder.Path()).Err;
    };
    const std::string stem = (m_folder.Path() / "case" / "l").string();
    const std::string advice = ". Copy it again from where it came from.\n";
    EXPECT_EQ(told(Without("shx")), "wxl: " + stem + ".shx is missing: copy the shapefile again with all its files.\n");
    EXPECT_EQ(told(With("shp", [](std::string& b) { b.resize(150); })),
              "wxl: " + stem + ".shp is damaged: it has 150 bytes where its header says 772" + advice);
    EXPECT_EQ(told(With("shp", [](std::string& b) { b.clear(); })),
              "wxl: " + stem + ".shp is damaged: it is too short for a shapefile" + advice);
    EXPECT_EQ(told(With("shx", [](std::string& b) { put_big(b, 100 + 8 * 3, 0x7FFFFFF0); })),
              "wxl: " + stem + ".shp is damaged: record 4 lies outside the file" + advice);
    EXPECT_EQ(told(With("dbf", [](std::string& b) { put(b, 4, std::uint32_t{kFixes - 1}); })),
              "wxl: " + stem + ".shp is damaged: it has 24 shapes, and its table has 23 rows" + advice);
}

TEST_F(MalformedShapefile, Is_checked_whatever_file_of_it_is_named) {
    const auto cut = With("shx", [](std::string& bytes) {
        put_big(bytes, 100 + 8 * 5, 0x00ffffff);  // a record far outside the file
    });
    Write(cut);
    const fs::path folder = m_folder / "case";
    for (const std::string input : {folder / "l.shp", folder / "l.dbf", folder / "l.shx", folder}) {
        const LimitedRun run = run_limited({"info", input}, m_folder.Path());
        EXPECT_EQ(run.Code, 1) << input << run.Out;
        EXPECT_EQ(run.Err, "wxl: " + (folder / "l.shp").string() +
                               " is damaged: record 6 lies outside the file. Copy it again from where it came from.\n");
    }
    Write(m_good);
    for (const std::string input : {folder / "l.dbf", folder / "l.shx", folder})
        EXPECT_EQ(run_limited({"info", input}, m_folder.Path()).Out,
                  run_limited({"info", folder / "l.shp"}, m_folder.Path()).Out);
}

TEST_F(MalformedShapefile, Records_in_any_order_are_read_and_checked_once) {
    // The same shapes with the records of the file in reverse: their numbers, and the index, say which is which.
    constexpr std::size_t kRecord = 28;
    Parts parts = m_good;
    std::string& shapes = parts["shp"];
    std::string& index = parts["shx"];
    for (std::size_t row = 0; row < kFixes; ++row) {
        const std::size_t place = 100 + kRecord * (kFixes - 1 - row);
        shapes.replace(place, kRecord, m_good["shp"].substr(100 + kRecord * row, kRecord));
        put_big(index, 100 + 8 * row, static_cast<std::uint32_t>(place / 2));
    }
    const auto stats = [&](const Parts& files) {
        Write(files);
        return run_limited({"stats", m_folder.Path() / "case" / "l.shp", "--id-field", "animal"}, m_folder.Path());
    };
    const LimitedRun reversed = stats(parts);
    EXPECT_EQ(reversed.Code, 0) << reversed.Err;
    EXPECT_EQ(reversed.Out, stats(m_good).Out);
}

}  // namespace
}  // namespace wxl::tests
