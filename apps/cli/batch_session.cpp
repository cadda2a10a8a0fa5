#include "apps/cli/batch_session.h"

#include "batch/task_state.h"
#include "platform/runtime_error.h"

#include <array>
#include <charconv>
#include <CLI/CLI.hpp>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <unistd.h>

namespace wxl::cli {

namespace {

namespace fs = std::filesystem;

std::variant<batch::Plan, batch::RangePlan> plan_in(const platform::IFileSystem& files, const fs::path& folder) {
    if (batch::is_range_plan(files, folder)) return batch::read_range_plan(files, folder);
    return batch::read_plan(files, folder);
}

}  // namespace

fs::path batch_folder(const std::string& folder) {
    fs::path path = fs::absolute(folder).lexically_normal();
    return path.has_filename() ? path : path.parent_path();
}

void add_batch_folder(CLI::App& command, std::string& folder) {
    command.add_option("DIR", folder, "Output folder of the batch")->required();
}

std::size_t task_number(const std::optional<std::size_t>& given) {
    if (given) return *given;
    const char* index = std::getenv("SLURM_ARRAY_TASK_ID");
    if (index == nullptr) throw WrongCall("say which task by --task K; there is no SLURM_ARRAY_TASK_ID");
    const std::string text = index;
    std::size_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size())
        throw WrongCall("SLURM_ARRAY_TASK_ID is no number: " + text);
    return number;
}

std::string host_name() {
    std::array<char, 256> name{};
    return ::gethostname(name.data(), name.size() - 1) == 0 ? std::string(name.data()) : std::string("?");
}

void refuse_open_batch(const platform::IFileSystem& files, const fs::path& folder) {
    if (batch::has_open_batch(files, folder))
        platform::Raise(platform::error_number::kPermissionDenied,
                        folder.string() +
                            " holds a planned batch that is not merged yet: finish it (wxl batch status tells how it "
                            "stands), choose another folder, or give --overwrite");
}

BatchSession::BatchSession(const std::string& folder, Console& console)
    : m_console(console), m_session(console, {}), m_plan(plan_in(*Services().Files, batch_folder(folder))) {
    if (const batch::RangePlan* ranges = Ranges())
        batch::refuse_links(*Services().Folders, *ranges, akde::subfolders_of(ranges->Animals));
    else
        batch::refuse_links(*Services().Folders, *Kernels());
}

const batch::PlanHead& BatchSession::Head() const {
    return std::visit([](const batch::PlanHead& plan) -> const batch::PlanHead& { return plan; }, m_plan);
}

bool BatchSession::IsMerged() const {
    if (!batch::is_merged(*Services().Files, batch::BatchFiles(Head().Folder))) return false;
    m_console.Note("this batch is merged already");
    return true;
}

KdeOutput output_of(const batch::Plan& plan, bool json, Console& console) {
    KdeOutput output(console, plan.Frame.Folder, json, plan.Frame.Reference);
    if (plan.ToldWhole) output.TellWhole(plan.Frame.Reference);
    return output;
}

}  // namespace wxl::cli
