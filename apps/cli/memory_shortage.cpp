#include "apps/cli/memory_shortage.h"

#include "adapters/gdal/gdal_support.h"
#include "apps/cli/console.h"

#include <array>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <iostream>
#include <new>
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

std::terminate_handler g_otherwise = std::abort;

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
    try {
        if (const std::exception_ptr thrown = std::current_exception()) std::rethrow_exception(thrown);
    } catch (const std::bad_alloc&) {
        // Thrown by a library whose memory is not that of operator new.
        end_for_shortage();
    } catch (...) {
        g_otherwise();
    }
    std::abort();
}

/// Whether the process once took nearly all addresses that it may have. Libraries in C tell a shortage in words of
/// their own, or as something else that failed. Needs no memory.
bool came_near_limit() {
    constexpr std::uint64_t kNear = 4096;  // kB
    rlimit limit = {};
    if (::getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return false;
    std::array<char, 4096> status{};
    const int file = ::open("/proc/self/status", O_RDONLY | O_CLOEXEC);
    const ssize_t got = file < 0 ? -1 : ::read(file, status.data(), status.size() - 1);
    if (file >= 0) ::close(file);
    const char* peak = got > 0 ? std::strstr(status.data(), "VmPeak:") : nullptr;
    return peak != nullptr && std::strtoull(peak + 7, nullptr, 10) + kNear > limit.rlim_cur / 1024;
}

bool seen_shortage() {
    return g_memoryRanOut || came_near_limit();
}

/// Libraries in C end the program where they have no memory for themselves.
void end_aborted(int signal) {
    if (seen_shortage()) end_for_shortage();
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

}  // namespace

void watch_memory() {
    g_reserve = std::malloc(kReserve);
    std::set_new_handler(note_shortage);
    g_otherwise = std::set_terminate(end_terminated);
    std::signal(SIGABRT, end_aborted);
    files::SetShortageAction(end_for_shortage, seen_shortage);
}

int exit_code_after(int code) {
    const bool failed = code != exit_code::kDone;
    if (!g_memoryRanOut && !(failed && came_near_limit())) return code;
    std::cout.flush();
    std::cerr.flush();
    end_for_shortage();
}

}  // namespace wxl::cli
