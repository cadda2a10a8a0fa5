#include "adapters/gdal/gdal_support.h"
#include "apps/cli/console.h"
#include "apps/cli/program.h"

#include <csignal>
#include <cstdlib>
#include <iostream>
#include <new>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

/// Memory ran out at some time. What libraries then left half-made may wait for itself when it is taken down at the end
/// of the program, so that it is not.
bool g_memoryRanOut = false;

void note_shortage() {
    g_memoryRanOut = true;
    throw std::bad_alloc();
}

// The counters of a coverage build are written beside its objects.
#ifdef WXL_COUNTED
constexpr auto kFencing = wxl::cli::Fencing::kNone;
#else
constexpr auto kFencing = wxl::cli::Fencing::kFenced;
#endif

}  // namespace

int main(int argc, char** argv) {
    std::ios::sync_with_stdio(false);
    // A file that reaches the limit of its size is a failure of that write, which is told; not the end of the program.
    std::signal(SIGXFSZ, SIG_IGN);
    wxl::files::LimitGdalCache();
    wxl::cli::Console console(std::cout, std::cerr, isatty(STDERR_FILENO) != 0);
    std::set_new_handler(note_shortage);
    const int code =
        wxl::cli::run_program(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc), console, kFencing);
    if (!g_memoryRanOut) return code;
    std::cout.flush();
    std::cerr.flush();
    std::_Exit(code);
}
