#include "batch/range_record_codec.h"

#include "batch/plan_codec.h"

#include <cstdint>
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
    return json_of_doubles({matrix.XX, matrix.XY, matrix.YY});
}

Matrix2 matrix_of(const Json& json) {
    return {double_of(json.at(0)), double_of(json.at(1)), double_of(json.at(2))};
}

Json json_of_scales(const TimeScales& scales) {
    return json_of_doubles({scales.Position, scales.Velocity});
}

TimeScales scales_of(const Json& json) {
    return {double_of(json.at(0)), double_of(json.at(1))};
}

/// Bound by name and number, as the record below.
Json json_of_model(const FittedModel& fitted) {
    const auto& [model, shape, status, collapsedTo, used, deviations, covariance, mean, logLikelihood, aicc, dofArea,
                 dofMean] = fitted;
    return {json_of_enumeration(model.Kind),   json_of_scales(model.Scales),
            json_of_enumeration(shape),        json_of_enumeration(status),
            json_of_enumeration(collapsedTo),  json_of_enumeration(used),
            json_of_scales(deviations),        json_of_matrix(covariance),
            json_of_doubles({mean.X, mean.Y}), json_of_doubles({logLikelihood, aicc, dofArea, dofMean})};
}

FittedModel model_of(const Json& json) {
    using movement_models::ModelKind;
    FittedModel fitted;
    fitted.Model = {enumeration_of(json.at(0), ModelKind::kOuf), scales_of(json.at(1))};
    fitted.Shape = enumeration_of(json.at(2), movement_models::RangeShape::kAnisotropic);
    fitted.Status = enumeration_of(json.at(3), movement_models::FitStatus::kNoNumber);
    fitted.CollapsedTo = enumeration_of(json.at(4), ModelKind::kOuf);
    fitted.Used = enumeration_of(json.at(5), movement_models::Estimation::kPhreml);
    fitted.Deviations = scales_of(json.at(6));
    fitted.Covariance = matrix_of(json.at(7));
    fitted.Mean = {double_of(json.at(8).at(0)), double_of(json.at(8).at(1))};
    const std::vector<double> numbers = doubles_of(json.at(9));
    fitted.LogLikelihood = numbers.at(0);
    fitted.Aicc = numbers.at(1);
    fitted.DofArea = numbers.at(2);
    fitted.DofMean = numbers.at(3);
    return fitted;
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

Json json_of_verdict(const movement_models::Verdict& verdict) {
    const auto& [resident, text, warnings] = verdict;
    return {resident, json_of_text(text), json_of_texts(warnings)};
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
    RangeRecord record;
    record.Id = value_of(json.at("id"));
    record.NamingId = text_of(json.at("naming_id"));
    record.Given = count_of(json.at("given"));
    record.Used = count_of(json.at("used"));
    record.First = text_of(json.at("first"));
    record.Last = text_of(json.at("last"));
    record.Duration = double_of(json.at("duration"));
    for (const Json& model : json.at("models")) record.Models.push_back(model_of(model));
    if (!json.at("chosen").is_null()) record.Chosen = model_of(json.at("chosen"));
    record.GivenModel = json.at("given_model").get<bool>();
    for (const Json& point : json.at("variogram"))
        record.Variogram.push_back({double_of(point.at(0)), double_of(point.at(1)), double_of(point.at(2))});
    const Json& verdict = json.at("verdict");
    record.Verdict = {verdict.at(0).get<bool>(), text_of(verdict.at(1)), texts_of(verdict.at(2))};
    record.Notes = texts_of(json.at("notes"));
    record.Reason = text_of(json.at("reason"));
    record.NotWritten = json.at("not_written").get<bool>();
    record.Matrix = matrix_of(json.at("matrix"));
    const std::vector<double> kernel = doubles_of(json.at("kernel"));
    record.H = kernel.at(0);
    record.DofBandwidth = kernel.at(1);
    record.Bias = kernel.at(2);
    record.EffectiveWeights = kernel.at(3);
    record.ZeroWeights = count_of(json.at("zero_weights"));
    record.Grid = grid_of(json.at("grid"));
    record.Volume = double_of(json.at("volume"));
    record.HighestAtEdge = double_of(json.at("highest_at_edge"));
    for (const Json& one : json.at("isopleths"))
        record.Isopleths.push_back(
            {double_of(one.at(0)), one.at(1).get<std::string>(), double_of(one.at(2)), optional_of(one.at(3))});
    record.Subfolder = text_of(json.at("subfolder"));
    record.RasterName = text_of(json.at("raster"));
    record.Files = texts_of(json.at("files"));
    for (const Json& outline : json.at("outlines")) record.Outlines.push_back(shape_of(outline));
    return record;
}

Json json_of_entry(const RangeEntry& entry) {
    Json lines = Json::array();
    for (const ToldLine& line : entry.Lines) lines.push_back({line.Problem, json_of_text(line.Text)});
    return {{"distribution", entry.Animal}, {"record", json_of_record(entry.Record)}, {"lines", std::move(lines)}};
}

RangeEntry range_entry_of(const Json& json) {
    RangeEntry entry;
    entry.Animal = count_of(json.at("distribution"));
    entry.Record = range_record_of(json.at("record"));
    for (const Json& line : json.at("lines")) entry.Lines.push_back({line.at(0).get<bool>(), text_of(line.at(1))});
    return entry;
}

}  // namespace wxl::batch
