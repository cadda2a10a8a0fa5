#pragma once
// Runs of a program in which every call that would change a file is written down (Linux, by ptrace).

#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace wxl::tests {

/// What a watched program did.
struct WatchedRun {
    int Code = 0;           ///< exit code, minus the signal that ended it
    std::string WhyNot;     ///< why it could not be watched; empty: it was
    std::string Said = {};  ///< standard output and error
    std::set<std::string> Writes =
        {};  ///< whole paths, links resolved, of what it tried to write, make, rename or delete
    std::vector<std::string> Programs = {};  ///< that it tried to start
};

/// Runs `arguments` (program first) in `folder` with the temporary folder `temporary`. Its children are watched too.
/// Attempts count whether they succeed or not.
WatchedRun watch_writes(const std::vector<std::string>& arguments, const std::filesystem::path& folder,
                        const std::filesystem::path& temporary);

}  // namespace wxl::tests
