#pragma once
#include "apps/cli/console.h"
#include "kde_tool/frmKDE.h"

#include <optional>
#include <string>
#include <vector>

namespace wxl::cli {

/// What a run would compute for one animal and one value. Bandwidths of a search are not known before it: HREF stands
/// in for them.
struct PlannedDistribution {
    platform::FieldValue Id;
    std::size_t SampleSize = 0;
    std::optional<double> Href;  ///< map units, of the fixes as they are
    double Bandwidth = 0.0;      ///< map units
    platform::RasterGeometry Grid;
    double Megabytes = 0.0;  ///< memory at the peak
    double Seconds = 0.0;    ///< rough time on one core of 2020
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
