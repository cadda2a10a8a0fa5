#pragma once
#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace wxl::tracking {

/// Why a row of a file is no fix of the result.
enum class Reason {
    kNotVisible,  ///< "visible" is false
    kOutlier,     ///< marked as outlier at import, by hand or by an algorithm
    kNoPosition,  ///< x or y is empty, "NA", -999, or 0, 0 where no satellite was seen
    kNoAnimal,    ///< the animal's cell is empty or "NA"
    kCells,       ///< another number of cells than the header has
    kPosition,    ///< a coordinate that cannot be read, or that lies outside its system
    kTime,        ///< a time that cannot be read
    kDop,         ///< a dilution of precision above the one wanted
    kArgosClass,  ///< an Argos class that is not wanted
    kNoKey,       ///< nothing that tells to which part of a split it belongs
    kThinned      ///< thinned out
};
inline constexpr std::size_t kReasons = 11;

/// The reason as a word for a table ("no_position"), and as the end of "3 rows ..." for a message.
std::string_view reason_name(Reason reason);
std::string_view reason_text(Reason reason);

/// Why a row is to be left out.
struct RowFault {
    Reason Why = Reason::kNotVisible;
    std::optional<std::size_t> Column;  ///< that decides; nothing: the row as a whole
    std::string What;  ///< what is wrong and what to do where the row cannot be read; empty: it can, and is no fix
};

/// A row that was left out.
struct RejectedRow {
    std::string File;
    std::int64_t Line = 0;
    Reason Why = Reason::kNotVisible;
    std::string Column;  ///< that decided; empty: none
    std::string Value;   ///< of its cell, UTF-8
};

/// Rows that were left out, counted, and told to whom it concerns.
class RejectedRows {
public:
    using Listener = std::function<void(const RejectedRow&)>;

    void SetListener(Listener listener) { m_listener = std::move(listener); }
    bool IsListened() const { return static_cast<bool>(m_listener); }

    void Count(Reason why) { ++m_counts[static_cast<std::size_t>(why)]; }
    void Add(const RejectedRow& row) {
        Count(row.Why);
        if (m_listener) m_listener(row);
    }

    std::int64_t Of(Reason why) const { return m_counts[static_cast<std::size_t>(why)]; }
    std::int64_t Total() const;
    std::int64_t Unreadable() const { return Of(Reason::kCells) + Of(Reason::kPosition) + Of(Reason::kTime); }

private:
    std::array<std::int64_t, kReasons> m_counts{};
    Listener m_listener;
};

}  // namespace wxl::tracking
