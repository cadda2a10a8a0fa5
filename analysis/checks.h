#pragma once
// What keeps a run from starting, as far as its settings alone tell.

#include "analysis/settings.h"

#include <optional>
#include <string>

namespace wxl::analysis {

/// The message of the first setting that is not defined, or nothing.
std::optional<std::string> undefined_setting(const Settings& settings);

/// The message of the first list (bandwidths or proportions, then percentages) with a piece that is no number, or
/// nothing.
std::optional<std::string> malformed_list(const Settings& settings);

/// The message of the first setting that a run cannot start with (layer, ID field, folder text, cell size, scaling
/// factor, buffer), or nothing.
std::optional<std::string> unusable_setting(const Settings& settings);

/// The first message of all three, in their order, or nothing.
std::optional<std::string> refusal_of(const Settings& settings);

}  // namespace wxl::analysis
