#pragma once
#include "apps/cli/console.h"
#include "kde_tool/frmKDE.h"
#include "kde_tool/run_estimate.h"

#include <optional>
#include <string>
#include <vector>

namespace wxl::cli {

/// What a run would compute for one animal and one value.
struct PlannedDistribution {
    platform::FieldValue Id;
    std::size_t SampleSize = 0;
    std::optional<double> Href;  ///< map units, of the fixes as they are
    kde_tool::DistributionEstimate Cost;
    std::string RasterName;
};

/// The distributions that the filled form would compute, in its order.
std::vector<PlannedDistribution> planned_run(kde_tool::frmKDE& form);

/// Prints the plan; exit_code::kFailed when a setting keeps the run from starting.
int print_plan(kde_tool::frmKDE& form, bool json, Console& console);

/// Deletes what stands in the output folder under the names that the filled form would write, so that the run meets no
/// naming conflict. Nothing outside the folder, and nothing while another run is at work in it.
void delete_outputs(kde_tool::frmKDE& form);

}  // namespace wxl::cli
