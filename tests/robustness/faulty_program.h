#pragma once
// Runs of the wxl program in which one call of the system fails.

#include "tests/support/failing_calls.h"

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace wxl::tests {

/// What is to fail: the n-th call below the work folder, of the given kinds, with this errno.
struct Fault {
    std::int64_t At = 0;   ///< 0: nothing fails
    int Code = ENOSPC;     ///< minus a signal: the program is killed there
    bool Lasting = false;  ///< the disk stays full
    std::uint32_t Kinds = kWritingCalls;
};

/// How a run ended. `Code` is the exit code, or minus the number of the signal that ended it.
struct FaultyRun {
    int Code = 0;
    std::string Out = {};
    std::string Err = {};
    std::int64_t Counted = 0;
    bool Failed = false;  ///< the call that was to fail was reached
    std::uint32_t Kind = 0;
    std::string Path = {};      ///< of the call that failed
    std::string LastPath = {};  ///< of the last one
};

/// Runs `wxl ARGUMENTS...`; calls count below `work`; `scratch` holds the plan and what the program says.
FaultyRun run_with_fault(const std::vector<std::string>& arguments, const std::filesystem::path& work,
                         const std::filesystem::path& scratch, const Fault& fault);

/// The name that a user knows for a file on the way to its place: "K1" for ".K1.4711.part/hdr.adf" below the folder.
std::string dataset_of(const std::string& path, const std::filesystem::path& folder);

/// Bytes of all files below a folder, by their paths in it.
using Snapshot = std::vector<std::pair<std::string, std::string>>;
Snapshot snapshot_of(const std::filesystem::path& folder);

std::string bytes_of(const std::filesystem::path& file);

/// A report without its times.
std::string without_times(std::string report);

}  // namespace wxl::tests
