#pragma once
#include "apps/cli/console.h"
#include "apps/cli/program.h"

#include <sstream>
#include <string>
#include <vector>

namespace wxl::cli {

/// What a run of the program said and how it ended.
struct Ran {
    int Code;
    std::string Out;
    std::string Err;
};

/// Runs the program in process, as `wxl ARGUMENTS...` with both streams redirected to files.
inline Ran run_wxl(std::vector<std::string> arguments) {
    std::ostringstream out;
    std::ostringstream err;
    Console console(out, err, false);
    const int code = run_program(std::move(arguments), console);
    return {code, out.str(), err.str()};
}

}  // namespace wxl::cli
