#pragma once
#include <chrono>
#include <functional>
#include <utility>

namespace wxl::engine {

/// Turns that long work gives to its host, so that windows repaint and Stop buttons answer.
struct Turns {
    std::function<void()> Yield = {};  ///< one turn; empty: none are given
    std::function<std::chrono::steady_clock::time_point()> Now = &std::chrono::steady_clock::now;
};

/// Gives the host a turn about every 50 ms while a long computation ticks.
class WorkClock {
public:
    explicit WorkClock(Turns turns = {}) : m_turns(std::move(turns)), m_last(m_turns.Now()) {}

    void Tick() {
        if (!m_turns.Yield) return;
        if (m_turns.Now() - m_last < std::chrono::milliseconds(50)) return;
        m_turns.Yield();
        m_last = m_turns.Now();
    }

private:
    Turns m_turns;
    std::chrono::steady_clock::time_point m_last;
};

}  // namespace wxl::engine
