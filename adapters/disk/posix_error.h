#pragma once
#include <cstdint>
#include <filesystem>

namespace wxl::files {

/// Number of the run-time error that a failed call of the system stands for. A missing name is 53 (or 76 when its
/// folder is missing too).
std::int32_t ErrorNumberOf(int code, const std::filesystem::path& path);

/// Throws the run-time error of errno value `code`: the usual description, the path and, where that says more, the
/// system's reason.
[[noreturn]] void RaiseErrno(int code, const std::filesystem::path& path);

/// Throws RuntimeError 5 for a pipe, a device or a socket where a file should be: reading or writing could wait for
/// ever. `mode` is its st_mode; a folder is RuntimeError 70.
[[noreturn]] void RaiseNoFile(std::uint32_t mode, const std::filesystem::path& path);

}  // namespace wxl::files
