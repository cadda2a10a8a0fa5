#include "adapters/tracking/column_header.h"

#include "adapters/tracking/cell_text.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <utility>

namespace wxl::tracking {

namespace {

/// The names for a message, which must not flood the screen when the file is no table at all.
std::string listed(const std::vector<std::string>& names) {
    std::string text = fmt::format("{}", fmt::join(names, ", "));
    for (char& c : text)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = '?';
    constexpr std::size_t kLongest = 1000;
    if (text.size() <= kLongest) return text;
    std::size_t cut = kLongest;
    while ((static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80) --cut;
    return text.substr(0, cut) + " ...";
}

}  // namespace

ColumnHeader::ColumnHeader(const std::vector<std::string>& names, std::string place)
    : m_names(names), m_place(std::move(place)) {
    for (const std::string& name : names) {
        m_bare.push_back(bare_name(name));
        m_bareAll.push_back(bare_name(name, true));
    }
}

std::optional<std::size_t> ColumnHeader::FindBare(std::string_view bare) const {
    for (std::size_t i = 0; i < m_bare.size(); ++i)
        if (m_bare[i] == bare || m_bareAll[i] == bare) return i;
    return std::nullopt;
}

std::optional<std::size_t> ColumnHeader::FindFirst(std::span<const std::string_view> bareNames) const {
    for (const std::string_view bare : bareNames)
        if (const auto found = FindBare(bare)) return found;
    return std::nullopt;
}

std::optional<std::size_t> ColumnHeader::Find(std::string_view name) const {
    const auto same = [&](const std::string& other) { return platform::EqualNoCase(other, name); };
    const auto found = std::find_if(m_names.begin(), m_names.end(), same);
    if (found == m_names.end()) return std::nullopt;
    return static_cast<std::size_t>(found - m_names.begin());
}

std::size_t ColumnHeader::Named(const std::string& name, const std::string& option) const {
    const auto found = Find(name);
    if (!found) Refuse(fmt::format("there is no column \"{}\" for {}", name, option));
    return *found;
}

void ColumnHeader::Refuse(const std::string& what) const {
    platform::Raise(platform::error_number::kTypeMismatch,
                    fmt::format("{}: {}; the columns are: {}", m_place, what, listed(m_names)));
}

}  // namespace wxl::tracking
