#include "comparison/area_curve.h"
#include "comparison/kernel_sum.h"
#include "comparison/minimum_convex_polygon.h"
#include "comparison/permutation.h"
#include "comparison/quantile.h"
#include "comparison/volume_range.h"
#include "tests/support/samples.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace wxl::comparison {
namespace {

using platform::Point;

std::vector<CurveSize> sizes_of(const std::vector<double>& areas, std::size_t first = 5) {
    std::vector<CurveSize> sizes;
    for (const double area : areas) sizes.push_back({first++, area, std::nullopt, std::nullopt});
    return sizes;
}

TEST(AreaCurve, Numbers_of_fixes_end_with_all) {
    EXPECT_EQ(curve_sizes(8, {}), (std::vector<std::size_t>{5, 6, 7, 8}));
    EXPECT_EQ(curve_sizes(3, {}), (std::vector<std::size_t>{3}));
    EXPECT_EQ(curve_sizes(5, {}), (std::vector<std::size_t>{5}));
    EXPECT_EQ(curve_sizes(0, {}), (std::vector<std::size_t>{}));
    CurveSettings coarse;
    coarse.First = 2;
    coarse.Step = 4;
    EXPECT_EQ(curve_sizes(9, coarse), (std::vector<std::size_t>{2, 6, 9}));
}

TEST(AreaCurve, Has_at_most_200_numbers_unless_told) {
    for (const std::size_t all : {203U, 204U, 205U, 1000U, 99999U}) {
        const std::vector<std::size_t> sizes = curve_sizes(all, {});
        EXPECT_LE(sizes.size(), 200U) << all;
        EXPECT_GE(sizes.size(), 99U) << all;
        EXPECT_EQ(sizes.back(), all);
    }
    EXPECT_EQ(curve_sizes(204, {}).size(), 200U);
}

// Corners of a square, then points within: 1/2 after three, 1 after four, and so it stays.
TEST(AreaCurve, Of_polygons_in_time_order) {
    const std::vector<Point> fixes = {{0, 0}, {1, 0}, {1, 1}, {0, 1}, {0.5, 0.5}, {0.5, 0.2}};
    CurveSettings settings;
    settings.First = 1;
    const AreaCurve curve = area_curve(fixes, settings);
    std::vector<double> areas;
    for (const CurveSize& size : curve.Sizes) areas.push_back(size.Area.value());
    EXPECT_EQ(areas, (std::vector<double>{0.0, 0.0, 0.5, 1.0, 1.0, 1.0}));
    EXPECT_FALSE(curve.Sizes.back().Low);
}

TEST(AreaCurve, Incremental_polygons_are_those_of_the_first_fixes) {
    for (const double percent : {100.0, 95.0})
        for (const tests::NamedSample& sample : tests::hostile_samples(80)) {
            CurveSettings settings;
            settings.Percent = percent;
            for (const CurveSize& size : area_curve(sample.Points, settings).Sizes)
                EXPECT_EQ(size.Area.value(),
                          minimum_convex_polygon(std::span(sample.Points).first(size.N), percent).Area);
        }
}

TEST(AreaCurve, Random_order_gives_medians_and_quantiles_over_nested_subsets) {
    const std::vector<Point> fixes = tests::normal_sample(30, 100.0, {0.0, 0.0}, 8);
    CurveSettings settings;
    settings.Order = CurveOrder::kRandom;
    settings.Replicates = 7;
    settings.Seed = 42;
    const AreaCurve curve = area_curve(fixes, settings);
    for (const CurveSize& size : curve.Sizes) {
        std::vector<double> areas;
        for (std::uint64_t r = 0; r < 7; ++r) {
            const std::vector<std::size_t> order = permutation(30, 42 + r);
            std::vector<Point> subset;
            for (std::size_t i = 0; i < size.N; ++i) subset.push_back(fixes[order[i]]);
            areas.push_back(minimum_convex_polygon(subset, 100.0).Area);
        }
        std::sort(areas.begin(), areas.end());
        EXPECT_EQ(size.Area.value(), areas[3]);
        EXPECT_EQ(size.Low.value(), quantile(areas, 2.5));
        EXPECT_EQ(size.High.value(), quantile(areas, 97.5));
    }
    EXPECT_EQ(curve.Sizes.back().Low, curve.Sizes.back().High);
}

// With a fixed bandwidth the grid keeps what the fixes before put there; rounding may move a cell of thousands.
TEST(AreaCurve, Kernels_of_a_fixed_bandwidth_add_to_the_grid) {
    const std::vector<Point> fixes = tests::walk_sample(120, 40.0, {500.0, 500.0}, 3);
    CurveSettings settings;
    settings.Of = CurveOf::kKernel;
    settings.Percent = 95.0;
    settings.Bandwidth = 60.0;
    settings.CellSize = 10.0;
    settings.Step = 23;
    const AreaCurve curve = area_curve(fixes, settings);
    EXPECT_EQ(curve.CellSize, 10.0);
    platform::Extent extent;
    for (const Point& fix : fixes) extent.Include(fix);
    const platform::RasterGeometry grid = covering_grid(extent, 240.0, 10.0);
    for (const CurveSize& size : curve.Sizes) {
        KernelSum sum(grid);
        sum.Add(std::span(fixes).first(size.N), 60.0);
        const double percents[] = {95.0};
        const auto cells = ranges_by_volume(sum.Cells(), percents).front().Cells;
        EXPECT_NEAR(size.Area.value() / 100.0, static_cast<double>(cells), 1.0);
    }
}

// A round Gaussian sample of n fixes: the kernel's density is one of variance sd^2 + h^2, its range a circle; random
// fixes scatter.
TEST(AreaCurve, Kernel_area_of_many_fixes_is_that_of_the_smoothed_gaussian) {
    const std::vector<Point> fixes = tests::normal_sample(4000, 200.0, {0.0, 0.0}, 12);
    CurveSettings settings;
    settings.Of = CurveOf::kKernel;
    settings.Percent = 50.0;
    settings.Step = 3995;
    const AreaCurve curve = area_curve(fixes, settings);
    const double href = reference_bandwidth(fixes);
    const double expected = 2.0 * 3.14159265358979 * (200.0 * 200.0 + href * href) * -std::log(0.5);
    EXPECT_NEAR(curve.Sizes.back().Area.value(), expected, 0.05 * expected);
}

TEST(AreaCurve, Without_a_distribution_an_area_is_missing) {
    const std::vector<Point> same(12, {5.0, 5.0});
    CurveSettings settings;
    settings.Of = CurveOf::kKernel;
    settings.Percent = 95.0;
    const AreaCurve curve = area_curve(same, settings);
    for (const CurveSize& size : curve.Sizes) EXPECT_FALSE(size.Area);
    EXPECT_FALSE(curve.Levelling);
    EXPECT_TRUE(area_curve({}, settings).Sizes.empty());
    EXPECT_FALSE(area_curve(same, {}).Levelling);  // polygons of area 0
}

TEST(AreaCurve, Asymptote_is_the_first_number_from_which_all_areas_stay_close) {
    // 5 to 16 fixes; within 5 % of 100 from 9 fixes on, 7 before the end of 16.
    const auto sizes = sizes_of({50, 96, 80, 90, 95, 105, 100, 99, 100, 101, 100, 100});
    const Asymptote found = asymptote(sizes, 0.05).value();
    EXPECT_EQ(found.N, 9U);
    EXPECT_TRUE(found.Reached);
}

TEST(AreaCurve, The_last_fixes_alone_are_no_asymptote) {
    const Asymptote rising = asymptote(sizes_of({10, 20, 30, 40, 50, 60, 70, 80}), 0.05).value();
    EXPECT_EQ(rising.N, 12U);
    EXPECT_FALSE(rising.Reached);
    // 4 fixes after the first close one are too few, 5 are enough.
    EXPECT_FALSE(asymptote(sizes_of({10, 20, 100, 100, 100, 100, 100}), 0.05).value().Reached);
    EXPECT_TRUE(asymptote(sizes_of({10, 20, 100, 100, 100, 100, 100, 100}), 0.05).value().Reached);
    // Of 95 fixes a tenth, rounded up, is 10.
    EXPECT_FALSE(asymptote(sizes_of({10, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100}, 85), 0.05).value().Reached);
    EXPECT_TRUE(
        asymptote(sizes_of({10, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100}, 84), 0.05).value().Reached);
}

TEST(AreaCurve, A_missing_area_ends_the_asymptote) {
    auto sizes = sizes_of({100, 100, 100, 100, 100, 100, 100, 100});
    sizes[1].Area.reset();
    EXPECT_EQ(asymptote(sizes, 0.05).value().N, 7U);
    sizes.back().Area.reset();
    EXPECT_FALSE(asymptote(sizes, 0.05));
}

}  // namespace
}  // namespace wxl::comparison
