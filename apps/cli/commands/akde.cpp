#include "apps/cli/commands/akde.h"

#include "adapters/ogr/disk_services.h"
#include "adapters/raster/raster_dataset.h"
#include "apps/cli/akde_animal.h"
#include "apps/cli/akde_files.h"
#include "apps/cli/json_values.h"
#include "apps/cli/option_checks.h"
#include "apps/cli/output_folder.h"
#include "apps/cli/text_output.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <CLI/CLI.hpp>
#include <cmath>
#include <filesystem>
#include <fmt/format.h>
#include <optional>

namespace wxl::cli {

namespace {

namespace fs = std::filesystem;
using namespace movement_models;
using platform::NumberText;

constexpr const char* kSummary = "WXL_AKDE_SUMMARY.csv";

std::vector<double> percentages_of(const std::string& text) {
    std::vector<double> percentages;
    std::string rest = text + ",";
    for (std::size_t comma = rest.find(','); comma != std::string::npos; comma = rest.find(',')) {
        const std::string piece = rest.substr(0, comma);
        rest.erase(0, comma + 1);
        const double percent = platform::IsNumeric(piece) ? platform::NumberFromText(piece) : 0.0;
        if (!(percent > 0.0 && percent < 100.0))
            throw WrongCall(fmt::format("--isopleths: \"{}\" is no percentage above 0 and below 100", piece));
        percentages.push_back(percent);
    }
    return percentages;
}

AkdeGrid grid_wanted(const AkdeOptions& options) {
    AkdeGrid grid{options.CellSize, {}};
    if (options.CellSize && !(*options.CellSize > 0.0)) throw WrongCall("--cell-size must be above 0");
    if (options.Extent == "min") return grid;
    if (!options.Extent.starts_with("ref:"))
        throw WrongCall(fmt::format("--extent: \"{}\" is neither min nor ref:RASTER", options.Extent));
    const auto raster = opened(options.Input.Points.AllowIndirect, [&](files::Sources sources) {
        return files::OpenRaster(options.Extent.substr(4), sources);
    });
    grid.Reference = raster->Band()->Geometry();
    return grid;
}

/// What became of one animal.
struct Done {
    const AnimalModels* Fitted = nullptr;
    std::optional<AkdeAnimal> Akde;
    std::vector<std::string> Files;
    std::string Reason;  ///< why there is nothing
};

Json isopleths_json(const AkdeAnimal& akde) {
    Json json = Json::array();
    for (const AkdeIsopleth& isopleth : akde.Isopleths)
        json.push_back(
            {{"percent", isopleth.Percent}, {"bound", isopleth.Bound}, {"area", json_number(isopleth.Area)}});
    return json;
}

Json levels_json(const AkdeAnimal& akde, double scaling) {
    Json json = Json::array();
    for (const AkdeIsopleth& isopleth : akde.Isopleths)
        if (isopleth.Bound == "est")
            json.push_back(
                {{"percent", isopleth.Percent},
                 {"level", json_number(isopleth.Level ? std::optional(*isopleth.Level * scaling) : std::nullopt)},
                 {"area", json_number(isopleth.Area)}});
    return json;
}

Json json_of(const Done& done, const AkdeOptions& options) {
    const AnimalModels& fitted = *done.Fitted;
    Json json{{"id", json_value(fitted.Animal->Id)}, {"naming_id", fitted.Animal->NamingId},
              {"n", fitted.Track.Fixes.Size()},      {"method", "AKDE"},
              {"status", done.Akde ? 0 : 1},         {"verdict", fitted.Verdict.Text},
              {"warnings", fitted.Verdict.Warnings}, {"files", done.Files}};
    if (!done.Akde) {
        json["reason"] = done.Reason;
        return json;
    }
    const AkdeAnimal& akde = *done.Akde;
    const FittedModel& model = *fitted.Chosen;
    const Bandwidth& bandwidth = akde.Bandwidth;
    json["columns"] = akde.Geometry.Columns;
    json["rows"] = akde.Geometry.Rows;
    json["cell_size"] = akde.Geometry.CellSize;
    json["origin"] = {json_number(akde.Geometry.OriginX), json_number(akde.Geometry.OriginY)};
    json["volume"] = json_number(akde.Volume * options.Scaling);
    json["raster"] = options.Prefix + fitted.Animal->NamingId;
    json["levels"] = levels_json(akde, options.Scaling);
    json["model"] = model_title(model.Model.Kind, model.Shape);
    json["tau_position_s"] =
        json_number(model.Model.Kind == ModelKind::kIid ? std::nullopt : std::optional(model.Model.Scales.Position));
    json["tau_velocity_s"] =
        json_number(model.Model.Kind == ModelKind::kOuf ? std::optional(model.Model.Scales.Velocity) : std::nullopt);
    json["bandwidth_matrix"] = {json_number(akde.Matrix.XX), json_number(akde.Matrix.XY), json_number(akde.Matrix.YY)};
    json["h"] = bandwidth.H();
    json["dof_bandwidth"] = json_number(equivalent_fixes(bandwidth.Squared));
    json["dof_area"] = json_number(model.DofArea > 0.0 ? std::optional(model.DofArea) : std::nullopt);
    json["bias"] = bandwidth.Bias;
    json["weights"] = options.Weights;
    json["effective_weights"] = bandwidth.EffectiveWeights();
    json["zero_weights"] = bandwidth.ZeroWeights();
    json["isopleths"] = isopleths_json(akde);
    return json;
}

constexpr const char* kColumns[] = {
    "id",   "n",       "model",     "tau_position_s", "tau_velocity_s", "dof_area", "h",    "dof_bandwidth",
    "bias", "weights", "cell_size", "volume",         "percent",        "area_low", "area", "area_high"};

std::string area_of(const AkdeAnimal& akde, double percent, const std::string& bound) {
    for (const AkdeIsopleth& isopleth : akde.Isopleths)
        if (isopleth.Percent == percent && isopleth.Bound == bound) return NumberText(isopleth.Area);
    return "";
}

void add_rows(const Done& done, const AkdeOptions& options, TextTable& table) {
    if (!done.Akde) return;
    const FittedModel& model = *done.Fitted->Chosen;
    const AkdeAnimal& akde = *done.Akde;
    const auto positive = [](double value) { return value > 0.0 ? NumberText(value) : std::string(); };
    for (const AkdeIsopleth& isopleth : akde.Isopleths) {
        if (isopleth.Bound != "est") continue;
        table.Rows.push_back(
            {platform::ValueText(done.Fitted->Animal->Id), std::to_string(done.Fitted->Track.Fixes.Size()),
             model_title(model.Model.Kind, model.Shape), positive(model.Model.Scales.Position),
             positive(model.Model.Scales.Velocity), positive(model.DofArea), NumberText(akde.Bandwidth.H()),
             NumberText(equivalent_fixes(akde.Bandwidth.Squared)), NumberText(akde.Bandwidth.Bias), options.Weights,
             NumberText(akde.Geometry.CellSize), NumberText(akde.Volume), NumberText(isopleth.Percent),
             area_of(akde, isopleth.Percent, "low"), NumberText(isopleth.Area),
             area_of(akde, isopleth.Percent, "high")});
    }
}

std::string area_text(const std::string& area, bool metres) {
    if (area.empty()) return "not defined";
    const double value = platform::NumberFromText(area);
    return fmt::format("{:.4g}", metres ? value / 1e6 : value);
}

void print_animal(const Done& done, bool metres, Console& console) {
    const AnimalModels& fitted = *done.Fitted;
    const std::string name = platform::ValueText(fitted.Animal->Id);
    if (!done.Akde) return console.Result(fmt::format("{}: failed ({})", name, done.Reason));
    const FittedModel& model = *fitted.Chosen;
    console.Result(fmt::format("{}: {} fixes, {}, worth {:.4g} fixes, h {:.4g}, {} x {} cells: {}", name,
                               fitted.Track.Fixes.Size(), model_title(model.Model.Kind, model.Shape), model.DofArea,
                               done.Akde->Bandwidth.H(), done.Akde->Geometry.Columns, done.Akde->Geometry.Rows,
                               done.Files.empty() ? "" : done.Files.front()));
    for (const AkdeIsopleth& isopleth : done.Akde->Isopleths)
        if (isopleth.Bound == "est")
            console.Result(fmt::format("  {} %: {}{} ({} to {})", NumberText(isopleth.Percent),
                                       area_text(NumberText(isopleth.Area), metres), metres ? " km2" : "",
                                       area_text(area_of(*done.Akde, isopleth.Percent, "low"), metres),
                                       area_text(area_of(*done.Akde, isopleth.Percent, "high"), metres)));
}

void warn_of_grid(const Done& done, Console& console) {
    const std::string name = platform::ValueText(done.Fitted->Animal->Id);
    if (done.Akde->Volume < 0.99)
        console.Problem(
            fmt::format("{}: {:.4g} % of the distribution lies on the raster; a larger one would show it whole", name,
                        100.0 * done.Akde->Volume));
    for (const AkdeIsopleth& isopleth : done.Akde->Isopleths)
        if (!isopleth.Level)
            console.Problem(
                fmt::format("{}: the {} outline of {} % has an area larger than the raster and is not drawn", name,
                            isopleth.Bound, NumberText(isopleth.Percent)));
}

Done analyse(const AnimalModels& fitted, const AkdeGrid& grid, const AkdeOptions& options,
             const platform::SpatialReference& reference, const platform::Services& services, Console& console) {
    Done done{&fitted, {}, {}, fitted.Verdict.Text};
    if (!fitted.Chosen) return done;
    try {
        AkdeAnimal akde =
            akde_of(fitted, grid, percentages_of(options.Isopleths), options.Weights == "optimal", console);
        done.Files = write_akde(akde,
                                {options.Out, options.Prefix + fitted.Animal->NamingId, options.RasterFormat,
                                 options.Scaling, options.Lines, options.Overwrite, reference},
                                services);
        // The cells are on disk now.
        akde.Density = {};
        done.Akde = std::move(akde);
        warn_of_grid(done, console);
    } catch (const platform::RuntimeError& error) {
        done.Reason = error.Description;
        console.Problem(fmt::format("{}: {}", platform::ValueText(fitted.Animal->Id), error.Description));
    }
    return done;
}

}  // namespace

void register_akde(CLI::App& command, AkdeOptions& options) {
    add_timed_input_options(command, options.Input);
    command.add_option("--out", options.Out, "Output folder; made when it is not there")->type_name("DIR")->required();
    command.add_option("--prefix", options.Prefix, "Prefix of the raster names")->type_name("P");
    command.add_option("--cell-size", options.CellSize, "Cell size in map units; without it each animal has its own")
        ->type_name("C");
    command.add_option("--scaling", options.Scaling, "Factor of the densities")->type_name("S")->capture_default_str();
    command.add_option("--extent", options.Extent, "min (each animal's own), or ref:RASTER, the grid of a raster")
        ->transform(any_case({"min", "ref"}))
        ->type_name("EXTENT")
        ->capture_default_str();
    command.add_option("--raster-format", options.RasterFormat, "Format of the rasters")
        ->transform(one_of({"GRID", "GTiff"}))
        ->type_name("GRID|GTiff")
        ->capture_default_str();
    command.add_option("--isopleths", options.Isopleths, "Percentages of the time")
        ->type_name("P[,P...]")
        ->capture_default_str();
    command
        .add_option("--weights", options.Weights,
                    "uniform, or optimal: fixes close in time count less, for uneven intervals")
        ->transform(one_of({"uniform", "optimal"}))
        ->type_name("WEIGHTS")
        ->capture_default_str();
    add_fit_options(command, options.Fit);
    command.add_flag("--lines", options.Lines, "Isopleths as lines too");
    command.add_flag("--overwrite", options.Overwrite, "Replace earlier results of the same names");
    command.add_flag("--json", options.Json, "Print one JSON object");
    command.footer(
        "Home ranges of animals whose fixes depend on each other, as those of GPS collars do:\n"
        "kernel density with the bandwidth matrix that the animal's movement model advises\n"
        "(wxl models), its area corrected for the width of the kernel. Per animal there is a\n"
        "raster, and a shapefile NAME_poly with an outline for every percentage, its field BOUND\n"
        "est, low or high: the estimate and its 95 % limits. WXL_AKDE_SUMMARY.csv lists all areas.\n"
        "\n"
        "Example:\n"
        "\n"
        "  wxl akde wolves.shp --id-field animal --time-field Date,Time1 --out akde");
}

int run_akde(const AkdeOptions& options, Console& console) {
    percentages_of(options.Isopleths);
    if (!options.Fit.At.empty()) given_model(options.Fit.At);
    if (!(options.Scaling > 0.0)) throw WrongCall("--scaling must be above 0");
    const AkdeGrid grid = grid_wanted(options);
    const TimedAnimals animals = read_timed_animals(options.Input, console);
    make_output_folder(options.Out);
    const TextOutput summary((fs::path(options.Out) / kSummary).string(), options.Overwrite);
    files::DiskServices disk;
    const platform::Services services = disk.Complete({});

    const bool metres = animals.Reference.MetersPerUnit == 1.0;
    Json json{{"summary", summary.Path()}, {"animals", Json::array()}};
    TextTable table{{std::begin(kColumns), std::end(kColumns)}, {}};
    std::size_t failed = 0;
    for (const TimedAnimal& animal : animals.Animals) {
        const AnimalModels fitted = fit_animal(animal, options.Fit, console);
        report_animal(fitted, true, console);
        const Done done = analyse(fitted, grid, options, animals.Reference, services, console);
        if (!done.Akde) ++failed;
        add_rows(done, options, table);
        if (options.Json)
            json["animals"].push_back(json_of(done, options));
        else
            print_animal(done, metres, console);
    }
    summary.Write(csv_text(table));
    if (options.Json)
        console.Text(json_text(json));
    else
        console.Result("summary: " + summary.Path());
    if (failed > 0)
        console.Problem(
            fmt::format("wxl: {} of {} distributions could not be computed", failed, animals.Animals.size()));
    return failed > 0 && failed == animals.Animals.size() ? exit_code::kFailed : exit_code::kDone;
}

}  // namespace wxl::cli
