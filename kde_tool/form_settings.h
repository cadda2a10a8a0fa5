#pragma once
// The form as a value, and a value as the form.

#include "analysis/settings.h"

#include <optional>

namespace wxl::kde_tool {

class frmKDE;

/// What the controls hold, each text read once.
analysis::Settings settings_of(const frmKDE& form);

/// Puts the settings into the controls of a loaded form, as a user would: buttons are clicked, texts typed. The chosen
/// layer, ID field and "selected features only" stay: they belong to the map.
void fill(frmKDE& form, const analysis::Settings& settings);

/// Turns the pages as a user does before a run, so that the largest reference bandwidth is known; computes the indices
/// of independence where they are wanted; and sets the buffer: to `buffer`, or without one to a width that suits the
/// bandwidths.
void turn_pages(frmKDE& form, bool independence, const std::optional<analysis::TypedNumber>& buffer);

}  // namespace wxl::kde_tool
