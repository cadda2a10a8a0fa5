#pragma once
// What a test and the library of failing calls in the program it starts tell each other: a page of memory that both
// map.

#include <array>
#include <atomic>
#include <cstdint>

namespace wxl::tests {

/// Kinds of calls that can be made to fail.
enum class CallKind : std::uint32_t {
    kWrite = 1,
    kOpen = 2,
    kClose = 4,
    kRename = 8,
    kSync = 16,
    kFolder = 32,
    kTruncate = 64,
    kRemove = 128
};

inline constexpr std::uint32_t kWritingCalls = 127;  ///< all kinds but removing
inline constexpr std::uint32_t kRemovingCalls = 128;

/// Name of the environment variable that holds the page's file.
inline constexpr const char* kFaultPlanVariable = "WXL_FAULT_PLAN";

/// Which call fails, and what came of it. Only calls on files below `Folder` count, writing ones and those in `Kinds`.
struct FaultPlan {
    std::array<char, 1024> Folder;
    std::uint32_t Kinds;
    std::int32_t Code;    ///< errno of the failure; minus a signal that ends the program there
    std::int64_t FailAt;  ///< the n-th counted call fails; 0: none
    bool Lasting;         ///< a full disk: all later writes, new files and new folders fail as well
    std::atomic<std::int64_t> Counted;
    std::atomic<std::int64_t> Failed;
    std::uint32_t FailedKind;  ///< of the first failed call
    std::array<char, 1024> FailedPath;
    std::array<char, 1024> LastPath;  ///< of the last failed call
};

}  // namespace wxl::tests
