#include "engine/kernel_grid.h"

#include "platform/runtime_error.h"

#include <algorithm>

namespace wxl::engine {

double SearchSquare::Area() const {
    return IsEmpty() ? 0.0
                     : (static_cast<double>(LastColumn) - FirstColumn + 1.0) *
                           (static_cast<double>(LastRow) - FirstRow + 1.0);
}

void KernelGrid::Reset(std::int32_t columns, std::int32_t rows) {
    if (columns < 0 || rows < 0) platform::Raise(platform::error_number::kSubscript);
    const std::int64_t cells = std::int64_t{columns} * rows;
    if (cells > kMaximumCells) platform::Raise(platform::error_number::kOutOfMemory);
    // The old cells go first: two grids of the largest size never stand side by side.
    m_cells.reset();
    m_columns = m_rows = 0;
    const auto count = static_cast<std::size_t>(std::max<std::int64_t>(cells, 1));
    // NOLINTNEXTLINE(cppcoreguidelines-no-malloc,cppcoreguidelines-owning-memory): new would write every zero
    m_cells.reset(static_cast<double*>(std::calloc(count, sizeof(double))));
    if (!m_cells) platform::Raise(platform::error_number::kOutOfMemory);
    m_columns = columns;
    m_rows = rows;
}

}  // namespace wxl::engine
