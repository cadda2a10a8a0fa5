#pragma once
// The comparison of the ranges of a run in tasks: each sums all pairs over some rows of tiles of the common grid.

#include "batch/task_run.h"
#include "batch/task_state.h"
#include "comparison/compared_ranges.h"
#include "platform/services.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace wxl::batch {

/// The rows of tiles of one task, from First to before End.
struct TileRowTask {
    std::uint32_t First = 0;
    std::uint32_t End = 0;
    friend bool operator==(const TileRowTask&, const TileRowTask&) = default;
};

/// All that is decided once. The rasters are those of the folder, in its order.
struct OverlapPlan {
    std::string Program;  ///< version of the program that planned it
    std::string Planned;  ///< date and time
    std::vector<double> Percents;
    bool Conditional = false;
    bool Normalise = false;
    double Scaling = 0.0;
    std::string TypedPercents;  ///< as they were typed, which the page repeats
    std::string TypedScaling;   ///< the same; empty: that of the folder
    platform::RasterGeometry Grid;
    std::vector<std::string> Animals;
    std::vector<double> Volumes;  ///< of the distributions as they were when it was planned
    std::vector<TileRowTask> Tasks;

    /// Tells this plan from every other, and from one of other rasters.
    std::string Id() const;
    friend bool operator==(const OverlapPlan&, const OverlapPlan&) = default;
};

/// The comparison as it was asked for, so that whoever runs the tasks can plan and merge it.
struct OverlapWish {
    std::size_t Tasks = 0;           ///< about so many
    std::vector<std::string> Words;  ///< further options of wxl batch overlap, for its plan and its merge
    friend bool operator==(const OverlapWish&, const OverlapWish&) = default;
};

/// The files of the stage in the folder of rasters `output`, in the folder "overlap" of its batch.
BatchFiles overlap_files(const std::filesystem::path& output);

/// About `tasks` tasks of the same number of rows of tiles.
std::vector<TileRowTask> row_tasks(const platform::RasterGeometry& grid, std::size_t tasks);

/// Publishes the wish. A plan of before is none of it, and a merge of before does not count.
void write_wish(const platform::Services& services, const BatchFiles& stage, const OverlapWish& wish);

/// Nothing where no comparison was asked for. RuntimeError 57 for a wish that cannot be used.
std::optional<OverlapWish> read_wish(const platform::IFileSystem& files, const BatchFiles& stage);

/// Publishes the plan. Results of an earlier plan do not belong to it.
void write_plan(const platform::Services& services, const BatchFiles& stage, const OverlapPlan& plan);

/// RuntimeError 53 when there is none, 57 for one that cannot be used, or that another version of the program wrote.
OverlapPlan read_overlap_plan(const platform::IFileSystem& files, const BatchFiles& stage, const std::string& program);

/// RuntimeError 57 where the rasters are not those that were planned.
void check_rasters(const OverlapPlan& plan, const comparison::ComparedRanges& ranges);

/// Computes the task `number` (from 1; RuntimeError 9 beyond the last). One that is done is left alone unless `again`;
/// one that was killed starts anew. A fault is also kept for the list of tasks. RuntimeError 70 while it runs already.
/// @param ranges the distributions as check_rasters wants them, read when they are needed
TaskOutcome run_overlap_task(const platform::Services& services, const BatchFiles& stage, const OverlapPlan& plan,
                             std::size_t number, bool again, const std::string& host,
                             const std::function<comparison::ComparedRanges()>& ranges,
                             const std::function<void(double)>& progress);

/// Where the task `number` (from 1) stands; one that was done for another plan is missing.
TaskState overlap_task_state(const platform::Services& services, const BatchFiles& stage, const OverlapPlan& plan,
                             std::size_t number);

/// Tasks that are neither done nor at work, ascending.
std::vector<std::size_t> open_overlap_tasks(const platform::Services& services, const BatchFiles& stage,
                                            const OverlapPlan& plan);

/// Tasks that are not done, with how they stand; "" when all are.
std::string unfinished_overlap(const platform::Services& services, const BatchFiles& stage, const OverlapPlan& plan);

/// The sums of all tasks, added up. RuntimeError 57 for a result that cannot be used.
std::vector<comparison::PairSums> added_tasks(const platform::IFileSystem& files, const BatchFiles& stage,
                                              const OverlapPlan& plan);

}  // namespace wxl::batch
