#pragma once
#include "adapters/tracking/tracking_file.h"

#include <span>

namespace wxl::tracking {

/// A UTM zone as it stands in a cell.
struct ZoneText {
    int Number = 0;      ///< 1 to 60
    char Letter = '\0';  ///< band or hemisphere, capital; none: no letter
};

/// "32T", "32 T", "18N", "zone 32", "UTM 32N"; nothing for any other text.
std::optional<ZoneText> zone_from_text(std::string_view text);

/// Turns eastings and northings (metres, WGS 84) of fixes into degrees, by their zones: `zoneOf` has an index into
/// `zones` for each fix. Letters are bands (C to X), or N and S for the hemispheres where no other letter stands in the
/// column. RuntimeError 13 for a zone that is none or whose hemisphere is not told; `place` is file and column.
void project_utm_rows(std::span<TrackingFix> fixes, const std::vector<std::string>& zones,
                      const std::vector<std::uint8_t>& zoneOf, const std::string& place);

}  // namespace wxl::tracking
