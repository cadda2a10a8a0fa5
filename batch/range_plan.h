#pragma once
#include "akde/range_record.h"
#include "akde/timed_animals.h"
#include "batch/plan.h"
#include "batch/planner.h"
#include "platform/services.h"

#include <cstddef>
#include <filesystem>
#include <memory>

namespace wxl::batch {

/// A run of ranges of autocorrelated fixes, with its animals as they stand in the stores of fixes and times.
struct PlannedRanges {
    akde::RangeSettings Wanted;  ///< of the full extent too, Reference is the grid
    akde::TimedAnimals Animals;  ///< in the order of the run and of the store, without their fixes
};

/// All that is decided once of a run of ranges of autocorrelated fixes: PlanHead as Plan has it.
struct RangePlan : PlanHead, PlannedRanges {};

/// Writes the batch of a run into its output folder: stores of fixes and times, folders, and last the plan. Whose full
/// extent is asked for, has that grid in Reference. RuntimeError 70 as akde::lock_output.
RangePlan plan_ranges(const platform::Services& services, const akde::RangeSettings& settings,
                      const akde::TimedAnimals& animals, const PlanWishes& wishes);

/// As read_plan. RuntimeError 57 for the plan of other estimates, too.
RangePlan read_range_plan(const platform::IFileSystem& files, const std::filesystem::path& output);

/// Whether the batch in `output` estimates ranges of autocorrelated fixes; errors as read_plan.
bool is_range_plan(const platform::IFileSystem& files, const std::filesystem::path& output);

/// The animals of a batch with their fixes.
class TimedStore {
public:
    /// RuntimeError 57 where the stores cannot be used, or do not belong to the plan. All outlive the object.
    TimedStore(const platform::IFileSystem& files, const RangePlan& plan);
    ~TimedStore();
    TimedStore(const TimedStore&) = delete;
    TimedStore& operator=(const TimedStore&) = delete;

    /// One animal, in the plan's order; all of them.
    akde::TimedAnimal Read(std::size_t animal) const;
    akde::TimedAnimals ReadAll() const;

private:
    struct Stores;
    const RangePlan& m_plan;
    std::unique_ptr<Stores> m_stores;
};

}  // namespace wxl::batch
