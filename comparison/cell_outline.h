#pragma once
// Cells of a grid as polygons along their edges.

#include "comparison/tiled_density.h"
#include "platform/values.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace wxl::comparison {

/// Some cells of a grid, within a rectangle of it.
struct CellWindow {
    std::int32_t Row = 0;  ///< of the grid, from the north
    std::int32_t Column = 0;
    std::int32_t Rows = 0;
    std::int32_t Columns = 0;
    std::vector<char> Inside;  ///< row by row: 1 for the cells that are meant
    std::int64_t Cells = 0;    ///< how many they are

    /// Whether a cell of the window is meant; none outside of it is.
    bool Holds(std::int32_t row, std::int32_t column) const {
        return row >= 0 && row < Rows && column >= 0 && column < Columns &&
               Inside[static_cast<std::size_t>(row) * static_cast<std::size_t>(Columns) +
                      static_cast<std::size_t>(column)] != 0;
    }
};

/// The range of an animal at the percentage number `percent` of the set.
CellWindow range_cells(const DensitySet& set, std::size_t animal, std::size_t percent);

/// The cells of both ranges: as many as the overlap of the two counts.
CellWindow common_cells(const DensitySet& set, std::size_t i, std::size_t j, std::size_t percent);

/// The cells as a polygon of exactly their area, in map units; null where there is no cell. Cells that share an edge
/// are one part; rings touch in corners at most, so that the polygon is valid (OGC 06-103).
platform::Geometry cell_outline(const platform::RasterGeometry& grid, const CellWindow& cells);

}  // namespace wxl::comparison
