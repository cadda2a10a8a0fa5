#pragma once
#include "batch/json_codec.h"
#include "batch/plan.h"
#include "batch/record_codec.h"
#include "platform/folder_lock.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace wxl::batch {

enum class TaskStage {
    kMissing,  ///< not begun, or broken off without a word
    kRunning,  ///< a process is at work on it
    kFailed,   ///< ended with a fault
    kDone
};

/// Where a task stands.
struct TaskState {
    TaskStage Stage = TaskStage::kMissing;
    std::string Started;   ///< date and time of the last start; empty: never
    std::string Finished;  ///< of a task that is done or failed
    double Seconds = 0.0;  ///< that it took, when it is done
    std::string Fault;     ///< why it failed
    std::string Host;      ///< machine of the last start
};

/// When and where a task was done.
struct TaskHead {
    std::string Batch;  ///< the plan's ID
    std::string Started;
    std::string Finished;
    double Seconds = 0.0;
    std::string Host;
    friend bool operator==(const TaskHead&, const TaskHead&) = default;
};

/// What a task of kernel densities leaves when it is done.
struct TaskResult : TaskHead {
    std::vector<TaskEntry> Entries;  ///< in the order of the task's work
};

void write_result(platform::IFileSystem& files, const BatchFiles& batch, std::size_t task, const TaskResult& result);

/// The result of a task that is done. RuntimeError 53 when there is none, 76 when the task was never begun, 57 for one
/// that cannot be used, or that does not hold what the plan wants of the task.
TaskResult read_result(const platform::IFileSystem& files, const BatchFiles& batch, const Plan& plan, std::size_t task);

/// The same of entries of any kind. `take` keeps an entry and returns its distribution.
void write_entries(platform::IFileSystem& files, const BatchFiles& batch, std::size_t task, const TaskHead& head,
                   Json entries);
TaskHead read_entries(const platform::IFileSystem& files, const BatchFiles& batch, const PlanHead& plan,
                      std::size_t task, const std::function<std::size_t(const Json&)>& take);

/// Where the task `number` (from 1) stands. Looks at its lock only when it was begun and did not end.
TaskState state_of(const platform::IFileSystem& files, platform::IFolderLocks& locks, const BatchFiles& batch,
                   std::size_t number);

/// Whether the batch was merged.
bool is_merged(const platform::IFileSystem& files, const BatchFiles& batch);

/// Whether a batch is planned in the folder that was not merged yet, so that another run would spoil it.
bool has_open_batch(const platform::IFileSystem& files, const std::filesystem::path& output);

/// Numbers as a job array takes them: "1-3,7".
std::string number_ranges(const std::vector<std::size_t>& numbers);

}  // namespace wxl::batch
