#include "adapters/gdal/gdal_support.h"
#include "apps/cli/console.h"
#include "apps/cli/memory_shortage.h"
#include "apps/cli/program.h"

#include <csignal>
#include <iostream>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

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
    wxl::files::LimitGdal();
    wxl::cli::Console console(std::cout, std::cerr, isatty(STDERR_FILENO) != 0);
    wxl::cli::watch_memory();
    return wxl::cli::exit_code_after(
        wxl::cli::run_program(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc), console, kFencing));
}
