#pragma once
#include "adapters/tracking/column_header.h"
#include "adapters/tracking/column_roles.h"

namespace wxl::tracking {

/// Finds the two columns of a position. By names: degrees before lengths (after them where the user said that they are
/// lengths), GPS before others, the first of several solutions; never the places of deployments, nests or dens. Else
/// one column of both coordinates, else by content. Refuses where there are none.
PositionColumns find_position(const ColumnHeader& header, const std::vector<ColumnProfile>& profiles,
                              const WantedColumns& wanted);

}  // namespace wxl::tracking
