#include "apps/cli/commands/models.h"

#include "akde/variogram_view.h"
#include "apps/cli/json_values.h"
#include "apps/cli/output_folder.h"
#include "apps/cli/size_text.h"
#include "apps/cli/text_output.h"
#include "movement_models/likelihood.h"
#include "pictures/variogram_picture.h"
#include "platform/file_system.h"
#include "platform/text.h"

#include <algorithm>
#include <CLI/CLI.hpp>
#include <cmath>
#include <filesystem>
#include <fmt/format.h>
#include <optional>
#include <vector>

namespace wxl::cli {

namespace {

namespace fs = std::filesystem;
using namespace movement_models;
using akde::AnimalModels;
using akde::TimedAnimal;
using akde::TimedAnimals;
using platform::NumberText;

constexpr double kLevel = 0.95;

bool is_fitted(const FittedModel& model) {
    return model.Status == FitStatus::kFitted;
}

std::optional<double> if_positive(double value) {
    return value > 0.0 && std::isfinite(value) ? std::optional(value) : std::nullopt;
}

std::optional<double> if_finite(double value) {
    return std::isfinite(value) ? std::optional(value) : std::nullopt;
}

/// What is told of one model, in the order of the columns.
struct ModelRow {
    std::string Name;
    bool Isotropic = false;
    std::optional<double> LogLikelihood;
    std::optional<double> Aicc;
    std::optional<double> Difference;
    std::optional<double> Position;
    std::optional<double> Velocity;
    std::optional<Ellipse> Range;
    std::optional<double> DofArea;
    std::optional<double> Area;
    std::optional<Interval> Limits;
    std::optional<double> Speed;
    std::optional<double> PositionDeviation;
    std::optional<double> VelocityDeviation;
    std::optional<double> DofMean;
    std::string Status;
};

ModelRow row_of(const FittedModel& model, double least) {
    ModelRow row;
    row.Name = model_name(model.Model.Kind);
    row.Isotropic = model.Shape == RangeShape::kIsotropic;
    row.Status = akde::status_text(model);
    if (!is_fitted(model)) return row;
    row.LogLikelihood = if_finite(model.LogLikelihood);
    row.Aicc = if_finite(model.Aicc);
    row.Difference = if_finite(model.Aicc - least);
    row.Position = if_positive(model.Model.Scales.Position);
    row.Velocity = if_positive(akde::velocity_scale(model));
    row.Range = ellipse_of(model.Covariance);
    row.DofArea = if_positive(model.DofArea);
    row.Area = if_finite(model.GaussianArea(kLevel));
    row.Limits = area_interval(model.GaussianArea(kLevel), model.DofArea);
    row.Speed = model.Speed();
    row.PositionDeviation = if_positive(model.Deviations.Position);
    row.VelocityDeviation = if_positive(model.Deviations.Velocity);
    row.DofMean = if_positive(model.DofMean);
    return row;
}

std::vector<ModelRow> rows_of(const AnimalModels& fitted) {
    std::vector<ModelRow> rows;
    const double least = fitted.Chosen ? fitted.Chosen->Aicc : 0.0;
    for (const FittedModel& model : fitted.Models) {
        rows.push_back(row_of(model, least));
        if (fitted.Given) rows.back().Status = "given";
    }
    return rows;
}

Json json_of(const ModelRow& row) {
    return {{"name", row.Name},
            {"isotropic", row.Isotropic},
            {"loglik", json_number(row.LogLikelihood)},
            {"aicc", json_number(row.Aicc)},
            {"delta_aicc", json_number(row.Difference)},
            {"tau_position_s", json_number(row.Position)},
            {"tau_velocity_s", json_number(row.Velocity)},
            {"sigma_major", json_number(row.Range ? std::optional(row.Range->Major) : std::nullopt)},
            {"sigma_minor", json_number(row.Range ? std::optional(row.Range->Minor) : std::nullopt)},
            {"angle", json_number(row.Range ? std::optional(row.Range->Angle) : std::nullopt)},
            {"dof_area", json_number(row.DofArea)},
            {"area95", json_number(row.Area)},
            {"area95_low", json_number(row.Limits ? std::optional(row.Limits->Low) : std::nullopt)},
            {"area95_high", json_number(row.Limits ? std::optional(row.Limits->High) : std::nullopt)},
            {"status", row.Status},
            {"tau_position_sd_s", json_number(row.PositionDeviation)},
            {"tau_velocity_sd_s", json_number(row.VelocityDeviation)},
            {"speed", json_number(row.Speed)},
            {"dof_mean", json_number(row.DofMean)}};
}

Json head_of(const AnimalModels& fitted, bool numberTimes) {
    return {{"id", json_value(fitted.Animal->Id)},
            {"n", fitted.FixesGiven()},
            {"n_used", fitted.Track.Fixes.Size()},
            {"first", json_or_null(fitted.FirstTime(numberTimes))},
            {"last", json_or_null(fitted.LastTime(numberTimes))},
            {"chosen", fitted.Chosen ? Json(model_title(fitted.Chosen->Model.Kind, fitted.Chosen->Shape)) : Json()},
            {"verdict", fitted.Verdict.Text}};
}

Json json_of(const Matrix2& matrix) {
    return {json_number(matrix.XX), json_number(matrix.XY), json_number(matrix.YY)};
}

/// Likelihoods, mean and covariance at given time scales.
void add_given(const AnimalModels& fitted, Json& json) {
    if (!fitted.Chosen) return;
    const FittedModel& model = *fitted.Chosen;
    const Track& track = fitted.Track.Fixes;
    const FilterSums<double> sums = filter(track, model.Model);
    const auto likelihood = [&](Criterion criterion) {
        return json_number(profiled_log_likelihood(sums, track.Size(), model.Shape, criterion));
    };
    json["loglik_ml"] = likelihood(Criterion::kMl);
    json["loglik_reml"] = likelihood(Criterion::kReml);
    json["mean"] = {json_number(model.Mean.X), json_number(model.Mean.Y)};
    json["covariance"] = json_of(profiled_covariance(sums, track.Size(), model.Shape, Criterion::kReml));
    json["covariance_ml"] = json_of(profiled_covariance(sums, track.Size(), model.Shape, Criterion::kMl));
}

Json json_of(const AnimalModels& fitted, const ModelsOptions& options, bool numberTimes) {
    Json json = head_of(fitted, numberTimes);
    json["models"] = Json::array();
    for (const ModelRow& row : rows_of(fitted)) json["models"].push_back(json_of(row));
    if (!options.Fit.At.empty()) add_given(fitted, json);
    return json;
}

std::string text_of(const std::optional<double>& value) {
    return value ? NumberText(*value) : "";
}

constexpr const char* kCsvColumns[] = {
    "id",     "n",        "n_used",     "first",          "last",           "chosen",      "model",       "isotropic",
    "loglik", "aicc",     "delta_aicc", "tau_position_s", "tau_velocity_s", "sigma_major", "sigma_minor", "angle",
    "speed",  "dof_area", "area95",     "area95_low",     "area95_high",    "status"};

/// A row a model; an animal without models has one, with its verdict for a status.
void add_csv_rows(const AnimalModels& fitted, bool numberTimes, TextTable& table) {
    const std::vector<std::string> head{platform::ValueText(fitted.Animal->Id), std::to_string(fitted.FixesGiven()),
                                        std::to_string(fitted.Track.Fixes.Size()), fitted.FirstTime(numberTimes),
                                        fitted.LastTime(numberTimes)};
    std::vector<ModelRow> rows = rows_of(fitted);
    if (rows.empty()) {
        std::vector<std::string> cells = head;
        cells.resize(table.Columns.size());
        cells.back() = fitted.Verdict.Text;
        table.Rows.push_back(cells);
    }
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const ModelRow& row = rows[i];
        std::vector<std::string> cells = head;
        cells.insert(
            cells.end(),
            {i == 0 && fitted.Chosen ? "1" : "0", row.Name, row.Isotropic ? "1" : "0", text_of(row.LogLikelihood),
             text_of(row.Aicc), text_of(row.Difference), text_of(row.Position), text_of(row.Velocity),
             row.Range ? NumberText(row.Range->Major) : "", row.Range ? NumberText(row.Range->Minor) : "",
             row.Range ? NumberText(row.Range->Angle) : "", text_of(row.Speed), text_of(row.DofArea), text_of(row.Area),
             row.Limits ? NumberText(row.Limits->Low) : "", row.Limits ? NumberText(row.Limits->High) : "",
             row.Status});
        table.Rows.push_back(cells);
    }
}

/// Units of a layer, as the table shows them.
class Units {
public:
    explicit Units(const platform::SpatialReference& reference) : m_reference(reference) {}

