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

}  // namespace wxl::files
