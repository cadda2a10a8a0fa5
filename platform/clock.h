#pragma once
#include <chrono>
#include <cstdint>
#include <string>

namespace wxl::platform {

/// A local date and time of day.
struct DateTime {
    int Year = 1970;
    int Month = 1;  ///< 1 to 12
    int Day = 1;    ///< 1 to 31
    int Hour = 0;   ///< 0 to 23
    int Minute = 0;
    int Second = 0;
};

class IClock {
public:
    virtual ~IClock() = default;
    virtual DateTime Now() const = 0;

    /// Seconds since local midnight, in single precision.
    virtual float SecondsSinceMidnight() const = 0;

    /// Time since some moment in the past, which never goes back.
    virtual std::chrono::nanoseconds Steady() const = 0;

    /// Returns when this time has passed.
    virtual void Wait(std::chrono::milliseconds time) const = 0;
};

/// "11/20/2026 3:04:05 PM"
std::string DateTimeText(const DateTime& when);

}  // namespace wxl::platform
