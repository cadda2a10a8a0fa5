#include "batch/range_merge.h"

#include "akde/range_results.h"
#include "batch/merge.h"
#include "batch/range_task.h"
#include "batch/results_in_order.h"

#include <utility>

namespace wxl::batch {

akde::RangeOutcome merge_ranges(const platform::Services& services, const RangePlan& plan, akde::IListener& listener,
                                const std::function<void(const akde::RangeRecord&)>& met) {
    const auto lock = lock_for_merge(*services.Locks, plan, akde::subfolders_of(plan.Animals));
    // The package alone wants to see the fixes once more.
    const akde::TimedAnimals animals =
        plan.Wanted.GeoPackage ? TimedStore(*services.Files, plan).ReadAll() : plan.Animals;
    akde::RangeResults results(plan.Wanted, services, listener, animals);
    ResultsInOrder<RangeEntry> entries(plan,
                                       [&](std::size_t task) { return read_ranges(*services.Files, plan, task); });
    for (std::size_t i = 0; i < entries.Size(); ++i) {
        RangeEntry entry = entries.Take(i);
        for (const ToldLine& line : entry.Lines) line.Problem ? listener.Problem(line.Text) : listener.Note(line.Text);
        met(results.Add(std::move(entry.Record)));
    }
    akde::RangeOutcome outcome = results.Publish(false);
    mark_merge(services, BatchFiles(plan.Folder), 0, true);
    return outcome;
}

}  // namespace wxl::batch
