#pragma once
#include <filesystem>
#include <string>
#include <vector>

namespace wxl::tests {

/// How a run of the program in a process of its own ended, and what it used.
struct LimitedRun {
    int Code = -1;   ///< exit code; -1 when a signal ended it
    int Signal = 0;  ///< the signal that ended it, or 0
    std::string Out;
    std::string Err;
    double CpuSeconds = 0.0;
    double Megabytes = 0.0;  ///< most memory that was in use at once
};

/// Runs `wxl ARGUMENTS...` in a child of this process, so that a crash is an outcome like any other. The child is ended
/// when it has used 20 s of a processor or when 60 s have passed, and cannot allocate more than 1 GB (without
/// sanitizers, which take more for themselves). `folder` holds its output meanwhile.
LimitedRun run_limited(const std::vector<std::string>& arguments, const std::filesystem::path& folder);

/// Whether this build has a sanitizer, which takes time and memory for itself.
bool is_sanitized();

}  // namespace wxl::tests
