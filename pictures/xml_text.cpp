#include "pictures/xml_text.h"

#include "platform/text.h"

#include <algorithm>

namespace wxl::pictures {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

/// Bytes of the well-formed character that begins the text; 0 when none does.
std::size_t character_bytes(std::string_view text) {
    for (std::size_t bytes = 1; bytes <= std::min<std::size_t>(4, text.size()); ++bytes)
        if (platform::IsUtf8(text.substr(0, bytes))) return bytes;
    return 0;
}

bool is_control(std::string_view character) {
    if (character.size() == 1) return static_cast<unsigned char>(character[0]) < 0x20 || character[0] == '\x7F';
    // U+0080 to U+009F, U+FFFE and U+FFFF.
    if (character.size() == 2) return character[0] == '\xC2' && static_cast<unsigned char>(character[1]) < 0xA0;
    return character == "\xEF\xBF\xBE" || character == "\xEF\xBF\xBF";
}

/// U+202A to U+202E and U+2066 to U+2069.
bool changes_direction(std::string_view character) {
    if (character.size() != 3 || character[0] != '\xE2') return false;
    const auto last = static_cast<unsigned char>(character[2]);
    return (character[1] == '\x80' && last >= 0xAA && last <= 0xAE) ||
           (character[1] == '\x81' && last >= 0xA6 && last <= 0xA9);
}

std::string_view escaped(std::string_view character) {
    if (character == "&") return "&amp;";
    if (character == "<") return "&lt;";
    if (character == ">") return "&gt;";
    if (character == "\"") return "&quot;";
    if (character == "'") return "&#39;";
    if (character == "\n" || character == "\r" || character == "\t") return " ";
    if (is_control(character)) return kReplacement;
    return changes_direction(character) ? std::string_view() : character;
}

}  // namespace

std::string XmlText(std::string_view text) {
    std::string safe;
    while (!text.empty()) {
        const std::size_t bytes = character_bytes(text);
        safe += bytes == 0 ? kReplacement : escaped(text.substr(0, bytes));
        text.remove_prefix(std::max<std::size_t>(1, bytes));
    }
    return safe;
}

std::string Shortened(std::string_view text, std::size_t characters) {
    std::size_t count = 0;
    std::size_t at = 0;
    std::size_t cut = 0;  // where the last character but one that fits ends
    while (at < text.size()) {
        if (count + 1 == characters) cut = at;
        if (count == characters) return std::string(text.substr(0, cut)) + "…";
        at += std::max<std::size_t>(1, character_bytes(text.substr(at)));
        ++count;
    }
    return std::string(text);
}

}  // namespace wxl::pictures
