#include "platform/distortion.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace wxl::platform {
namespace {

constexpr double kTold = 0.0005;

std::string percent(double share) {
    if (share < kTold) return "less than 0.05 %";
    std::array<char, 400> digits{};
    const auto end =
        std::to_chars(digits.data(), digits.data() + digits.size(), share * 100.0, std::chars_format::fixed, 1);
    return "up to " + std::string(digits.data(), end.ptr) + " %";
}

}  // namespace

Distortion larger_of(const Distortion& a, const Distortion& b) {
    return {std::max(a.Area, b.Area), std::max(a.Length, b.Length)};
}

std::string distortion_text(const Distortion& distortion) {
    return "areas are " + percent(distortion.Area) + " and distances " + percent(distortion.Length) + " wrong";
}

}  // namespace wxl::platform
