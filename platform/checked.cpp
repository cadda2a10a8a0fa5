#include "platform/checked.h"

#include "platform/runtime_error.h"

#include <array>
#include <cmath>
#include <limits>

namespace wxl::platform {
namespace {

template <class Whole>
Whole narrow(double whole) {
    // Negated, so that NaN fails too.
    if (!(whole >= static_cast<double>(std::numeric_limits<Whole>::min()) &&
          whole <= static_cast<double>(std::numeric_limits<Whole>::max())))
        Raise(error_number::kOverflow);
    return static_cast<Whole>(whole);
}

double nearest_half_even(double value) {
    const double below = std::floor(value);
    const double rest = value - below;
    if (rest < 0.5) return below;
    if (rest > 0.5) return below + 1.0;
    return std::fmod(below, 2.0) == 0.0 ? below : below + 1.0;
}

}  // namespace

std::int32_t sum_i32(std::int32_t a, std::int32_t b) {
    std::int32_t result = 0;
    if (__builtin_add_overflow(a, b, &result)) Raise(error_number::kOverflow);
    return result;
}

std::int32_t difference_i32(std::int32_t a, std::int32_t b) {
    std::int32_t result = 0;
    if (__builtin_sub_overflow(a, b, &result)) Raise(error_number::kOverflow);
    return result;
}

std::int32_t product_i32(std::int32_t a, std::int32_t b) {
    std::int32_t result = 0;
    if (__builtin_mul_overflow(a, b, &result)) Raise(error_number::kOverflow);
    return result;
}

std::int32_t round_half_even_i32(double value) {
    return narrow<std::int32_t>(nearest_half_even(value));
}

std::int32_t floor_i32(double value) {
    return narrow<std::int32_t>(std::floor(value));
}

std::int16_t to_i16(std::int64_t value) {
    if (value < std::numeric_limits<std::int16_t>::min() || value > std::numeric_limits<std::int16_t>::max())
        Raise(error_number::kOverflow);
    return static_cast<std::int16_t>(value);
}

double quotient(double dividend, double divisor) {
    if (divisor == 0.0) Raise(dividend == 0.0 ? error_number::kOverflow : error_number::kDivisionByZero);
    const double result = dividend / divisor;
    if (!std::isfinite(result) && std::isfinite(dividend) && std::isfinite(divisor)) Raise(error_number::kOverflow);
    return result;
}

double round_half_even(double value, int decimals) {
    static constexpr std::array<double, 16> kPowersOfTen = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                            1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    if (decimals < 0 || decimals > 15) Raise(error_number::kInvalidCall);
    const double scale = kPowersOfTen[static_cast<std::size_t>(decimals)];
    const double scaled = value * scale;
    // Beyond 2^52 there are no fractions left to round.
    if (!std::isfinite(scaled) || std::abs(scaled) >= 4503599627370496.0) return value;
    return nearest_half_even(scaled) / scale;
}

}  // namespace wxl::platform
