#include "pictures/axis.h"

#include "platform/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace wxl::pictures {

namespace {

constexpr double kLargest = 1e300;  ///< beyond it the width of a range may overflow

/// The step that gives about `count` steps over `width`.
double nice_step(double width, int count) {
    const double rough = width / count;
    const double power = std::pow(10.0, std::floor(std::log10(rough)));
    for (const double step : {1.0, 2.0, 2.5, 5.0})
        if (rough <= step * power * (1.0 + 1e-9)) return step * power;
    return 10.0 * power;
}

/// The exponent of the common factor of the labels: a multiple of 3, or 0 where plain numbers are short.
int common_exponent(double largest) {
    if (largest >= 1e-3 && largest < 1e5) return 0;
    return 3 * static_cast<int>(std::floor(std::log10(largest) / 3.0));
}

std::string power_of_ten(int exponent) {
    static const std::array<const char*, 10> kRaised = {"⁰", "¹", "²", "³", "⁴", "⁵", "⁶", "⁷", "⁸", "⁹"};
    std::string text = "10";
    for (const char c : std::to_string(exponent))
        text += c == '-' ? "⁻" : kRaised.at(static_cast<std::size_t>(c - '0'));
    return text;
}

/// Divides in two steps, because a power of ten below 1e-308 is no number.
double scaled_down(double value, int exponent) {
    const int half = exponent / 2;
    return value / std::pow(10.0, half) / std::pow(10.0, exponent - half);
}

}  // namespace

std::string ShortNumber(double value, int digits) {
    std::array<char, 64> text{};
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::scientific, digits - 1);
    double rounded = value;
    std::from_chars(text.data(), end.ptr, rounded);
    return platform::NumberText(rounded);
}

Axis MakeAxis(double low, double high, int count, double margin) {
    low = std::clamp(low, -kLargest, kLargest);
    high = std::clamp(high, -kLargest, kLargest);
    const double largest = std::max(std::abs(low), std::abs(high));
    // Narrower than the digits of a label can tell is flat.
    if (high - low <= 1e-9 * largest || high - low < 1e-300) {
        const double half = largest > 1e-290 ? 0.1 * largest : 1.0;
        low -= half;
        high += half;
    } else {
        const double added = margin * (high - low);
        low -= added;
        high += added;
    }
    Axis axis{low, high, {}, {}};
    const int exponent = common_exponent(std::max(std::abs(low), std::abs(high)));
    if (exponent != 0) axis.Factor = power_of_ten(exponent);
    const double step = nice_step(high - low, count);
    const double first = std::ceil(low / step - 1e-9);
    const double last = std::floor(high / step + 1e-9);
    for (double k = first; k <= last; k += 1.0)
        axis.Ticks.push_back({k * step, ShortNumber(scaled_down(k * step, exponent), 12)});
    return axis;
}

}  // namespace wxl::pictures
