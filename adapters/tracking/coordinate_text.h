#pragma once
#include <optional>
#include <string_view>

namespace wxl::tracking {

/// A coordinate as it stands in a cell.
struct CoordinateText {
    double Value = 0.0;      ///< degrees, or units of the file's system; the sign is that of the hemisphere
    char Hemisphere = '\0';  ///< N, S, E or W where the text says so

    bool IsLatitude() const { return Hemisphere == 'N' || Hemisphere == 'S'; }
    bool IsLongitude() const { return Hemisphere == 'E' || Hemisphere == 'W'; }
};

/// A coordinate of any notation: a number (number_from_text), one with a hemisphere before or after it ("12.5W",
/// "N 45.3"), degrees, minutes and seconds ("33° 23' 59.7\" S", "45 12.345 N", "-33:23:59.7", "33d23m59.7s"). Minutes
/// and seconds are below 60, and only the last part has a fraction. Nothing for any other text.
std::optional<CoordinateText> coordinate_from_text(std::string_view text);

/// N, S, E or W for a text that is no more than a side of the Earth, in letters or words of several languages; O for
/// the letter O, which is east in German and west in Spanish and French; '\0' for any other text.
char hemisphere_from_text(std::string_view text);

}  // namespace wxl::tracking