    bool AreMetres() const { return m_reference.MetersPerUnit == 1.0; }
    std::string Area(double value) const { return kilometres_text(value, m_reference, 4); }
    const char* AreaName() const { return HaveSize() ? "km2" : "area"; }
    std::string Speed(double value) const {
        return HaveSize() ? fmt::format("{:.3g} m/s", value * m_reference.MetersPerUnit) : fmt::format("{:.3g}", value);
    }

private:
    bool HaveSize() const { return !kilometres_unit(m_reference).empty(); }

    const platform::SpatialReference& m_reference;
};

void print_animal(const AnimalModels& fitted, const Units& units, bool numberTimes, Console& console) {
    const std::string name = platform::ValueText(fitted.Animal->Id);
    console.Result(fmt::format("{}: {} of {} fixes{}", name, fitted.Track.Fixes.Size(), fitted.FixesGiven(),
                               fitted.Track.Order.empty() ? ""
                                                          : fmt::format(", {} to {}", fitted.FirstTime(numberTimes),
                                                                        fitted.LastTime(numberTimes))));
    TextTable table{
        {"model", "dAICc", "tau position", "tau velocity", "speed", "DOF", units.AreaName(), "low", "high", "status"},
        {}};
    for (const ModelRow& row : rows_of(fitted)) {
        const auto shown = [](const std::optional<double>& value) {
            return value ? fmt::format("{:.3f}", *value) : "";
        };
        const auto time = [](const std::optional<double>& value) { return value ? duration_text(*value) : ""; };
        table.Rows.push_back({row.Name + (row.Isotropic ? " isotropic" : " anisotropic"), shown(row.Difference),
                              time(row.Position), time(row.Velocity), row.Speed ? units.Speed(*row.Speed) : "",
                              row.DofArea ? fmt::format("{:.4g}", *row.DofArea) : "",
                              row.Area ? units.Area(*row.Area) : "", row.Limits ? units.Area(row.Limits->Low) : "",
                              row.Limits ? units.Area(row.Limits->High) : "", row.Status});
    }
    if (!table.Rows.empty()) print_table(table, console);
    console.Result(fitted.Verdict.Text);
    console.Result("");
}

/// The files of --plot, refused before anything is computed.
std::vector<TextOutput> plots_of(const ModelsOptions& options, const TimedLayer& layer) {
    std::vector<TextOutput> plots;
    if (options.Plot.empty()) return plots;
    make_output_folder(options.Plot);
    for (const TimedAnimal& animal : layer.Animals.Animals) {
        platform::CheckDatasetName(animal.NamingId);
        const fs::path plot = fs::path(options.Plot) / (animal.NamingId + "_variogram.svg");
        layer.Read.Refuse(plot);
        plots.emplace_back(plot.string(), options.Overwrite);
    }
    return plots;
}

}  // namespace

