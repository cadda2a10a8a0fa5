#include "adapters/disk/system_clock.h"

#include <ctime>
#include <thread>

namespace wxl::files {
namespace {

std::tm local_time(std::time_t seconds) {
    std::tm parts{};
    localtime_r(&seconds, &parts);
    return parts;
}

}  // namespace

platform::DateTime SystemClock::Now() const {
    const std::tm now = local_time(std::time(nullptr));
    return {now.tm_year + 1900, now.tm_mon + 1, now.tm_mday, now.tm_hour, now.tm_min, now.tm_sec};
}

float SystemClock::SecondsSinceMidnight() const {
    const auto now = std::chrono::system_clock::now();
    const auto whole = std::chrono::floor<std::chrono::seconds>(now);
    const std::tm parts = local_time(std::chrono::system_clock::to_time_t(whole));
    const std::chrono::duration<double> fraction = now - whole;
    return static_cast<float>(parts.tm_hour * 3600 + parts.tm_min * 60 + parts.tm_sec + fraction.count());
}

std::chrono::nanoseconds SystemClock::Steady() const {
    return std::chrono::steady_clock::now().time_since_epoch();
}

void SystemClock::Wait(std::chrono::milliseconds time) const {
    std::this_thread::sleep_for(time);
}

}  // namespace wxl::files
