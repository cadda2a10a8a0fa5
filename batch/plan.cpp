#include "batch/plan.h"

#include "analysis/settings_text.h"
#include "batch/plan_codec.h"
#include "batch/record_codec.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <cmath>
#include <utility>

namespace wxl::batch {
namespace {

using analysis::RunFrame;
using analysis::Settings;

/// The grid of a reference raster; the raster itself is not needed again.
class PlannedRaster final : public platform::IRasterLayer {
public:
    PlannedRaster(std::string name, const platform::RasterGeometry& geometry)
        : m_name(std::move(name)), m_geometry(geometry) {}
    std::string Name() const override { return m_name; }
    platform::RasterGeometry Geometry() const override { return m_geometry; }

    /// As was made sure when the batch was planned.
    bool LiesIn(const platform::SpatialReference& /*reference*/) const override { return true; }

private:
    std::string m_name;
    platform::RasterGeometry m_geometry;
};

Json json_of_typed(const analysis::TypedNumber& number) {
    const auto& [text, value] = number;
    return {{"text", json_of_text(text)}, {"value", json_of_optional(value)}};
}

analysis::TypedNumber typed_of(const Json& json) {
    const Json& value = json.at("value");
    return {.Text = text_of(json.at("text")),
            .Value = value.is_null() ? std::nullopt : std::optional(number_of(value))};
}

/// A list that was accepted has no piece that is no number.
Json json_of_typed(const analysis::TypedNumbers& list) {
    const auto& [text, values, noNumber] = list;
    return {{"text", json_of_text(text)}, {"values", json_of_doubles(values)}};
}

analysis::TypedNumbers typed_list_of(const Json& json) {
    return {.Text = text_of(json.at("text")), .Values = numbers_of(json.at("values"))};
}

Json json_of_settings(const Settings& settings) {
    const auto& [layer, where, idField, selectedOnly, rescale, fixedKernel, method, bandwidths, proportions, adHocParts,
                 reach, outputFolder, prefix, cells, scaling, verbose, mode, buffer, reference, isopleths, percentages,
                 lines, polygons, donuts, convexPercentages, silent, html, rasterFormat, animalsPerSubfolder,
                 geoPackage, asksSearchesOnly] = settings;
    return {{"layer", json_of_text(layer)},
            {"where", json_of_text(where)},
            {"id_field", json_of_text(idField)},
            {"selected_only", selectedOnly},
            {"rescale", rescale},
            {"fixed_kernel", fixedKernel},
            {"method", method_text(method)},
            {"bandwidths", json_of_typed(bandwidths)},
            {"proportions", json_of_typed(proportions)},
            {"adhoc_parts", adHocParts},
            {"reach", json_of_text(reach.Text)},
            {"output_folder", json_of_text(outputFolder)},
            {"prefix", json_of_text(prefix)},
            {"cell_size", json_of_text(cells.Text)},
            {"scaling", json_of_typed(scaling)},
            {"verbose", verbose},
            {"extent", json_of_enumeration(mode)},
            {"buffer", json_of_typed(buffer)},
            {"reference", json_of_text(reference)},
            {"isopleths", isopleths},
            {"percentages", json_of_typed(percentages)},
            {"lines", lines},
            {"polygons", polygons},
            {"donuts", donuts},
            {"convex_percentages", json_of_typed(convexPercentages)},
            {"silent", silent},
            {"html", html},
            {"raster_format", rasterFormat},
            {"animals_per_subfolder", animalsPerSubfolder},
            {"geopackage", geoPackage},
            {"asks_searches_only", asksSearchesOnly}};
}

analysis::Reach reach_of(const Json& json) {
    const auto reach = analysis::reach_of(text_of(json));
    if (!reach) platform::Raise(platform::error_number::kTypeMismatch, "no reach");
    return *reach;
}

analysis::CellSize cells_of(const Json& json) {
    analysis::CellSize cells = analysis::cell_size_of(text_of(json));
    number_of(json_of_double(cells.Typed));
    return cells;
}

Settings settings_of(const Json& json) {
    return {
        .LayerName = text_of(json.at("layer")),
        .Where = text_of(json.at("where")),
        .IdField = text_of(json.at("id_field")),
        .SelectedOnly = json.at("selected_only").get<bool>(),
        .Rescale = json.at("rescale").get<bool>(),
        .FixedKernel = json.at("fixed_kernel").get<bool>(),
        .Method = method_of_text(json.at("method").get<std::string>()),
        .Bandwidths = typed_list_of(json.at("bandwidths")),
        .Proportions = typed_list_of(json.at("proportions")),
        .AdHocParts = static_cast<std::int32_t>(whole_of(json.at("adhoc_parts"), 1, analysis::kMostParts)),
        .KernelReach = reach_of(json.at("reach")),
        .OutputFolder = text_of(json.at("output_folder")),
        .Prefix = text_of(json.at("prefix")),
        .Cells = cells_of(json.at("cell_size")),
        .ScalingFactor = typed_of(json.at("scaling")),
        .Verbose = json.at("verbose").get<bool>(),
        .Mode = enumeration_of(json.at("extent"), analysis::ExtentMode::kReference),
        .Buffer = typed_of(json.at("buffer")),
        .ReferenceName = text_of(json.at("reference")),
        .Isopleths = json.at("isopleths").get<bool>(),
        .Percentages = typed_list_of(json.at("percentages")),
        .Lines = json.at("lines").get<bool>(),
        .Polygons = json.at("polygons").get<bool>(),
        .Donuts = json.at("donuts").get<bool>(),
        .ConvexPercentages = typed_list_of(json.at("convex_percentages")),
        .Silent = json.at("silent").get<bool>(),
        .Html = json.at("html").get<bool>(),
        .RasterFormat = json.at("raster_format").get<std::string>(),
        .AnimalsPerSubfolder = static_cast<std::size_t>(whole_of(json.at("animals_per_subfolder"), 0, INT64_MAX)),
        .GeoPackage = json.at("geopackage").get<bool>(),
        .AsksSearchesOnly = json.at("asks_searches_only").get<bool>(),
    };
}

Json json_of_raster(const std::shared_ptr<platform::IRasterLayer>& raster) {
    if (!raster) return nullptr;
    Json json = json_of_grid(raster->Geometry());
    json["name"] = json_of_text(raster->Name());
    return json;
}

std::shared_ptr<platform::IRasterLayer> raster_of(const Json& json) {
    if (json.is_null()) return nullptr;
    return std::make_shared<PlannedRaster>(text_of(json.at("name")), grid_of(json));
}

Json json_of_extent(const platform::Extent& extent) {
    const auto& [xMin, yMin, xMax, yMax] = extent;
    return json_of_doubles({xMin, yMin, xMax, yMax});
}

platform::Extent extent_of(const Json& json) {
    return {.XMin = double_of(json.at(0)),
            .YMin = double_of(json.at(1)),
            .XMax = double_of(json.at(2)),
            .YMax = double_of(json.at(3))};
}

/// The output folder is where the plan is found.
Json json_of_frame(const RunFrame& frame) {
    const auto& [settings, source, sourceOptions, textIds, values, extent, reference, referenceRaster, outputFolder] =
        frame;
    return {{"settings", json_of_settings(settings)},
            {"source", json_of_text(source)},
            {"source_options", json_of_texts(sourceOptions)},
            {"text_ids", textIds},
            {"values", json_of_doubles(values)},
            {"layer_extent", json_of_extent(extent)},
            {"reference", json_of_reference(reference)},
            {"reference_raster", json_of_raster(referenceRaster)}};
}

/// What a prepared run cannot lack, whatever the file says.
void check_frame(const RunFrame& frame) {
    const Settings& settings = frame.Wanted;
    if (frame.Values.empty()) platform::Raise(platform::error_number::kSubscript, "no values");
    if (settings.Isopleths && settings.Percentages.Values.empty())
        platform::Raise(platform::error_number::kSubscript, "no percentages");
    if (settings.Mode == analysis::ExtentMode::kReference && !frame.ReferenceRaster)
        platform::Raise(platform::error_number::kSubscript, "no reference raster");
    if (settings.Mode == analysis::ExtentMode::kFull && !settings.Buffer.Value)
        platform::Raise(platform::error_number::kSubscript, "no buffer");
    if (!(settings.ScalingFactor.Value.value_or(0.0) > 0.0))
        platform::Raise(platform::error_number::kSubscript, "no scaling factor");
    if (frame.Values != values_of(settings)) platform::Raise(platform::error_number::kSubscript, "other values");
}

RunFrame frame_of(const Json& json) {
    RunFrame frame{.Wanted = settings_of(json.at("settings")),
                   .Source = text_of(json.at("source")),
                   .SourceOptions = texts_of(json.at("source_options")),
                   .TextIds = json.at("text_ids").get<bool>(),
                   .Values = numbers_of(json.at("values")),
                   .LayerExtent = extent_of(json.at("layer_extent")),
                   .Reference = reference_of(json.at("reference")),
                   .ReferenceRaster = raster_of(json.at("reference_raster")),
                   .Folder = {}};
    // Of the other two ways to choose an extent it stays empty: infinite.
    if (frame.Wanted.Mode == analysis::ExtentMode::kFull) numbers_of(json.at("layer_extent"));
    check_frame(frame);
    return frame;
}

Json json_of_animals(const std::vector<PlannedAnimal>& animals) {
    Json json = Json::array();
    for (const auto& [id, namingId, subfolder, stepsBack, times, error] : animals)
        json.push_back({json_of_value(id), json_of_text(namingId), json_of_text(subfolder), stepsBack,
                        json_of_times(times), json_of_error(error)});
    return json;
}

/// Names come from a file that anybody may have changed: none may leave the output folder.
std::vector<PlannedAnimal> animals_of(const Json& json, const std::string& prefix) {
    std::vector<PlannedAnimal> animals;
    for (const Json& one : json) {
        animals.push_back({.Id = value_of(one.at(0)),
                           .NamingId = text_of(one.at(1)),
                           .Subfolder = text_of(one.at(2)),
                           .StepsBack = whole_of(one.at(3), 0, INT64_MAX),
                           .Times = times_of(one.at(4)),
                           .Error = error_of(one.at(5))});
        platform::CheckDatasetName(prefix + animals.back().NamingId);
        if (!animals.back().Subfolder.empty()) platform::CheckDatasetName(animals.back().Subfolder);
    }
    return animals;
}

PlannedRun run_of(const Json& json) {
    RunFrame frame = frame_of(json.at("frame"));
    std::vector<PlannedAnimal> animals = animals_of(json.at("animals"), frame.Wanted.Prefix);
    return {.Frame = std::move(frame),
            .Animals = std::move(animals),
            .NullGeometry = json.at("null_geometry").get<bool>(),
            .WithoutId = whole_of(json.at("without_id"), 0, INT64_MAX),
            .ReportHead = texts_of(json.at("report_head")),
            .ToldWhole = json.at("told_whole").get<bool>()};
}

Plan plan_of(const Json& json) {
    if (estimator_of(json) != kKernelEstimator)
        platform::Raise(platform::error_number::kInvalidCall, "it plans other estimates");
    Plan plan;
    take_head(json, plan);
    static_cast<PlannedRun&>(plan) = run_of(json);
    plan.Tasks = tasks_of(json.at("tasks"), plan.DistributionCount());
    return plan;
}

}  // namespace

void write_plan(platform::IFileSystem& files, const BatchFiles& batch, const Plan& plan) {
    const auto& [frame, animals, nullGeometry, withoutId, reportHead, toldWhole] = static_cast<const PlannedRun&>(plan);
    Json json = json_of_head(plan, kKernelEstimator);
    json["frame"] = json_of_frame(frame);
    json["tasks"] = json_of_tasks(plan.Tasks);
    json["animals"] = json_of_animals(animals);
    json["null_geometry"] = nullGeometry;
    json["without_id"] = withoutId;
    json["report_head"] = json_of_texts(reportHead);
    json["told_whole"] = toldWhole;
    write_json(files, batch.Plan(), json);
}

PlannedAnimal planned(const analysis::AnimalFixes& animal) {
    const auto& [id, namingId, fixes, subfolder, stepsBack, times, error] = animal;
    return {
        .Id = id, .NamingId = namingId, .Subfolder = subfolder, .StepsBack = stepsBack, .Times = times, .Error = error};
}

analysis::AnimalFixes unplanned(const PlannedAnimal& animal, std::vector<platform::Point> fixes) {
    const auto& [id, namingId, subfolder, stepsBack, times, error] = animal;
    return {.Id = id,
            .NamingId = namingId,
            .Fixes = std::move(fixes),
            .Subfolder = subfolder,
            .StepsBack = stepsBack,
            .Times = times,
            .Error = error};
}

std::size_t PlanHead::Distributions() const {
    std::size_t count = 0;
    for (const PlannedTask& task : Tasks) count += task.Work.size();
    return count;
}

std::vector<std::string> subfolders_of(const Plan& plan) {
    std::vector<std::string> subfolders;
    for (const PlannedAnimal& animal : plan.Animals)
        if (!animal.Subfolder.empty() && (subfolders.empty() || subfolders.back() != animal.Subfolder))
            subfolders.push_back(animal.Subfolder);
    return subfolders;
}

void refuse_links(const platform::IFolders& folders, const PlanHead& plan, const std::vector<std::string>& subfolders) {
    const BatchFiles batch(plan.Folder);
    for (const auto& folder : {batch.Folder, batch.Tasks(), batch.Logs()}) platform::RefuseLink(folders, folder);
    for (std::size_t task = 1; task <= plan.Tasks.size(); ++task) platform::RefuseLink(folders, batch.Task(task));
    for (const std::string& subfolder : subfolders) platform::RefuseLink(folders, plan.Folder / subfolder);
}

void refuse_links(const platform::IFolders& folders, const Plan& plan) {
    refuse_links(folders, plan, subfolders_of(plan));
}

Plan read_plan(const platform::IFileSystem& files, const std::filesystem::path& output) {
    Plan plan;
    read_plan_file(files, output, [&](const Json& json) { plan = plan_of(json); });
    plan.Folder = output;
    plan.Frame.Folder = output;
    return plan;
}

}  // namespace wxl::batch
