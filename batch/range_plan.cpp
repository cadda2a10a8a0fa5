#include "batch/range_plan.h"

#include "akde/dry_run.h"
#include "akde/range_run.h"
#include "batch/plan_codec.h"
#include "batch/point_store.h"
#include "batch/task_packing.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace wxl::batch {
namespace {

using akde::RangeSettings;
using akde::TimedAnimal;
using akde::TimedAnimals;
using platform::Point;

constexpr const char* kOtherPoints =
    "The batch's points do not belong to its plan. Plan the batch anew with --overwrite.";

Json json_of_fit(const akde::FitSettings& fit) {
    const auto& [method, given] = fit;
    Json model;
    if (given) {
        const auto& [autocorrelation, shape] = *given;
        const auto& [kind, scales] = autocorrelation;
        const auto& [position, velocity] = scales;
        model = {json_of_enumeration(kind), json_of_enumeration(shape), json_of_double(position),
                 json_of_double(velocity)};
    }
    return {{"method", json_of_enumeration(method)}, {"given", std::move(model)}};
}

akde::FitSettings fit_of(const Json& json) {
    akde::FitSettings fit{.Method = enumeration_of(json.at("method"), movement_models::Estimation::kPhreml),
                          .Given = {}};
    const Json& given = json.at("given");
    if (given.is_null()) return fit;
    fit.Given = akde::GivenModel{
        .Model = {.Kind = enumeration_of(given.at(0), movement_models::ModelKind::kOuf),
                  .Scales = {.Position = number_of(given.at(2), 0.0), .Velocity = number_of(given.at(3), 0.0)}},
        .Shape = enumeration_of(given.at(1), movement_models::RangeShape::kAnisotropic)};
    return fit;
}

std::optional<double> optional_number_of(const Json& json) {
    return json.is_null() ? std::nullopt : std::optional(number_of(json));
}

/// Bound by name and number: what is new there does not compile until it is kept here too. The output folder is where
/// the plan is found.
Json json_of_settings(const RangeSettings& settings) {
    const auto& [fields, fit, folder, prefix, cellSize, scaling, extent, buffer, reference, referenceName, rasterFormat,
                 percentages, optimal, lines, geoPackage, html, animalsPerSubfolder, overwrite, layerName, source,
                 sourceOptions, where, selectedOnly] = settings;
    const auto& [idField, timeField] = fields;
    return {{"id_field", json_of_text(idField)},
            {"time_field", json_of_text(timeField)},
            {"fit", json_of_fit(fit)},
            {"prefix", json_of_text(prefix)},
            {"cell_size", json_of_optional(cellSize)},
            {"scaling", json_of_double(scaling)},
            {"extent", json_of_enumeration(extent)},
            {"buffer", json_of_optional(buffer)},
            {"reference", json_of_grid(reference)},
            {"reference_name", json_of_text(referenceName)},
            {"raster_format", rasterFormat},
            {"percentages", json_of_doubles(percentages)},
            {"optimal", optimal},
            {"lines", lines},
            {"geopackage", geoPackage},
            {"html", html},
            {"animals_per_subfolder", animalsPerSubfolder},
            {"overwrite", overwrite},
            {"layer", json_of_text(layerName)},
            {"source", json_of_text(source)},
            {"source_options", json_of_texts(sourceOptions)},
            {"where", json_of_text(where)},
            {"selected_only", selectedOnly}};
}

/// What a run cannot lack, whatever the file says.
void check_settings(const RangeSettings& settings) {
    if (!(settings.Scaling > 0.0) || (settings.CellSize && !(*settings.CellSize > 0.0)))
        platform::Raise(platform::error_number::kSubscript, "no scaling factor or cell size");
    for (const double percent : settings.Percentages)
        if (!(percent > 0.0 && percent < 100.0))
            platform::Raise(platform::error_number::kSubscript, "other percentages");
    const bool ownGrid = settings.Extent == akde::RangeExtent::kMinimum;
    if (!ownGrid && !(settings.Reference.CellSize > 0.0))
        platform::Raise(platform::error_number::kSubscript, "no grid");
}

RangeSettings settings_of(const Json& json) {
    RangeSettings settings{
        .Fields = {.Id = text_of(json.at("id_field")), .Time = text_of(json.at("time_field"))},
        .Fit = fit_of(json.at("fit")),
        .Folder = {},
        .Prefix = text_of(json.at("prefix")),
        .CellSize = optional_number_of(json.at("cell_size")),
        .Scaling = number_of(json.at("scaling")),
        .Extent = enumeration_of(json.at("extent"), akde::RangeExtent::kReference),
        .Buffer = optional_number_of(json.at("buffer")),
        .Reference = grid_of(json.at("reference")),
        .ReferenceName = text_of(json.at("reference_name")),
        .RasterFormat = json.at("raster_format").get<std::string>(),
        .Percentages = numbers_of(json.at("percentages")),
        .Optimal = json.at("optimal").get<bool>(),
        .Lines = json.at("lines").get<bool>(),
        .GeoPackage = json.at("geopackage").get<bool>(),
        .Html = json.at("html").get<bool>(),
        .AnimalsPerSubfolder = static_cast<std::size_t>(whole_of(json.at("animals_per_subfolder"), 0, INT64_MAX)),
        .Overwrite = json.at("overwrite").get<bool>(),
        .LayerName = text_of(json.at("layer")),
        .Source = text_of(json.at("source")),
        .SourceOptions = texts_of(json.at("source_options")),
        .Where = text_of(json.at("where")),
        .SelectedOnly = json.at("selected_only").get<bool>(),
    };
    check_settings(settings);
    return settings;
}

/// Bound by name and number; fixes and times are in the stores.
Json json_of_animal(const TimedAnimal& animal) {
    const auto& [id, namingId, fixes, times, withoutTime, firstUnreadable, subfolder] = animal;
    return {json_of_value(id), json_of_text(namingId), withoutTime, json_of_text(firstUnreadable),
            json_of_text(subfolder)};
}

/// Names come from a file that anybody may have changed: none may leave the output folder.
TimedAnimal animal_of(const Json& json, const std::string& prefix) {
    TimedAnimal animal{.Id = value_of(json.at(0)),
                       .NamingId = text_of(json.at(1)),
                       .Fixes = {},
                       .Times = {},
                       .WithoutTime = static_cast<std::size_t>(whole_of(json.at(2), 0, INT64_MAX)),
                       .FirstUnreadable = text_of(json.at(3)),
                       .Subfolder = text_of(json.at(4))};
    platform::CheckDatasetName(prefix + animal.NamingId);
    if (!animal.Subfolder.empty()) platform::CheckDatasetName(animal.Subfolder);
    return animal;
}

Json json_of_animals(const TimedAnimals& animals) {
    const auto& [list, reference, withoutId, numberTimes] = animals;
    Json heads = Json::array();
    for (const TimedAnimal& animal : list) heads.push_back(json_of_animal(animal));
    return {{"reference", json_of_reference(reference)},
            {"without_id", withoutId},
            {"number_times", numberTimes},
            {"list", std::move(heads)}};
}

TimedAnimals animals_of(const Json& json, const std::string& prefix) {
    TimedAnimals animals{.Animals = {},
                         .Reference = reference_of(json.at("reference")),
                         .WithoutId = whole_of(json.at("without_id"), 0, INT64_MAX),
                         .NumberTimes = json.at("number_times").get<bool>()};
    for (const Json& animal : json.at("list")) animals.Animals.push_back(animal_of(animal, prefix));
    return animals;
}

RangePlan plan_of(const Json& json) {
    if (estimator_of(json) != kRangeEstimator)
        platform::Raise(platform::error_number::kInvalidCall, "it plans other estimates");
    RangePlan plan;
    take_head(json, plan);
    plan.Wanted = settings_of(json.at("settings"));
    plan.Animals = animals_of(json.at("animals"), plan.Wanted.Prefix);
    plan.Tasks = tasks_of(json.at("tasks"), plan.Animals.Animals.size());
    return plan;
}

std::vector<PlannedTask> tasks_of(const RangeSettings& settings, const TimedAnimals& animals, std::size_t wanted) {
    const std::vector<akde::ComingRange> ranges = akde::dry_run(settings, animals);
    std::vector<double> seconds;
    double total = 0.0;
    for (const akde::ComingRange& range : ranges) total += seconds.emplace_back(range.Seconds);
    std::vector<PlannedTask> tasks;
    for (TaskWork& work : pack_tasks(seconds, wanted == 0 ? usual_task_count(total) : wanted)) {
        PlannedTask task;
        for (const std::size_t animal : work) {
            task.Seconds += ranges[animal].Seconds;
            task.Megabytes = std::max(task.Megabytes, ranges[animal].Megabytes);
        }
        task.Work = std::move(work);
        tasks.push_back(std::move(task));
    }
    return tasks;
}

/// A moment has as many bytes as a point: its whole seconds travel as the bits of a number that is never reckoned with.
Point point_of(const akde::Moment& moment) {
    return {std::bit_cast<double>(moment.Seconds), moment.Fraction};
}

akde::Moment moment_of(const Point& point) {
    return {std::bit_cast<std::int64_t>(point.X), point.Y};
}

void write_stores(platform::IFileSystem& files, const BatchFiles& batch, const TimedAnimals& animals) {
    std::vector<std::vector<Point>> times;
    std::vector<std::span<const Point>> fixes;
    for (const TimedAnimal& animal : animals.Animals) {
        fixes.emplace_back(animal.Fixes);
        auto& own = times.emplace_back();
        for (const akde::Moment& moment : animal.Times) own.push_back(point_of(moment));
    }
    const std::vector<std::span<const Point>> moments(times.begin(), times.end());
    write_points(files, batch.Points(), fixes);
    write_points(files, batch.Times(), moments);
}

/// What is said of all animals together.
TimedAnimals without_animals(const TimedAnimals& animals) {
    const auto& [list, reference, withoutId, numberTimes] = animals;
    return {.Animals = {}, .Reference = reference, .WithoutId = withoutId, .NumberTimes = numberTimes};
}

TimedAnimals without_fixes(const TimedAnimals& animals) {
    TimedAnimals heads = without_animals(animals);
    for (const auto& [id, namingId, fixes, times, withoutTime, firstUnreadable, subfolder] : animals.Animals)
        heads.Animals.push_back({.Id = id,
                                 .NamingId = namingId,
                                 .Fixes = {},
                                 .Times = {},
                                 .WithoutTime = withoutTime,
                                 .FirstUnreadable = firstUnreadable,
                                 .Subfolder = subfolder});
    return heads;
}

void write_range_plan(platform::IFileSystem& files, const RangePlan& plan) {
    Json json = json_of_head(plan, kRangeEstimator);
    const auto& [wanted, animals] = static_cast<const PlannedRanges&>(plan);
    json["settings"] = json_of_settings(wanted);
    json["tasks"] = json_of_tasks(plan.Tasks);
    json["animals"] = json_of_animals(animals);
    write_json(files, BatchFiles(plan.Folder).Plan(), json);
}

}  // namespace

