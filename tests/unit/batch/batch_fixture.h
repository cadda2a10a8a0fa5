#pragma once
// A batch over a small map in memory.

#include "analysis/analysis.h"
#include "batch/merge.h"
#include "batch/planner.h"
#include "batch/point_store.h"
#include "batch/task_run.h"
#include "batch/task_state.h"
#include "platform/runtime_error.h"
#include "tests/unit/kde_tool/run_fixture.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace wxl::batch {

/// The fault that ends `work`; number 0 when none does.
inline platform::RuntimeError fault_of(const std::function<void()>& work) {
    try {
        work();
    } catch (const platform::RuntimeError& fault) {
        return fault;
    }
    return {0, {}};
}

/// Two animals (3 with four fixes, 7 with two) and two bandwidths: K3_b1, K3_b2, K7_b1 and K7_b2, with polygons.
struct BatchTest : kde_tool::RunTest {
    const BatchFiles Batch{"/out"};

    BatchTest() {
        Disk->AddFolder("/data");
        Disk->AddFile("/data/bears.shp", "abc");
        AddTwoAnimals();
        Open();
        Form->txtBuffer.Text = "600";
        Form->txtBW.Text = "100,150";
        WantPolygons("95,50");
    }

    /// The batch of the filled form in `tasks` tasks.
    Plan PlanOf(std::size_t tasks) {
        std::optional<Plan> plan;
        Form->HandOver([&](const analysis::PreparedRun& run) {
            plan = plan_batch(Services, run, {"wxl 1", "/data/bears.shp", tasks});
        });
        EXPECT_TRUE(plan) << Messages.Last().Text;
        return plan.value_or(Plan());
    }

    TaskOutcome RunTask(const Plan& plan, std::size_t task, bool again = false) {
        return TaskRun(Services, *Geodata, plan, "here").Run(task, again, [this](const analysis::AnimalRecord& record) {
            Met.push_back(record.RasterName);
        });
    }

    void RunAll(const Plan& plan) {
        for (std::size_t task = 1; task <= plan.Tasks.size(); ++task) RunTask(plan, task);
    }

    void MergeAll(const Plan& plan) {
        analysis::IRunObserver* observers[] = {&Keeper};
        Merge(Services, plan).Run(observers);
    }

    std::vector<std::string> Met;  ///< rasters in the order in which tasks made them
};

}  // namespace wxl::batch
