#pragma once
#include "platform/checked.h"
#include "platform/values.h"

namespace wxl::movement {

inline constexpr const char* kTime2Field = "Time2";

/// A Time2 value as a signed 32-bit whole number, fractions rounded half to even. RuntimeError 13 for a missing value
/// or a text that is not a number, 6 outside the range.
inline std::int32_t time2_of(const platform::FieldValue& value) {
    return platform::round_half_even_i32(platform::ValueNumber(value));
}

}  // namespace wxl::movement
