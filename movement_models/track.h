#pragma once
// One animal's fixes in order of time, as the models need them.

#include "platform/values.h"

#include <cstddef>
#include <span>
#include <vector>

namespace wxl::movement_models {

/// Fixes of different times. Times count from the first fix, positions from their mean: sums keep their digits whatever
/// the coordinate system.
struct Track {
    std::vector<double> Times;  ///< seconds, strictly ascending, the first is 0
    std::vector<double> X;      ///< map units from Origin
    std::vector<double> Y;
    platform::Point Origin;

    std::size_t Size() const { return Times.size(); }
    double Duration() const { return Times.empty() ? 0.0 : Times.back(); }
    double ShortestStep() const;  ///< 0 for fewer than two fixes
    double MedianStep() const;    ///< 0 for fewer than two fixes
};

/// Why no model can be fitted.
enum class TrackProblem {
    kNone,
    kTooFewFixes,         ///< fewer than three fixes of different times
    kNeverMoved,          ///< all fixes at one place
    kTwoPlacesAtOneTime,  ///< no correlated model has a likelihood
};

/// Fixes prepared for the models, and what had to be done to them.
struct PreparedTrack {
    TrackProblem Problem = TrackProblem::kNone;
    Track Fixes;                            ///< whatever the problem; of fixes of one time only the first stands
    std::vector<std::size_t> Order;         ///< of every fix in Fixes: its place among the given ones
    bool Sorted = true;                     ///< the given times were in order
    std::size_t Given = 0;                  ///< fixes given
    std::size_t Repeats = 0;                ///< same time and place as another, left out
    std::size_t Conflicts = 0;              ///< same time as another, at another place
    std::size_t FirstConflict[2] = {0, 0};  ///< places of the first such pair among the given ones
    bool OnALine = false;                   ///< all fixes on one line: no anisotropic model
};

/// Orders fixes by time (a stable sort) and takes exact repeats out.
/// @param times seconds from any moment, finite, one for each fix
/// @param fixes finite positions in map units
PreparedTrack prepare_track(std::span<const double> times, std::span<const platform::Point> fixes);

}  // namespace wxl::movement_models
