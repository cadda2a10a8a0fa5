#pragma once
// Surfaces for tests: cells of a raster, row by row from the north.

#include "isopleths/levels.h"
#include "platform/rasters.h"
#include "tests/support/samples.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <vector>

namespace wxl::tests {

struct Surface {
    platform::RasterGeometry Geometry;
    std::vector<float> Cells;

    float Cell(std::int32_t column, std::int32_t row) const {
        return Cells[static_cast<std::size_t>(row) * static_cast<std::size_t>(Geometry.Columns) +
                     static_cast<std::size_t>(column)];
    }
    double Maximum() const { return static_cast<double>(*std::ranges::max_element(Cells)); }
    double Minimum() const { return static_cast<double>(*std::ranges::min_element(Cells)); }

    isopleths::SurfaceEdge Edge() const {
        const std::int32_t columns = Geometry.Columns;
        const std::int32_t rows = Geometry.Rows;
        isopleths::SurfaceEdge edge;
        for (std::int32_t c = 0; c < columns; ++c) {
            edge.North.push_back(static_cast<double>(Cell(c, 0)));
            edge.South.push_back(static_cast<double>(Cell(c, rows - 1)));
        }
        for (std::int32_t r = 0; r < rows; ++r) {
            edge.West.push_back(static_cast<double>(Cell(0, r)));
            edge.East.push_back(static_cast<double>(Cell(columns - 1, r)));
        }
        return edge;
    }
};

/// A surface from its height at cell centres, given as column and row.
inline Surface surface_of(const platform::RasterGeometry& geometry,
                          const std::function<double(double column, double row)>& height) {
    Surface surface{geometry, {}};
    for (std::int32_t r = 0; r < geometry.Rows; ++r) {
        for (std::int32_t c = 0; c < geometry.Columns; ++c) surface.Cells.push_back(static_cast<float>(height(c, r)));
    }
    return surface;
}

/// Gaussian bumps of random place, width and sign: hills, lakes, islands in lakes, cut off by the edges.
inline Surface random_bumps(const platform::RasterGeometry& geometry, int count, double narrowest, double widest,
                            double shareBelow, std::uint64_t seed) {
    struct Bump {
        double Column, Row, Width, Height;
    };
    Dice dice(seed);
    std::vector<Bump> bumps;
    for (int i = 0; i < count; ++i) {
        Bump bump{};
        bump.Column = dice.Uniform() * geometry.Columns;
        bump.Row = dice.Uniform() * geometry.Rows;
        bump.Width = narrowest + (widest - narrowest) * dice.Uniform();
        bump.Height = (0.3 + dice.Uniform()) * (dice.Uniform() < shareBelow ? -1.0 : 1.0);
        bumps.push_back(bump);
    }
    return surface_of(geometry, [&](double column, double row) {
        double height = 0.0;
        for (const Bump& bump : bumps) {
            const double x = (column - bump.Column) / bump.Width;
            const double y = (row - bump.Row) / bump.Width;
            height += bump.Height * std::exp(-0.5 * (x * x + y * y));
        }
        return height;
    });
}

/// Independent values in every cell, from `steps` equal heights: contours touch at cells that equal a level.
inline Surface random_steps(const platform::RasterGeometry& geometry, int steps, std::uint64_t seed) {
    Dice dice(seed);
    return surface_of(geometry, [&](double, double) { return std::floor(dice.Uniform() * steps); });
}

/// Concentric waves around the middle: islands in lakes in islands.
inline Surface waves(const platform::RasterGeometry& geometry, double wavelength) {
    return surface_of(geometry, [&](double column, double row) {
        const double x = column - 0.5 * geometry.Columns;
        const double y = row - 0.5 * geometry.Rows;
        return std::cos(6.283185307179586 * std::sqrt(x * x + y * y) / wavelength) + 0.001 * x;
    });
}

}  // namespace wxl::tests
