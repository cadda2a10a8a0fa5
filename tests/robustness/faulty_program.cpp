#include "tests/robustness/faulty_program.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <new>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace wxl::tests {
namespace {

namespace fs = std::filesystem;

/// The page shared with the program.
class SharedPlan {
public:
    SharedPlan(const fs::path& file, const fs::path& work, const Fault& fault) {
        const int descriptor = ::open(file.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        if (descriptor < 0 || ::ftruncate(descriptor, sizeof(FaultPlan)) != 0)
            throw std::runtime_error("no fault plan " + file.string());
        void* page = ::mmap(nullptr, sizeof(FaultPlan), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
        ::close(descriptor);
        if (page == MAP_FAILED) throw std::runtime_error("no fault plan " + file.string());
        m_plan = new (page) FaultPlan{};
        std::strncpy(m_plan->Folder.data(), work.c_str(), m_plan->Folder.size() - 1);
        m_plan->Kinds = fault.Kinds;
        m_plan->Code = fault.Code;
        m_plan->FailAt = fault.At;
        m_plan->Lasting = fault.Lasting;
    }
    ~SharedPlan() { ::munmap(m_plan, sizeof(FaultPlan)); }
    SharedPlan(const SharedPlan&) = delete;
    SharedPlan& operator=(const SharedPlan&) = delete;

    const FaultPlan& Plan() const { return *m_plan; }

private:
    FaultPlan* m_plan;
};

void redirect(int descriptor, const fs::path& file) {
    const int target = ::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (target >= 0) ::dup2(target, descriptor);
}

[[noreturn]] void become_wxl(const std::vector<std::string>& arguments, const fs::path& scratch) {
    redirect(STDOUT_FILENO, scratch / "out.txt");
    redirect(STDERR_FILENO, scratch / "err.txt");
    ::setenv("LD_PRELOAD", WXL_FAILING_CALLS, 1);
    ::setenv(kFaultPlanVariable, (scratch / "plan").c_str(), 1);
    // A sanitizer wants to be the first library, and need not be.
    const char* given = std::getenv("ASAN_OPTIONS");
    ::setenv("ASAN_OPTIONS", (std::string(given != nullptr ? given : "") + ":verify_asan_link_order=0").c_str(), 1);
    std::vector<char*> call = {const_cast<char*>("wxl")};
    for (const std::string& argument : arguments) call.push_back(const_cast<char*>(argument.c_str()));
    call.push_back(nullptr);
    ::execv(WXL_PROGRAM, call.data());
    ::_exit(127);
}

}  // namespace

std::string bytes_of(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

FaultyRun run_with_fault(const std::vector<std::string>& arguments, const fs::path& work, const fs::path& scratch,
                         const Fault& fault) {
    const SharedPlan shared(scratch / "plan", work, fault);
    const pid_t child = ::fork();
    if (child == 0) become_wxl(arguments, scratch);
    int status = 0;
    ::waitpid(child, &status, 0);
    const FaultPlan& plan = shared.Plan();
    return {.Code = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status),
            .Out = bytes_of(scratch / "out.txt"),
            .Err = bytes_of(scratch / "err.txt"),
            .Counted = plan.Counted,
            .Failed = plan.Failed > 0,
            .Kind = plan.FailedKind,
            .Path = plan.FailedPath.data(),
            .LastPath = plan.LastPath.data()};
}

std::string dataset_of(const std::string& path, const fs::path& folder) {
    std::string name = fs::path(path).lexically_relative(folder).begin()->string();
    if (name.front() == '.') name.erase(0, 1);
    return name.substr(0, name.find('.'));
}

Snapshot snapshot_of(const fs::path& folder) {
    Snapshot files;
    if (!fs::exists(folder)) return files;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        if (entry.is_regular_file())
            files.emplace_back(entry.path().lexically_relative(folder).string(), bytes_of(entry.path()));
    std::sort(files.begin(), files.end());
    return files;
}

std::string without_times(std::string report) {
    for (const std::string label : {"Start time: ", "Finish time: "})
        for (std::size_t at = report.find(label); at != std::string::npos; at = report.find(label, at + 1)) {
            const std::size_t begin = at + label.size();
            report.erase(begin, std::min(report.find("\r\n", begin), report.size()) - begin);
        }
    return report;
}

}  // namespace wxl::tests
