#pragma once
#include "apps/cli/commands/kde_output.h"
#include "apps/cli/console.h"
#include "apps/cli/tool_session.h"
#include "batch/plan.h"
#include "batch/range_plan.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <variant>

namespace CLI {
class App;
}

namespace wxl::cli {

/// Gives `command` the argument DIR.
void add_batch_folder(CLI::App& command, std::string& folder);

/// DIR as a run keeps its output folder, so that paths come out the same.
std::filesystem::path batch_folder(const std::string& folder);

/// RuntimeError 70 where a batch waits in the output folder to be finished.
void refuse_open_batch(const platform::IFileSystem& files, const std::filesystem::path& folder);
/// The task that is meant: the one given, else that of the environment variable SLURM_ARRAY_TASK_ID. WrongCall where
/// there is neither.
std::size_t task_number(const std::optional<std::size_t>& given);

/// Name of this machine.
std::string host_name();

/// A planned batch and the services to work on it. No question can be asked.
class BatchSession {
public:
    /// RuntimeError where the folder holds no usable plan.
    BatchSession(const std::string& folder, Console& console);

    const batch::PlanHead& Head() const;

    /// The plan of kernel densities, and that of ranges of autocorrelated fixes: one of them, the other null.
    const batch::Plan* Kernels() const { return std::get_if<batch::Plan>(&m_plan); }
    const batch::RangePlan* Ranges() const { return std::get_if<batch::RangePlan>(&m_plan); }

    const platform::Services& Services() const { return m_session.Services(); }
    utilities::Utilities& Geodata() { return m_session.Geodata(); }

    /// Whether the batch was merged before; tells so.
    bool IsMerged() const;

private:
    Console& m_console;
    ToolSession m_session;
    std::variant<batch::Plan, batch::RangePlan> m_plan;
};

/// Writes records of kernel densities as wxl kde does.
KdeOutput output_of(const batch::Plan& plan, bool json, Console& console);

}  // namespace wxl::cli
