#include "adapters/tracking/time_cells.h"

#include "adapters/tracking/cell_text.h"
#include "adapters/tracking/date_order.h"
#include "adapters/tracking/number_text.h"
#include "adapters/tracking/time_columns.h"
#include "adapters/tracking/time_numbers.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <utility>

namespace wxl::tracking {

TimeCells::TimeCells(TableRows& table, TimeColumns columns, const ReadOptions& options)
    : m_table(table), m_columns(std::move(columns)), m_order(options.Order), m_zone(options.Zone) {}

void TimeCells::Decide(FileFacts& facts) {
    m_format.Kind = KindOfNumbers();
    if (m_format.Kind == TimeKind::kCalendar) DecideOrder(facts);
}

/// What the numbers of a column of times are, by their size; kCalendar: texts.
TimeKind TimeCells::KindOfNumbers() {
    const ColumnProfile& profile = m_table.Profiles()[m_columns.Columns.front()];
    if (m_columns.How != TimeColumns::Style::kTogether || profile.FullTimes() + profile.Dates() > 0.5)
        return TimeKind::kCalendar;
    const auto kind = profile.NumberKind();
    // Days of a modified Julian date look like days of a spreadsheet of forty years later.
    const bool isOther =
        bare_name(m_table.Header()[m_columns.Columns.front()], true).find("julian") != std::string::npos ||
        bare_name(m_table.Header()[m_columns.Columns.front()], true).find("mjd") != std::string::npos;
    if (kind && !isOther) {
        RefuseRounded(profile);
        return *kind;
    }
    if (profile.Numbers() > 0.9 && m_columns.Columns.size() == 1) RefuseNumbers();
    return TimeKind::kCalendar;
}

/// Stops where a spreadsheet rounded most of the numbers, and seconds are lost.
void TimeCells::RefuseRounded(const ColumnProfile& profile) const {
    const auto& cells = profile.Values();
    const auto rounded = std::ranges::count_if(cells, [](const std::string& cell) { return is_rounded(cell); });
    if (static_cast<std::size_t>(rounded) * 2 <= cells.size()) return;
    platform::Raise(
        platform::error_number::kTypeMismatch,
        fmt::format(
            "{}: the times in column \"{}\" are numbers that were rounded when the table was saved, like \"{}\"; "
            "save it with all digits, or import without times by --no-time",
            m_table.Name(), m_table.Header()[m_columns.Columns.front()],
            shown(*std::ranges::find_if(cells, [](const std::string& cell) { return is_rounded(cell); }))));
}

/// Stops at numbers that are no times, such as seconds since a start.
void TimeCells::RefuseNumbers() {
    const std::size_t column = m_columns.Columns.front();
    std::optional<double> least;
    std::optional<double> most;
    m_table.Restart();
    while (m_table.Next()) {
        const auto number = number_from_text(m_table.Cell(column));
        if (!number || is_placeholder(*number)) continue;
        least = std::min(least.value_or(*number), *number);
        most = std::max(most.value_or(*number), *number);
    }
    platform::Raise(
        platform::error_number::kTypeMismatch,
        fmt::format("{}: the numbers in column \"{}\", {} to {}, are no times of a kind that is known: seconds or "
                    "milliseconds since 1970, days of a spreadsheet (20000 to 80000), or dates in digits (20180509, "
                    "180509, 2018129); name a column with a date by --time COLUMN, or import without times by "
                    "--no-time",
                    m_table.Name(), m_table.Header()[column], platform::NumberText(least.value_or(0.0)),
                    platform::NumberText(most.value_or(0.0))));
}

/// The order of day and month, by all dates of the file: the one that makes fewest of them impossible.
void TimeCells::DecideOrder(FileFacts& facts) {
    if (m_order) m_format.Order = *m_order;
    if (m_order || !SampleNeedsOrder()) return;
    std::array<std::int64_t, 3> impossible{};
    std::string example;
    m_table.Restart();
    while (m_table.Next()) {
        const std::string_view text = Text();
        const unsigned possible = possible_orders(text);
        if (possible == 0) continue;
        if (example.empty() && possible != 7) example = text;
        for (unsigned order = 0; order < 3; ++order)
            if ((possible & (1U << order)) == 0) ++impossible[order];
    }
    const auto least = std::min_element(impossible.begin(), impossible.end());
    if (std::count(impossible.begin(), impossible.end(), *least) > 1)
        platform::Raise(platform::error_number::kTypeMismatch,
                        fmt::format("{}: no row decides whether day or month comes first in dates like \"{}\" (column "
                                    "\"{}\"); say it by --date-order dmy|mdy|ymd",
                                    m_table.Name(), shown(example), fmt::join(facts.Time, "\" and \"")));
    m_format.Order = static_cast<DateOrder>(least - impossible.begin());
    facts.Order = m_format.Order;
}

bool TimeCells::SampleNeedsOrder() {
    constexpr unsigned kAny = 7;
    m_table.Restart();
    for (std::size_t row = 0; row < TableRows::kSampleRows && m_table.Next(); ++row)
        if (possible_orders(Text()) != kAny) return true;
    return false;
}

std::string_view TimeCells::Text() {
    if (m_columns.Columns.size() > 1)
        return joined_time(
            m_columns, [this](std::size_t column) { return m_table.Cell(column); }, m_joined);
    const std::string_view cell = m_table.Cell(m_columns.Columns.front());
    return is_missing(cell) ? std::string_view() : cell;
}

std::optional<RowFault> TimeCells::Take(TrackingFix& fix, FileFacts& facts) {
    std::optional<TimeText> time;
    std::string_view text;
    if (m_format.Kind == TimeKind::kSheetDays && m_columns.Columns.size() > 1) {
        text = m_table.Cell(m_columns.Columns[0]);
        if (is_missing(text)) return std::nullopt;
        time = time_from_text(text, m_format);
        const std::string_view part = m_table.Cell(m_columns.Columns[1]);
        const auto share = number_from_text(part);
        const auto ofDay =
            share ? std::optional<std::int64_t>(std::llround(*share * 86400.0)) : time_of_day_from_text(part);
        if (time && ofDay) time->Seconds += *ofDay;
    } else {
        text = Text();
        if (text.empty()) return std::nullopt;
        time = time_from_text(text, m_format);
    }
    if (!time)
        return RowFault{
            Reason::kTime, m_columns.Columns.front(),
            fmt::format("\"{}\" in column \"{}\" is no time that can be read; name the column of times by --time "
                        "COLUMN, empty the cell to keep the fix without a time, or import without times by --no-time",
                        shown(text), fmt::join(facts.Time, "\" and \""))};
    if (time->HasAbbreviation && !m_zone)
        return RowFault{
            Reason::kTime, m_columns.Columns.front(),
            fmt::format("\"{}\" in column \"{}\" names a time zone by letters that several zones share; say "
                        "which it is by --time-zone NAME (UTC, Europe/Paris)",
                        shown(text), fmt::join(facts.Time, "\" and \""))};
    if (time->Seconds % 86400 == 0) ++facts.Midnights;
    if (m_format.Kind == TimeKind::kSheetDays && time->Seconds % 60 != 0) {
        const std::size_t mark = text.find_first_of(".,");
        if (mark != std::string_view::npos) m_decimals = std::max(m_decimals, text.size() - mark - 1);
    }
    fix.Seconds = time->Seconds;
    if (time->IsUtc || !m_zone || m_columns.IsUtc) return std::nullopt;
    const UtcTime utc = m_zone->ToUtc(time->Seconds);
    if (utc.Said == UtcTime::Clock::kTwice) ++facts.ClockTwice;
    if (utc.Said == UtcTime::Clock::kNever) ++facts.ClockNever;
    fix.Seconds = utc.Seconds;
    return std::nullopt;
}

void TimeCells::TellNumbers(std::span<const TrackingFix> fixes, FileFacts& facts) const {
    facts.Numbers = m_format.Kind;
    constexpr std::size_t kDecimalsOfSeconds = 5;
    if (m_decimals > 0 && m_decimals < kDecimalsOfSeconds) facts.DecimalsOfDays = m_decimals;
    for (const TrackingFix& fix : fixes) {
        if (m_format.Kind == TimeKind::kCalendar) return;
        if (!fix.HasTime()) continue;
        facts.FirstTime = std::min(facts.FirstTime.value_or(fix.Seconds), fix.Seconds);
        facts.LastTime = std::max(facts.LastTime.value_or(fix.Seconds), fix.Seconds);
    }
}

}  // namespace wxl::tracking
