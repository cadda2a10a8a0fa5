#pragma once
#include "platform/features.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace wxl::movement {

/// One selected fix: where it is and what the player shows of it.
struct TrackFix {
    std::int64_t FID = 0;
    std::optional<platform::Point> Location;
    platform::FieldValue Time1;  ///< missing where the table or the row has none; so are the others
    platform::FieldValue Date;   ///< of the field "Date", else "Date_"
    platform::FieldValue MePerSec;
    platform::FieldValue Dist;
};

/// Reads the selected fixes once, ascending by object ID.
std::vector<TrackFix> gather_fixes(platform::IFeatureClass& features, platform::ISelectionSet& selection);

/// "Meters per sec: 2 Distance: 120"; a missing value reads 0. RuntimeError 13 for a text that is not a number.
std::string stats_text(const TrackFix& fix);

/// "Date: 5/17/2003 at 14:02"; a missing value reads "No data".
std::string date_and_time_text(const TrackFix& fix);

/// The object ID of the last feature that the cursor returns; 0 when it returns none.
std::int64_t last_fid(platform::IFeatureCursor& cursor);

}  // namespace wxl::movement
