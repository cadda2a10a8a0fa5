#include "tests/robustness/limited_run.h"

#include "adapters/gdal/gdal_support.h"
#include "apps/cli/console.h"
#include "apps/cli/program.h"

#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace wxl::tests {

namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

std::string content(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

void set_limit(int what, rlim_t value) {
    const rlimit limit{value, value};
    ::setrlimit(static_cast<__rlimit_resource>(what), &limit);
}

[[noreturn]] void run_child(const std::vector<std::string>& arguments, const std::filesystem::path& out,
                            const std::filesystem::path& err) {
    set_limit(RLIMIT_CPU, kSanitized ? 80 : 20);
    set_limit(RLIMIT_CORE, 0);
    if (!kSanitized) set_limit(RLIMIT_DATA, rlim_t{1} << 30);
    ::alarm(60);
    ::dup2(::open(err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), STDERR_FILENO);
    int code = 0;
    {
        std::ofstream outStream(out, std::ios::binary);
        std::ofstream errStream(err, std::ios::binary | std::ios::app);
        cli::Console console(outStream, errStream, false);
        code = cli::run_program(arguments, console);
    }
    ::_exit(code);
}

}  // namespace

bool is_sanitized() {
    return kSanitized;
}

LimitedRun run_limited(const std::vector<std::string>& arguments, const std::filesystem::path& folder) {
    files::RegisterGdal();
    files::LimitGdal();
    const auto out = folder / "limited.out";
    const auto err = folder / "limited.err";
    const pid_t child = ::fork();
    if (child == 0) run_child(arguments, out, err);
    int status = 0;
    rusage used = {};
    ::wait4(child, &status, 0, &used);
    LimitedRun run;
    if (WIFEXITED(status)) run.Code = WEXITSTATUS(status);
    if (WIFSIGNALED(status)) run.Signal = WTERMSIG(status);
    run.Out = content(out);
    run.Err = content(err);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    run.CpuSeconds = seconds(used.ru_utime) + seconds(used.ru_stime);
    run.Megabytes = static_cast<double>(used.ru_maxrss) / 1024.0;
    return run;
}

}  // namespace wxl::tests
