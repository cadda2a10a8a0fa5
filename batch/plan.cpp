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
    return {{"text", json_of_text(number.Text)}, {"value", number.Value ? json_of_double(*number.Value) : Json()}};
}

analysis::TypedNumber typed_of(const Json& json) {
    analysis::TypedNumber number;
    number.Text = text_of(json.at("text"));
    if (!json.at("value").is_null()) number.Value = number_of(json.at("value"));
    return number;
}

/// A list that was accepted has no piece that is no number.
Json json_of_typed(const analysis::TypedNumbers& list) {
    return {{"text", json_of_text(list.Text)}, {"values", json_of_doubles(list.Values)}};
}

analysis::TypedNumbers typed_list_of(const Json& json) {
    analysis::TypedNumbers list;
    list.Text = text_of(json.at("text"));
    list.Values = numbers_of(json.at("values"));
    return list;
}

/// Bound by name and number, as in json_of_frame: what is new there does not compile until it is kept here too.
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
            {"extent", static_cast<std::int64_t>(mode)},
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

Settings settings_of(const Json& json) {
    Settings settings;
    settings.LayerName = text_of(json.at("layer"));
    settings.Where = text_of(json.at("where"));
    settings.IdField = text_of(json.at("id_field"));
    settings.SelectedOnly = json.at("selected_only").get<bool>();
    settings.Rescale = json.at("rescale").get<bool>();
    settings.FixedKernel = json.at("fixed_kernel").get<bool>();
    settings.Method = method_of_text(json.at("method").get<std::string>());
    settings.Bandwidths = typed_list_of(json.at("bandwidths"));
    settings.Proportions = typed_list_of(json.at("proportions"));
    settings.AdHocParts = static_cast<std::int32_t>(whole_of(json.at("adhoc_parts"), 1, analysis::kMostParts));
    const auto reach = analysis::reach_of(text_of(json.at("reach")));
    if (!reach) platform::Raise(platform::error_number::kTypeMismatch, "no reach");
    settings.KernelReach = *reach;
    settings.OutputFolder = text_of(json.at("output_folder"));
    settings.Prefix = text_of(json.at("prefix"));
    settings.Cells = analysis::cell_size_of(text_of(json.at("cell_size")));
    number_of(json_of_double(settings.Cells.Typed));
    settings.ScalingFactor = typed_of(json.at("scaling"));
    settings.Verbose = json.at("verbose").get<bool>();
    settings.Mode = static_cast<analysis::ExtentMode>(
        whole_of(json.at("extent"), 0, static_cast<std::int64_t>(analysis::ExtentMode::kReference)));
    settings.Buffer = typed_of(json.at("buffer"));
    settings.ReferenceName = text_of(json.at("reference"));
    settings.Isopleths = json.at("isopleths").get<bool>();
    settings.Percentages = typed_list_of(json.at("percentages"));
    settings.Lines = json.at("lines").get<bool>();
    settings.Polygons = json.at("polygons").get<bool>();
    settings.Donuts = json.at("donuts").get<bool>();
    settings.ConvexPercentages = typed_list_of(json.at("convex_percentages"));
    settings.Silent = json.at("silent").get<bool>();
    settings.Html = json.at("html").get<bool>();
    settings.RasterFormat = json.at("raster_format").get<std::string>();
    settings.AnimalsPerSubfolder = static_cast<std::size_t>(whole_of(json.at("animals_per_subfolder"), 0, INT64_MAX));
    settings.GeoPackage = json.at("geopackage").get<bool>();
    settings.AsksSearchesOnly = json.at("asks_searches_only").get<bool>();
    return settings;
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

/// The output folder is where the plan is found.
Json json_of_frame(const RunFrame& frame) {
    const auto& [settings, source, sourceOptions, textIds, values, extent, reference, referenceRaster, outputFolder] =
        frame;
    return {{"settings", json_of_settings(settings)},
            {"source", json_of_text(source)},
            {"source_options", json_of_texts(sourceOptions)},
            {"text_ids", textIds},
            {"values", json_of_doubles(values)},
            {"layer_extent", json_of_doubles({extent.XMin, extent.YMin, extent.XMax, extent.YMax})},
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
    RunFrame frame;
    frame.Wanted = settings_of(json.at("settings"));
    frame.Source = text_of(json.at("source"));
    frame.SourceOptions = texts_of(json.at("source_options"));
    frame.TextIds = json.at("text_ids").get<bool>();
    frame.Values = numbers_of(json.at("values"));
    const auto extent = doubles_of(json.at("layer_extent"));
    frame.LayerExtent = {extent.at(0), extent.at(1), extent.at(2), extent.at(3)};
    // Of the other two ways to choose an extent it stays empty: infinite.
    if (frame.Wanted.Mode == analysis::ExtentMode::kFull) numbers_of(json.at("layer_extent"));
    frame.Reference = reference_of(json.at("reference"));
    frame.ReferenceRaster = raster_of(json.at("reference_raster"));
    check_frame(frame);
    return frame;
}

Json json_of_animals(const std::vector<PlannedAnimal>& animals) {
    Json json = Json::array();
    for (const PlannedAnimal& animal : animals)
        json.push_back({json_of_value(animal.Id), json_of_text(animal.NamingId), json_of_text(animal.Subfolder),
                        animal.StepsBack, json_of_times(animal.Times), json_of_error(animal.Error)});
    return json;
}

/// Names come from a file that anybody may have changed: none may leave the output folder.
std::vector<PlannedAnimal> animals_of(const Json& json, const std::string& prefix) {
    std::vector<PlannedAnimal> animals;
    for (const Json& one : json) {
        animals.push_back({value_of(one.at(0)), text_of(one.at(1)), text_of(one.at(2)),
                           whole_of(one.at(3), 0, INT64_MAX), times_of(one.at(4)), error_of(one.at(5))});
        platform::CheckDatasetName(prefix + animals.back().NamingId);
        if (!animals.back().Subfolder.empty()) platform::CheckDatasetName(animals.back().Subfolder);
    }
    return animals;
}

Plan plan_of(const Json& json) {
    if (estimator_of(json) != kKernelEstimator)
        platform::Raise(platform::error_number::kInvalidCall, "it plans other estimates");
    Plan plan;
    take_head(json, plan);
    plan.Frame = frame_of(json.at("frame"));
    plan.Animals = animals_of(json.at("animals"), plan.Frame.Wanted.Prefix);
    plan.Tasks = tasks_of(json.at("tasks"), plan.DistributionCount());
    plan.ReportHead = texts_of(json.at("report_head"));
    return plan;
}

}  // namespace

void write_plan(platform::IFileSystem& files, const BatchFiles& batch, const Plan& plan) {
    Json json = json_of_head(plan, kKernelEstimator);
    json["frame"] = json_of_frame(plan.Frame);
    json["tasks"] = json_of_tasks(plan.Tasks);
    json["animals"] = json_of_animals(plan.Animals);
    json["report_head"] = json_of_texts(plan.ReportHead);
    write_json(files, batch.Plan(), json);
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
