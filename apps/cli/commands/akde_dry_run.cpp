#include "apps/cli/commands/akde_dry_run.h"

#include "akde/dry_run.h"
#include "analysis/diagnosis.h"
#include "apps/cli/commands/kde_dry_run.h"
#include "apps/cli/json_values.h"
#include "platform/text.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <string>

namespace wxl::cli {

namespace {

using akde::ComingRange;

Json json_of(const ComingRange& coming) {
    return {{"id", json_value(coming.Id)},
            {"n", coming.Given},
            {"n_used", coming.Used},
            {"first", json_or_null(coming.First)},
            {"last", json_or_null(coming.Last)},
            {"megabytes", coming.Megabytes},
            {"seconds", coming.Seconds},
            {"raster", coming.Raster},
            {"failure", json_or_null(coming.Failure)}};
}

std::string line_of(const ComingRange& coming) {
    const std::string period =
        coming.First.empty() ? std::string() : fmt::format(", {} to {}", coming.First, coming.Last);
    return fmt::format("{}: {}{}, about {:.3g} MB and {:.2g} s, raster {}{}", platform::ValueText(coming.Id),
                       analysis::fixes_text(static_cast<std::int64_t>(coming.Given)), period, coming.Megabytes,
                       coming.Seconds, coming.Raster, coming.Failure.empty() ? "" : ": will fail: " + coming.Failure);
}

std::vector<std::string> names_of(const std::vector<std::filesystem::path>& files,
                                  const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const std::filesystem::path& file : files) names.push_back(file.lexically_relative(folder).string());
    return names;
}

}  // namespace

int print_akde_dry_run(const akde::RangeSettings& settings, const akde::TimedAnimals& animals,
                       const std::vector<std::filesystem::path>& standing, bool json, Console& console) {
    const std::vector<ComingRange> coming = akde::dry_run(settings, animals);
    const std::vector<std::string> taken = names_of(standing, settings.Folder);
    Json list = Json::array();
    for (const ComingRange& range : coming) {
        if (json)
            list.push_back(json_of(range));
        else
            console.Result(line_of(range));
    }
    if (json)
        console.Text(
            json_text(Json{{"animals", list}, {"points_without_id", animals.WithoutId}, {"names_taken", taken}}));
    report_coming_without_id(animals.WithoutId, settings.Fields.Id, console);
    if (!taken.empty())
        console.Problem(fmt::format(
            "wxl: the run will be refused, because the output folder holds {}: --overwrite replaces them, --out names "
            "another folder",
            fmt::join(taken, ", ")));
    const bool hopeless = std::ranges::all_of(coming, [](const auto& range) { return !range.Failure.empty(); });
    if (hopeless) console.Problem("wxl: no distribution can be computed in this way");
    return hopeless || !taken.empty() ? exit_code::kFailed : exit_code::kDone;
}

}  // namespace wxl::cli
