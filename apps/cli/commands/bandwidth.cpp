#include "apps/cli/commands/bandwidth.h"

#include "analysis/advice.h"
#include "analysis/animal_fixes.h"
#include "analysis/diagnosis.h"
#include "analysis/independence.h"
#include "analysis/summary_rows.h"
#include "apps/cli/console_messages.h"
#include "apps/cli/json_values.h"
#include "apps/cli/option_checks.h"
#include "apps/cli/text_output.h"
#include "comparison/animal_density.h"
#include "comparison/range_parts.h"
#include "engine/clsKernelCalculator.h"
#include "pictures/profile_picture.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fmt/format.h>
#include <optional>
#include <vector>

namespace wxl::cli {

namespace {

namespace fs = std::filesystem;
using platform::NumberText;

/// What was found for one animal, in units of the searched sample unless it says otherwise.
struct AnimalBandwidth {
    platform::FieldValue Id;
    std::size_t Count = 0;
    std::optional<double> Bandwidth;
    std::optional<double> MapUnits;
    std::optional<double> Href;
    bool Searched = false;
    bool Minimised = false;
    engine::SearchProfile Profile;  ///< without the rows that the search did not reach
    std::string Reason;             ///< why the search is not minimised, in one line
    std::string Warnings;
    analysis::AdviceFacts Advice;
    std::string Plot;  ///< file of its picture; empty: none
};

std::optional<double> if_positive(double value) {
    return value > 0.0 && std::isfinite(value) ? std::optional(value) : std::nullopt;
}

/// Whether the fixes differ by more than the rounding of their coordinates; with rescaling, along both axes.
bool has_spread(const std::vector<platform::Point>& fixes, bool rescale) {
    constexpr double kRounding = 1e-12;
    const platform::Extent extent = platform::bounds_of(fixes);
    if (extent.IsEmpty()) return false;
    const double size =
        std::max({std::abs(extent.XMin), std::abs(extent.XMax), std::abs(extent.YMin), std::abs(extent.YMax)});
    const auto [narrow, wide] = std::minmax({extent.Width(), extent.Height()});
    return (rescale ? narrow : wide) > kRounding * size;
}

analysis::BandwidthMethod method_of(const BandwidthOptions& options) {
    if (options.Method == "lscv") return analysis::BandwidthMethod::kLscv;
    return options.Method == "bcv" ? analysis::BandwidthMethod::kBcv : analysis::BandwidthMethod::kHref;
}

std::string reason_of(const analysis::AnimalFixes& animal, const BandwidthOptions& options,
                      const engine::clsKernelCalculator& calculator) {
    if (options.Method == "href") return {};
    const engine::SearchProfile rows = calculator.GetLSCVProfile().value_or(engine::SearchProfile{});
    return analysis::search_reason({.Method = method_of(options),
                                    .Count = static_cast<std::int32_t>(animal.Fixes.size()),
                                    .Coincident = analysis::coincidence_of(animal.Fixes),
                                    .Profile = rows,
                                    .Minimized = calculator.LSCVMinimized});
}

/// The parts of the 95 % range with that bandwidth, as contours of a raster would have them; nothing where its raster
/// would be large.
std::optional<analysis::RangeInParts> range_with(double bandwidth, const analysis::AnimalFixes& animal,
                                                 const BandwidthOptions& options) {
    constexpr std::int64_t kMostCells = 4'000'000;
    constexpr std::array<double, 1> kPercents = {95.0};
    const std::array<engine::PointSample, 1> samples = {animal.Fixes};
    const std::array<comparison::AnimalBandwidth, 1> bandwidths = {comparison::AnimalBandwidth{.MapUnits = bandwidth}};
    const platform::RasterGeometry grid = comparison::shared_grid(samples, bandwidths, 0.0);
    if (std::int64_t{grid.Columns} * grid.Rows > kMostCells || bandwidth < grid.CellSize) return std::nullopt;
    const comparison::AnimalDensity density =
        comparison::density_of(samples.front(), bandwidths.front(), {.Rescale = options.Rescale}, grid);
    const comparison::PartOfGrid& part = density.Part;
    if (part.Cells.empty()) return std::nullopt;
    const comparison::VolumeRange range = comparison::ranges_by_volume(part.Cells, kPercents).front();
    return analysis::RangeInParts{kPercents.front(), comparison::range_parts(part.Cells, part.Columns, range).Parts};
}

analysis::AdviceFacts advice_on(const analysis::AnimalFixes& animal, double metresPerUnit) {
    return {.Count = static_cast<std::int32_t>(animal.Fixes.size()),
            .Schoener = analysis::Schoener(animal.Fixes),
            .SwihartSlade = analysis::SwihartSlade(animal.Fixes),
            .Coincident = analysis::coincidence_of(animal.Fixes),
            .Error = animal.Error,
            .MetresPerUnit = metresPerUnit};
}

void add_found(const AnimalBandwidth& found, const analysis::AnimalFixes& animal, const BandwidthOptions& options,
               analysis::AdviceFacts& facts) {
    if (!found.Bandwidth || !found.MapUnits) return;
    facts.Href = *found.Href * (*found.MapUnits / *found.Bandwidth);
    facts.Given = analysis::GivenBandwidth{.Method = method_of(options),
                                           .Minimized = found.Minimised,
                                           .MapUnits = *found.MapUnits,
                                           .Range = range_with(*found.MapUnits, animal, options)};
}

/// Which method the fixes allow, for those who do not know.
void report_advice(const std::vector<AnimalBandwidth>& animals, Console& console) {
    for (const AnimalBandwidth& animal : animals)
        if (const std::string text = animal.Bandwidth ? analysis::advice_text(animal.Advice) : ""; !text.empty())
            console.Note(fmt::format("{}: {}", platform::ValueText(animal.Id), text));
}

Json json_of(const std::optional<analysis::PositionError>& error) {
    if (!error) return nullptr;
    return {{"median_metres", json_number(error->Metres)},
            {"field", error->Field},
            {"from", error->OfArgosClasses ? "argos classes" : "metres"}};
}

Json json_of(const analysis::AdviceFacts& advice) {
    const std::string text = analysis::advice_text(advice);
    if (text.empty()) return nullptr;
    const bool hasRange = advice.Given && advice.Given->Range;
    return {{"autocorrelated", analysis::is_autocorrelated(advice)},
            {"method", analysis::method_name(analysis::advised_method(advice))},
            {"position_error", json_of(advice.Error)},
            {"range_parts", hasRange ? Json(advice.Given->Range->Parts) : Json(nullptr)},
            {"text", text}};
}

void calculate(engine::clsKernelCalculator& calculator, const std::string& method) {
    if (method == "lscv") {
        calculator.CalculateLSCV();
    } else if (method == "bcv") {
        calculator.CalculateBCV();
    } else {
        calculator.CalculateHREF();
    }
}

AnimalBandwidth bandwidth_of(const analysis::AnimalFixes& animal, const BandwidthOptions& options, double metresPerUnit,
                             ConsoleMessages& messages) {
    engine::clsKernelCalculator calculator(messages);
    calculator.SetInputCoords(animal.Fixes);
    calculator.SetEnforceUnitVariance(options.Rescale);
    const bool hasSpread = has_spread(animal.Fixes, options.Rescale);
    if (hasSpread) calculate(calculator, options.Method);
    AnimalBandwidth found;
    found.Id = animal.Id;
    found.Count = animal.Fixes.size();
    if (hasSpread) found.Href = if_positive(calculator.GetHREF());
    found.Reason = reason_of(animal, options, calculator);
    found.Advice = advice_on(animal, metresPerUnit);
    if (!found.Href) return found;
    found.Bandwidth = if_positive(calculator.GetBandwidth());
    found.MapUnits = if_positive(calculator.GetScaledBandwidth());
    found.Searched = calculator.HasLSCVProfile;
    found.Minimised = calculator.LSCVMinimized;
    found.Profile = engine::ReachedRows(calculator.GetLSCVProfile().value_or(engine::SearchProfile{}));
    found.Warnings = calculator.WarningMessages();
    add_found(found, animal, options, found.Advice);
    return found;
}

/// What a command reads: the fixes of every animal, and the unit of their coordinates.
struct Sample {
    analysis::GroupedFixes Groups;
    std::string Units;
    double MetresPerUnit = 0.0;  ///< 0: unknown or degrees
    ReadFiles Read;
};

Sample read_sample(const BandwidthOptions& options, Console& console) {
    const auto layer = open_measured_point_layer(options.Points, console);
    const ReadFiles read = files_read(*layer);
    if (!options.Profile.empty()) read.Refuse(options.Profile);
    const std::string idField = find_id_field(layer->FeatureClass()->Table(), options.IdField, options.Points.Input);
    const platform::SpatialReference reference = layer->FeatureClass()->Reference();
    return {analysis::GroupFixes(*layer, idField, false), reference.UnitName,
            reference.IsGeographic ? 0.0 : reference.MetersPerUnit, read};
}

/// The pictures of a search: one file for one animal, and for several one file each, with the naming ID that wxl kde
/// gives the animal before the ending.
class Plots {
public:
    /// Refuses what cannot be written, before anything is computed.
    Plots(const BandwidthOptions& options, const Sample& sample) : m_options(options), m_units(sample.Units) {
        if (options.Plot.empty()) return;
        for (const analysis::AnimalFixes& animal : sample.Groups.Animals) {
            fs::path file = options.Plot;
            if (sample.Groups.Animals.size() > 1)
                file.replace_filename(file.stem().string() + "-" + animal.NamingId + file.extension().string());
            sample.Read.Refuse(file);
            m_files.emplace_back(file.string(), options.Overwrite);
        }
    }

