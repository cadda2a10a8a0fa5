#include "batch/task_runner.h"

#include "batch/json_codec.h"
#include "platform/clock.h"
#include "platform/runtime_error.h"

#include <chrono>
#include <memory>

namespace wxl::batch {
namespace {

constexpr int kLockAttempts = 40;
constexpr std::chrono::milliseconds kLockPause{50};

/// Whoever lists the tasks holds a lock for a moment.
std::unique_ptr<platform::IFolderLock> lock_task(const platform::Services& services,
                                                 const std::filesystem::path& folder, std::size_t number) {
    std::string holder;
    for (int attempt = 0; attempt < kLockAttempts; ++attempt) {
        if (auto lock = services.Locks->Take(folder, holder)) return lock;
        services.Clock->Wait(kLockPause);
    }
    platform::Raise(platform::error_number::kPermissionDenied,
                    "task " + std::to_string(number) + " runs already (" + holder + ")");
}

std::unique_ptr<platform::IFolderLock> share_folder(platform::IFolderLocks& locks,
                                                    const std::filesystem::path& folder) {
    std::string holder;
    auto lock = locks.Share(folder, holder);
    if (!lock)
        platform::Raise(platform::error_number::kPermissionDenied,
                        "another analysis is writing into the output folder (" + holder + ")");
    return lock;
}

/// The mark of a start stands before the first dataset does: without it, what stands is not this batch's.
void clear(const platform::Services& services, const BatchFiles& batch, std::size_t number, const std::string& host,
           ITaskWork& work) {
    platform::IFileSystem& files = *services.Files;
    const bool begun = files.FileExists(batch.Started(number));
    for (const std::filesystem::path& mark : {batch.Result(number), batch.Failure(number)})
        if (files.FileExists(mark)) files.DeleteFile(mark, true);
    if (!begun) work.CheckNothingStands(number);
    write_json(files, batch.Started(number), {{"started", now_of(services)}, {"host", json_of_text(host)}});
    if (begun) work.RemoveOwnDatasets(number);
}

}  // namespace

std::string now_of(const platform::Services& services) {
    return platform::DateTimeText(services.Clock->Now());
}

TaskOutcome run_task(const platform::Services& services, const PlanHead& plan, std::size_t number,
                     const std::string& host, bool again, ITaskWork& work) {
    if (number == 0 || number > plan.Tasks.size())
        platform::Raise(
            platform::error_number::kSubscript,
            "the batch has the tasks 1 to " + std::to_string(plan.Tasks.size()) + ", not " + std::to_string(number));
    const BatchFiles batch(plan.Folder);
    platform::MakeOwnFolder(*services.Files, *services.Folders, batch.Task(number));
    const auto own = lock_task(services, batch.Task(number), number);
    const auto shared = share_folder(*services.Locks, plan.Folder);
    if (!again && work.IsDone(number)) return TaskOutcome::kWasDone;
    try {
        clear(services, batch, number, host, work);
        work.Compute(number);
    } catch (...) {
        const platform::RuntimeError fault = platform::CurrentError();
        write_json(*services.Files, batch.Failure(number),
                   {{"finished", now_of(services)}, {"fault", json_of_text(fault.Description)}});
        throw platform::RuntimeError(fault);
    }
    return TaskOutcome::kDone;
}

}  // namespace wxl::batch
