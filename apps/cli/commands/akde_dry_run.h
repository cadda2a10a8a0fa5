#pragma once
#include "akde/range_record.h"
#include "apps/cli/console.h"

#include <filesystem>
#include <vector>

namespace wxl::cli {

/// Prints what wxl akde would compute, as wxl kde --dry-run does. `standing`: what keeps the run from starting.
/// exit_code::kFailed where there is something, or no range can be computed.
int print_akde_dry_run(const akde::RangeSettings& settings, const akde::TimedAnimals& animals,
                       const std::vector<std::filesystem::path>& standing, bool json, Console& console);

}  // namespace wxl::cli
