#include "batch/plan.h"

#include "analysis/settings_text.h"
#include "batch/record_codec.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <cmath>
#include <utility>

namespace wxl::batch {
namespace {

using analysis::RunFrame;
using analysis::Settings;

constexpr std::int64_t kFormat = 3;
constexpr const char* kAdvice = "Plan the batch anew with --overwrite.";

constexpr double kLargest = 1e15;  // of any length, factor, time or size in a plan

/// A number that a run can work with; any text could stand in the file.
double number_of(const Json& json, double least = -kLargest, double most = kLargest) {
    const double number = double_of(json);
    if (!(number >= least && number <= most))
        platform::Raise(platform::error_number::kInvalidCall,
                        "the number " + platform::NumberText(number) + ", which cannot be");
    return number;
}

std::vector<double> numbers_of(const Json& json, double least = -kLargest) {
    std::vector<double> numbers = doubles_of(json);
    for (const double number : numbers) number_of(json_of_double(number), least);
    return numbers;
}

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

Json json_of_reference(const platform::SpatialReference& reference) {
    return {{"name", json_of_text(reference.Name)},
            {"wkt", json_of_text(reference.Wkt)},
            {"unit", json_of_text(reference.UnitName)},
            {"metres_per_unit", json_of_double(reference.MetersPerUnit)},
            {"geographic", reference.IsGeographic}};
}

platform::SpatialReference reference_of(const Json& json) {
    return {text_of(json.at("name")), text_of(json.at("wkt")), text_of(json.at("unit")),
            number_of(json.at("metres_per_unit"), 0.0), json.at("geographic").get<bool>()};
}

Json json_of_raster(const std::shared_ptr<platform::IRasterLayer>& raster) {
    if (!raster) return nullptr;
    const platform::RasterGeometry grid = raster->Geometry();
    return {{"name", json_of_text(raster->Name())},
            {"origin_x", json_of_double(grid.OriginX)},
            {"origin_y", json_of_double(grid.OriginY)},
            {"cell_size", json_of_double(grid.CellSize)},
            {"columns", grid.Columns},
            {"rows", grid.Rows}};
}

std::shared_ptr<platform::IRasterLayer> raster_of(const Json& json) {
    if (json.is_null()) return nullptr;
    const platform::RasterGeometry grid = {number_of(json.at("origin_x")), number_of(json.at("origin_y")),
                                           number_of(json.at("cell_size"), 0.0),
                                           static_cast<std::int32_t>(whole_of(json.at("columns"), 0, INT32_MAX)),
                                           static_cast<std::int32_t>(whole_of(json.at("rows"), 0, INT32_MAX))};
    return std::make_shared<PlannedRaster>(text_of(json.at("name")), grid);
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

Json json_of_input(const std::vector<InputFile>& input) {
    Json json = Json::array();
    for (const InputFile& file : input)
        json.push_back({{"path", json_of_text(file.Path)},
                        {"bytes", file.Bytes},
                        {"modified", file.Modified},
                        {"sha256", file.Sha256}});
    return json;
}

std::vector<InputFile> input_of(const Json& json) {
    std::vector<InputFile> input;
    for (const Json& file : json)
        input.push_back({text_of(file.at("path")), static_cast<std::uint64_t>(whole_of(file.at("bytes"), 0, INT64_MAX)),
                         whole_of(file.at("modified"), INT64_MIN, INT64_MAX), file.at("sha256").get<std::string>()});
    return input;
}

Json json_of_animals(const std::vector<PlannedAnimal>& animals) {
    Json json = Json::array();
    for (const PlannedAnimal& animal : animals)
        json.push_back({json_of_value(animal.Id), json_of_text(animal.NamingId), json_of_text(animal.Subfolder),
                        animal.StepsBack, json_of_times(animal.Times)});
    return json;
}

/// Names come from a file that anybody may have changed: none may leave the output folder.
std::vector<PlannedAnimal> animals_of(const Json& json, const std::string& prefix) {
    std::vector<PlannedAnimal> animals;
    for (const Json& one : json) {
        animals.push_back({value_of(one.at(0)), text_of(one.at(1)), text_of(one.at(2)),
                           whole_of(one.at(3), 0, INT64_MAX), times_of(one.at(4))});
        platform::CheckDatasetName(prefix + animals.back().NamingId);
        if (!animals.back().Subfolder.empty()) platform::CheckDatasetName(animals.back().Subfolder);
    }
    return animals;
}

/// Runs of consecutive numbers as first and last.
Json json_of_work(const TaskWork& work) {
    Json json = Json::array();
    for (std::size_t i = 0; i < work.size();) {
        std::size_t end = i + 1;
        while (end < work.size() && work[end] == work[end - 1] + 1) ++end;
        json.push_back({work[i], work[end - 1]});
        i = end;
    }
    return json;
}

TaskWork work_of(const Json& json, std::size_t distributions) {
    TaskWork work;
    std::int64_t next = 0;
    for (const Json& run : json) {
        const std::int64_t last = static_cast<std::int64_t>(distributions) - 1;
        const std::int64_t first = whole_of(run.at(0), next, last);
        const std::int64_t end = whole_of(run.at(1), first, last);
        for (std::int64_t i = first; i <= end; ++i) work.push_back(static_cast<std::size_t>(i));
        next = end + 1;
    }
    return work;
}

Json json_of_tasks(const std::vector<PlannedTask>& tasks) {
    Json json = Json::array();
    for (const PlannedTask& task : tasks)
        json.push_back({{"distributions", json_of_work(task.Work)},
                        {"seconds", json_of_double(task.Seconds)},
                        {"megabytes", json_of_double(task.Megabytes)}});
    return json;
}

std::vector<PlannedTask> tasks_of(const Json& json, std::size_t distributions) {
    std::vector<PlannedTask> tasks;
    std::vector<bool> met(distributions, false);
    for (const Json& one : json) {
        tasks.push_back({work_of(one.at("distributions"), distributions), number_of(one.at("seconds"), 0.0),
                         number_of(one.at("megabytes"), 0.0)});
        for (const std::size_t distribution : tasks.back().Work) {
            if (met[distribution]) platform::Raise(platform::error_number::kSubscript, "work that is planned twice");
            met[distribution] = true;
        }
    }
    for (const bool one : met)
        if (!one) platform::Raise(platform::error_number::kSubscript, "work that is in no task");
    return tasks;
}

Plan plan_of(const Json& json) {
    if (whole_of(json.at("format"), 0, INT64_MAX) != kFormat)
        platform::Raise(platform::error_number::kInvalidCall, "another version of wxl wrote it");
    Plan plan;
    plan.Id = json.at("id").get<std::string>();
    plan.Program = json.at("program").get<std::string>();
    plan.Planned = json.at("planned").get<std::string>();
    plan.Input = input_of(json.at("input"));
    plan.Frame = frame_of(json.at("frame"));
    plan.Animals = animals_of(json.at("animals"), plan.Frame.Wanted.Prefix);
    plan.Tasks = tasks_of(json.at("tasks"), plan.DistributionCount());
    plan.ReportHead = texts_of(json.at("report_head"));
    return plan;
}

}  // namespace

void write_plan(platform::IFileSystem& files, const BatchFiles& batch, const Plan& plan) {
    write_json(files, batch.Plan(),
               {{"format", kFormat},
                {"id", plan.Id},
                {"program", plan.Program},
                {"planned", plan.Planned},
                {"input", json_of_input(plan.Input)},
                {"frame", json_of_frame(plan.Frame)},
                {"tasks", json_of_tasks(plan.Tasks)},
                {"animals", json_of_animals(plan.Animals)},
                {"report_head", json_of_texts(plan.ReportHead)}});
}

void refuse_links(const platform::IFolders& folders, const Plan& plan) {
    const BatchFiles batch(plan.Frame.Folder);
    for (const auto& folder : {batch.Folder, batch.Tasks(), batch.Logs()}) platform::RefuseLink(folders, folder);
    for (std::size_t task = 1; task <= plan.Tasks.size(); ++task) platform::RefuseLink(folders, batch.Task(task));
    std::string last;
    for (const PlannedAnimal& animal : plan.Animals)
        if (animal.Subfolder != last) platform::RefuseLink(folders, plan.Frame.Folder / (last = animal.Subfolder));
}

Plan read_plan(const platform::IFileSystem& files, const std::filesystem::path& output) {
    const BatchFiles batch(output);
    if (!files.FileExists(batch.Plan()))
        platform::Raise(platform::error_number::kFileNotFound,
                        output.string() + " holds no planned batch: plan one with wxl batch plan");
    Plan plan;
    read_json(files, batch.Plan(), kAdvice, [&](const Json& json) { plan = plan_of(json); });
    plan.Frame.Folder = output;
    return plan;
}

}  // namespace wxl::batch
