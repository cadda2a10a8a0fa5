#pragma once
#include <cstdint>

namespace wxl::platform {

/// a + b, a - b, a * b in signed 32 bits; RuntimeError 6 when the result does not fit.
std::int32_t sum_i32(std::int32_t a, std::int32_t b);
std::int32_t difference_i32(std::int32_t a, std::int32_t b);
std::int32_t product_i32(std::int32_t a, std::int32_t b);

/// Nearest whole number, half to even; RuntimeError 6 outside signed 32 bits and for NaN.
std::int32_t round_half_even_i32(double value);

/// Largest whole number not above `value`; RuntimeError 6 outside signed 32 bits and for NaN.
std::int32_t floor_i32(double value);

/// A wider whole number as signed 16 bits; RuntimeError 6 when it does not fit.
std::int16_t to_i16(std::int64_t value);

/// dividend / divisor; RuntimeError 11 when the divisor is exactly zero (RuntimeError 6 for 0 / 0, and when the
/// quotient of finite numbers is not finite).
double quotient(double dividend, double divisor);

/// Rounds to `decimals` places (0 to 15), half to even: value x 10^decimals is rounded and divided back.
/// 0.03125 to 4 places is 0.0312, 2.5 to 0 places is 2. Values without a fraction left, and NaN, come back unchanged.
double round_half_even(double value, int decimals);

}  // namespace wxl::platform
