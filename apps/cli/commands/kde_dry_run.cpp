#include "apps/cli/commands/kde_dry_run.h"

#include "analysis/checks.h"
#include "analysis/diagnosis.h"
#include "analysis/dry_run.h"
#include "analysis/output_names.h"
#include "analysis/range_package.h"
#include "analysis/subfolders.h"
#include "analysis/summary_rows.h"
#include "apps/cli/json_values.h"
#include "kde_tool/form_settings.h"
#include "platform/runtime_error.h"
#include "platform/text.h"
#include "results_page/results_page.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>

namespace wxl::cli {

namespace {

using analysis::AnimalFixes;
using analysis::BandwidthMethod;
using analysis::ComingDistribution;
using analysis::ExtentMode;
using analysis::Settings;
using kde_tool::frmKDE;
using platform::NumberText;

/// RuntimeError 5 where the run would be refused.
platform::RasterGeometry reference_of(const frmKDE& form, const std::string& name) {
    const auto raster = analysis::reference_raster(form.Geodata(), name);
    const platform::SpatialReference points = form.PointLayer().Feature->FeatureClass()->Reference();
    if (!raster->LiesIn(points))
        platform::Raise(platform::error_number::kInvalidCall,
                        "the reference layer " + raster->Name() + " is in another coordinate system than the points (" +
                            points.Name + "): choose a raster in that system, or reproject it");
    return raster->Geometry();
}

analysis::EstimateFrame frame_of(const frmKDE& form, const Settings& settings) {
    return analysis::estimate_frame(
        settings,
        settings.Mode == ExtentMode::kFull ? form.PointLayer().Feature->FeatureClass()->Bounds() : platform::Extent(),
        settings.Mode == ExtentMode::kReference ? reference_of(form, settings.ReferenceName)
                                                : platform::RasterGeometry());
}

/// The filled form's settings and fixes, which name what it would write.
struct FilledForm {
    explicit FilledForm(const frmKDE& form) : Wanted(kde_tool::settings_of(form)), Folder(form.OutputFolderPath()) {
        if (list_of(Wanted).NoNumber) return;  // the run will be refused
        Fixes = form.ReadFixes();
        analysis::spread_over_subfolders(Fixes.Animals, Wanted.AnimalsPerSubfolder);
    }

