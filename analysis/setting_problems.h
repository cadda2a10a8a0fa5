#pragma once
// What is wrong with single settings, one sentence each: for a face that tells it beside a field before a run is asked
// for.

#include "analysis/settings.h"

#include <optional>
#include <string>

namespace wxl::analysis {

/// What is known of the fixes before a run.
struct KnownFixes {
    bool InDegrees = false;
    std::optional<double> SmallestHref = {};  ///< map units, as the run applies it, of the animals that have one
};

// Each tells what a run could not do with its setting: "" where all is well, and where the setting does not count with
// the others. An empty text is not told here, see undefined_setting and unusable_setting.

std::string layer_problem(const KnownFixes& fixes);

/// Of the chosen method's list: bandwidths or proportions above 0.
std::string list_problem(const Settings& settings);
std::string prefix_problem(const Settings& settings);

/// A number above 0.5, and no larger than the smallest bandwidth, as far as that is known before a search.
std::string cell_problem(const Settings& settings, const KnownFixes& fixes);
std::string scaling_problem(const Settings& settings);

/// Percentages above 0 and up to 100, in at least one form.
std::string percentages_problem(const Settings& settings);
std::string buffer_problem(const Settings& settings);

}  // namespace wxl::analysis
