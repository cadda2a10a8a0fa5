#include "adapters/tracking/text_scanner.h"

#include "platform/text.h"

namespace wxl::tracking {

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

bool is_letter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || static_cast<unsigned char>(c) >= 0x80;
}

bool Scanner::Take(char wanted) {
    if (Peek() != wanted) return false;
    Skip(1);
    return true;
}

bool Scanner::TakeAny(std::string_view wanted) {
    if (AtEnd() || wanted.find(Peek()) == std::string_view::npos) return false;
    Skip(1);
    return true;
}

void Scanner::SkipBlanks() {
    while (Peek() == ' ') Skip(1);
}

std::size_t Scanner::DigitsAhead() const {
    std::size_t count = 0;
    while (is_digit(Peek(count))) ++count;
    return count;
}

int Scanner::Number(std::size_t count) {
    int value = 0;
    for (std::size_t i = 0; i < count; ++i) value = value * 10 + (m_rest[i] - '0');
    Skip(count);
    return value;
}

std::string_view Scanner::Word() {
    std::size_t length = 0;
    while (length < m_rest.size() && is_letter(m_rest[length])) ++length;
    const std::string_view word = m_rest.substr(0, length);
    Skip(length);
    return word;
}

bool Scanner::TakeWord(std::string_view word) {
    if (!platform::EqualNoCase(m_rest.substr(0, word.size()), word) || is_letter(Peek(word.size()))) return false;
    Skip(word.size());
    return true;
}

bool Scanner::TakeMark(std::initializer_list<std::string_view> marks) {
    const auto* mark = std::ranges::find_if(marks, [this](std::string_view one) { return m_rest.starts_with(one); });
    if (mark == marks.end()) return false;
    Skip(mark->size());
    SkipBlanks();
    return true;
}

void Scanner::SkipWords(std::initializer_list<std::string_view> words) {
    for (bool any = true; any;) {
        any = false;
        for (const std::string_view word : words) {
            if (!TakeWord(word)) continue;
            while (TakeAny(". ")) continue;
            any = true;
        }
    }
}

}  // namespace wxl::tracking
