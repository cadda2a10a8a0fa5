#pragma once
#include "akde/listener.h"
#include "akde/range_record.h"
#include "batch/range_plan.h"
#include "platform/services.h"

#include <functional>

namespace wxl::batch {

/// Ends a batch of ranges whose tasks are all done, as a single run ends: the summary and the package, in the order of
/// the animals. The listener hears what tasks told of each animal, before `met` does. A merge may be killed and
/// repeated. RuntimeError 70 while a task or another analysis is at work in the folder, 57 for a result that cannot be
/// used.
akde::RangeOutcome merge_ranges(const platform::Services& services, const RangePlan& plan, akde::IListener& listener,
                                const std::function<void(const akde::RangeRecord&)>& met);

}  // namespace wxl::batch