    /// Writes the picture of every animal that was searched.
    void Write(std::vector<AnimalBandwidth>& animals) const {
        for (std::size_t i = 0; i < m_files.size(); ++i) {
            if (!animals[i].Searched || animals[i].Profile.empty()) continue;
            m_files[i].Write(pictures::ProfileSvg(picture_of(animals[i])));
            animals[i].Plot = m_files[i].Path();
        }
    }

private:
    pictures::ProfilePicture picture_of(const AnimalBandwidth& animal) const {
        pictures::ProfilePicture picture;
        picture.Title = platform::ValueText(animal.Id);
        picture.Method = m_options.Method == "bcv" ? "BCV" : "LSCV";
        picture.Units = m_options.Rescale ? "unit variance" : m_units;
        picture.Minimised = animal.Minimised;
        picture.Href = animal.Href;
        picture.Bandwidth = animal.Bandwidth;
        pictures::SetCurve(picture, animal.Profile);
        return picture;
    }

    const BandwidthOptions& m_options;
    std::string m_units;
    std::vector<TextOutput> m_files;
};

std::vector<AnimalBandwidth> find_bandwidths(const Sample& sample, const BandwidthOptions& options, Console& console) {
    const analysis::GroupedFixes& groups = sample.Groups;
    ConsoleMessages messages(console, {});
    std::vector<AnimalBandwidth> found;
    for (const analysis::AnimalFixes& animal : groups.Animals) {
        console.Progress(static_cast<double>(found.size()) / static_cast<double>(groups.Animals.size()),
                         platform::ValueText(animal.Id));
        found.push_back(bandwidth_of(animal, options, sample.MetresPerUnit, messages));
    }
    console.EndProgress();
    return found;
}

/// The local minima inside the range with their scores; nothing where the only one is the bandwidth itself.
void report_minima(const AnimalBandwidth& animal, Console& console) {
    const engine::SearchProfile minima = engine::LocalMinima(animal.Profile);
    if (minima.empty() || (minima.size() == 1 && animal.Minimised)) return;
    std::string text;
    for (const engine::ProfileRow& row : minima)
        text += fmt::format("{}{:.6g} (score {:.6g})", text.empty() ? "" : ", ", row.Bandwidth, row.Score);
    console.Problem(fmt::format("{}: {} inside the range: {}", platform::ValueText(animal.Id),
                                minima.size() == 1 ? "local minimum" : "local minima", text));
}

void report_problems(const std::vector<AnimalBandwidth>& animals, Console& console) {
    for (const AnimalBandwidth& animal : animals) {
        const std::string id = platform::ValueText(animal.Id);
        if (!animal.Bandwidth)
            console.Problem(animal.Count == 1
                                ? fmt::format("{}: no bandwidth, because one fix is too few", id)
                                : fmt::format("{}: no bandwidth, because its {} fixes are too few or have no spread",
                                              id, animal.Count));
        else if (!animal.Reason.empty())
            console.Problem(fmt::format("{}: {}", id, animal.Reason));
        report_minima(animal, console);
        for (const std::string& warning : platform::Split(animal.Warnings, '\r'))
            if (!warning.empty()) console.Problem(fmt::format("{}: {}", id, warning));
    }
}

Json json_of(const std::vector<AnimalBandwidth>& animals, const BandwidthOptions& options) {
    Json json = Json::array();
    for (const AnimalBandwidth& animal : animals) {
        Json one{{"id", json_value(animal.Id)},
                 {"n", animal.Count},
                 {"method", options.Method},
                 {"bandwidth", json_number(animal.Bandwidth)}};
        if (options.Rescale) one["bandwidth_map_units"] = json_number(animal.MapUnits);
        one["href"] = json_number(animal.Href);
        one["minimised"] = animal.Searched ? Json(animal.Minimised) : Json(nullptr);
        one["advice"] = json_of(animal.Advice);
        one["reason"] = animal.Reason.empty() ? Json(nullptr) : Json(animal.Reason);
        const std::optional<engine::ProfileRow> minimum = engine::SmallestScore(animal.Profile);
        one["minimum"] = minimum ? Json{{"h", json_number(minimum->Bandwidth)}, {"score", json_number(minimum->Score)}}
                                 : Json(nullptr);
        one["local_minima"] = animal.Searched ? json_minima(animal.Profile) : Json(nullptr);
        if (!options.Plot.empty()) one["plot"] = animal.Plot.empty() ? Json(nullptr) : Json(animal.Plot);
        json.push_back(std::move(one));
    }
    return json;
}

std::string text_of(const std::optional<double>& value) {
    return value ? NumberText(*value) : "";
}

TextTable table_of(const std::vector<AnimalBandwidth>& animals, const BandwidthOptions& options) {
    TextTable table{{"id", "n", "bandwidth", "href"}, {}};
    if (options.Rescale) table.Columns.emplace_back("bandwidth_map_units");
    const bool searches = options.Method != "href";
    if (searches) table.Columns.emplace_back("minimised");
    for (const AnimalBandwidth& animal : animals) {
        std::vector<std::string> row{platform::ValueText(animal.Id), std::to_string(animal.Count),
                                     text_of(animal.Bandwidth), text_of(animal.Href)};
        if (options.Rescale) row.push_back(text_of(animal.MapUnits));
        if (searches) row.emplace_back(!animal.Searched ? "" : animal.Minimised ? "yes" : "no");
        table.Rows.push_back(std::move(row));
    }
    return table;
}

TextTable profile_of(const std::vector<AnimalBandwidth>& animals) {
    TextTable table{{"id", "h", "score"}, {}};
    for (const AnimalBandwidth& animal : animals)
        for (const engine::ProfileRow& row : animal.Profile)
            table.Rows.push_back({platform::ValueText(animal.Id), NumberText(row.Bandwidth), NumberText(row.Score)});
    return table;
}

}  // namespace

void register_bandwidth(CLI::App& command, BandwidthOptions& options) {
    add_measured_input_options(command, options.Points);
    command.add_option("--id-field", options.IdField, "Field that names the animal")->type_name("FIELD")->required();
    command.add_option("--method", options.Method, "href (reference rule), lscv or bcv (cross-validation searches)")
        ->type_name("href|lscv|bcv")
        ->required()
        ->transform(one_of({"href", "lscv", "bcv"}));
    command.add_flag("--rescale", options.Rescale,
                     "Rescale each animal's fixes to unit variance first; bandwidths are then in those units");
    command.add_option("--profile", options.Profile, "Write the scores of the search as CSV (id, h, score)")
        ->type_name("OUT.csv");
    command
        .add_option("--plot", options.Plot,
                    "Draw the scores of the search as SVG: OUT.svg for one animal, OUT-ID.svg for each of several")
        ->type_name("OUT.svg");
    command.add_flag("--overwrite", options.Overwrite, "Replace files of that name");
    command.add_flag("--json", options.Json, "Print one JSON array");
    command.footer(
        "Finds the bandwidth that wxl kde would use for each animal, without computing a\n"
        "density. Where a search finds no minimum inside its range (0.05 to 2 times the\n"
        "reference bandwidth for lscv, to 3 times for bcv), the reference bandwidth is\n"
        "used and standard error says so. Local minima that are not taken are listed there\n"
        "with their scores, and all of them by --json.\n"
        "\n"
        "Standard error and --json also say which method each animal's fixes allow, and why:\n"
        "for its number, the indices of independence, places that fixes share, the error of\n"
        "the positions where a column tells it, and the parts that the 95 % range is in.\n"
        "\n"
        "--plot marks the smallest score, HREF and the bandwidth in use. ID is the naming\n"
        "ID of wxl kde: the ID itself, or 1, 2, 3 ... where IDs are text. An animal\n"
        "without a search gets no file.\n"
        "\n"
        "Example:\n"
        "\n"
        "  wxl bandwidth wolves.shp --id-field animal --method lscv --profile scores.csv");
}

int run_bandwidth(const BandwidthOptions& options, Console& console) {
    if (!options.Profile.empty() && options.Method == "href")
        throw WrongCall("--profile needs --method lscv or bcv: the reference rule has no scores");
    if (!options.Plot.empty() && options.Method == "href")
        throw WrongCall("--plot needs --method lscv or bcv: the reference rule has no scores");
    if (!options.Plot.empty() && !platform::EqualNoCase(fs::path(options.Plot).extension().string(), ".svg"))
        throw WrongCall(fmt::format("--plot: the picture is an SVG, and \"{}\" does not end in .svg", options.Plot));
    std::optional<TextOutput> profile;
    if (!options.Profile.empty()) profile.emplace(options.Profile, options.Overwrite);
    const Sample sample = read_sample(options, console);
    const Plots plots(options, sample);
    std::vector<AnimalBandwidth> animals = find_bandwidths(sample, options, console);
    report_problems(animals, console);
    report_advice(animals, console);
    if (profile) profile->Write(csv_text(profile_of(animals)));
    plots.Write(animals);
    if (options.Json) {
        console.Text(json_text(json_of(animals, options)));
    } else {
        print_table(table_of(animals, options), console);
    }
    const bool any = std::any_of(animals.begin(), animals.end(), [](const auto& a) { return a.Bandwidth.has_value(); });
    return any ? exit_code::kDone : console.Fail(options.Points.Input + ": no animal has a bandwidth");
}

}  // namespace wxl::cli
