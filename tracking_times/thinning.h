#pragma once
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace wxl::tracking_times {

/// How fixes are thinned: one of each interval stays.
struct Thinning {
    std::int64_t Every = 0;      ///< length of an interval in seconds, above 0
    std::int64_t Tolerance = 0;  ///< seconds by which a fix may come too early and still count for the next interval
};

/// Thins the fixes of one animal as they come in the order of time.
///
/// Intervals are counted from the first fix: interval m = floor((t - t0 + tolerance) / every). The first fix of each
/// interval that has any stays; of equal times the one that comes first. Kept fixes can be closer than `every`: one at
/// the end of its interval, the other at the start of the next.
class Thinner {
public:
    explicit Thinner(const Thinning& rule) : m_rule(rule) {}

    /// Whether the next fix stays. `seconds` since 1970-01-01, not before that of the call before.
    bool Keeps(std::int64_t seconds);

private:
    Thinning m_rule;
    std::optional<std::int64_t> m_start;  ///< time of the first fix
    std::int64_t m_interval = 0;          ///< of the last fix that stayed
};

/// Seconds of "4h", "30min", "90 s", "1d", "2 weeks" or "1d12h"; nothing for a text that is none or comes to 0. Units:
/// s, sec, second(s); m, min, minute(s); h, hour(s); d, day(s); w, week(s); in any case. Whole numbers only.
std::optional<std::int64_t> seconds_from_duration(std::string_view text);

}  // namespace wxl::tracking_times
