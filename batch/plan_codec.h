#pragma once
// What the plans of all batches have in common, as JSON and back.
//
// Codecs take values apart by structured bindings: what is new in a value does not compile until it is kept. They are
// put together by name, so that nothing shifts.

#include "batch/json_codec.h"
#include "batch/plan.h"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace wxl::batch {

/// A number that a run can work with, within limits; any text could stand in the file. RuntimeError 5 for another.
inline constexpr double kLargest = 1e15;  ///< of any length, factor, time or size in a plan
double number_of(const Json& json, double least = -kLargest, double most = kLargest);
std::vector<double> numbers_of(const Json& json, double least = -kLargest);

/// What the tasks of a plan estimate.
inline constexpr std::string_view kKernelEstimator = "kde";
inline constexpr std::string_view kRangeEstimator = "akde";
std::string estimator_of(const Json& plan);

/// The head without its tasks, which want to know how many distributions there are, and without the output folder,
/// which is where the plan is found.
Json json_of_head(const PlanHead& plan, std::string_view estimator);
void take_head(const Json& json, PlanHead& plan);

Json json_of_tasks(const std::vector<PlannedTask>& tasks);

/// RuntimeError 9 unless each of the distributions is in one task.
std::vector<PlannedTask> tasks_of(const Json& json, std::size_t distributions);

Json json_of_reference(const platform::SpatialReference& reference);
platform::SpatialReference reference_of(const Json& json);

Json json_of_grid(const platform::RasterGeometry& grid);
platform::RasterGeometry grid_of(const Json& json);

/// Hands the plan of the batch in `output` to `read`. RuntimeError 53 when there is none, 57 for one that cannot be
/// used, or that another version of the program wrote.
void read_plan_file(const platform::IFileSystem& files, const std::filesystem::path& output,
                    const std::function<void(const Json&)>& read);

}  // namespace wxl::batch