RangePlan plan_ranges(const platform::Services& services, const RangeSettings& settings, const TimedAnimals& animals,
                      const PlanWishes& wishes) {
    const auto lock = akde::lock_output(settings, animals, services);
    RangePlan plan;
    begin_plan(services, settings.Folder, wishes, plan);
    plan.Wanted = settings;
    plan.Animals = without_fixes(animals);
    plan.Tasks = tasks_of(settings, animals, wishes.Tasks);
    remove_batch(services, plan.Folder);
    make_folders(services, plan, akde::subfolders_of(animals));
    write_stores(*services.Files, BatchFiles(plan.Folder), animals);
    write_range_plan(*services.Files, plan);
    return plan;
}

RangePlan read_range_plan(const platform::IFileSystem& files, const std::filesystem::path& output) {
    RangePlan plan;
    read_plan_file(files, output, [&](const Json& json) { plan = plan_of(json); });
    plan.Folder = output;
    plan.Wanted.Folder = output;
    return plan;
}

bool is_range_plan(const platform::IFileSystem& files, const std::filesystem::path& output) {
    bool ranges = false;
    read_plan_file(files, output, [&](const Json& json) { ranges = estimator_of(json) == kRangeEstimator; });
    return ranges;
}

struct TimedStore::Stores {
    PointStore Fixes;
    PointStore Times;
};

