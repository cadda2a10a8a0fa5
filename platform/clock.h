#pragma once
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
};

/// The machine's clock.
class SystemClock final : public IClock {
public:
    DateTime Now() const override;
    float SecondsSinceMidnight() const override;
};

/// "11/20/2026 3:04:05 PM"
std::string DateTimeText(const DateTime& when);

}  // namespace wxl::platform
