#include "adapters/tracking/cell_text.h"

#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace wxl::tracking {

namespace {

struct Fold {
    std::string_view Letter;
    std::string_view Plain;
};

// Small and capital letters of the languages that tables come in.
constexpr std::array<Fold, 74> kFolds = {
    {{"\xC3\xA4", "a"},  {"\xC3\x84", "a"},  {"\xC3\xA0", "a"},  {"\xC3\x80", "a"}, {"\xC3\xA1", "a"},
     {"\xC3\x81", "a"},  {"\xC3\xA2", "a"},  {"\xC3\x82", "a"},  {"\xC3\xA3", "a"}, {"\xC3\x83", "a"},
     {"\xC3\xA5", "a"},  {"\xC3\x85", "a"},  {"\xC3\xA7", "c"},  {"\xC3\x87", "c"}, {"\xC3\xA8", "e"},
     {"\xC3\x88", "e"},  {"\xC3\xA9", "e"},  {"\xC3\x89", "e"},  {"\xC3\xAA", "e"}, {"\xC3\x8A", "e"},
     {"\xC3\xAB", "e"},  {"\xC3\x8B", "e"},  {"\xC3\xAD", "i"},  {"\xC3\x8D", "i"}, {"\xC3\xAE", "i"},
     {"\xC3\x8E", "i"},  {"\xC3\xAF", "i"},  {"\xC3\x8F", "i"},  {"\xC3\xAC", "i"}, {"\xC3\x8C", "i"},
     {"\xC3\xB1", "n"},  {"\xC3\x91", "n"},  {"\xC3\xB6", "o"},  {"\xC3\x96", "o"}, {"\xC3\xB3", "o"},
     {"\xC3\x93", "o"},  {"\xC3\xB4", "o"},  {"\xC3\x94", "o"},  {"\xC3\xB5", "o"}, {"\xC3\x95", "o"},
     {"\xC3\xB8", "o"},  {"\xC3\x98", "o"},  {"\xC3\xB9", "u"},  {"\xC3\x99", "u"}, {"\xC3\xBA", "u"},
     {"\xC3\x9A", "u"},  {"\xC3\xBB", "u"},  {"\xC3\x9B", "u"},  {"\xC3\xBC", "u"}, {"\xC3\x9C", "u"},
     {"\xC3\x9F", "ss"}, {"\xC3\xA6", "ae"}, {"\xC3\x86", "ae"}, {"\xC4\x8D", "c"}, {"\xC4\x8C", "c"},
     {"\xC5\xA1", "s"},  {"\xC5\xA0", "s"},  {"\xC5\xBE", "z"},  {"\xC5\xBD", "z"}, {"\xC5\x82", "l"},
     {"\xC5\x81", "l"},  {"\xC4\x85", "a"},  {"\xC4\x87", "c"},  {"\xC4\x99", "e"}, {"\xC5\x84", "n"},
     {"\xC5\x9B", "s"},  {"\xC5\x9A", "s"},  {"\xC5\xBA", "z"},  {"\xC5\xBC", "z"}, {"\xC4\x9B", "e"},
     {"\xC5\x99", "r"},  {"\xC3\xBD", "y"},  {"\xC5\xAF", "u"},  {"\xC5\x91", "o"}}};

std::size_t fold_at(std::string_view rest, std::string& bare) {
    for (const Fold& fold : kFolds) {
        if (!rest.starts_with(fold.Letter)) continue;
        bare += fold.Plain;
        return fold.Letter.size();
    }
    return 1;
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
