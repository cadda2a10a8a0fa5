#include "engine/kernel_accumulation.h"
#include "engine/vector_math.h"
#include "tests/support/samples.h"

#include <cmath>
#include <gtest/gtest.h>
#include <vector>

namespace wxl::engine {
namespace {

std::vector<double> exponents() {
    std::vector<double> values = {0.0, -1e-300, -1e-20, -0.34657359, -0.34657360, -707.9};
    tests::Dice dice(71);
    while (values.size() < 1003) values.push_back(-700.0 * dice.Uniform());
    return values;
}

TEST(VectorMath, Exponentials_agree_with_the_standard_library_to_the_last_bits) {
    const std::vector<double> values = exponents();
    std::vector<double> results = values;
    vector_math().Exponentials(results.data(), results.size());
    for (std::size_t i = 0; i < values.size(); ++i)
        EXPECT_NEAR(results[i] / std::exp(values[i]), 1.0, 5e-16) << values[i];
}

TEST(VectorMath, Exponentials_vanish_below_the_range_of_full_precision) {
    std::vector<double> values = {-709.0, -1e10, -1e308, -std::numeric_limits<double>::infinity()};
    vector_math().Exponentials(values.data(), values.size());
    EXPECT_EQ(values, std::vector<double>(4, 0.0));
}

TEST(VectorMath, Both_forms_give_the_same_bits) {
    std::vector<double> wide = exponents();
    std::vector<double> portable = wide;
    vector_math().Exponentials(wide.data(), wide.size());
    portable_vector_math().Exponentials(portable.data(), portable.size());
    EXPECT_EQ(wide, portable);
}

/// A grid of some overlapping kernels, added by one of the two forms.
std::vector<double> accumulated(const VectorMath& math) {
    CellCentres centres;
    for (int i = 0; i < 90; ++i) centres.X.push_back(i + 0.5);
    for (int i = 0; i < 70; ++i) centres.Y.push_back(69.5 - i);
    std::vector<FixKernel> kernels;
    tests::Dice dice(72);
    for (int i = 0; i < 50; ++i) {
        const auto column = static_cast<std::int32_t>(60.0 * dice.Uniform());
        const auto row = static_cast<std::int32_t>(40.0 * dice.Uniform());
        kernels.push_back({.Centre = {column + 12.3, 69.5 - row - 10.1},
                           .Bandwidth = 1.0 + 6.0 * dice.Uniform(),
                           .Weight = dice.Uniform(),
                           .Square = {column, column + 25, row, row + 22}});
    }
    KernelGrid grid;
    grid.Reset(90, 70);
    WorkClock clock;
    accumulate(kernels, centres, grid, clock, math);
    std::vector<double> cells;
    for (std::int32_t row = 0; row < 70; ++row)
        for (const double cell : grid.Row(row)) cells.push_back(cell);
    return cells;
}

TEST(VectorMath, Grids_do_not_depend_on_the_width_of_the_vector_registers) {
    EXPECT_EQ(accumulated(vector_math()), accumulated(portable_vector_math()));
}

}  // namespace
}  // namespace wxl::engine