TimedStore::TimedStore(const platform::IFileSystem& files, const RangePlan& plan)
    : m_plan(plan),
      m_stores(std::make_unique<Stores>(Stores{PointStore(files, BatchFiles(plan.Folder).Points()),
                                               PointStore(files, BatchFiles(plan.Folder).Times())})) {
    const std::size_t animals = plan.Animals.Animals.size();
    if (m_stores->Fixes.AnimalCount() != animals || m_stores->Times.AnimalCount() != animals)
        platform::Raise(platform::error_number::kDeviceIo, kOtherPoints);
}

TimedStore::~TimedStore() = default;

TimedAnimal TimedStore::Read(std::size_t animal) const {
    TimedAnimal read = m_plan.Animals.Animals.at(animal);
    read.Fixes = m_stores->Fixes.Read(animal);
    for (const Point& point : m_stores->Times.Read(animal)) read.Times.push_back(moment_of(point));
    if (read.Times.size() != read.Fixes.size()) platform::Raise(platform::error_number::kDeviceIo, kOtherPoints);
    return read;
}

TimedAnimals TimedStore::ReadAll() const {
    TimedAnimals animals = without_animals(m_plan.Animals);
    for (std::size_t i = 0; i < m_plan.Animals.Animals.size(); ++i) animals.Animals.push_back(Read(i));
    return animals;
}

}  // namespace wxl::batch