    Settings Wanted;
    std::filesystem::path Folder;
    analysis::GroupedFixes Fixes;  ///< none where the run will be refused
};

Json json_of(const ComingDistribution& coming, BandwidthMethod method) {
    const bool search = analysis::is_planned_with_href(method);
    const analysis::DistributionEstimate& cost = coming.Cost;
    return {{"id", json_value(coming.Id)},
            {"n", coming.SampleSize},
            {"href", json_number(coming.Href)},
            {"method", analysis::method_name(method)},
            {"bandwidth_map_units", search ? Json() : Json(cost.Bandwidth)},
            {"planned_with", search ? Json("href") : Json()},
            {"columns", cost.Grid.Columns},
            {"rows", cost.Grid.Rows},
            {"cell_size", cost.Grid.CellSize},
            {"origin", {cost.Grid.OriginX, cost.Grid.OriginY}},
            {"too_large", is_too_large(cost)},
            {"megabytes", cost.Megabytes},
            {"seconds", cost.Seconds},
            {"raster", coming.RasterName},
            {"failure", coming.Failure.empty() ? Json() : Json(coming.Failure)}};
}

void report_taken(const std::vector<std::string>& names, Console& console) {
    if (names.empty()) return;
    console.Problem(
        fmt::format("wxl: the run will be refused, because the output folder holds {}", fmt::join(names, ", ")));
    advise_on_names(console);
}

std::string line_of(const ComingDistribution& coming, BandwidthMethod method) {
    const analysis::DistributionEstimate& cost = coming.Cost;
    const std::string size = is_too_large(cost)
                                 ? "more than 50 million cells: give a larger cell size"
                                 : fmt::format("{} x {} cells, {:.3g} MB, about {:.2g} s", cost.Grid.Columns,
                                               cost.Grid.Rows, cost.Megabytes, cost.Seconds);
    const std::string bandwidth =
        analysis::is_planned_with_href(method) ? "by a search (planned with HREF)" : NumberText(cost.Bandwidth);
    return fmt::format("{}: {}, HREF {}, bandwidth {}, {}, raster {}{}", platform::ValueText(coming.Id),
                       analysis::fixes_text(static_cast<std::int64_t>(coming.SampleSize)),
                       coming.Href ? NumberText(*coming.Href) : "not defined", bandwidth, size, coming.RasterName,
                       coming.Failure.empty() ? "" : ": will fail: " + coming.Failure);
}

}  // namespace

void report_coming_without_id(std::int64_t count, const std::string& idField, Console& console) {
    if (count > 0) console.Problem("wxl: " + analysis::without_id_text(count, idField) + " and will be left out");
}

std::vector<std::string> taken_names(frmKDE& form) {
    const FilledForm filled(form);
    return analysis::taken_names(form.Services(), filled.Wanted, filled.Folder, filled.Fixes.Animals);
}

void refuse_read_outputs(frmKDE& form, const ReadFiles& read) {
    const FilledForm filled(form);
    if (filled.Fixes.Animals.empty()) return;
    if (!filled.Wanted.ConvexPercentages.Values.empty())
        read.Refuse(platform::NewShapefileParts(filled.Folder, analysis::convex_polygon_name(filled.Wanted)));
    for (const AnimalFixes& animal : filled.Fixes.Animals) {
        const auto place = analysis::subfolder_in(filled.Folder, animal.Subfolder);
        const std::string& format = filled.Wanted.RasterFormat;
        read.Refuse(platform::RasterPlace(place, filled.Wanted.Prefix + animal.NamingId, format));
        for (const auto& datasets : analysis::datasets_of(filled.Wanted, animal))
            for (const auto& [kind, name] : datasets)
                if (kind == analysis::DatasetKind::kRaster)
                    read.Refuse(platform::RasterPlace(place, name, format));
                else
                    read.Refuse(platform::NewShapefileParts(place, name));
    }
    for (const char* file :
         {analysis::kReportFile, analysis::kSummaryFile, analysis::kSettingsRecordFile, results_page::kPageFile})
        read.Refuse(analysis::file_in_folder(filled.Folder, file));
    if (filled.Wanted.GeoPackage) read.Refuse(analysis::file_in_folder(filled.Folder, analysis::kRangePackage));
}

void advise_on_names(Console& console) {
    console.Problem("wxl: --overwrite replaces them, --prefix names them otherwise");
}

int print_dry_run(frmKDE& form, const DryRunOptions& options, Console& console) {
    const Settings settings = kde_tool::settings_of(form);
    if (const auto refusal = analysis::refusal_of(settings)) return console.Fail(*refusal);
    analysis::GroupedFixes fixes = form.ReadFixes();
    analysis::spread_over_subfolders(fixes.Animals, settings.AnimalsPerSubfolder);
    const auto distributions = analysis::dry_run(frame_of(form, settings), fixes.Animals);
    const std::vector<std::string> taken = options.Overwrite ? std::vector<std::string>() : taken_names(form);
    Json animals = Json::array();
    for (const ComingDistribution& coming : distributions) {
        if (options.Json)
            animals.push_back(json_of(coming, settings.Method));
        else
            console.Result(line_of(coming, settings.Method));
    }
    if (options.Json)
        console.Text(
            json_text(Json{{"animals", animals}, {"points_without_id", fixes.WithoutId}, {"names_taken", taken}}));
    report_coming_without_id(fixes.WithoutId, settings.IdField, console);
    report_taken(taken, console);
    const bool hopeless =
        std::ranges::all_of(distributions, [](const auto& coming) { return !coming.Failure.empty(); });
    if (hopeless) console.Problem("wxl: no distribution can be computed in this way");
    return hopeless || !taken.empty() ? exit_code::kFailed : exit_code::kDone;
}

void delete_outputs(frmKDE& form) {
    const FilledForm filled(form);
    if (filled.Fixes.Animals.empty() || !form.Services().Files->FolderExists(filled.Folder)) return;
    analysis::delete_outputs(form.Services(), filled.Wanted, filled.Folder, filled.Fixes.Animals);
}

}  // namespace wxl::cli
