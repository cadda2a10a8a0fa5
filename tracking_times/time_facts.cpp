#include "tracking_times/time_facts.h"

#include <algorithm>
#include <cmath>

namespace wxl::tracking_times {

namespace {

constexpr std::int64_t kSecondsPerDay = 86400;

std::int64_t day_of(std::int64_t seconds) {
    const std::int64_t day = seconds / kSecondsPerDay;
    return seconds % kSecondsPerDay < 0 ? day - 1 : day;
}

std::size_t distinct_days(std::span<const std::int64_t> sorted) {
    std::size_t days = 1;
    for (std::size_t i = 1; i < sorted.size(); ++i)
        if (day_of(sorted[i]) != day_of(sorted[i - 1])) ++days;
    return days;
}

/// Ascending differences of ascending times, of which there are two or more.
std::vector<std::int64_t> intervals_of(std::span<const std::int64_t> sorted) {
    std::vector<std::int64_t> intervals;
    intervals.reserve(sorted.size() - 1);
    for (std::size_t i = 1; i < sorted.size(); ++i) intervals.push_back(sorted[i] - sorted[i - 1]);
    std::sort(intervals.begin(), intervals.end());
    return intervals;
}

}  // namespace

TimeFacts facts_on_times(std::vector<std::int64_t> times, std::size_t withoutTime) {
    TimeFacts facts;
    facts.WithTime = times.size();
    facts.WithoutTime = withoutTime;
    if (times.empty()) return facts;
    std::sort(times.begin(), times.end());
    facts.First = times.front();
    facts.Last = times.back();
    facts.Days = static_cast<double>(*facts.Last - *facts.First) / static_cast<double>(kSecondsPerDay);
    facts.DaysWithFix = distinct_days(times);
    if (times.size() < 2) return facts;
    const std::vector<std::int64_t> intervals = intervals_of(times);
    facts.EqualTimes = static_cast<std::size_t>(std::count(intervals.begin(), intervals.end(), 0));
    facts.Intervals = Quartiles{quantile(intervals, 25.0), quantile(intervals, 50.0), quantile(intervals, 75.0)};
    return facts;
}

double quantile(std::span<const std::int64_t> sorted, double percent) {
    const double place = static_cast<double>(sorted.size() - 1) * percent / 100.0;
    const auto below = static_cast<std::size_t>(std::floor(place));
    const auto value = static_cast<double>(sorted[below]);
    if (below + 1 >= sorted.size()) return value;
    return value + (place - static_cast<double>(below)) * (static_cast<double>(sorted[below + 1]) - value);
}

}  // namespace wxl::tracking_times
