#pragma once
#include "platform/clock.h"

namespace wxl::files {

/// The machine's clock.
class SystemClock final : public platform::IClock {
public:
    platform::DateTime Now() const override;
    float SecondsSinceMidnight() const override;
    std::chrono::nanoseconds Steady() const override;
    void Wait(std::chrono::milliseconds time) const override;
};

}  // namespace wxl::files
