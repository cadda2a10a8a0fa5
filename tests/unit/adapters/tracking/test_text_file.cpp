#include "adapters/tracking/text_file.h"
#include "platform/runtime_error.h"
#include "tests/support/scratch_folder.h"

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <sys/stat.h>
#include <thread>

namespace wxl::tracking {
namespace {

using tests::ScratchFolder;

std::string text_of(const std::string& bytes) {
    ScratchFolder folder;
    std::ofstream(folder / "t.csv", std::ios::binary) << bytes;
    const auto source = open_text(folder / "t.csv");
    return {std::istreambuf_iterator<char>(*source), {}};
}

std::string refusal(const std::string& bytes) {
    ScratchFolder folder;
    std::ofstream(folder / "t.csv", std::ios::binary) << bytes;
    try {
        open_text(folder / "t.csv");
    } catch (const platform::RuntimeError& error) {
        return error.Description.substr(error.Description.find(" is "));
    }
    return "";
}

TEST(TextFile, Plain_bytes_stay_as_they_are) {
    EXPECT_EQ(text_of("a,b\n\xE9,\xC3\xA9\n"), "a,b\n\xE9,\xC3\xA9\n");
    EXPECT_EQ(text_of(""), "");
}

TEST(TextFile, Utf16_becomes_utf8) {
    const std::string marked(
        "\xFF\xFE"
        "\xC4\0l\0g\0,\0"
        "1\0"
        "\n\0",
        14);
    EXPECT_EQ(text_of(marked), "\xC3\x84lg,1\n");
    const std::string bigEndian(
        "\xFE\xFF"
        "\0\xC4\0l\0g\0,\0"
        "1\0\n",
        14);
    EXPECT_EQ(text_of(bigEndian), "\xC3\x84lg,1\n");
    EXPECT_EQ(text_of(std::string("i\0d\0,\0x\0\n\0"
                                  "a\0,\0"
                                  "1\0",
                                  16)),
              "id,x\na,1");
}

// U+1F98A, a fox, is D83E DD8A.
TEST(TextFile, Pairs_of_surrogates_are_one_letter_and_halves_are_replaced) {
    std::string utf8;
    Utf16Decoder decoder(Utf16::kBigEndian);
    decoder.Decode("\xD8", utf8);
    decoder.Decode("\x3E\xDD\x8A", utf8);
    EXPECT_EQ(utf8, "\xF0\x9F\xA6\x8A");
    utf8.clear();
    decoder.Decode(std::string("\xDD\x8A\xD8\x3E\0x\x20\xAC", 8), utf8);
    EXPECT_EQ(utf8, "\xEF\xBF\xBD\xEF\xBF\xBDx\xE2\x82\xAC");
}

TEST(TextFile, What_is_no_text_is_named) {
    EXPECT_EQ(
        refusal(std::string("PK\x03\x04\0\0", 6)),
        " is a zip archive or a workbook: save the table as CSV (in a spreadsheet: Save as, CSV UTF-8), and import "
        "that");
    EXPECT_NE(refusal("%PDF-1.4").find("a PDF document"), std::string::npos);
    EXPECT_NE(refusal("\xD0\xCF\x11\xE0").find("old Excel workbook"), std::string::npos);
    EXPECT_NE(refusal(std::string("a\0\0\0b\1", 6)).find("is no text"), std::string::npos);
}

TEST(TextFile, A_pipe_is_read_to_its_end_and_can_be_sought) {
    ScratchFolder folder;
    const auto pipe = folder / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    std::thread writer([&] { std::ofstream(pipe) << "id,x\n"; });
    const auto source = open_text(pipe);
    writer.join();
    source->seekg(3);
    EXPECT_EQ(source->get(), 'x');
}

TEST(TextFile, Absent_file_is_told) {
    EXPECT_THROW(open_text("/nowhere/t.csv"), platform::RuntimeError);
}

}  // namespace
}  // namespace wxl::tracking
