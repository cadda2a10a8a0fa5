#pragma once
#include "platform/messages.h"

#include <chrono>

namespace wxl::engine {

/// Gives the host a turn about every 50 ms while a long computation ticks. Without a host a tick does nothing.
class WorkClock {
public:
    explicit WorkClock(platform::IHost* host) : m_host(host) {}

    void Tick() {
        if (m_host == nullptr) return;
        const auto now = std::chrono::steady_clock::now();
        if (now - m_last < std::chrono::milliseconds(50)) return;
        m_host->Yield();
        m_last = std::chrono::steady_clock::now();
    }

private:
    platform::IHost* m_host;
    std::chrono::steady_clock::time_point m_last = std::chrono::steady_clock::now();
};

}  // namespace wxl::engine
