#pragma once
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace wxl::tracking_times {

/// Quartiles of the intervals between fixes, in seconds.
struct Quartiles {
    double Lower = 0.0;
    double Median = 0.0;
    double Upper = 0.0;

    double Range() const { return Upper - Lower; }  ///< interquartile range
    friend bool operator==(const Quartiles&, const Quartiles&) = default;
};

/// What the times of an animal's fixes tell of how it was followed.
struct TimeFacts {
    std::size_t WithTime = 0;
    std::size_t WithoutTime = 0;
    std::optional<std::int64_t> First;   ///< seconds since 1970-01-01 UTC; nothing where no fix has a time
    std::optional<std::int64_t> Last;    ///< as First
    double Days = 0.0;                   ///< from the first to the last, in days of 86,400 s
    std::size_t DaysWithFix = 0;         ///< days of UTC that have a fix
    std::size_t EqualTimes = 0;          ///< intervals of 0 s: fixes at the time of the one before
    std::optional<Quartiles> Intervals;  ///< nothing for fewer than two times

    std::size_t Fixes() const { return WithTime + WithoutTime; }
    friend bool operator==(const TimeFacts&, const TimeFacts&) = default;
};

/// Facts on `times` in any order, seconds since 1970-01-01 UTC, and on fixes that have none. Intervals are the
/// differences of the sorted times, zeros included.
TimeFacts facts_on_times(std::vector<std::int64_t> times, std::size_t withoutTime = 0);

/// The quantile of ascending values at `percent` (0 to 100) by linear interpolation between order statistics: type 7 of
/// Hyndman & Fan 1996. `sorted` is not empty.
double quantile(std::span<const std::int64_t> sorted, double percent);

}  // namespace wxl::tracking_times
