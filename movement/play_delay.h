#pragma once
#include "platform/clock.h"

namespace wxl::movement {

/// The wait between two steps of the player, measured on the clock's seconds since midnight. It ends across midnight
/// too, and a clock that is set back only prolongs it by that much.
class PlayDelay {
public:
    /// Starts now.
    PlayDelay(const platform::IClock& clock, double seconds);

    /// Reads the clock; true once the delay has passed. A delay of 0 or less has passed at once.
    bool HasPassed();

    /// Seconds that were left at the last reading, 0 at least.
    double Remaining() const;

private:
    const platform::IClock& m_clock;
    double m_seconds;
    double m_last;
    double m_elapsed = 0.0;
};

}  // namespace wxl::movement
