#include "adapters/files/gdal_support.h"
#include "apps/cli/console.h"
#include "apps/cli/program.h"

#include <iostream>
#include <string>
#include <unistd.h>
#include <vector>

int main(int argc, char** argv) {
    std::ios::sync_with_stdio(false);
    wxl::files::LimitGdalCache();
    wxl::cli::Console console(std::cout, std::cerr, isatty(STDERR_FILENO) != 0);
    return wxl::cli::run_program(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc), console);
}
