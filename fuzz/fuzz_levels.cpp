// Levels of small surfaces beside the plain accumulation.

#include "fuzz/fuzz_input.h"
#include "isopleths/levels.h"
#include "tests/support/plain_levels.h"

#include <algorithm>
#include <cmath>

namespace {

using namespace wxl;
using fuzz::require;

float cell_of(fuzz::FuzzInput& input) {
    switch (input.Take<std::uint8_t>() % 4) {
        case 0:
            return static_cast<float>(input.Between(0, 8));
        case 1:
            return static_cast<float>(input.Within(0.0, 1.0));
        case 2:
            return static_cast<float>(1e-9 * input.Between(0, 65535));
        default:
            return input.Take<float>();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzInput input(data, size);
    const std::int32_t columns = input.Between(1, 12);
    const std::int32_t rows = input.Between(1, 12);
    std::vector<double> percentages;
    for (std::int32_t i = input.Between(0, 3); i >= 0; --i) percentages.push_back(0.5 * input.Between(0, 202));
    // A few values many times over: the counters of bins overflow.
    const std::int32_t copies = input.Flag() ? input.Between(1, 4000) : 1;
    std::vector<float> cells;
    for (std::int32_t i = 0; i < columns * rows; ++i) cells.push_back(cell_of(input));
    std::vector<float> many;
    many.reserve(cells.size() * static_cast<std::size_t>(copies));
    for (std::int32_t i = 0; i < copies; ++i) many.insert(many.end(), cells.begin(), cells.end());

    std::vector<double> found;
    std::vector<double> expected;
    const std::int32_t fault = fuzz::fault_of([&] {
        const auto [minimum, maximum] = std::ranges::minmax(many);
        isopleths::VolumeHistogram histogram(static_cast<double>(minimum), static_cast<double>(maximum));
        histogram.Add(many);
        found = histogram.Levels(percentages);
    });
    const std::int32_t twinFault = fuzz::fault_of([&] {
        expected = tests::plain_levels({many.begin(), many.end()}, percentages);
    });
    require((fault == 0) == (twinFault == 0), "a fault where the plain accumulation has one");
    require(fault != 0 || found == expected, "levels of the plain accumulation");
    return 0;
}
