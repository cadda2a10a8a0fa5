#pragma once
#include "apps/cli/commands.h"
#include "apps/cli/commands/akde.h"
#include "apps/cli/commands/kde.h"
#include "apps/cli/commands/overlap.h"
#include "apps/cli/console.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace wxl::cli {

/// wxl batch plan: reads the layer once and writes the batch into the output folder.
struct BatchPlanOptions {
    KdeOptions Run;
    std::size_t Tasks = 0;
};
void register_batch_plan(CLI::App& command, BatchPlanOptions& options);
int run_batch_plan(const BatchPlanOptions& given, Console& console);

/// wxl batch plan-akde: the same for a run of wxl akde.
struct BatchPlanAkdeOptions {
    AkdeOptions Run;
    std::size_t Tasks = 0;
};
void register_batch_plan_akde(CLI::App& command, BatchPlanAkdeOptions& options);
int run_batch_plan_akde(const BatchPlanAkdeOptions& options, Console& console);

/// wxl batch run: one task.
struct BatchRunOptions {
    std::string Folder;
    std::optional<std::size_t> Task;
    bool Again = false;
};
void register_batch_run(CLI::App& command, BatchRunOptions& options);
int run_batch_run(const BatchRunOptions& options, Console& console);

/// wxl batch merge: the end of the run.
struct BatchMergeOptions {
    std::string Folder;
    bool Json = false;
    bool Clean = false;
};
void register_batch_merge(CLI::App& command, BatchMergeOptions& options);
int run_batch_merge(const BatchMergeOptions& options, Console& console);

/// wxl batch status: where every task stands.
struct BatchStatusOptions {
    std::string Folder;
    bool Json = false;
};
void register_batch_status(CLI::App& command, BatchStatusOptions& options);
int run_batch_status(const BatchStatusOptions& options, Console& console);

/// wxl batch submit: what is not done, to Slurm or to processes of this machine.
struct BatchSubmitOptions {
    std::string Folder;
    std::string Engine = "slurm";
    std::size_t Jobs = 1;
    std::string Memory;
    std::string Time;
    std::vector<std::string> Sbatch;
    bool DryRun = false;
};
void register_batch_submit(CLI::App& command, BatchSubmitOptions& options);
int run_batch_submit(const BatchSubmitOptions& options, Console& console);

/// wxl batch overlap: the comparison of the ranges of a folder of rasters in tasks.
struct BatchOverlapOptions {
    OverlapOptions Overlap;  ///< the folder is its input
    std::optional<std::size_t> Tasks;
    std::optional<std::size_t> Task;
    bool Again = false;
    bool Merge = false;
};
void register_batch_overlap(CLI::App& command, BatchOverlapOptions& options);
int run_batch_overlap(const BatchOverlapOptions& options, Console& console);

}  // namespace wxl::cli
