#pragma once
#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <string_view>

namespace wxl::tracking {

bool is_digit(char c);

/// Letters, and the bytes of letters beyond ASCII.
bool is_letter(char c);

/// Takes pieces from the front of a text.
class Scanner {
public:
    explicit Scanner(std::string_view text) : m_rest(text) {}

    bool AtEnd() const { return m_rest.empty(); }
    char Peek(std::size_t at = 0) const { return at < m_rest.size() ? m_rest[at] : '\0'; }
    void Skip(std::size_t count) { m_rest.remove_prefix(std::min(count, m_rest.size())); }
    std::string_view Rest() const { return m_rest; }

    bool Take(char wanted);
    bool TakeAny(std::string_view wanted);
    void SkipBlanks();

    std::size_t DigitsAhead() const;

    /// `count` digits that are known to stand there.
    int Number(std::size_t count);

    /// The letters ahead; empty where there are none.
    std::string_view Word();

    /// Takes a word in any case, where no letter follows it.
    bool TakeWord(std::string_view word);

    /// Takes the first of the marks that stands there, and the blanks behind it.
    bool TakeMark(std::initializer_list<std::string_view> marks);

    /// Skips words that say nothing: "at", "um", "de".
    void SkipWords(std::initializer_list<std::string_view> words);

private:
    std::string_view m_rest;
};

}  // namespace wxl::tracking
