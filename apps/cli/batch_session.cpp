#include "apps/cli/batch_session.h"

#include <CLI/CLI.hpp>
#include <filesystem>

namespace wxl::cli {

namespace {

namespace fs = std::filesystem;

/// As wxl kde keeps its output folder, so that paths come out the same.
fs::path folder_of(const std::string& folder) {
    fs::path path = fs::absolute(folder).lexically_normal();
    return path.has_filename() ? path : path.parent_path();
}

}  // namespace

void add_batch_folder(CLI::App& command, std::string& folder) {
    command.add_option("DIR", folder, "Output folder of the batch")->required();
}

BatchSession::BatchSession(const std::string& folder, Console& console)
    : m_console(console), m_session(console, {}), m_plan(batch::read_plan(*Services().Files, folder_of(folder))) {
    batch::refuse_links(*Services().Folders, m_plan);
}

KdeOutput BatchSession::Output(bool json) {
    return {m_console, m_plan.Frame.Folder, json, m_plan.Frame.Reference.MetersPerUnit == 1.0};
}

}  // namespace wxl::cli
