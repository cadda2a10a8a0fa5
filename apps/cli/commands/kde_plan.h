#pragma once
#include "apps/cli/console.h"
#include "apps/cli/read_files.h"
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
    std::string Failure;  ///< why it will fail, in one line; empty when nothing is known to keep it
};

/// The distributions that the filled form would compute, in its order.
std::vector<PlannedDistribution> planned_run(kde_tool::frmKDE& form);

/// How a plan is printed.
struct PlanWishes {
    bool Json = false;
    bool Overwrite = false;  ///< what stands in the output folder will be replaced
};

/// Prints the plan; exit_code::kFailed when a setting keeps the run from starting, or no distribution can be computed.
int print_plan(kde_tool::frmKDE& form, const PlanWishes& wishes, Console& console);

/// Names of datasets and side files in the output folder, for which the run is refused.
std::vector<std::string> taken_names(kde_tool::frmKDE& form);

/// Says which options help against names that are taken.
void advise_on_names(Console& console);

/// RuntimeError 70 when a file that the filled form would write is one of those that the command reads.
void refuse_read_outputs(kde_tool::frmKDE& form, const ReadFiles& read);

/// Deletes what stands in the output folder under the names that the filled form would write, so that the run meets no
/// naming conflict. Nothing outside the folder, and nothing while another run is at work in it.
void delete_outputs(kde_tool::frmKDE& form);

}  // namespace wxl::cli
