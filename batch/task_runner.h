#pragma once
#include "batch/plan.h"
#include "platform/services.h"

#include <cstddef>
#include <string>

namespace wxl::batch {

enum class TaskOutcome {
    kDone,
    kWasDone  ///< before, and its datasets stand
};

/// What one kind of task does when it runs.
class ITaskWork {
public:
    virtual ~ITaskWork() = default;

    /// Whether the task is done, and its datasets stand.
    virtual bool IsDone(std::size_t number) const = 0;

    /// RuntimeError 58 where datasets of the task's names stand although it was never begun.
    virtual void CheckNothingStands(std::size_t number) const = 0;

    /// What an earlier, broken-off run of the task left goes.
    virtual void RemoveOwnDatasets(std::size_t number) = 0;

    /// Writes the datasets, and last the result.
    virtual void Compute(std::size_t number) = 0;
};

/// Runs the task `number` (from 1; RuntimeError 9 beyond the last) on the machine `host`. `again`: also when it is
/// done. RuntimeError 70 when the task runs already, or another analysis is at work in the folder. A fault is also kept
/// for the list of tasks.
TaskOutcome run_task(const platform::Services& services, const PlanHead& plan, std::size_t number,
                     const std::string& host, bool again, ITaskWork& work);

/// The present date and time as marks tell them.
std::string now_of(const platform::Services& services);

}  // namespace wxl::batch
