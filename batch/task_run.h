#pragma once
#include "analysis/record.h"
#include "batch/plan.h"
#include "batch/task_runner.h"
#include "platform/services.h"

#include <cstddef>
#include <functional>
#include <string>

namespace wxl::utilities {
class Utilities;
}

namespace wxl::batch {

/// Computes one task of a batch: reads its own fixes from the store, writes its datasets, and last its result.
///
/// What an earlier, broken-off run of the same task left is replaced; datasets that stand although the task was never
/// begun belong to somebody else and are RuntimeError 58. RuntimeError 70 when the task runs already, or another
/// analysis is at work in the folder. A fault is also kept for the list of tasks. Killed at any moment, the task leaves
/// whole datasets, temporary ones and no result.
class TaskRun final : ITaskWork {
public:
    /// All outlive the object; the utilities are connected. `host`: name of this machine, for the list of tasks.
    TaskRun(const platform::Services& services, utilities::Utilities& geodata, const Plan& plan, std::string host)
        : m_services(services), m_geodata(geodata), m_plan(plan), m_batch(plan.Frame.Folder), m_host(std::move(host)) {}

    /// Runs the task `number` (from 1; RuntimeError 9 beyond the last). `again`: also when it is done. `met` is told of
    /// every distribution as it is finished.
    TaskOutcome Run(std::size_t number, bool again, const std::function<void(const analysis::AnimalRecord&)>& met);

private:
    bool IsDone(std::size_t number) const override;
    void CheckNothingStands(std::size_t number) const override;
    void RemoveOwnDatasets(std::size_t number) override;
    void Compute(std::size_t number) override;
    std::filesystem::path FolderOf(std::size_t distribution) const;

    const platform::Services& m_services;
    utilities::Utilities& m_geodata;
    const Plan& m_plan;
    BatchFiles m_batch;
    std::string m_host;
    std::function<void(const analysis::AnimalRecord&)> m_met;
};

}  // namespace wxl::batch
