#include "adapters/tracking/cell_text.h"

#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace wxl::tracking {

namespace {

/// A character and the bytes it takes; 0 for a byte that begins none.
struct Character {
    char32_t Code = 0;
    std::size_t Bytes = 1;
};

Character character_at(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<char32_t>(static_cast<unsigned char>(text[i])); };
    const char32_t first = byte(0);
    const std::size_t bytes = first < 0x80 ? 1 : first < 0xC0 ? 0 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    if (bytes == 0 || bytes > text.size()) return {};
    char32_t code = bytes == 1 ? first : first & (0x7FU >> bytes);
    for (std::size_t i = 1; i < bytes; ++i) code = (code << 6U) | (byte(i) & 0x3FU);
    return {code, bytes};
}

void append_character(std::string& text, char32_t code) {
    const auto add = [&](char32_t byte) { text += static_cast<char>(static_cast<unsigned char>(byte)); };
    if (code < 0x80) return add(code);
    if (code < 0x800) {
        add(0xC0 | (code >> 6U));
    } else {
        add(0xE0 | (code >> 12U));
        add(0x80 | ((code >> 6U) & 0x3FU));
    }
    add(0x80 | (code & 0x3FU));
}

// What is left of accented Latin letters: U+00C0 to U+00FF without ae and ss, and U+0100 to U+017F. A blank is no
// letter.
constexpr std::string_view kLatin1 = "aaaaaa ceeeeiiiidnooooo ouuuuyt aaaaaa ceeeeiiiidnooooo ouuuuyty";
constexpr std::string_view kLatinA =
    "aaaaaaccccccccddddeeeeeeeeeegggggggghhhhiiiiiiiiiiiijjkkkllllllllllnnnnnnnnnoooooooorrrrrrssssssssttttttuuuuuuuuuu"
    "uu"
    "wwyyyzzzzzzs";
static_assert(kLatin1.size() == 64 && kLatinA.size() == 128);

std::string_view plain_latin(char32_t code) {
    if (code == 0xC6 || code == 0xE6) return "ae";
    if (code == 0xDF) return "ss";
    if (code == 0x218 || code == 0x219) return "s";
    if (code == 0x21A || code == 0x21B) return "t";
    std::string_view plain;
    if (code >= 0xC0 && code < 0x100) plain = kLatin1.substr(code - 0xC0, 1);
    if (code >= 0x100 && code < 0x180) plain = kLatinA.substr(code - 0x100, 1);
    return plain == " " ? std::string_view() : plain;
}

struct GreekFold {
    char32_t Letter;
    char32_t Plain;
};
constexpr std::array<GreekFold, 21> kGreek = {
    {{0x386, 0x3B1}, {0x3AC, 0x3B1}, {0x388, 0x3B5}, {0x3AD, 0x3B5}, {0x389, 0x3B7}, {0x3AE, 0x3B7}, {0x38A, 0x3B9},
     {0x3AF, 0x3B9}, {0x390, 0x3B9}, {0x3AA, 0x3B9}, {0x3CA, 0x3B9}, {0x38C, 0x3BF}, {0x3CC, 0x3BF}, {0x38E, 0x3C5},
     {0x3CD, 0x3C5}, {0x3B0, 0x3C5}, {0x3AB, 0x3C5}, {0x3CB, 0x3C5}, {0x38F, 0x3C9}, {0x3CE, 0x3C9}, {0x3C2, 0x3C3}}};

/// A letter of Greek, without accents, or Cyrillic as a small one.
char32_t small_letter(char32_t code) {
    for (const GreekFold& fold : kGreek)
        if (fold.Letter == code) return fold.Plain;
    if (code >= 0x391 && code <= 0x3A9) return code + 0x20;
    if (code >= 0x410 && code <= 0x42F) return code + 0x20;
    if (code >= 0x400 && code <= 0x40F) return code + 0x50;
    return code == 0x490 ? 0x491 : code;
}

/// Letters of Greek, Cyrillic, Hebrew, Arabic, Chinese, Japanese and Korean.
bool is_other_letter(char32_t code) {
    return (code >= 0x370 && code < 0x530) || (code >= 0x5D0 && code < 0x700) || (code >= 0x3040 && code < 0x3100) ||
           (code >= 0x4E00 && code < 0xA000) || (code >= 0xAC00 && code < 0xD7B0);
}

std::size_t fold_at(std::string_view rest, std::string& bare) {
    const Character character = character_at(rest);
    bare += plain_latin(character.Code);
    if (is_other_letter(character.Code)) append_character(bare, small_letter(character.Code));
    return character.Bytes;
}

}  // namespace

std::string to_utf8(std::string_view bytes) {
    return platform::IsUtf8(bytes) ? std::string(bytes) : platform::FromWindows1252(bytes);
}

std::string shown(std::string_view cell) {
    constexpr std::size_t kLongest = 40;
    std::size_t cut = std::min(cell.size(), kLongest);
    while (cut > 0 && cut < cell.size() && (static_cast<unsigned char>(cell[cut]) & 0xC0) == 0x80) --cut;
    std::string text = to_utf8(cell.substr(0, cut));
    for (char& c : text)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = '?';
    return cut < cell.size() ? text + "..." : text;
}

bool is_missing(std::string_view cell) {
    if (cell.empty()) return true;
    const char first = cell.front();
    // Most cells are numbers.
    if (first >= '0' && first <= '9') return false;
    return cell.find_first_not_of('-') == std::string_view::npos ||
           is_one_of(cell, {"NA", "N/A", "#N/A", "NaN", "null", "none", "<NA>", "\\N"});
}

bool is_one_of(std::string_view cell, std::initializer_list<std::string_view> words) {
    return std::any_of(words.begin(), words.end(),
                       [&](std::string_view word) { return platform::EqualNoCase(cell, word); });
}

bool is_placeholder(double value) {
    if (value > -99.0) return false;
    constexpr std::array<double, 5> kPlaceholders = {-999.0, -9999.0, -99999.0, -999999.0, -9999999.0};
    return std::any_of(kPlaceholders.begin(), kPlaceholders.end(),
                       [&](double placeholder) { return value <= placeholder && value > placeholder - 1.0; });
}

std::string bare_name(std::string_view name, bool brackets) {
    std::string bare;
    int depth = 0;
    while (!name.empty()) {
        const char c = name.front();
        std::size_t length = 1;
        if (c == '[' || c == '(') ++depth;
        if ((c == ']' || c == ')') && depth > 0) --depth;
        if (depth == 0 || brackets) {
            if (c >= 'A' && c <= 'Z') bare += static_cast<char>(c - 'A' + 'a');
            if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9')) bare += c;
            if (static_cast<unsigned char>(c) >= 0x80) length = fold_at(name, bare);
        }
        name.remove_prefix(length);
    }
    return bare;
}

}  // namespace wxl::tracking
