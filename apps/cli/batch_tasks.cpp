#include "apps/cli/batch_tasks.h"

#include "apps/cli/child_processes.h"
#include "apps/cli/option_checks.h"

#include <algorithm>
#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <numeric>
#include <utility>

namespace wxl::cli {

namespace {

using batch::TaskStage;

/// Largest first, so that no long task is left over at the end.
void sort_by_cost(std::vector<std::size_t>& tasks, const batch::PlanHead& plan) {
    std::stable_sort(tasks.begin(), tasks.end(), [&](std::size_t a, std::size_t b) {
        return plan.Tasks.at(a - 1).Seconds > plan.Tasks.at(b - 1).Seconds;
    });
}

std::size_t distributions_of(const std::vector<std::size_t>& tasks, const batch::PlanHead& plan) {
    return std::accumulate(tasks.begin(), tasks.end(), std::size_t{0}, [&](std::size_t sum, std::size_t task) {
        return sum + plan.Tasks.at(task - 1).Work.size();
    });
}

void report_how_to_go_on(const std::filesystem::path& folder, std::size_t jobs, Console& console) {
    console.Problem(fmt::format("wxl: what is done is kept; wxl batch submit \"{}\" --engine local --jobs {} goes on",
                                folder.string(), jobs));
}

/// A task that ended badly has mostly said why.
std::string why(const TaskProcesses& processes, std::size_t task, int status) {
    const batch::TaskState state = processes.StateOf(task);
    if (state.Stage == TaskStage::kFailed && !state.Fault.empty()) return "failed: " + state.Fault;
    return ending_text(status) + "; see " + (processes.Files.Logs() / fmt::format("task-{}.log", task)).string();
}

constexpr int kMostJobs = 1024;

}  // namespace

void add_jobs_option(CLI::App& command, std::size_t& jobs) {
    command.add_option("--jobs", jobs, "Compute in N processes side by side; the results are the same")
        ->type_name("N")
        ->check(whole_number_between(1, kMostJobs))
        ->capture_default_str();
}

std::vector<std::size_t> open_tasks(const platform::Services& services, const batch::PlanHead& plan) {
    const batch::BatchFiles files(plan.Folder);
    std::vector<std::size_t> open;
    for (std::size_t task = 1; task <= plan.Tasks.size(); ++task) {
        const TaskStage stage = batch::state_of(*services.Files, *services.Locks, files, task).Stage;
        if (stage == TaskStage::kMissing || stage == TaskStage::kFailed) open.push_back(task);
    }
    return open;
}

bool run_processes(const TaskProcesses& processes, std::size_t jobs, Console& console) {
    const bool byLines = processes.Lines > 0;
    const std::size_t all = byLines ? processes.Lines : std::max<std::size_t>(processes.Tasks.size(), 1);
    std::vector<std::string> call = processes.Words;
    call.insert(call.begin(), this_program().string());
    call.insert(call.end(), {"--task", ""});
    const HeldSignals signals;
    ChildProcesses children(signals);
    std::size_t met = 0;
    for (auto next = processes.Tasks.begin(); next != processes.Tasks.end() || children.Running() > 0;) {
        for (; next != processes.Tasks.end() && children.Running() < jobs; ++next) {
            call.back() = std::to_string(*next);
            children.Start(*next, call, processes.Files.Logs() / fmt::format("task-{}.log", *next));
        }
        for (const ChildProcesses::News& news : children.Wait()) {
            met += byLines ? news.Lines : static_cast<std::size_t>(news.Ended);
            if (!news.Ended || news.Status == 0) continue;
            console.EndProgress();
            console.Problem(fmt::format("wxl: task {} {}", news.Number, why(processes, news.Number, news.Status)));
            report_how_to_go_on(processes.Folder, jobs, console);
            return false;
        }
        console.Progress(static_cast<double>(met) / static_cast<double>(all),
                         fmt::format("{} of {} {}", met, all, processes.Unit));
        if (!HeldSignals::Came()) continue;
        console.EndProgress();
        console.Problem("wxl: stopped");
        report_how_to_go_on(processes.Folder, jobs, console);
        return false;
    }
    console.EndProgress();
    return true;
}

bool run_tasks_here(const platform::Services& services, const batch::PlanHead& plan, std::vector<std::size_t> tasks,
                    std::size_t jobs, Console& console) {
    sort_by_cost(tasks, plan);
    const batch::BatchFiles files(plan.Folder);
    TaskProcesses processes{files, {"batch", "run", plan.Folder.string()}, plan.Folder, std::move(tasks)};
    processes.StateOf = [&](std::size_t task) {
        return batch::state_of(*services.Files, *services.Locks, files, task);
    };
    processes.Lines = std::max<std::size_t>(distributions_of(processes.Tasks, plan), 1);
    processes.Unit = "distributions";
    return run_processes(processes, jobs, console);
}

std::string unfinished_text(const platform::Services& services, const batch::PlanHead& plan) {
    const batch::BatchFiles files(plan.Folder);
    std::vector<std::size_t> missing;
    std::vector<std::size_t> running;
    std::vector<std::string> parts;
    for (std::size_t task = 1; task <= plan.Tasks.size(); ++task) {
        const batch::TaskState state = batch::state_of(*services.Files, *services.Locks, files, task);
        if (state.Stage == TaskStage::kMissing) missing.push_back(task);
        if (state.Stage == TaskStage::kRunning) running.push_back(task);
        if (state.Stage == TaskStage::kFailed) parts.push_back(fmt::format("failed {} ({})", task, state.Fault));
    }
    if (!running.empty()) parts.insert(parts.begin(), "running " + batch::number_ranges(running));
    if (!missing.empty()) parts.insert(parts.begin(), "missing " + batch::number_ranges(missing));
    return fmt::format("{}", fmt::join(parts, ", "));
}

}  // namespace wxl::cli