void register_models(CLI::App& command, ModelsOptions& options) {
    add_timed_input_options(command, options.Input);
    add_fit_options(command, options.Fit);
    command.add_option("--csv", options.Csv, "Write the models of all animals as CSV")->type_name("OUT.csv");
    command.add_option("--plot", options.Plot, "Draw the variogram of every animal into this folder")->type_name("DIR");
    command.add_flag("--overwrite", options.Overwrite, "Replace files of these names");
    command.add_flag("--json", options.Json, "Print one JSON array");
    command.footer(
        "Fixes close in time say much the same. Per animal this fits eight models of movement\n"
        "(IID, OU, OUf and OUF, with a round or an elliptic range) by their exact likelihood and\n"
        "tells, best by AICc first: the time to cross the range and, where the model has a\n"
        "velocity, to turn, with the root of the mean squared speed; how many independent fixes\n"
        "the record is worth (DOF); and the area that holds 95 % of the time under the model,\n"
        "with its 95 % limits. A verdict says whether the animal stays in a range, and whether\n"
        "the data are enough to tell.\n"
        "\n"
        "A model that is no better than a smaller one has collapsed and is never chosen. With\n"
        "--at a model is given: its likelihoods, mean and covariance are told (with --json).\n"
        "\n"
        "Example:\n"
        "\n"
        "  wxl models wolves.shp --id-field animal --time-field Date,Time1 --plot variograms");
}

int run_models(const ModelsOptions& options, Console& console) {
    const akde::FitSettings settings = fit_settings(options.Fit);
    std::optional<TextOutput> csv;
    if (!options.Csv.empty()) csv.emplace(options.Csv, options.Overwrite);
    const TimedLayer layer = read_timed_layer(options.Input, console);
    const TimedAnimals& animals = layer.Animals;
    if (csv) layer.Read.Refuse(csv->Path());
    const std::vector<TextOutput> plots = plots_of(options, layer);
    ConsoleListener listener(console);
    report_without_id(animals, layer.Fields.Id, listener);
    const Units units(animals.Reference);

    Json json = Json::array();
    TextTable table{{std::begin(kCsvColumns), std::end(kCsvColumns)}, {}};
    std::size_t failed = 0;
    for (std::size_t i = 0; i < animals.Animals.size(); ++i) {
        const AnimalModels fitted = fit_animal(animals.Animals[i], animals.NumberTimes, settings, listener);
        report_animal(fitted, options.Json, listener);
        if (!fitted.Chosen) ++failed;
        if (options.Json) json.push_back(json_of(fitted, options, animals.NumberTimes));
        if (csv) add_csv_rows(fitted, animals.NumberTimes, table);
        if (!options.Json) print_animal(fitted, units, animals.NumberTimes, console);
        if (!plots.empty())
            plots[i].Write(pictures::VariogramSvg(
                akde::variogram_picture_of({platform::ValueText(fitted.Animal->Id), fitted.Variogram,
                                            fitted.Track.Fixes.Duration(), fitted.Chosen, units.AreMetres()})));
    }
    if (csv) csv->Write(csv_text(table));
    if (options.Json) console.Text(json_text(json));
    return failed > 0 && failed == animals.Animals.size() ? exit_code::kFailed : exit_code::kDone;
}

}  // namespace wxl::cli
