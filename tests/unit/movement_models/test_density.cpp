#include "movement_models/bandwidth.h"
#include "movement_models/density.h"
#include "movement_models/fit.h"
#include "movement_models/weights.h"
#include "worked_tracks.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numbers>
#include <random>

namespace wxl::movement_models {
namespace {

using platform::Point;
using platform::RasterGeometry;

struct Sample {
    std::vector<Point> Fixes;
    std::vector<double> Weights;
};

Sample random_sample(std::size_t count) {
    std::mt19937_64 source(4);
    const auto uniform = [&] { return static_cast<double>(source() >> 11) * 0x1p-53; };
    Sample sample;
    for (std::size_t i = 0; i < count; ++i) {
        sample.Fixes.push_back({500000.0 + 900.0 * uniform(), 5800000.0 + 700.0 * uniform()});
        sample.Weights.push_back(i % 5 == 2 ? 0.0 : uniform());
    }
    return sample;
}

engine::KernelGrid density_of(const Sample& sample, const Matrix2& covariance, const RasterGeometry& geometry) {
    engine::KernelGrid grid;
    grid.Reset(geometry.Columns, geometry.Rows);
    engine::WorkClock clock;
    add_density(sample.Fixes, sample.Weights, covariance, geometry, grid, clock);
    return grid;
}

double literal_density(const Sample& sample, const Matrix2& s, double x, double y) {
    const long double determinant = static_cast<long double>(s.XX) * s.YY - static_cast<long double>(s.XY) * s.XY;
    long double sum = 0.0L;
    for (std::size_t i = 0; i < sample.Fixes.size(); ++i) {
        const long double dx = x - sample.Fixes[i].X;
        const long double dy = y - sample.Fixes[i].Y;
        const long double square = (s.YY * dx * dx - 2.0L * s.XY * dx * dy + s.XX * dy * dy) / determinant;
        sum += sample.Weights[i] * std::exp(-0.5L * square);
    }
    return static_cast<double>(sum / (2.0L * std::numbers::pi_v<long double> * std::sqrt(determinant)));
}

// The factors carry exponents up to a hundred, each with its rounding: 1e-13 of the density's peak.
TEST(Density, Is_the_literal_sum_for_any_matrix) {
    const Sample sample = random_sample(60);
    const Matrix2 matrices[] = {{2500, 0, 2500},    {2500, 0, 400},    {2500, 2300, 2300}, {400, -300, 3000},
                                {9000, 9400, 9900}, {30, 20, 40000.0}, {1e6, 9e5, 9e5},    {25, 10, 16}};
    for (const Matrix2& matrix : matrices)
        for (const double cell : {7.0, 20.0, 61.0}) {
            const RasterGeometry geometry{499700.3, 5799800.7, cell, static_cast<int>(1500 / cell),
                                          static_cast<int>(1100 / cell)};
            const engine::KernelGrid grid = density_of(sample, matrix, geometry);
            const double peak = 60.0 / (2.0 * std::numbers::pi * std::sqrt(matrix.Determinant()));
            for (std::int32_t row = 0; row < geometry.Rows; row += 3)
                for (std::int32_t column = 0; column < geometry.Columns; column += 3) {
                    const double x = geometry.OriginX + (column + 0.5) * cell;
                    const double y = geometry.OriginY + (geometry.Rows - row - 0.5) * cell;
                    EXPECT_NEAR(grid(column, row), literal_density(sample, matrix, x, y), 1e-13 * peak)
                        << matrix.XX << ' ' << matrix.XY << ' ' << cell;
                }
        }
}

TEST(Density, Grid_holds_four_deviations_around_the_fixes) {
    const std::vector<Point> fixes{{100, 200}, {150, 190}};
    const RasterGeometry grid = grid_around(fixes, {25, 0, 4}, 10.0);
    EXPECT_EQ(grid, (RasterGeometry{80, 180, 10, 9, 3}));
}

TEST(Density, Cell_size_is_a_fifth_of_the_kernel) {
    EXPECT_EQ(advised_cell_size({400, 0, 100}), 2.0);
}

engine::KernelGrid four_cells() {
    engine::KernelGrid grid;
    grid.Reset(2, 3);
    grid(0, 0) = 1.0;
    grid(1, 0) = 4.0;
    grid(0, 1) = 3.0;
    grid(1, 1) = 2.0;
    return grid;  // the others are 0
}

// Volumes 4, 7, 9, 10; half (5) is reached a third into the second cell, of area 9.
TEST(VolumeCurve, Areas_and_levels_of_four_cells) {
    const VolumeCurve curve(four_cells(), 9.0);
    EXPECT_NEAR(curve.AreaOf(0.5), 12.0, 1e-12);
    EXPECT_NEAR(curve.AreaOf(0.2), 4.5, 1e-12);
    EXPECT_NEAR(curve.AreaOf(1.0), 36.0, 1e-12);
    EXPECT_NEAR(curve.Volume(), 90.0, 1e-12);
    EXPECT_NEAR(*curve.LevelOf(9.0), 4.0, 1e-12);
    EXPECT_NEAR(*curve.LevelOf(13.5), 3.5, 1e-12);
    EXPECT_NEAR(*curve.LevelOf(3.0), 4.0, 1e-12);
    EXPECT_NEAR(*curve.LevelOf(36.0), 1.0, 1e-12);
    EXPECT_FALSE(curve.LevelOf(36.1));
}

Bandwidth bandwidth_of(const FittedModel& model, bool optimal) {
    return optimal ? optimal_bandwidth(tests::fourteen_fixes(), model.Model)
                   : uniform_bandwidth(tests::fourteen_fixes(), model.Model);
}

double corrected_area(const FittedModel& model, const Bandwidth& bandwidth, double cell) {
    const Track track = tests::fourteen_fixes();
    Sample sample{{}, bandwidth.Weights};
    for (std::size_t i = 0; i < track.Size(); ++i) sample.Fixes.push_back({track.X[i], track.Y[i]});
    const Matrix2 matrix = model.Covariance.Scaled(bandwidth.Squared);
    const RasterGeometry geometry = grid_around(sample.Fixes, matrix, cell, 7.0);
    return VolumeCurve(density_of(sample, matrix, geometry), cell * cell).AreaOf(0.95) / bandwidth.Bias;
}

// Cells of 10 m at kernels of 380 m; the grid's sums are good to a few hundred square metres.
TEST(Density, Corrected_areas_of_fourteen_fixes) {
    const ModelChoice choice = choose_model(tests::fourteen_fixes(), Estimation::kPhreml, false);
    const FittedModel& model = *choice.Chosen();
    const double uniform = corrected_area(model, bandwidth_of(model, false), 10.0);
    EXPECT_NEAR(uniform, 2769916.0, 30.0);
    EXPECT_NEAR(corrected_area(model, bandwidth_of(model, true), 10.0), 2797553.0, 30.0);
    const auto limits = area_interval(uniform, model.DofArea);
    EXPECT_NEAR(limits->Low, 627897.0, 10.0);
    EXPECT_NEAR(limits->High, 6471294.0, 100.0);
}

}  // namespace
}  // namespace wxl::movement_models
