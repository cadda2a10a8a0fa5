#pragma once
#include "adapters/tracking/column_roles.h"
#include "adapters/tracking/rejected_rows.h"
#include "adapters/tracking/table_rows.h"
#include "adapters/tracking/tracking_file.h"

#include <cstddef>
#include <optional>

namespace wxl::tracking {

/// The positions of one table, row by row.
class PositionCells {
public:
    /// `table` and `layout` outlive this. `unit` and `srid`: of the positions, as far as they are known.
    PositionCells(const TableRows& table, const Layout& layout, PositionUnit unit, std::optional<int> srid);

    /// Takes the position of the current row.
    std::optional<RowFault> Take(TrackingFix& fix) const;

private:
    std::optional<RowFault> TakeNumbers(TrackingFix& fix) const;
    std::optional<RowFault> TakePair(TrackingFix& fix) const;
    std::optional<RowFault> TakeCoordinate(std::size_t column, bool isX, double& value) const;
    std::optional<RowFault> TakeParts(const DegreeParts& parts, double& degrees) const;
    RowFault NoCoordinate(std::size_t column) const;
    bool SaysNoFix() const;

    const TableRows& m_table;
    const Layout& m_layout;
    PositionUnit m_unit;
    std::optional<int> m_srid;
};

}  // namespace wxl::tracking
