#include "apps/cli/memory_shortage.h"

#include "adapters/gdal/gdal_support.h"
#include "apps/cli/console.h"

#include <cstdint>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <new>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <unistd.h>
#include <utility>

namespace wxl::cli {

namespace {

bool g_memoryRanOut = false;

/// Given back when memory runs out, so that there is room to tell it.
void* g_reserve = nullptr;
constexpr std::size_t kReserve = 1 << 20;  // bytes

constexpr std::string_view kAdvice =
    "wxl: memory ran out: allow the program more (ulimit -v), or take larger cells or fewer fixes\n";

void note_shortage() {
    g_memoryRanOut = true;
    std::free(std::exchange(g_reserve, nullptr));
    throw std::bad_alloc();
}

[[noreturn]] void end_for_shortage() {
    // Nothing here needs memory.
    [[maybe_unused]] const auto ignored = ::write(STDERR_FILENO, kAdvice.data(), kAdvice.size());
    std::_Exit(exit_code::kFailed);
}

/// An exception that leaves a destructor, as one of a shortage may.
void end_terminated() {
    if (g_memoryRanOut) end_for_shortage();
    std::abort();
}

/// Whether the process once took nearly all addresses that it may have. Libraries in C tell a shortage in words of
/// their own, or as something else that failed.
bool came_near_limit() {
    constexpr std::uint64_t kNear = 2048;  // kB
    rlimit limit = {};
    if (::getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return false;
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        std::uint64_t peak = 0;
        if (word == "VmPeak:" && status >> peak) return peak + kNear > limit.rlim_cur / 1024;
    }
    return false;
}

}  // namespace

void watch_memory() {
    g_reserve = std::malloc(kReserve);
    std::set_new_handler(note_shortage);
    std::set_terminate(end_terminated);
    files::SetShortageAction(end_for_shortage);
}

int exit_code_after(int code) {
    const bool failed = code != exit_code::kDone;
    if (!g_memoryRanOut && !(failed && came_near_limit())) return code;
    std::cout.flush();
    std::cerr.flush();
    end_for_shortage();
}

}  // namespace wxl::cli
