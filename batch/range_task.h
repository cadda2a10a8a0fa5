#pragma once
#include "akde/listener.h"
#include "batch/range_plan.h"
#include "batch/range_record_codec.h"
#include "batch/task_runner.h"
#include "platform/services.h"

#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace wxl::batch {

/// Computes one task of a batch of ranges of autocorrelated fixes, as TaskRun does one of kernel densities.
///
/// Datasets of an earlier run of the task are replaced as they are made again.
class RangeTask final : ITaskWork {
public:
    /// All outlive the object; the listener hears how the work goes. `host`: name of this machine.
    RangeTask(const platform::Services& services, const RangePlan& plan, akde::IListener& listener, std::string host)
        : m_services(services), m_plan(plan), m_listener(listener), m_host(std::move(host)) {}

    /// Errors as run_task. `met` is told of every animal as it is finished.
    TaskOutcome Run(std::size_t number, bool again, const std::function<void(const akde::RangeRecord&)>& met);

private:
    bool IsDone(std::size_t number) const override;
    void CheckNothingStands(std::size_t number) const override;
    void RemoveOwnDatasets(std::size_t /*number*/) override {}
    void Compute(std::size_t number) override;

    const platform::Services& m_services;
    const RangePlan& m_plan;
    akde::IListener& m_listener;
    std::string m_host;
    std::function<void(const akde::RangeRecord&)> m_met;
};

/// The entries of a task that is done, their files as the plan calls its output folder; errors as read_result.
std::vector<RangeEntry> read_ranges(const platform::IFileSystem& files, const RangePlan& plan, std::size_t task);

}  // namespace wxl::batch
