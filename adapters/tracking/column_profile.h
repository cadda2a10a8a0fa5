#pragma once
#include "adapters/tracking/time_numbers.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace wxl::tracking {

/// What the first rows of a column hold.
class ColumnProfile {
public:
    /// Takes the next cell, trimmed.
    void Take(std::string_view cell);

    std::size_t Filled() const { return m_filled; }  ///< cells that say something
    bool IsEmpty() const { return m_filled == 0; }

    /// Shares of the filled cells, 0 to 1.
    double Numbers() const { return Share(m_numbers); }
    double Coordinates() const { return Share(m_numbers + m_parted + m_latitudes + m_longitudes); }
    double Fractions() const { return Share(m_fractions); }  ///< numbers with three decimals or more
    double Latitudes() const { return Share(m_latitudes); }  ///< with N or S
    double Longitudes() const { return Share(m_longitudes); }
    double FullTimes() const { return Share(m_fullTimes); }  ///< texts with date and time of day
    double Dates() const { return Share(m_dates); }          ///< texts with a date alone
    double TimesOfDay() const { return Share(m_timesOfDay); }
    double Clocks() const { return Share(m_clocks); }      ///< hour, minute and second as a number: 90500
    double Whole() const { return Share(m_whole); }        ///< digits alone
    double Integers() const { return Share(m_integers); }  ///< digits with or without a sign

    /// The kind of time that four fifths of the filled cells can be by their size.
    std::optional<TimeKind> NumberKind() const { return m_timeNumbers.KindOf(m_filled); }

    double Min() const { return m_min; }  ///< of the numbers
    double Max() const { return m_max; }
    std::size_t LongestWhole() const { return m_longestWhole; }  ///< digits

    std::size_t Distinct() const { return m_distinct.size(); }
    bool AllDistinct() const { return m_filled > 0 && m_distinct.size() == m_filled; }
    /// Whether all cells are north or south, or east or west, in letters or words (hemisphere_from_text).
    bool IsNorthOrSouth() const { return m_northSouth == m_filled && m_filled > 0; }
    bool IsEastOrWest() const { return m_eastWest == m_filled && m_filled > 0; }
    const std::unordered_set<std::string>& Values() const { return m_distinct; }

private:
    double Share(std::size_t count) const {
        return m_filled == 0 ? 0.0 : static_cast<double>(count) / static_cast<double>(m_filled);
    }
    void TakeNumber(std::string_view cell, double value);
    void TakeText(std::string_view cell);

    std::size_t m_filled = 0;
    std::size_t m_numbers = 0;
    std::size_t m_fractions = 0;
    std::size_t m_parted = 0;  ///< degrees, minutes and seconds without a letter
    std::size_t m_latitudes = 0;
    std::size_t m_longitudes = 0;
    std::size_t m_fullTimes = 0;
    std::size_t m_dates = 0;
    std::size_t m_timesOfDay = 0;
    std::size_t m_clocks = 0;
    std::size_t m_whole = 0;
    std::size_t m_integers = 0;
    std::size_t m_northSouth = 0;
    std::size_t m_eastWest = 0;
    std::size_t m_longestWhole = 0;
    TimeNumberCounts m_timeNumbers;
    double m_min = 0.0;
    double m_max = 0.0;
    std::unordered_set<std::string> m_distinct;
};

}  // namespace wxl::tracking
