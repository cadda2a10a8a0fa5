#include "apps/cli/commands/kde_plan.h"

#include "apps/cli/commands/kde_output.h"
#include "kde_tool/analysis_run.h"
#include "kde_tool/run_plan.h"
#include "platform/checked.h"
#include "platform/runtime_error.h"
#include "platform/text.h"
#include "utilities/Utilities.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace wxl::cli {

namespace {

using kde_tool::AnimalFixes;
using kde_tool::BandwidthMethod;
using kde_tool::ExtentMode;
using kde_tool::frmKDE;
using kde_tool::RunInputs;
using platform::NumberText;

constexpr double kReach = 4.0;               // bandwidths
constexpr double kSecondsPerUpdate = 1e-10;  // one fix in one cell, measured
constexpr double kSecondsPerCell = 1e-7;     // writing and contouring one cell, measured
constexpr double kBytesPerCell = 8.0;

/// What the plan of every distribution needs to know of the run.
struct PlanFrame {
    RunInputs Inputs;
    std::vector<double> Values;
    double CellSize = 1.0;            ///< as the calculator keeps it
    platform::RasterGeometry Shared;  ///< full and reference extent
};

platform::Extent bounds_of(const AnimalFixes& animal) {
    platform::Extent bounds;
    for (const platform::Point& fix : animal.Fixes) bounds.Include(fix);
    return bounds;
}

PlanFrame frame_of(frmKDE& form) {
    PlanFrame frame;
    frame.Inputs = kde_tool::inputs_of(form);
    frame.Values = kde_tool::bandwidth_values(frame.Inputs);
    if (frame.Inputs.Mode == ExtentMode::kReference) {
        const auto raster = form.Geodata().GetLayerByName(frame.Inputs.ReferenceName).Raster;
        frame.Shared = raster->Geometry();
        frame.CellSize = frame.Shared.CellSize;
        return frame;
    }
    frame.CellSize = platform::round_half_even(platform::NumberFromText(frame.Inputs.CellSizeText), 0);
    if (frame.Inputs.Mode == ExtentMode::kFull)
        frame.Shared = kde_tool::enlarged_grid(form.PointLayer().Feature->FeatureClass()->Bounds(),
                                               platform::NumberFromText(frame.Inputs.BufferText), frame.CellSize);
    return frame;
}

/// HREF in map units as the run applies it: of the fixes as they are, or of the unit-variance fixes scaled back.
double href_of(const frmKDE& form, std::size_t animal, bool rescale) {
    const kde_tool::HrefRow& href = form.HrefNumbers().at(animal);
    if (!rescale) return href.Href.value_or(0.0);
    const kde_tool::VarianceRow& spread = form.VarianceNumbers().at(animal);
    return href.HrefScaled.value_or(0.0) * (spread.SdX.value_or(0.0) + spread.SdY.value_or(0.0)) / 2.0;
}

/// Cells that one fix reaches, at most the whole grid.
double reached_cells(const platform::RasterGeometry& grid, double radius) {
    const double side = 2.0 * (std::floor(radius / grid.CellSize) + 1.0) + 1.0;
    return std::min(side, static_cast<double>(grid.Columns)) * std::min(side, static_cast<double>(grid.Rows));
}

PlannedDistribution planned(const PlanFrame& frame, const frmKDE& form, const AnimalFixes& animal, std::size_t row,
                            std::size_t index) {
    const double href = href_of(form, row, frame.Inputs.Rescale);
    const double value = frame.Values[index];
    PlannedDistribution plan;
    plan.Id = animal.Id;
    plan.SampleSize = animal.Fixes.size();
    plan.Href = form.HrefNumbers().at(row).Href;
    const double chosen = frame.Inputs.Method == BandwidthMethod::kManual ? value : href;
    plan.Bandwidth = frame.Inputs.Method == BandwidthMethod::kProportion ? value * href : chosen;
    plan.Grid = frame.Inputs.Mode == ExtentMode::kMinimum
                    ? kde_tool::enlarged_grid(bounds_of(animal), kReach * chosen, frame.CellSize)
                    : frame.Shared;
    plan.Grid.CellSize = frame.CellSize;
    const double cells = static_cast<double>(plan.Grid.Columns) * static_cast<double>(plan.Grid.Rows);
    plan.Megabytes = cells * kBytesPerCell / 1e6;
    plan.Seconds =
        static_cast<double>(plan.SampleSize) * reached_cells(plan.Grid, kReach * chosen) * kSecondsPerUpdate +
        cells * kSecondsPerCell;
    plan.RasterName = kde_tool::raster_name(frame.Inputs, animal.NamingId, index + 1, frame.Values.size());
    return plan;
}

bool is_too_large(const PlannedDistribution& plan) {
    return static_cast<double>(plan.Grid.Columns) * static_cast<double>(plan.Grid.Rows) > kde_tool::kCellLimit;
}

Json json_of(const PlannedDistribution& plan, const char* method) {
    return {{"id", json_value(plan.Id)},
            {"n", plan.SampleSize},
            {"href", json_number(plan.Href)},
            {"method", method},
            {"bandwidth_map_units", plan.Bandwidth},
            {"columns", plan.Grid.Columns},
            {"rows", plan.Grid.Rows},
            {"cell_size", plan.Grid.CellSize},
            {"origin", {plan.Grid.OriginX, plan.Grid.OriginY}},
            {"too_large", is_too_large(plan)},
            {"megabytes", plan.Megabytes},
            {"seconds", plan.Seconds},
            {"raster", plan.RasterName}};
}

bool is_search(BandwidthMethod method) {
    return method == BandwidthMethod::kLscv || method == BandwidthMethod::kBcv;
}

std::string line_of(const PlannedDistribution& plan, BandwidthMethod method) {
    const std::string size = is_too_large(plan)
                                 ? "more than 50 million cells: give a larger cell size"
                                 : fmt::format("{} x {} cells, {:.3g} MB, about {:.2g} s", plan.Grid.Columns,
                                               plan.Grid.Rows, plan.Megabytes, plan.Seconds);
    const std::string bandwidth = is_search(method) ? "by a search (planned with HREF)" : NumberText(plan.Bandwidth);
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

std::vector<std::vector<std::string>> names_of(frmKDE& form) {
    const RunInputs inputs = kde_tool::inputs_of(form);
    const std::size_t count = kde_tool::bandwidth_values(inputs).size();
    std::vector<std::vector<std::string>> names;
    for (const AnimalFixes& animal : form.ReadFixes().Animals) {
        names.push_back({inputs.Prefix + animal.NamingId});
        for (std::size_t number = 1; number <= count; ++number)
            names.push_back(
                kde_tool::dataset_names(inputs, kde_tool::raster_name(inputs, animal.NamingId, number, count)));
    }
    for (const auto& datasets : names)
        for (const std::string& name : datasets) platform::CheckDatasetName(name);
    return names;
}

}  // namespace

std::vector<PlannedDistribution> planned_run(frmKDE& form) {
    const PlanFrame frame = frame_of(form);
    const kde_tool::GroupedFixes fixes = form.ReadFixes();
    std::vector<PlannedDistribution> plans;
    for (std::size_t row = 0; row < fixes.Animals.size(); ++row)
        for (std::size_t index = 0; index < frame.Values.size(); ++index)
            plans.push_back(planned(frame, form, fixes.Animals[row], row, index));
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
            animals.push_back(json_of(plan, method_name(inputs.Method)));
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
    const auto names = names_of(form);
    std::string holder;
    const auto lock = services.Locks->Take(folder, holder);
    if (!lock)
        platform::Raise(platform::error_number::kPermissionDenied,
                        "another analysis is writing into the output folder (" + holder +
                            "): nothing was deleted; wait until it has finished, or choose another folder");
    for (const auto& datasets : names)
        for (std::size_t i = 0; i < datasets.size(); ++i) delete_dataset(services, folder, datasets[i], i == 0);
}

}  // namespace wxl::cli
