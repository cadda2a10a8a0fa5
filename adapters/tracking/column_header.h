#pragma once
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace wxl::tracking {

/// The names of the columns of a table, and the same without accents and punctuation (bare_name).
class ColumnHeader {
public:
    /// `names` outlives the object; `place` is the file and line, for messages.
    ColumnHeader(const std::vector<std::string>& names, std::string place);

    std::size_t Count() const { return m_bare.size(); }
    const std::string& Name(std::size_t column) const { return m_names[column]; }
    const std::string& Bare(std::size_t column) const { return m_bare[column]; }  ///< without what stands in brackets
    const std::string& BareAll(std::size_t column) const { return m_bareAll[column]; }  ///< with it

    std::optional<std::size_t> FindBare(std::string_view bare) const;
    std::optional<std::size_t> FindFirst(std::span<const std::string_view> bareNames) const;

    /// The column that the user named for `option`, in any case.
    std::size_t Named(const std::string& name, const std::string& option) const;
    std::optional<std::size_t> Find(std::string_view name) const;

    /// RuntimeError 13: place, `what`, and the columns that there are.
    [[noreturn]] void Refuse(const std::string& what) const;

private:
    const std::vector<std::string>& m_names;
    std::string m_place;
    std::vector<std::string> m_bare;
    std::vector<std::string> m_bareAll;
};

}  // namespace wxl::tracking
