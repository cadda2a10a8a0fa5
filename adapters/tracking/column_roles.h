#pragma once
#include "adapters/tracking/column_profile.h"
#include "adapters/tracking/position_text.h"

#include <optional>
#include <string>
#include <vector>

namespace wxl::tracking {

/// Columns that the user named; empty: found.
struct WantedColumns {
    std::string Id;
    std::string X;  ///< a column, or "COLUMN:1" and "COLUMN:2" for both coordinates in one
    std::string Y;
    std::string Time;  ///< several, of date and time of day, joined by commas
    bool NoTime = false;
    bool NoId = false;      ///< the animal is known without a column
    bool InMetres = false;  ///< the user said that positions are in a projected system
    bool MaxDop = false;    ///< a column of the dilution of precision is needed
    bool ArgosClass = false;
};

/// Columns of the minutes and seconds beside whole degrees.
struct DegreeParts {
    std::size_t Minutes = 0;
    std::optional<std::size_t> Seconds;
};

/// What the columns of a position hold, as far as their names tell.
enum class PositionUnit { kUnknown, kDegrees, kLengths };

struct PositionColumns {
    std::size_t X = 0;
    std::size_t Y = 0;                    ///< X: one column holds both coordinates
    std::optional<PairOrder> Order;       ///< in that column, where its cells do not tell it
    double PerDegree = 1.0;               ///< 1e7: whole numbers of ten-millionths of a degree
    bool IsOfReceiver = false;            ///< degrees and minutes in one number (degrees_of_receiver)
    std::optional<DegreeParts> PartsOfX;  ///< X has whole degrees; both or neither
    std::optional<DegreeParts> PartsOfY;
    PositionUnit Unit = PositionUnit::kUnknown;
    std::optional<std::size_t> Zone;        ///< UTM zones, row by row
    std::optional<std::size_t> EastOrWest;  ///< letters of hemispheres
    std::optional<std::size_t> NorthOrSouth;
    bool PartsByContent = false;  ///< PerDegree is told by the size of the numbers
    char LetterO = 'O';           ///< E or W: what the letter O means in EastOrWest
    bool WestPositive = false;    ///< the name says west, and no value is negative
    bool SouthPositive = false;
    bool ByContent = false;  ///< found by what the columns hold

    bool IsPair() const { return X == Y; }
};

/// Columns whose cells make up the time of a fix.
struct TimeColumns {
    enum class Style {
        kDateAndHour,  ///< date, hour, then minute and second where there are
        kTogether,     ///< cells one after the other: date and time of day, or both in one
        kYearAndDay,   ///< year, day of the year, then times of day
        kYearMonthDay  ///< year, month, day, then hour, minute and second where there are
    };
    std::vector<std::size_t> Columns;
    Style How = Style::kTogether;
    bool IsUtc = false;    ///< the name says so
    bool IsLocal = false;  ///< the name says that it is the time of some place
    bool ByContent = false;
    bool IsNumber = false;        ///< seconds, days: one column of numbers
    std::size_t ClockDigits = 0;  ///< 4 or 6: the second column is a time of day whose leading zeros may be lost
    double HoursPerUnit = 0.0;    ///< of a number with decimals behind the date: 1 hours, 24 shares of a day; 0: none
    std::optional<std::size_t> NamedZone = {};    ///< a column that names zones, which the times do not heed
    std::optional<std::size_t> UnusedClock = {};  ///< a column named like a time of day, beside dates alone
    bool EndsWithZone = false;                    ///< the last column is the offset of the row's clock from UTC
};

/// Where the cells of a row stand.
struct Layout {
    std::optional<std::size_t> Id;       ///< nothing: one animal
    std::optional<std::size_t> OtherId;  ///< where Id is a name that was found: a number of the animal, perhaps
    bool IdByContent = false;
    PositionColumns Position;
    std::optional<TimeColumns> Time;
    std::optional<std::size_t> Visible;
    std::vector<std::size_t> Outlier;
    std::optional<std::size_t> Satellites;  ///< their number
    std::vector<std::size_t> Status;        ///< whether there was a fix, in words
    std::optional<std::size_t> Dop;
    std::optional<std::size_t> ArgosClass;
};

/// Finds the columns by their names and what they hold. `header` is UTF-8 and trimmed, `profiles` has one for each of
/// its columns, `place` is the file and line of the header, for messages. RuntimeError 13 with the columns there are
/// when one is missing.
Layout find_layout(const std::vector<std::string>& header, const std::vector<ColumnProfile>& profiles,
                   const WantedColumns& wanted, const std::string& place);

/// The column or field that looks like the animal's name, also where the name was cut to the 10 bytes of a shapefile.
std::optional<std::size_t> find_animal_column(const std::vector<std::string>& names);

}  // namespace wxl::tracking
