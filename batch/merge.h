#pragma once
#include "analysis/record.h"
#include "batch/plan.h"
#include "platform/services.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace wxl::batch {

/// Takes the output folder for a merge, and sweeps what killed tasks left half-written. RuntimeError 70 while a task or
/// another analysis is at work in it.
std::unique_ptr<platform::IFolderLock> lock_for_merge(platform::IFolderLocks& locks, const PlanHead& plan,
                                                      const std::vector<std::string>& subfolders);

/// Says of a batch that it is being merged, or was. `earlierReport`: how long the report of earlier runs is.
void mark_merge(const platform::Services& services, const BatchFiles& batch, std::int64_t earlierReport, bool done);

/// Ends a batch whose tasks are all done, as a single run ends: the report, in the order of the animals, and what its
/// observers make of the records.
///
/// The report is written beside its place and put there in one step, so that a merge may be killed and repeated. The
/// messages of the distributions are shown where a single run would have shown them.
class Merge {
public:
    Merge(const platform::Services& services, const Plan& plan)
        : m_services(services), m_plan(plan), m_batch(plan.Frame.Folder) {}

    /// RuntimeError 70 while a task or another analysis is at work in the folder, 57 for a result that cannot be used.
    void Run(std::span<analysis::IRunObserver* const> observers);

private:
    void WriteReport(std::span<analysis::IRunObserver* const> observers);
    std::int64_t EarlierReport();

    const platform::Services& m_services;
    const Plan& m_plan;
    BatchFiles m_batch;
};

}  // namespace wxl::batch
