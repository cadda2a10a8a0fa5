#include "platform/clock.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <ctime>

namespace wxl::platform {
namespace {

std::tm local_time(std::time_t seconds) {
    std::tm parts{};
    localtime_r(&seconds, &parts);
    return parts;
}

}  // namespace

DateTime SystemClock::Now() const {
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

std::string DateTimeText(const DateTime& when) {
    const int hour = when.Hour % 12 == 0 ? 12 : when.Hour % 12;
    std::array<char, 96> text{};
    std::snprintf(text.data(), text.size(), "%d/%d/%04d %d:%02d:%02d %s", when.Month, when.Day, when.Year, hour,
                  when.Minute, when.Second, when.Hour < 12 ? "AM" : "PM");
    return text.data();
}

}  // namespace wxl::platform
