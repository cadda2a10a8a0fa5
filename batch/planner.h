#pragma once
#include "analysis/analysis.h"
#include "analysis/output_names.h"
#include "batch/plan.h"
#include "platform/services.h"

#include <filesystem>
#include <span>
#include <string>
#include <vector>

namespace wxl::batch {

/// What the caller adds to a prepared run.
struct PlanWishes {
    std::string Program;          ///< version of the program
    std::filesystem::path Input;  ///< the layer's file or folder
    std::size_t Tasks = 0;        ///< how many tasks; 0: as many as is usual
    bool ToldWhole = false;       ///< as PlannedRun::ToldWhole
};

/// Writes the batch of a prepared run: store of points, folders, and last the plan. RuntimeError 58 when datasets of
/// the run's names stand in the output folder.
Plan plan_batch(const platform::Services& services, const analysis::PreparedRun& run, const PlanWishes& wishes);

/// Fills what every plan tells; its tasks are for the caller.
void begin_plan(const platform::Services& services, const std::filesystem::path& folder, const PlanWishes& wishes,
                PlanHead& plan);

/// The folders that tasks write into.
void make_folders(const platform::Services& services, const PlanHead& plan, const std::vector<std::string>& subfolders);

/// Deletes the batch in the folder with all its results, not its datasets. Nothing when there is none.
void remove_batch(const platform::Services& services, const std::filesystem::path& output);

/// The files that the dataset `input` consists of: the file itself and those that belong to a shapefile, or all files
/// of a folder, sorted, with their digests. RuntimeError 57 when one cannot be read.
std::vector<InputFile> input_files(const platform::IFileSystem& files, const std::filesystem::path& input);

/// The datasets of one distribution of the plan: the raster, then the isopleths.
std::vector<analysis::Dataset> datasets_of(const Plan& plan, std::size_t distribution);

}  // namespace wxl::batch
