#include "pictures/svg_parts.h"

#include <array>
#include <charconv>
#include <cmath>

namespace wxl::pictures {

std::string SvgNumber(double coordinate) {
    std::array<char, 64> text{};
    const double rounded = std::round(coordinate * 100.0) / 100.0;
    const auto end = std::to_chars(text.data(), text.data() + text.size(), rounded + 0.0);
    return {text.data(), end.ptr};
}

std::string SvgIdPrefix(const std::string& wanted, const std::string& fallback) {
    std::string kept;
    for (const char c : wanted)
        if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '_')
            kept += c;
    return kept.empty() ? fallback : kept;
}

}  // namespace wxl::pictures
