#pragma once
#include "analysis/convex_polygon_layer.h"
#include "analysis/range_package.h"
#include "analysis/record.h"
#include "analysis/summary_table.h"
#include "apps/cli/console.h"
#include "apps/cli/console_messages.h"
#include "apps/cli/fix_import.h"
#include "apps/cli/input_layer.h"
#include "batch/planner.h"
#include "results_page/results_page.h"

#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace wxl::kde_tool {
class frmKDE;
}

namespace wxl::cli {

class KdeOutput;

/// wxl kde: the batch kernel density analysis. An option that was not given leaves what the settings file or the form's
/// defaults say.
struct KdeOptions {
    InputOptions Points;
    FixOptions Fixes;     ///< how a tracking file is read, where INPUT is one
    std::string IdField;  ///< empty: found
    std::string Where;
    std::optional<std::string> Out;
    std::optional<std::string> Prefix;
    std::optional<std::string> CellSize;
    std::optional<std::string> Scaling;
    std::optional<std::string> Bandwidth;
    std::optional<std::string> Extent;
    std::optional<std::string> Isopleths;
    std::optional<std::string> ConvexPolygons;
    std::string Reach;
    std::string RasterFormat = "GRID";
    bool Adaptive = false;
    bool Rescale = false;
    bool Independence = false;
    bool Lines = false;
    bool Polygons = false;
    bool Donuts = false;
    bool VerboseLog = false;
    bool Html = false;
    std::optional<bool> GeoPackage;  ///< nothing: where the program chooses
    std::string Settings;
    std::string SaveSettings;
    std::size_t GroupBy = 0;
    std::size_t Jobs = 1;
    bool Json = false;
    bool DryRun = false;
    bool Overwrite = false;
    bool ReadyMade = false;  ///< the program chose what the call left open
    Answers Questions;
};

/// What describes a run: input, output, kernel, isopleths, questions.
void add_kde_options(CLI::App& command, KdeOptions& options);

void register_kde(CLI::App& command, KdeOptions& options);

/// What a batch of the run's is to be, in `tasks` tasks (0: as many as is usual).
batch::PlanWishes plan_wishes_of(const KdeOptions& options, std::size_t tasks);

/// The exit code of a run whose own is `code`, with its summary, polygons and page; where those two stand is printed.
int with_extras(int code, const analysis::SummaryTable& summary, const analysis::ConvexPolygonLayer& polygons,
                const analysis::RangePackage& ranges, const results_page::ResultsPage& page, bool json,
                Console& console);

/// The exit code of a run. Tells of distributions that could not be computed, and of isopleths that could not be made.
int exit_code_of(analysis::RunOutcome outcome, const KdeOutput& output, Console& console);

/// Advises a run that was refused for names that are taken. Boxes know nothing of options.
void report_refusal(kde_tool::frmKDE& form, analysis::RunOutcome outcome, Console& console);

/// Completes the options, fills the analysis form, presses OK and writes what came of it.
int run_kde(const KdeOptions& given, Console& console);

}  // namespace wxl::cli
