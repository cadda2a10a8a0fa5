#pragma once
// Lengths and areas for people, with four digits.

#include "platform/values.h"

#include <string>
#include <string_view>

namespace wxl::cli {

/// Four significant digits, without trailing zeros.
std::string short_number(double value);

/// "m" for metres, the coordinate system's name of another unit, or "map units".
std::string unit_text(const platform::SpatialReference& reference);

/// An area in square map units as "85.2 ha", or "12.34 km2" from a square kilometre on; as "0.25 square degree" where
/// map units have no length in metres.
std::string area_text(double area, const platform::SpatialReference& reference);

/// The same in square kilometres with that many digits; the bare number in square map units where those have no size.
std::string kilometres_text(double area, const platform::SpatialReference& reference, int digits);

/// " km2", or nothing where map units have no size.
std::string_view kilometres_unit(const platform::SpatialReference& reference);

}  // namespace wxl::cli
