#include "batch/range_record_codec.h"

#include "batch/plan_codec.h"

#include <cstdint>
#include <optional>
#include <utility>

namespace wxl::batch {
namespace {

using akde::RangeRecord;
using movement_models::FittedModel;
using movement_models::Matrix2;
using movement_models::TimeScales;

std::size_t count_of(const Json& json) {
    return static_cast<std::size_t>(whole_of(json, 0, INT64_MAX));
}

Json json_of_matrix(const Matrix2& matrix) {
    const auto& [xx, xy, yy] = matrix;
    return json_of_doubles({xx, xy, yy});
}

Matrix2 matrix_of(const Json& json) {
    return {.XX = double_of(json.at(0)), .XY = double_of(json.at(1)), .YY = double_of(json.at(2))};
}

Json json_of_scales(const TimeScales& scales) {
    const auto& [position, velocity] = scales;
    return json_of_doubles({position, velocity});
}

TimeScales scales_of(const Json& json) {
    return {.Position = double_of(json.at(0)), .Velocity = double_of(json.at(1))};
}

/// Bound by name and number, as the record below.
Json json_of_model(const FittedModel& fitted) {
    const auto& [model, shape, status, collapsedTo, used, deviations, covariance, mean, logLikelihood, aicc, dofArea,
                 dofMean] = fitted;
    const auto& [kind, scales] = model;
    return {json_of_enumeration(kind),         json_of_scales(scales),
            json_of_enumeration(shape),        json_of_enumeration(status),
            json_of_enumeration(collapsedTo),  json_of_enumeration(used),
            json_of_scales(deviations),        json_of_matrix(covariance),
            json_of_doubles({mean.X, mean.Y}), json_of_doubles({logLikelihood, aicc, dofArea, dofMean})};
}

FittedModel model_of(const Json& json) {
    using movement_models::ModelKind;
    const std::vector<double> numbers = doubles_of(json.at(9));
    return {.Model = {.Kind = enumeration_of(json.at(0), ModelKind::kOuf), .Scales = scales_of(json.at(1))},
            .Shape = enumeration_of(json.at(2), movement_models::RangeShape::kAnisotropic),
            .Status = enumeration_of(json.at(3), movement_models::FitStatus::kNoNumber),
            .CollapsedTo = enumeration_of(json.at(4), ModelKind::kOuf),
            .Used = enumeration_of(json.at(5), movement_models::Estimation::kPhreml),
            .Deviations = scales_of(json.at(6)),
            .Covariance = matrix_of(json.at(7)),
            .Mean = {double_of(json.at(8).at(0)), double_of(json.at(8).at(1))},
            .LogLikelihood = numbers.at(0),
            .Aicc = numbers.at(1),
            .DofArea = numbers.at(2),
            .DofMean = numbers.at(3)};
}

Json json_of_models(const std::vector<FittedModel>& models) {
    Json json = Json::array();
    for (const FittedModel& model : models) json.push_back(json_of_model(model));
    return json;
}

Json json_of_variogram(const std::vector<movement_models::VariogramPoint>& points) {
    Json json = Json::array();
    for (const auto& [lag, semivariance, pairs] : points) json.push_back(json_of_doubles({lag, semivariance, pairs}));
    return json;
}

Json json_of_isopleths(const std::vector<akde::RangeIsopleth>& isopleths) {
    Json json = Json::array();
    for (const auto& [percent, bound, area, level] : isopleths)
        json.push_back({json_of_double(percent), bound, json_of_double(area), json_of_optional(level)});
    return json;
}

std::vector<FittedModel> models_of(const Json& json) {
    std::vector<FittedModel> models;
    for (const Json& model : json) models.push_back(model_of(model));
    return models;
}

std::vector<movement_models::VariogramPoint> variogram_of(const Json& json) {
    std::vector<movement_models::VariogramPoint> points;
    for (const Json& point : json)
        points.push_back(
            {.Lag = double_of(point.at(0)), .Semivariance = double_of(point.at(1)), .Pairs = double_of(point.at(2))});
    return points;
}

std::vector<akde::RangeIsopleth> isopleths_of(const Json& json) {
    std::vector<akde::RangeIsopleth> isopleths;
    for (const Json& one : json)
        isopleths.push_back({.Percent = double_of(one.at(0)),
                             .Bound = one.at(1).get<std::string>(),
                             .Area = double_of(one.at(2)),
                             .Level = optional_of(one.at(3))});
    return isopleths;
}

std::vector<platform::Geometry> outlines_of(const Json& json) {
    std::vector<platform::Geometry> outlines;
    for (const Json& outline : json) outlines.push_back(shape_of(outline));
    return outlines;
}

Json json_of_verdict(const movement_models::Verdict& verdict) {
    const auto& [resident, text, warnings] = verdict;
    return {resident, json_of_text(text), json_of_texts(warnings)};
}

movement_models::Verdict verdict_of(const Json& json) {
    return {.Resident = json.at(0).get<bool>(), .Text = text_of(json.at(1)), .Warnings = texts_of(json.at(2))};
}

}  // namespace

/// Bound by name and number: a member that is new in the record does not compile until it is kept here too.
Json json_of_record(const RangeRecord& record) {
    const auto& [id, namingId, given, used, first, last, duration, models, chosen, givenModel, variogram, verdict,
                 notes, reason, notWritten, matrix, h, dofBandwidth, bias, effectiveWeights, zeroWeights, grid, volume,
                 highestAtEdge, isopleths, subfolder, rasterName, files, outlines] = record;
    Json shapes = Json::array();
    for (const platform::Geometry& outline : outlines) shapes.push_back(json_of_shape(outline));
    return {{"id", json_of_value(id)},
            {"naming_id", json_of_text(namingId)},
            {"given", given},
            {"used", used},
            {"first", json_of_text(first)},
            {"last", json_of_text(last)},
            {"duration", json_of_double(duration)},
            {"models", json_of_models(models)},
            {"chosen", chosen ? json_of_model(*chosen) : Json()},
            {"given_model", givenModel},
            {"variogram", json_of_variogram(variogram)},
            {"verdict", json_of_verdict(verdict)},
            {"notes", json_of_texts(notes)},
            {"reason", json_of_text(reason)},
            {"not_written", notWritten},
            {"matrix", json_of_matrix(matrix)},
            {"kernel", json_of_doubles({h, dofBandwidth, bias, effectiveWeights})},
            {"zero_weights", zeroWeights},
            {"grid", json_of_grid(grid)},
            {"volume", json_of_double(volume)},
            {"highest_at_edge", json_of_double(highestAtEdge)},
            {"isopleths", json_of_isopleths(isopleths)},
            {"subfolder", json_of_text(subfolder)},
            {"raster", json_of_text(rasterName)},
            {"files", json_of_texts(files)},
            {"outlines", std::move(shapes)}};
}

RangeRecord range_record_of(const Json& json) {
    const Json& chosen = json.at("chosen");
    const std::vector<double> kernel = doubles_of(json.at("kernel"));
    return {
        .Id = value_of(json.at("id")),
        .NamingId = text_of(json.at("naming_id")),
        .Given = count_of(json.at("given")),
        .Used = count_of(json.at("used")),
        .First = text_of(json.at("first")),
        .Last = text_of(json.at("last")),
        .Duration = double_of(json.at("duration")),
        .Models = models_of(json.at("models")),
        .Chosen = chosen.is_null() ? std::nullopt : std::optional(model_of(chosen)),
        .GivenModel = json.at("given_model").get<bool>(),
        .Variogram = variogram_of(json.at("variogram")),
        .Verdict = verdict_of(json.at("verdict")),
        .Notes = texts_of(json.at("notes")),
        .Reason = text_of(json.at("reason")),
        .NotWritten = json.at("not_written").get<bool>(),
        .Matrix = matrix_of(json.at("matrix")),
        .H = kernel.at(0),
        .DofBandwidth = kernel.at(1),
        .Bias = kernel.at(2),
        .EffectiveWeights = kernel.at(3),
        .ZeroWeights = count_of(json.at("zero_weights")),
        .Grid = grid_of(json.at("grid")),
        .Volume = double_of(json.at("volume")),
        .HighestAtEdge = double_of(json.at("highest_at_edge")),
        .Isopleths = isopleths_of(json.at("isopleths")),
        .Subfolder = text_of(json.at("subfolder")),
        .RasterName = text_of(json.at("raster")),
        .Files = texts_of(json.at("files")),
        .Outlines = outlines_of(json.at("outlines")),
    };
}

Json json_of_entry(const RangeEntry& entry) {
    const auto& [animal, record, lines] = entry;
    Json told = Json::array();
    for (const auto& [problem, text] : lines) told.push_back({problem, json_of_text(text)});
    return {{"distribution", animal}, {"record", json_of_record(record)}, {"lines", std::move(told)}};
}

RangeEntry range_entry_of(const Json& json) {
    RangeEntry entry{
        .Animal = count_of(json.at("distribution")), .Record = range_record_of(json.at("record")), .Lines = {}};
    for (const Json& line : json.at("lines"))
        entry.Lines.push_back({.Problem = line.at(0).get<bool>(), .Text = text_of(line.at(1))});
    return entry;
}

}  // namespace wxl::batch
