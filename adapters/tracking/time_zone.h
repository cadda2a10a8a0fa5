#pragma once
#include <cstdint>
#include <memory>
#include <string>

namespace wxl::tracking {

/// What a clock of some place showed, in UTC.
struct UtcTime {
    enum class Clock {
        kPlain,
        kTwice,  ///< the clock was set back and showed this time twice: the first is taken
        kNever   ///< the clock was set forward over this time: it is taken for one before the change, as if it had not
                 ///< been
    };
    std::int64_t Seconds = 0;  ///< since 1970-01-01 UTC
    Clock Said = Clock::kPlain;
};

/// A time zone of the IANA data base, with its changes of the clock over the years.
class TimeZone {
public:
    /// "Europe/Berlin", "UTC", "UTC+2", "+02:00", "EST5EDT", in any case. RuntimeError 5 when there is no such zone.
    explicit TimeZone(const std::string& name);
    ~TimeZone();
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;

    /// UTC of a time by the clock of the zone, both in seconds since 1970-01-01.
    UtcTime ToUtc(std::int64_t clock) const;

private:
    struct Cache;
    std::unique_ptr<Cache> m_cache;
};

}  // namespace wxl::tracking
