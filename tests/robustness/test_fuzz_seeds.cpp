// The seeds of every fuzz target, and changes of them made on the spot, through the same checks in an ordinary build.

#include "fuzz/scratch_files.h"
#include "tests/support/places.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

using Target = int(const std::uint8_t* data, std::size_t size);
extern "C" Target fuzz_numbers, fuzz_tracking_csv, fuzz_shapefile, fuzz_geopackage, fuzz_grid, fuzz_levels, fuzz_engine,
    fuzz_isopleths, fuzz_batch, fuzz_movement_models;

namespace {

struct Seeds {
    const char* Name;
    Target* Run;
    int Changes;  ///< how many changed seeds are tried: what takes a few seconds
};

class FuzzSeeds : public testing::TestWithParam<Seeds> {
protected:
    static std::vector<std::string> Read() {
        std::vector<std::filesystem::path> files;
        for (const auto& entry :
             std::filesystem::directory_iterator(wxl::tests::SourceFile(std::string("fuzz/corpus/") + GetParam().Name)))
            files.push_back(entry.path());
        std::sort(files.begin(), files.end());
        std::vector<std::string> seeds;
        for (const auto& file : files) seeds.push_back(wxl::fuzz::read_bytes(file));
        return seeds;
    }

    static void Check(const std::string& seed) {
        EXPECT_EQ(GetParam().Run(reinterpret_cast<const std::uint8_t*>(seed.data()), seed.size()), 0);
    }
};

TEST_P(FuzzSeeds, Hold_what_the_target_requires) {
    const std::vector<std::string> seeds = Read();
    EXPECT_GE(seeds.size(), 6U);
    for (const std::string& seed : seeds) Check(seed);
}

TEST_P(FuzzSeeds, Hold_it_when_they_are_changed) {
    const std::vector<std::string> seeds = Read();
    std::mt19937 random(17);
    const auto below = [&](std::size_t end) { return random() % std::max<std::size_t>(end, 1); };
    for (int i = 0; i < GetParam().Changes; ++i) {
        std::string seed = seeds[below(seeds.size())];
        for (std::size_t change = 1 + below(5); change > 0; --change) {
            const std::size_t at = below(seed.size() + 1);
            switch (random() % 4) {
                case 0:
                    seed.insert(at, 1, static_cast<char>(random()));
                    break;
                case 1:
                    if (at < seed.size()) seed[at] = static_cast<char>(random());
                    break;
                case 2:
                    seed.erase(at, below(8));
                    break;
                default: {
                    const std::string& other = seeds[below(seeds.size())];
                    seed.insert(at, other, below(other.size()), below(40));
                }
            }
        }
        Check(seed);
    }
}

INSTANTIATE_TEST_SUITE_P(Targets, FuzzSeeds,
                         testing::Values(Seeds{"numbers", fuzz_numbers, 20000},
                                         Seeds{"tracking_csv", fuzz_tracking_csv, 400},
                                         Seeds{"shapefile", fuzz_shapefile, 1000},
                                         Seeds{"geopackage", fuzz_geopackage, 200}, Seeds{"grid", fuzz_grid, 300},
                                         Seeds{"levels", fuzz_levels, 100}, Seeds{"engine", fuzz_engine, 200},
                                         Seeds{"isopleths", fuzz_isopleths, 100}, Seeds{"batch", fuzz_batch, 500},
                                         Seeds{"movement_models", fuzz_movement_models, 40}),
                         [](const auto& seeds) { return std::string(seeds.param.Name); });

}  // namespace
