#include "platform/clock.h"

#include <array>
#include <cstdio>

namespace wxl::platform {

std::string DateTimeText(const DateTime& when) {
    const int hour = when.Hour % 12 == 0 ? 12 : when.Hour % 12;
    std::array<char, 96> text{};
    std::snprintf(text.data(), text.size(), "%d/%d/%04d %d:%02d:%02d %s", when.Month, when.Day, when.Year, hour,
                  when.Minute, when.Second, when.Hour < 12 ? "AM" : "PM");
    return text.data();
}

}  // namespace wxl::platform
