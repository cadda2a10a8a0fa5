#include "engine/kernel_grid.h"

#include "platform/runtime_error.h"

namespace wxl::engine {

void KernelGrid::Reset(std::int32_t columns, std::int32_t rows) {
    if (columns < 0 || rows < 0) platform::Raise(platform::error_number::kSubscript);
    const std::int64_t cells = std::int64_t{columns} * rows;
    if (cells > kMaximumCells) platform::Raise(platform::error_number::kOutOfMemory);
    // The old cells go first: two grids of the largest size never stand side by side.
    if (static_cast<std::size_t>(cells) > m_cells.capacity()) std::vector<double>().swap(m_cells);
    m_columns = m_rows = 0;
    m_cells.assign(static_cast<std::size_t>(cells), 0.0);
    m_columns = columns;
    m_rows = rows;
}

}  // namespace wxl::engine
