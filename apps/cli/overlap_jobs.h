#pragma once
#include "apps/cli/console.h"
#include "apps/cli/slurm.h"
#include "batch/overlap_stage.h"
#include "platform/services.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace wxl::cli {

/// The comparison that was asked for in a folder of rasters, and where it stands.
struct OverlapJobs {
    std::filesystem::path Folder;  ///< of the rasters
    batch::BatchFiles Stage;
    batch::OverlapWish Wish;
    std::optional<batch::OverlapPlan> Plan;  ///< nothing: planned when the batch is merged
    bool Merged = false;

    /// Tasks that are to be computed; of a comparison that is not planned as many as were asked for.
    std::vector<std::size_t> Open(const platform::Services& services) const;
};

/// Nothing where no comparison was asked for. RuntimeError 57 where it cannot be used.
std::optional<OverlapJobs> overlap_jobs_in(const platform::Services& services, const std::filesystem::path& folder);

/// What its jobs ask for: about four bytes for each cell and animal, and 8e8 products of cells in a second.
struct OverlapCost {
    double Megabytes = 0.0;
    double Seconds = 0.0;  ///< of one task
};

/// Of the plan; without one of `animals` with rasters of `cells` cells.
OverlapCost overlap_cost(const OverlapJobs& jobs, double animals, double cells);

/// The scripts of the job that plans, of the job array over `tasks`, and of the job that merges.
std::string overlap_plan_script(const OverlapJobs& jobs, const OverlapCost& cost, const SlurmSettings& settings);
std::string overlap_array_script(const OverlapJobs& jobs, const OverlapCost& cost, const SlurmSettings& settings);
std::string overlap_merge_script(const OverlapJobs& jobs, const OverlapCost& cost, const SlurmSettings& settings);

/// Plans where that is to be done, computes what is open in `jobs` processes, and merges.
int run_overlap_here(const platform::Services& services, OverlapJobs overlap, std::size_t jobs, Console& console);

}  // namespace wxl::cli
