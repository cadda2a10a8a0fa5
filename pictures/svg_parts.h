#pragma once
#include <string>

namespace wxl::pictures {

/// A coordinate of an SVG with at most two decimals, whatever the locale.
std::string SvgNumber(double coordinate);

/// The letters, digits, "-" and "_" of a wanted beginning of ids; `fallback` where there is none of them.
std::string SvgIdPrefix(const std::string& wanted, const std::string& fallback);

}  // namespace wxl::pictures
