#pragma once
#include "apps/cli/commands/kde_output.h"
#include "apps/cli/console.h"
#include "apps/cli/tool_session.h"
#include "batch/plan.h"

#include <string>

namespace CLI {
class App;
}

namespace wxl::cli {

/// Gives `command` the argument DIR.
void add_batch_folder(CLI::App& command, std::string& folder);

/// A planned batch and the services to work on it. No question can be asked.
class BatchSession {
public:
    /// RuntimeError where the folder holds no usable plan.
    BatchSession(const std::string& folder, Console& console);

    const batch::Plan& Plan() const { return m_plan; }
    const platform::Services& Services() const { return m_session.Services(); }
    utilities::Utilities& Geodata() { return m_session.Geodata(); }

    /// Writes the batch's records as wxl kde does.
    KdeOutput Output(bool json);

private:
    Console& m_console;
    ToolSession m_session;
    batch::Plan m_plan;
};

}  // namespace wxl::cli
