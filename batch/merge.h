#pragma once
#include "analysis/record.h"
#include "batch/plan.h"
#include "platform/services.h"

#include <cstdint>
#include <span>

namespace wxl::batch {

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
    void MarkMerge(std::int64_t earlierReport, bool done);

    const platform::Services& m_services;
    const Plan& m_plan;
    BatchFiles m_batch;
};

}  // namespace wxl::batch
