#pragma once
#include "movement_models/fit.h"
#include "movement_models/track.h"

#include <string>
#include <vector>

namespace wxl::movement_models {

/// Below this effective sample size of the area data are few; below the other the range is hardly crossed.
inline constexpr double kFewEffectiveFixes = 4.0;
inline constexpr double kHardlyCrossed = 3.0;

/// What a fit says about the animal, for people.
struct Verdict {
    bool Resident = false;              ///< a range was crossed often enough, and positions level off
    std::string Text;                   ///< one sentence or more
    std::vector<std::string> Warnings;  ///< the parts of it that ask for care
    friend bool operator==(const Verdict&, const Verdict&) = default;
};

/// Why there is no model; "" where there is one. `firstConflict` says when the first two fixes stand at two places; ""
/// where there are none.
std::string problem_text(const PreparedTrack& track, const std::string& firstConflict);

/// What was done to the fixes, and where the method fell back: for a report. One sentence each.
std::vector<std::string> notes_on(const PreparedTrack& track, const FittedModel& fit, Estimation asked);

/// @param rises whether the variogram still rises where it is shown to end
Verdict verdict_of(const PreparedTrack& track, const FittedModel& fit, bool rises);

/// "35 s", "12.5 min", "9.3 h", "21.4 days": three digits, in the unit that suits.
std::string duration_text(double seconds);

}  // namespace wxl::movement_models
