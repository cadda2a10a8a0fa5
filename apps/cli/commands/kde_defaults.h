#pragma once
#include "apps/cli/commands/kde.h"

namespace wxl::cli {

/// Whether the call leaves it to the program to choose: it names no settings file, and leaves out the ID field, the
/// output folder or the cell size.
bool leaves_choices(const KdeOptions& options);

/// The options with what the call leaves to the program: the folder NAME_ranges in the present one, cells that suit
/// each bandwidth, the smallest extent, isopleths of 95 and 50 % as polygons, the page. What was given stays, and a
/// call that leaves nothing open stays as it is. The ID field is found when the layer is open.
KdeOptions completed(const KdeOptions& given);

}  // namespace wxl::cli
