#pragma once
#include "apps/cli/console.h"
#include "batch/plan.h"
#include "batch/task_state.h"
#include "platform/services.h"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace wxl::cli {

/// Enough tasks for each process that all end at about the same time.
inline constexpr std::size_t kTasksPerJob = 8;

/// Gives `command` --jobs.
void add_jobs_option(CLI::App& command, std::size_t& jobs);

/// Tasks of a batch that are neither done nor at work, ascending.
std::vector<std::size_t> open_tasks(const platform::Services& services, const batch::PlanHead& plan);

/// Tasks as processes of this program.
struct TaskProcesses {
    batch::BatchFiles Files;         ///< of the tasks
    std::vector<std::string> Words;  ///< of the command line; "--task K" follows
    std::filesystem::path Folder;    ///< that wxl batch submit takes
    std::vector<std::size_t> Tasks;  ///< in the order in which they start
    std::function<batch::TaskState(std::size_t)> StateOf = {};
    std::size_t Lines = 0;       ///< that all print, for progress; 0: told by tasks
    std::string Unit = "tasks";  ///< what the lines are
};

/// Runs them, `jobs` at a time, with one progress bar. Returns whether all came to their end; where one did not, or the
/// user stops the work, the others are ended, and the console says what happened and how to go on.
bool run_processes(const TaskProcesses& processes, std::size_t jobs, Console& console);

/// Runs the tasks `tasks` of the batch as processes of this program, `jobs` at a time, the costliest first, with one
/// progress bar over their distributions. Returns whether all came to their end; where one did not, or the user stops
/// the work, the others are ended, and the console says what happened and how to go on.
bool run_tasks_here(const platform::Services& services, const batch::PlanHead& plan, std::vector<std::size_t> tasks,
                    std::size_t jobs, Console& console);

/// What keeps a batch from being merged, in words: "missing 3,5-7", "failed 2 (REASON)"; empty when nothing does.
std::string unfinished_text(const platform::Services& services, const batch::PlanHead& plan);

}  // namespace wxl::cli
