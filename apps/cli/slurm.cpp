#include "apps/cli/slurm.h"

#include "apps/cli/child_processes.h"
#include "batch/task_state.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <fmt/format.h>
#include <memory>
#include <sys/wait.h>
#include <system_error>

namespace wxl::cli {

namespace {

namespace fs = std::filesystem;

constexpr double kMemoryFactor = 1.5;
constexpr double kMemoryBase = 256.0;  // megabytes
constexpr double kTimeFactor = 4.0;
constexpr double kTimeBase = 600.0;              // seconds
constexpr double kMergeSecondsPerResult = 2e-3;  // measured, with a wide margin
// Measured: the fixes, and 0.01 megabytes of a distribution where a page is asked for.
constexpr double kMergeMegabytesPerResult = 0.02;

/// A word for the shell, whatever it holds.
std::string quoted(const std::string& text) {
    std::string word = "'";
    for (const char c : text) word += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return word + "'";
}

/// The same; words that say nothing to a shell stay as they are.
std::string shell_word(const std::string& text) {
    constexpr const char* kPlain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_.,=";
    return text.empty() || text.find_first_not_of(kPlain) != std::string::npos ? quoted(text) : text;
}

/// A file name for an #SBATCH line: in quotes, "%" as itself.
std::string directive_path(const fs::path& path) {
    std::string text = "\"";
    for (const char c : path.string()) {
        if (static_cast<unsigned char>(c) < 0x20)
            platform::Raise(platform::error_number::kInvalidCall,
                            "The output folder's name holds a control character, which no batch script can: choose "
                            "another folder");
        if (c == '"' || c == '\\') text += '\\';
        if (c == '%') text += '%';
        text += c;
    }
    return text;
}

std::string time_text(double seconds) {
    const auto minutes = static_cast<long>(std::ceil(seconds / 60.0));
    return fmt::format("{}:{:02}:00", minutes / 60, minutes % 60);
}

std::string memory_text(double megabytes) {
    return fmt::format("{}M", static_cast<long>(std::ceil(megabytes)));
}

std::string head(const std::string& name, const std::string& log, const std::string& memory, const std::string& time,
                 const std::vector<std::string>& options) {
    std::string text = "#!/bin/sh\n#SBATCH --job-name=" + name + "\n#SBATCH --output=" + log + "\"\n";
    text +=
        "#SBATCH --ntasks=1\n#SBATCH --cpus-per-task=1\n#SBATCH --mem=" + memory + "\n#SBATCH --time=" + time + "\n";
    for (const std::string& option : options) text += "#SBATCH " + option + "\n";
    return text;
}

void refuse_line_breaks(const SlurmSettings& settings) {
    std::vector<std::string> lines = settings.Options;
    lines.insert(lines.end(), {settings.Memory, settings.Time});
    for (const std::string& line : lines)
        if (line.find_first_of("\r\n") != std::string::npos)
            platform::Raise(platform::error_number::kInvalidCall, "An option of sbatch is one line.");
}

}  // namespace

double megabytes_to_ask(double estimated) {
    return estimated * kMemoryFactor + kMemoryBase;
}

double seconds_to_ask(double estimated) {
    return estimated * kTimeFactor + kTimeBase;
}

std::string job_script(const BatchJob& job, const SlurmSettings& settings) {
    refuse_line_breaks(settings);
    // The directory may hold any character; the file's name is ours.
    std::string script = head(job.Name, directive_path(job.Log.parent_path()) + "/" + job.Log.filename().string(),
                              settings.Memory.empty() ? memory_text(job.Megabytes) : settings.Memory,
                              settings.Time.empty() ? time_text(job.Seconds) : settings.Time, settings.Options);
    if (!job.Array.empty()) script += "#SBATCH --array=" + batch::number_ranges(job.Array) + "\n#SBATCH --requeue\n";
    script += "#SBATCH --open-mode=append\nexec " + quoted(settings.Program.string());
    if (!job.Array.empty()) script += " -q";
    for (const std::string& word : job.Words) script += " " + shell_word(word);
    return script + "\n";
}

std::string array_script(const batch::PlanHead& plan, const SlurmSettings& settings) {
    double seconds = 0.0;
    double megabytes = 0.0;
    for (const std::size_t task : settings.Tasks) {
        seconds = std::max(seconds, plan.Tasks.at(task - 1).Seconds);
        megabytes = std::max(megabytes, plan.Tasks.at(task - 1).Megabytes);
    }
    BatchJob job;
    job.Name = "wxl-task";
    job.Megabytes = megabytes_to_ask(megabytes);
    job.Seconds = seconds_to_ask(seconds);
    job.Log = batch::BatchFiles(plan.Folder).Logs() / "task-%a.log";
    job.Array = settings.Tasks;
    job.Words = {"batch", "run", plan.Folder.string()};
    return job_script(job, settings);
}

std::string merge_script(const batch::PlanHead& plan, const SlurmSettings& settings) {
    const batch::BatchFiles files(plan.Folder);
    const auto results = static_cast<double>(plan.Distributions());
    std::error_code gone;  // the merge itself says so
    const auto points = fs::file_size(files.Points(), gone);
    BatchJob job;
    job.Name = "wxl-merge";
    job.Log = files.Logs() / "merge.log";
    job.Megabytes =
        megabytes_to_ask(gone ? 0.0 : static_cast<double>(points) / 1e6) + results * kMergeMegabytesPerResult;
    job.Seconds = seconds_to_ask(results * kMergeSecondsPerResult);
    job.Words = {"batch", "merge", plan.Folder.string()};
    return job_script(job, settings);
}

std::string submit_script(const fs::path& script, const std::vector<std::string>& options) {
    std::string command = "sbatch --parsable";
    for (const std::string& option : options) command += " " + quoted(option);
    command += " " + quoted(script.string()) + " 2>&1";
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(command.c_str(), "r"), [](FILE*) { return 0; });
    if (!pipe) platform::Raise(platform::error_number::kDeviceIo, "sbatch could not be started");
    std::string said;
    std::array<char, 256> bytes{};
    while (std::fgets(bytes.data(), bytes.size(), pipe.get()) != nullptr) said += bytes.data();
    const int status = ::pclose(pipe.get());
    said = std::string(platform::Trim(said.substr(0, said.find_last_not_of("\r\n") + 1)));
    if (WIFEXITED(status) && WEXITSTATUS(status) == 127)
        platform::Raise(platform::error_number::kFileNotFound,
                        "there is no sbatch on this machine: submit from a machine of the cluster, see the script with "
                        "--dry-run, or compute here with --engine local --jobs N");
    if (status != 0)
        platform::Raise(platform::error_number::kInvalidCall, fmt::format("sbatch {}: {}", ending_text(status), said));
    std::string job = said.substr(0, said.find(';'));
    if (job.empty() || job.find_first_not_of("0123456789") != std::string::npos)
        platform::Raise(platform::error_number::kInvalidCall,
                        fmt::format("sbatch was started and gave no number of a job, but \"{}\": see by squeue whether "
                                    "the job waits, and send it again if it does not",
                                    said));
    return job;
}

}  // namespace wxl::cli
