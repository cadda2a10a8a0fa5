#pragma once
#include "apps/cli/console.h"
#include "apps/cli/read_files.h"
#include "kde_tool/frmKDE.h"

#include <cstdint>
#include <string>
#include <vector>

namespace wxl::cli {

/// How a dry run is printed.
struct DryRunOptions {
    bool Json = false;
    bool Overwrite = false;  ///< what stands in the output folder will be replaced
};

/// Prints what the filled form would compute; exit_code::kFailed when a setting keeps the run from starting, or no
/// distribution can be computed.
int print_dry_run(kde_tool::frmKDE& form, const DryRunOptions& options, Console& console);

/// Says of a run to come that points without an ID will be left out.
void report_coming_without_id(std::int64_t count, const std::string& idField, Console& console);

/// Names of datasets and side files in the output folder, for which the run is refused.
std::vector<std::string> taken_names(kde_tool::frmKDE& form);

/// Says which options help against names that are taken.
void advise_on_names(Console& console);

/// RuntimeError 70 when a file that the filled form would write is one of those that the command reads.
void refuse_read_outputs(kde_tool::frmKDE& form, const ReadFiles& read);

/// Deletes what stands in the output folder under the names that the filled form would write: see
/// analysis::delete_outputs.
void delete_outputs(kde_tool::frmKDE& form);

}  // namespace wxl::cli
