#pragma once
#include "akde/range_run.h"
#include "apps/cli/console.h"
#include "apps/cli/json_values.h"

namespace wxl::cli {

/// The record as one JSON object, with the keys of wxl kde (null where they say nothing of this estimator) and those of
/// its own.
Json json_of(const akde::RangeRecord& record, const akde::RangeSettings& settings);

/// A line for the animal, and one for each percentage. `metres`: map units are metres, so that areas can be told in
/// square kilometres.
void print_range(const akde::RangeRecord& record, bool metres, Console& console);

}  // namespace wxl::cli
