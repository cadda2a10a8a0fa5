#pragma once
#include <optional>
#include <string_view>

namespace wxl::tracking {

/// Which coordinate stands first in a cell that holds both.
enum class PairOrder { kLongitudeFirst, kLatitudeFirst };

/// Two coordinates of one cell.
struct PositionText {
    double First = 0.0;
    double Second = 0.0;
    std::optional<PairOrder> Order;  ///< where the notation or letters of hemispheres tell it
};

/// A position of any notation: "POINT (5.1 52.2)" with or without "SRID=4326;", R's "c(5.1, 52.2)", the "[5.1, 52.2]"
/// of GeoJSON, "{'latitude': 52.2, 'longitude': 5.1}", and two coordinates (coordinate_from_text) parted by a comma, a
/// semicolon, a stroke or a blank: "52.2, 5.1", "52,2; 5,1", "52° 12' N 5° 6' E". A third number in brackets is a
/// height. Nothing for any other text; "52,5" is one number.
std::optional<PositionText> position_from_text(std::string_view text);

/// The number of the coordinate system that "SRID=32633;POINT(...)" names; nothing for other texts, and for 0 (none).
std::optional<int> srid_from_text(std::string_view text);

/// "POINT EMPTY", "c(NA, NA)": a position that is none.
bool is_empty_position(std::string_view text);

/// Degrees of a number that holds degrees and minutes (5212.5 is 52 degrees and 12.5 minutes), as receivers of
/// satellite positions write it; nothing where the minutes are 60 or more.
std::optional<double> degrees_of_receiver(double value);

}  // namespace wxl::tracking
