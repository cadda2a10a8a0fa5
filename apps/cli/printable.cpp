#include "apps/cli/printable.h"

#include "platform/text.h"

#include <fmt/format.h>

namespace wxl::cli {

namespace {

/// Bytes of the UTF-8 character that begins a text; 0 where none does.
std::size_t length_of_character(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text.front());
    const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    return platform::IsUtf8(text.substr(0, length)) ? length : 0;
}

char32_t code_of(std::string_view character) {
    const auto lead = static_cast<unsigned char>(character.front());
    if (character.size() == 1) return lead;
    char32_t code = lead & (0xFFU >> (character.size() + 1));
    for (const char c : character.substr(1)) code = code << 6U | (static_cast<unsigned char>(c) & 0x3FU);
    return code;
}

bool is_control(char32_t code) {
    return code < 0x20 || (code >= 0x7F && code < 0xA0);
}

/// Marks that turn the direction of text, and separators of lines.
bool is_layout(char32_t code) {
    return code == 0x061C || code == 0x200E || code == 0x200F || (code >= 0x2028 && code <= 0x202E) ||
           (code >= 0x2066 && code <= 0x2069);
}

/// `kept` are control characters that stay.
std::string shown(std::string_view text, std::string_view kept) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const std::size_t length = length_of_character(text);
        const char32_t code = length == 0 ? static_cast<unsigned char>(text.front()) : code_of(text.substr(0, length));
        if (length == 1 && kept.find(text.front()) != std::string_view::npos)
            result += text.front();
        else if (length == 0 || (is_control(code) && code < 0x20))
            result += fmt::format("\\x{:02X}", static_cast<unsigned>(code));
        else if (is_control(code) || is_layout(code))
            result += fmt::format("\\u{:04X}", static_cast<unsigned>(code));
        else
            result += text.substr(0, length);
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return result;
}

}  // namespace

std::string printable(std::string_view text) {
    return shown(text, "\n\t");
}

std::string printable_line(std::string_view text) {
    return shown(text, {});
}

}  // namespace wxl::cli
