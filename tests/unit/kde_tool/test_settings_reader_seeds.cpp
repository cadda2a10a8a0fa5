// The seeds of the fuzz target, and hostile files made on the spot, through the same checks in an ordinary build.

#include "tests/support/places.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

void check(const std::string& bytes) {
    const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
    EXPECT_EQ(LLVMFuzzerTestOneInput(input.data(), input.size()), 0);
}

TEST(SettingsReaderSeeds, Every_seed_leaves_the_form_whole) {
    std::size_t seeds = 0;
    for (const auto& entry :
         std::filesystem::directory_iterator(wxl::tests::SourceFile("fuzz/corpus/settings_reader"))) {
        SCOPED_TRACE(entry.path().string());
        std::ifstream file(entry.path(), std::ios::binary);
        check({std::istreambuf_iterator<char>(file), {}});
        ++seeds;
    }
    EXPECT_GE(seeds, 10U);
}

TEST(SettingsReaderSeeds, Random_lines_of_keys_and_values_leave_the_form_whole) {
    const std::vector<std::string> words = {"[RESCALE]",  "[KERNEL]",    "[FORM]",
                                            "[LSCV]",     "[BCV]",       "[HREF]",
                                            "[MANUAL]",   "[OUTFOLDER]", "[PREFIX]",
                                            "[CELLSIZE]", "[SCALING]",   "[VERBOSE]",
                                            "[EXTENT]",   "[ISO]",       "[SILENT]",
                                            "TRUE",       "FALSE",       "FULL",
                                            "MIN",        "REF",         "DEM",
                                            "FIXES",      "/out",        "0",
                                            "1",          "2",           "",
                                            "1E6",        "-3",          "abcdefgh",
                                            "\x81\xFF",   "95, 50",      std::string("\0", 1)};
    const std::vector<std::string> ends = {"\r\n", "\n", "\r", "\n\r"};
    std::mt19937 random(3);
    std::uniform_int_distribution<std::size_t> word(0, words.size() - 1), end(0, ends.size() - 1), length(0, 40);
    for (int round = 0; round < 3000; ++round) {
        std::string bytes;
        for (std::size_t i = length(random); i > 0; --i) bytes += words[word(random)] + ends[end(random)];
        check(bytes);
    }
}

}  // namespace
