#pragma once
#include "adapters/tracking/column_roles.h"
#include "adapters/tracking/rejected_rows.h"
#include "adapters/tracking/table_rows.h"
#include "adapters/tracking/time_text.h"
#include "adapters/tracking/time_zone.h"
#include "adapters/tracking/tracking_file.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace wxl::tracking {

/// The times of one table: how they are to be read, and that of each row.
class TimeCells {
public:
    /// `table`, whose sample is taken, outlives this.
    TimeCells(TableRows& table, TimeColumns columns, const ReadOptions& options);

    /// Decides what numbers of times are, and the order of day and month, by all rows. RuntimeError 13 where the
    /// numbers are no times or were rounded, and where nothing decides the order.
    void Decide(FileFacts& facts);

    /// Text of the current row's time; empty where it has none.
    std::string_view Text();

    /// Takes the time of the current row, if it has one.
    std::optional<RowFault> Take(TrackingFix& fix, FileFacts& facts);

    /// Tells what the numbers of the column of times were taken for, and which days that makes them.
    void TellNumbers(std::span<const TrackingFix> fixes, FileFacts& facts) const;

private:
    TimeKind KindOfNumbers();
    void RefuseRounded(const ColumnProfile& profile) const;
    [[noreturn]] void RefuseNumbers();
    void DecideOrder(FileFacts& facts);
    bool SampleNeedsOrder();

    TableRows& m_table;
    TimeColumns m_columns;
    std::optional<DateOrder> m_order;
    std::shared_ptr<TimeZone> m_zone;
    TimeFormat m_format;
    std::size_t m_decimals = 0;  ///< most of a day number that is no whole minute
    std::string m_joined;
};

}  // namespace wxl::tracking
