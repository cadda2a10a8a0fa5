#pragma once
#include "adapters/tracking/column_header.h"
#include "adapters/tracking/column_roles.h"

#include <functional>

namespace wxl::tracking {

/// Finds the columns of the time of a fix: by names and content together. Times in UTC go before local ones, that of
/// the fix before those of the start, the message or the deployment; a date is joined with its time of day. Where no
/// name speaks of a time, a column that reads as one is taken. Nothing when there is none. RuntimeError 13 for a column
/// that the user named and that there is not.
std::optional<TimeColumns> find_time(const ColumnHeader& header, const std::vector<ColumnProfile>& profiles,
                                     const WantedColumns& wanted, const PositionColumns& position);

/// The cells of a row as one text, for time_from_text. `cell` gives the trimmed cell of a column. Empty when the first
/// of them is missing.
std::string_view joined_time(const TimeColumns& columns, const std::function<std::string_view(std::size_t)>& cell,
                             std::string& buffer);

}  // namespace wxl::tracking
