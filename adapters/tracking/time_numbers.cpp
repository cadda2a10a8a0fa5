#include "adapters/tracking/time_numbers.h"

#include "adapters/tracking/number_text.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace wxl::tracking {

namespace {

constexpr double kLeastSeconds = 1e8;
constexpr double kMostSeconds = 4.2e9;
// Nobody counted millionths of a second before; counts of other programs since 1601 or year 1 are as large as those.
constexpr double kLeastOfFineClocks = 9e8;

/// Numbers of one kind; no number is of two.
struct NumberKind {
    TimeKind Kind;
    double Least;
    double Most;
    double PerSecond;
    std::string_view Unit;
};
constexpr std::array<NumberKind, 5> kKinds = {
    {{TimeKind::kSheetDays, 20000.0, 80000.0, 0.0, "days of a spreadsheet"},
     {TimeKind::kEpochSeconds, kLeastSeconds, kMostSeconds, 1.0, "seconds since 1970"},
     {TimeKind::kEpochMillis, kLeastSeconds * 1e3, kMostSeconds * 1e3, 1e3, "milliseconds since 1970"},
     {TimeKind::kEpochMicros, kLeastOfFineClocks * 1e6, kMostSeconds * 1e6, 1e6, "microseconds since 1970"},
     {TimeKind::kEpochNanos, kLeastOfFineClocks * 1e9, kMostSeconds * 1e9, 1e9, "nanoseconds since 1970"}}};

const NumberKind* kind_of(TimeKind kind) {
    const auto* found = std::ranges::find(kKinds, kind, &NumberKind::Kind);
    return found == kKinds.end() ? nullptr : found;
}

/// Seconds since 1970 of a day number. It has some 11 decimals: the nearest thousandth of a second is what the sheet
/// showed.
double seconds_of_sheet_days(double days) {
    constexpr double kDaysTo1970 = 25569.0;  // from 1899-12-30
    return std::round((days - kDaysTo1970) * 86400.0 * 1000.0) / 1000.0;
}

}  // namespace

bool is_time_number(TimeKind kind, double number) {
    const NumberKind* known = kind_of(kind);
    return known != nullptr && number >= known->Least && number <= known->Most;
}

std::string_view unit_of_numbers(TimeKind kind) {
    const NumberKind* known = kind_of(kind);
    return known == nullptr ? std::string_view() : known->Unit;
}

bool is_rounded(std::string_view text) {
    constexpr int kFewestDigits = 9;
    const std::size_t exponent = text.find_first_of("eE");
    if (exponent == std::string_view::npos) return false;
    return std::ranges::count_if(text.substr(0, exponent), [](char c) { return c >= '0' && c <= '9'; }) < kFewestDigits;
}

std::optional<TimeText> time_from_number(std::string_view text, TimeKind kind) {
    const auto number = number_from_text(text);
    if (!number || !is_time_number(kind, *number)) return std::nullopt;
    const bool sheet = kind == TimeKind::kSheetDays;
    const double seconds = sheet ? seconds_of_sheet_days(*number) : *number / kind_of(kind)->PerSecond;
    return TimeText{static_cast<std::int64_t>(std::floor(seconds)), !sheet, true, false};
}

void TimeNumberCounts::Take(double number) {
    for (std::size_t i = 0; i < kKinds.size(); ++i)
        if (is_time_number(kKinds[i].Kind, number)) ++m_counts[i];
}

std::optional<TimeKind> TimeNumberCounts::KindOf(std::size_t cells) const {
    for (std::size_t i = 0; i < kKinds.size(); ++i)
        if (cells > 0 && m_counts[i] * 5 >= cells * 4) return kKinds[i].Kind;
    return std::nullopt;
}

}  // namespace wxl::tracking
