#include "movement/play_delay.h"

#include <algorithm>

namespace wxl::movement {

PlayDelay::PlayDelay(const platform::IClock& clock, double seconds)
    : m_clock(clock), m_seconds(seconds), m_last(static_cast<double>(clock.SecondsSinceMidnight())) {}

bool PlayDelay::HasPassed() {
    constexpr double kDay = 86400.0;
    const auto now = static_cast<double>(m_clock.SecondsSinceMidnight());
    double turn = now - m_last;
    // A jump back by most of a day is midnight; any other is a clock that was set, and counts as no time.
    if (turn < -kDay / 2.0)
        turn += kDay;
    else if (turn < 0.0)
        turn = 0.0;
    m_last = now;
    m_elapsed += turn;
    return m_elapsed >= m_seconds;
}

double PlayDelay::Remaining() const {
    return std::max(0.0, m_seconds - m_elapsed);
}

}  // namespace wxl::movement
