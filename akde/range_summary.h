#pragma once
// Rows of the summary of a run: one for each animal and percentage; of an animal without a range one that says why.

#include "akde/range_record.h"
#include "analysis/summary_file.h"

#include <string>

namespace wxl::akde {

/// Areas are in square map units; `raster` names the distribution below the output folder, the one that an animal
/// without a range would have, too.
inline constexpr analysis::SummaryColumns kSummaryColumns = {
    "id,n,model,tau_position_s,tau_velocity_s,dof_area,h,dof_bandwidth,bias,weights,cell_size,volume,percent,area_low,"
    "area,area_high,reason,raster"};

/// Rows of a record, each ended by CR LF.
std::string summary_rows(const RangeRecord& record, const RangeSettings& settings);

}  // namespace wxl::akde
