#include "apps/cli/commands/kde_plan.h"

#include "apps/cli/commands/kde_output.h"
#include "engine/status.h"
#include "kde_tool/analysis_run.h"
#include "kde_tool/bandwidth_doctor.h"
#include "kde_tool/run_plan.h"
#include "kde_tool/run_preparation.h"
#include "kde_tool/standing_outputs.h"
#include "kde_tool/subfolders.h"
#include "kde_tool/summary_rows.h"
#include "platform/dataset_files.h"
#include "platform/runtime_error.h"
#include "platform/text.h"
#include "results_page/results_page.h"
#include "utilities/Utilities.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <map>

namespace wxl::cli {

namespace {

using kde_tool::AnimalFixes;
using kde_tool::BandwidthMethod;
using kde_tool::ExtentMode;
using kde_tool::frmKDE;
using kde_tool::RunInputs;
using platform::NumberText;

/// RuntimeError 5 where the run would be refused.
platform::RasterGeometry reference_of(const frmKDE& form, const RunInputs& inputs) {
    const auto raster = kde_tool::reference_raster(form, inputs.ReferenceName);
    const platform::SpatialReference points = form.PointLayer().Feature->FeatureClass()->Reference();
    if (!raster->LiesIn(points))
        platform::Raise(platform::error_number::kInvalidCall,
                        "the reference layer " + raster->Name() + " is in another coordinate system than the points (" +
                            points.Name + "): choose a raster in that system, or reproject it");
    return raster->Geometry();
}

kde_tool::EstimateFrame frame_of(frmKDE& form) {
    const RunInputs inputs = kde_tool::inputs_of(form);
    platform::RasterGeometry reference;
    if (inputs.Mode == ExtentMode::kReference) reference = reference_of(form, inputs);
    const bool full = inputs.Mode == ExtentMode::kFull;
    return kde_tool::estimate_frame(inputs,
                                    full ? form.PointLayer().Feature->FeatureClass()->Bounds() : platform::Extent(),
                                    full ? platform::NumberFromText(inputs.BufferText) : 0.0, reference);
}

Json json_of(const PlannedDistribution& plan, BandwidthMethod method) {
    const bool search = kde_tool::is_search(method);
    const kde_tool::DistributionEstimate& cost = plan.Cost;
    return {{"id", json_value(plan.Id)},
            {"n", plan.SampleSize},
            {"href", json_number(plan.Href)},
            {"method", kde_tool::method_name(method)},
            {"bandwidth_map_units", search ? Json() : Json(cost.Bandwidth)},
            {"planned_with", search ? Json("href") : Json()},
            {"columns", cost.Grid.Columns},
            {"rows", cost.Grid.Rows},
            {"cell_size", cost.Grid.CellSize},
            {"origin", {cost.Grid.OriginX, cost.Grid.OriginY}},
            {"too_large", is_too_large(cost)},
            {"megabytes", cost.Megabytes},
            {"seconds", cost.Seconds},
            {"raster", plan.RasterName},
            {"failure", plan.Failure.empty() ? Json() : Json(plan.Failure)}};
}

/// The status with which the calculator will end, as far as it is known before: not with a bandwidth yet to be found.
std::int32_t coming_status(const kde_tool::DistributionEstimate& cost, BandwidthMethod method) {
    namespace kernel_status = engine::kernel_status;
    if (is_too_large(cost)) return kernel_status::kGridTooLarge;
    if (!(cost.Bandwidth > 0.0) || cost.Grid.Columns < 1 || cost.Grid.Rows < 1) return kernel_status::kNothingToCompute;
    if (!kde_tool::is_search(method) && cost.Bandwidth < cost.Grid.CellSize) return kernel_status::kBandwidthBelowCell;
    return kernel_status::kGood;
}

std::string coming_failure(const AnimalFixes& animal, const kde_tool::DistributionEstimate& cost,
                           BandwidthMethod method) {
    kde_tool::AnimalRecord record;
    record.SampleSize = static_cast<std::int32_t>(animal.Fixes.size());
    record.Coincident = kde_tool::coincidence_of(animal.Fixes);
    record.BandwidthMapUnits = cost.Bandwidth;
    record.Grid = cost.Grid;
    record.Status = coming_status(cost, method);
    return kde_tool::failure_reason(record);
}

void tell_without_id(std::int64_t count, const std::string& field, Console& console) {
    if (count == 0) return;
    console.Problem(fmt::format("wxl: {} no value in the field {} and will be left out",
                                count == 1 ? "1 point has" : fmt::format("{} points have", count), field));
}

void tell_taken(const std::vector<std::string>& names, Console& console) {
    if (names.empty()) return;
    console.Problem(
        fmt::format("wxl: the run will be refused, because the output folder holds {}", fmt::join(names, ", ")));
    advise_on_names(console);
}

std::string line_of(const PlannedDistribution& plan, BandwidthMethod method) {
    const kde_tool::DistributionEstimate& cost = plan.Cost;
    const std::string size = is_too_large(cost)
                                 ? "more than 50 million cells: give a larger cell size"
                                 : fmt::format("{} x {} cells, {:.3g} MB, about {:.2g} s", cost.Grid.Columns,
                                               cost.Grid.Rows, cost.Megabytes, cost.Seconds);
    const std::string bandwidth =
        kde_tool::is_search(method) ? "by a search (planned with HREF)" : NumberText(cost.Bandwidth);
    return fmt::format("{}: {}, HREF {}, bandwidth {}, {}, raster {}{}", platform::ValueText(plan.Id),
                       kde_tool::fixes_text(static_cast<std::int64_t>(plan.SampleSize)),
                       plan.Href ? NumberText(*plan.Href) : "not defined", bandwidth, size, plan.RasterName,
                       plan.Failure.empty() ? "" : ": will fail: " + plan.Failure);
}

/// Deletes one dataset of the run where it stands, and side files that stand there without it. `contents` is the folder
/// as it was before.
void delete_dataset(const platform::Services& services, const std::filesystem::path& folder,
                    const platform::FolderContents& contents, const std::string& name,
                    const std::string* rasterFormat) {
    if (rasterFormat != nullptr && services.Rasters->Exists(folder, name)) services.Rasters->Delete(folder, name);
    for (const auto& file : rasterFormat != nullptr ? contents.Raster(name, *rasterFormat) : contents.Shapefile(name)) {
        const bool isOther = rasterFormat != nullptr && file == platform::RasterPlace(folder, name, *rasterFormat);
        if (!isOther && services.Files->FileExists(file)) services.Files->DeleteFile(file, true);
    }
}

/// The datasets of one animal, each group of them a raster and its isopleths, and where they stand.
struct AnimalDatasets {
    std::string Subfolder;
    std::vector<std::vector<std::string>> Names;
};

std::vector<AnimalDatasets> datasets_of(frmKDE& form) {
    const RunInputs inputs = kde_tool::inputs_of(form);
    const std::size_t count = kde_tool::bandwidth_values(inputs).size();
    kde_tool::GroupedFixes fixes = form.ReadFixes();
    kde_tool::spread_over_subfolders(fixes.Animals, form.AnimalsPerSubfolder);
    std::vector<AnimalDatasets> datasets;
    for (const AnimalFixes& animal : fixes.Animals) {
        AnimalDatasets own = {animal.Subfolder, {{inputs.Prefix + animal.NamingId}}};
        for (std::size_t number = 1; number <= count; ++number)
            own.Names.push_back(
                kde_tool::dataset_names(inputs, kde_tool::raster_name(inputs, animal.NamingId, number, count)));
        for (const auto& names : own.Names)
            for (const std::string& name : names) platform::CheckDatasetName(name);
        datasets.push_back(std::move(own));
    }
    return datasets;
}

}  // namespace

std::vector<PlannedDistribution> planned_run(frmKDE& form) {
    const kde_tool::EstimateFrame frame = frame_of(form);
    const std::vector<double> values = kde_tool::bandwidth_values(frame.Inputs);
    const kde_tool::GroupedFixes fixes = form.ReadFixes();
    std::vector<PlannedDistribution> plans;
    const BandwidthMethod method = frame.Inputs.Method;
    for (std::size_t row = 0; row < fixes.Animals.size(); ++row) {
        const AnimalFixes& animal = fixes.Animals[row];
        const kde_tool::HrefRow& href = form.HrefNumbers().at(row);
        const double applied = kde_tool::applied_href(href, form.VarianceNumbers().at(row), frame.Inputs.Rescale);
        for (std::size_t index = 0; index < values.size(); ++index) {
            const auto cost = kde_tool::estimate(frame, animal, applied, values[index]);
            plans.push_back({animal.Id, animal.Fixes.size(), href.Href, cost,
                             kde_tool::raster_name(frame.Inputs, animal.NamingId, index + 1, values.size()),
                             coming_failure(animal, cost, method)});
        }
    }
    return plans;
}

std::vector<std::string> taken_names(frmKDE& form) {
    const RunInputs inputs = kde_tool::inputs_of(form);
    if (kde_tool::malformed_list(inputs)) return {};
    kde_tool::GroupedFixes fixes = form.ReadFixes();
    kde_tool::spread_over_subfolders(fixes.Animals, form.AnimalsPerSubfolder);
    return kde_tool::taken_names(
        form.Services(), {form.OutputFolderPath(), form.RasterFormat, kde_tool::bandwidth_values(inputs).size()},
        inputs, fixes.Animals);
}

void refuse_read_outputs(frmKDE& form, const ReadFiles& read) {
    if (kde_tool::malformed_list(kde_tool::inputs_of(form))) return;  // the run will be refused
    const std::filesystem::path folder = form.OutputFolderPath();
    for (const AnimalDatasets& own : datasets_of(form)) {
        const auto place = own.Subfolder.empty() ? folder : folder / own.Subfolder;
        for (const auto& names : own.Names)
            for (std::size_t i = 0; i < names.size(); ++i)
                if (i == 0)
                    read.Refuse(platform::RasterPlace(place, names[i], form.RasterFormat));
                else
                    read.Refuse(platform::NewShapefileParts(place, names[i]));
    }
    for (const char* file :
         {kde_tool::kReportFile, kde_tool::kSummaryFile, kde_tool::kSettingsRecordFile, results_page::kPageFile})
        read.Refuse(kde_tool::file_in_folder(folder, file));
}

void advise_on_names(Console& console) {
    console.Problem("wxl: --overwrite replaces them, --prefix names them otherwise");
}

int print_plan(frmKDE& form, const PlanWishes& wishes, Console& console) {
    const RunInputs inputs = kde_tool::inputs_of(form);
    auto refusal = kde_tool::undefined_setting(inputs);
    if (!refusal) refusal = kde_tool::malformed_list(inputs);
    if (!refusal) refusal = kde_tool::unusable_setting(inputs);
    if (refusal) return console.Fail(*refusal);
    const std::vector<PlannedDistribution> plans = planned_run(form);
    const std::vector<std::string> taken = wishes.Overwrite ? std::vector<std::string>() : taken_names(form);
    const std::int64_t withoutId = form.ReadFixes().WithoutId;
    Json animals = Json::array();
    for (const PlannedDistribution& plan : plans) {
        if (wishes.Json)
            animals.push_back(json_of(plan, inputs.Method));
        else
            console.Result(line_of(plan, inputs.Method));
    }
    if (wishes.Json)
        console.Text(json_text(Json{{"animals", animals}, {"points_without_id", withoutId}, {"names_taken", taken}}));
    tell_without_id(withoutId, inputs.IdField, console);
    tell_taken(taken, console);
    const bool hopeless = std::ranges::all_of(plans, [](const auto& plan) { return !plan.Failure.empty(); });
    if (hopeless) console.Problem("wxl: no distribution can be computed in this way");
    return hopeless || !taken.empty() ? exit_code::kFailed : exit_code::kDone;
}

void delete_outputs(frmKDE& form) {
    const platform::Services& services = form.Services();
    const std::filesystem::path folder = form.OutputFolderPath();
    if (!services.Files->FolderExists(folder)) return;
    if (kde_tool::malformed_list(kde_tool::inputs_of(form))) return;  // the run will be refused
    const auto datasets = datasets_of(form);
    std::string holder;
    const auto lock = services.Locks->Take(folder, holder);
    if (!lock)
        platform::Raise(platform::error_number::kPermissionDenied,
                        "another analysis is writing into the output folder (" + holder +
                            "): nothing was deleted; wait until it has finished, or choose another folder");
    std::map<std::filesystem::path, platform::FolderContents> folders;
    for (const AnimalDatasets& own : datasets)
        if (!own.Subfolder.empty()) platform::RefuseLink(*services.Folders, folder / own.Subfolder);
    for (const AnimalDatasets& own : datasets) {
        const auto place = own.Subfolder.empty() ? folder : folder / own.Subfolder;
        const auto& contents = folders.try_emplace(place, *services.Files, place).first->second;
        for (const auto& names : own.Names)
            for (std::size_t i = 0; i < names.size(); ++i)
                delete_dataset(services, place, contents, names[i], i == 0 ? &form.RasterFormat : nullptr);
    }
}

}  // namespace wxl::cli
