#pragma once
#include "adapters/memory/memory_services.h"
#include "engine/clsKernelCalculator.h"

#include <gtest/gtest.h>

namespace wxl::engine {

/// A calculator whose boxes are recorded.
class KernelCalculator : public testing::Test {
protected:
    /// A grid of `columns` x `rows` cells from the origin.
    void SetGrid(std::int32_t columns, std::int32_t rows, double cellSize) {
        k.SetCellSize(cellSize);
        k.SetColumns(columns);
        k.SetRows(rows);
        k.SetOriginCoords(0.0, 0.0);
    }

    double Cell(std::int32_t column, std::int32_t row) const {
        const KernelGrid* grid = k.GetKernel();
        return grid == nullptr ? -1.0 : (*grid)(column, row);
    }

    memory::MemoryMessages messages;
    clsKernelCalculator k{messages};
};

/// Standard deviations sqrt(4/3) and sqrt(16/3), mean 1.7320508.
inline const PointSample kRectangle = {{0.0, 0.0}, {2.0, 0.0}, {0.0, 4.0}, {2.0, 4.0}};
inline const PointSample kSquare = {{0.0, 0.0}, {2.0, 0.0}, {0.0, 2.0}, {2.0, 2.0}};

}  // namespace wxl::engine
