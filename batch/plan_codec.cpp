#include "batch/plan_codec.h"

#include "platform/runtime_error.h"
#include "platform/text.h"

#include <cstdint>

namespace wxl::batch {
namespace {

constexpr std::int64_t kFormat = 6;
constexpr const char* kAdvice = "Plan the batch anew with --overwrite.";

Json json_of_input(const std::vector<InputFile>& input) {
    Json json = Json::array();
    for (const auto& [path, bytes, modified, sha256] : input)
        json.push_back({{"path", json_of_text(path)}, {"bytes", bytes}, {"modified", modified}, {"sha256", sha256}});
    return json;
}

std::vector<InputFile> input_of(const Json& json) {
    std::vector<InputFile> input;
    for (const Json& file : json)
        input.push_back({.Path = text_of(file.at("path")),
                         .Bytes = static_cast<std::uint64_t>(whole_of(file.at("bytes"), 0, INT64_MAX)),
                         .Modified = whole_of(file.at("modified"), INT64_MIN, INT64_MAX),
                         .Sha256 = file.at("sha256").get<std::string>()});
    return input;
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

}  // namespace

double number_of(const Json& json, double least, double most) {
    const double number = double_of(json);
    if (!(number >= least && number <= most))
        platform::Raise(platform::error_number::kInvalidCall,
                        "the number " + platform::NumberText(number) + ", which cannot be");
    return number;
}

std::vector<double> numbers_of(const Json& json, double least) {
    std::vector<double> numbers = doubles_of(json);
    for (const double number : numbers) number_of(json_of_double(number), least);
    return numbers;
}

Json json_of_tasks(const std::vector<PlannedTask>& tasks) {
    Json json = Json::array();
    for (const auto& [work, seconds, megabytes] : tasks)
        json.push_back({{"distributions", json_of_work(work)},
                        {"seconds", json_of_double(seconds)},
                        {"megabytes", json_of_double(megabytes)}});
    return json;
}

std::vector<PlannedTask> tasks_of(const Json& json, std::size_t distributions) {
    std::vector<PlannedTask> tasks;
    std::vector<bool> met(distributions, false);
    for (const Json& one : json) {
        tasks.push_back({.Work = work_of(one.at("distributions"), distributions),
                         .Seconds = number_of(one.at("seconds"), 0.0),
                         .Megabytes = number_of(one.at("megabytes"), 0.0)});
        for (const std::size_t distribution : tasks.back().Work) {
            if (met[distribution]) platform::Raise(platform::error_number::kSubscript, "work that is planned twice");
            met[distribution] = true;
        }
    }
    for (const bool one : met)
        if (!one) platform::Raise(platform::error_number::kSubscript, "work that is in no task");
    return tasks;
}

Json json_of_reference(const platform::SpatialReference& reference) {
    const auto& [name, wkt, unit, metresPerUnit, geographic] = reference;
    return {{"name", json_of_text(name)},
            {"wkt", json_of_text(wkt)},
            {"unit", json_of_text(unit)},
            {"metres_per_unit", json_of_double(metresPerUnit)},
            {"geographic", geographic}};
}

platform::SpatialReference reference_of(const Json& json) {
    return {.Name = text_of(json.at("name")),
            .Wkt = text_of(json.at("wkt")),
            .UnitName = text_of(json.at("unit")),
            .MetersPerUnit = number_of(json.at("metres_per_unit"), 0.0),
            .IsGeographic = json.at("geographic").get<bool>()};
}

Json json_of_grid(const platform::RasterGeometry& grid) {
    const auto& [originX, originY, cellSize, columns, rows] = grid;
    return {{"origin_x", json_of_double(originX)},
            {"origin_y", json_of_double(originY)},
            {"cell_size", json_of_double(cellSize)},
            {"columns", columns},
            {"rows", rows}};
}

platform::RasterGeometry grid_of(const Json& json) {
    return {.OriginX = number_of(json.at("origin_x")),
            .OriginY = number_of(json.at("origin_y")),
            .CellSize = number_of(json.at("cell_size"), 0.0),
            .Columns = static_cast<std::int32_t>(whole_of(json.at("columns"), 0, INT32_MAX)),
            .Rows = static_cast<std::int32_t>(whole_of(json.at("rows"), 0, INT32_MAX))};
}

std::string estimator_of(const Json& plan) {
    if (whole_of(plan.at("format"), 0, INT64_MAX) != kFormat)
        platform::Raise(platform::error_number::kInvalidCall, "another version of wxl wrote it");
    return plan.at("estimator").get<std::string>();
}

Json json_of_head(const PlanHead& plan, std::string_view estimator) {
    const auto& [id, program, planned, folder, input, tasks] = plan;
    return {{"format", kFormat},  {"estimator", estimator}, {"id", id},
            {"program", program}, {"planned", planned},     {"input", json_of_input(input)}};
}

void take_head(const Json& json, PlanHead& plan) {
    plan.Id = json.at("id").get<std::string>();
    plan.Program = json.at("program").get<std::string>();
    plan.Planned = json.at("planned").get<std::string>();
    plan.Input = input_of(json.at("input"));
}

void read_plan_file(const platform::IFileSystem& files, const std::filesystem::path& output,
                    const std::function<void(const Json&)>& read) {
    const BatchFiles batch(output);
    if (!files.FileExists(batch.Plan()))
        platform::Raise(platform::error_number::kFileNotFound,
                        output.string() + " holds no planned batch: plan one with wxl batch plan");
    read_json(files, batch.Plan(), kAdvice, read);
}

}  // namespace wxl::batch
