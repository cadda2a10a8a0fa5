#include "apps/cli/commands/kde_plan.h"

#include "apps/cli/commands/kde_output.h"
#include "kde_tool/analysis_run.h"
#include "kde_tool/run_plan.h"
#include "kde_tool/subfolders.h"
#include "kde_tool/summary_rows.h"
#include "platform/runtime_error.h"
#include "platform/text.h"
#include "utilities/Utilities.h"

#include <fmt/format.h>

namespace wxl::cli {

namespace {

using kde_tool::AnimalFixes;
using kde_tool::BandwidthMethod;
using kde_tool::ExtentMode;
using kde_tool::frmKDE;
using kde_tool::RunInputs;
using platform::NumberText;

kde_tool::EstimateFrame frame_of(frmKDE& form) {
    const RunInputs inputs = kde_tool::inputs_of(form);
    platform::RasterGeometry reference;
    if (inputs.Mode == ExtentMode::kReference)
        reference = kde_tool::reference_raster(form, inputs.ReferenceName)->Geometry();
    const bool full = inputs.Mode == ExtentMode::kFull;
    return kde_tool::estimate_frame(inputs,
                                    full ? form.PointLayer().Feature->FeatureClass()->Bounds() : platform::Extent(),
                                    full ? platform::NumberFromText(inputs.BufferText) : 0.0, reference);
}

Json json_of(const PlannedDistribution& plan, const char* method) {
    const kde_tool::DistributionEstimate& cost = plan.Cost;
    return {{"id", json_value(plan.Id)},
            {"n", plan.SampleSize},
            {"href", json_number(plan.Href)},
            {"method", method},
            {"bandwidth_map_units", cost.Bandwidth},
            {"columns", cost.Grid.Columns},
            {"rows", cost.Grid.Rows},
            {"cell_size", cost.Grid.CellSize},
            {"origin", {cost.Grid.OriginX, cost.Grid.OriginY}},
            {"too_large", is_too_large(cost)},
            {"megabytes", cost.Megabytes},
            {"seconds", cost.Seconds},
            {"raster", plan.RasterName}};
}

bool is_search(BandwidthMethod method) {
    return method == BandwidthMethod::kLscv || method == BandwidthMethod::kBcv;
}

std::string line_of(const PlannedDistribution& plan, BandwidthMethod method) {
    const kde_tool::DistributionEstimate& cost = plan.Cost;
    const std::string size = is_too_large(cost)
                                 ? "more than 50 million cells: give a larger cell size"
                                 : fmt::format("{} x {} cells, {:.3g} MB, about {:.2g} s", cost.Grid.Columns,
                                               cost.Grid.Rows, cost.Megabytes, cost.Seconds);
    const std::string bandwidth = is_search(method) ? "by a search (planned with HREF)" : NumberText(cost.Bandwidth);
    return fmt::format("{}: {} fixes, HREF {}, bandwidth {}, {}, raster {}", platform::ValueText(plan.Id),
                       plan.SampleSize, plan.Href ? NumberText(*plan.Href) : "not defined", bandwidth, size,
                       plan.RasterName);
}

/// Deletes one dataset of the run where it stands.
void delete_dataset(const platform::Services& services, const std::filesystem::path& folder, const std::string& name,
                    bool isRaster) {
    if (isRaster) {
        if (services.Rasters->Exists(folder, name)) services.Rasters->Delete(folder, name);
    } else if (services.Files->FileExists(folder / (name + ".shp"))) {
        services.Shapefiles->Delete(folder, name);
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
    for (std::size_t row = 0; row < fixes.Animals.size(); ++row) {
        const AnimalFixes& animal = fixes.Animals[row];
        const kde_tool::HrefRow& href = form.HrefNumbers().at(row);
        const double applied = kde_tool::applied_href(href, form.VarianceNumbers().at(row), frame.Inputs.Rescale);
        for (std::size_t index = 0; index < values.size(); ++index)
            plans.push_back({animal.Id, animal.Fixes.size(), href.Href,
                             kde_tool::estimate(frame, animal, applied, values[index]),
                             kde_tool::raster_name(frame.Inputs, animal.NamingId, index + 1, values.size())});
    }
    return plans;
}

int print_plan(frmKDE& form, bool asJson, Console& console) {
    const RunInputs inputs = kde_tool::inputs_of(form);
    auto refusal = kde_tool::undefined_setting(inputs);
    if (!refusal) refusal = kde_tool::unusable_setting(inputs);
    if (refusal) return console.Fail(*refusal);
    Json animals = Json::array();
    for (const PlannedDistribution& plan : planned_run(form)) {
        if (asJson)
            animals.push_back(json_of(plan, kde_tool::method_name(inputs.Method)));
        else
            console.Result(line_of(plan, inputs.Method));
    }
    if (asJson) console.Result(json_text(Json{{"animals", animals}}));
    return exit_code::kDone;
}

void delete_outputs(frmKDE& form) {
    const platform::Services& services = form.Services();
    const std::filesystem::path folder = form.OutputFolderPath();
    if (!services.Files->FolderExists(folder)) return;
    const auto datasets = datasets_of(form);
    std::string holder;
    const auto lock = services.Locks->Take(folder, holder);
    if (!lock)
        platform::Raise(platform::error_number::kPermissionDenied,
                        "another analysis is writing into the output folder (" + holder +
                            "): nothing was deleted; wait until it has finished, or choose another folder");
    for (const AnimalDatasets& own : datasets)
        for (const auto& names : own.Names)
            for (std::size_t i = 0; i < names.size(); ++i)
                delete_dataset(services, own.Subfolder.empty() ? folder : folder / own.Subfolder, names[i], i == 0);
}

}  // namespace wxl::cli
