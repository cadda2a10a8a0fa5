#include "apps/cli/commands/akde_output.h"

#include "apps/cli/commands/kde_output.h"
#include "apps/cli/size_text.h"
#include "platform/text.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fmt/format.h>
#include <utility>

namespace wxl::cli {

namespace {

using akde::RangeIsopleth;
using akde::RangeRecord;
using akde::RangeSettings;
using movement_models::FittedModel;
using platform::NumberText;

std::optional<double> if_positive(double value) {
    return value > 0.0 ? std::optional(value) : std::nullopt;
}

constexpr double kSecondsPerDay = 86400.0;

Json isopleths_json(const RangeRecord& record) {
    Json json = Json::array();
    for (const RangeIsopleth& isopleth : record.Isopleths)
        json.push_back(
            {{"percent", isopleth.Percent}, {"bound", isopleth.Bound}, {"area", json_number(isopleth.Area)}});
    return json;
}

Json levels_json(const RangeRecord& record, double scaling) {
    Json json = Json::array();
    for (const RangeIsopleth& isopleth : record.Isopleths)
        if (isopleth.Bound == "est")
            json.push_back(
                {{"percent", isopleth.Percent},
                 {"level", json_number(isopleth.Level ? std::optional(*isopleth.Level * scaling) : std::nullopt)},
                 {"area", json_number(isopleth.Area)}});
    return json;
}

/// Share of a kernel that lies beyond its reach.
double beyond_reach() {
    return std::exp(-0.5 * akde::kKernelReach * akde::kKernelReach);
}

/// The radius of the circle that is as large as the kernel's ellipse.
double mean_deviation(const RangeRecord& record) {
    return std::sqrt(std::sqrt(record.Matrix.Determinant()));
}

/// An animal as wxl kde would tell of it, as far as it would.
analysis::AnimalRecord kernel_record(const RangeRecord& record, const RangeSettings& settings) {
    analysis::AnimalRecord told;
    told.Id = record.Id;
    told.NamingId = record.NamingId;
    told.Subfolder = record.Subfolder;
    told.SampleSize = static_cast<std::int32_t>(record.Used);
    told.Reason = record.Reason;
    told.RasterName = record.RasterName;
    told.EdgeWarning = record.IsCut();
    told.Status = record.IsDone() ? 0 : 1;
    told.Files = record.Files;
    if (!record.IsDone()) return told;
    told.Bandwidth = record.H;
    told.BandwidthMapUnits = mean_deviation(record);
    told.Grid = record.Grid;
    told.Volume = record.Volume * settings.Scaling;
    told.Reach = akde::kKernelReach;
    told.BeyondReach = beyond_reach();
    told.LostAtEdge = std::max(0.0, 1.0 - record.Volume - beyond_reach());
    told.MaxEdgeValue = record.HighestAtEdge * settings.Scaling;
    return told;
}

Json common_json(const RangeRecord& record, const RangeSettings& settings) {
    Json json = json_of(kernel_record(record, settings));
    json["method"] = "akde";
    json["levels"] = levels_json(record, settings.Scaling);
    json["warnings"] = record.Verdict.Warnings;
    json["first"] = json_or_null(record.First);
    json["last"] = json_or_null(record.Last);
    json["days"] = record.First.empty() ? Json() : json_number(record.Duration / kSecondsPerDay);
    return json;
}

std::string kilometres_or_none(std::optional<double> area, const platform::SpatialReference& reference) {
    return area ? kilometres_text(*area, reference, 4) : "not defined";
}

}  // namespace

Json json_of(const RangeRecord& record, const RangeSettings& settings) {
    Json json = common_json(record, settings);
    json["verdict"] = record.Verdict.Text;
    const bool done = record.IsDone();
    const auto of_range = [&](std::optional<double> value) { return done ? json_number(value) : Json(); };
    const FittedModel model = record.Chosen.value_or(FittedModel{});
    json["model"] = record.Chosen ? Json(model_title(model.Model.Kind, model.Shape)) : Json();
    json["tau_position_s"] = json_number(if_positive(model.Model.Scales.Position));
    json["tau_velocity_s"] = json_number(if_positive(akde::velocity_scale(model)));
    json["bandwidth_matrix"] =
        done ? Json{json_number(record.Matrix.XX), json_number(record.Matrix.XY), json_number(record.Matrix.YY)}
             : Json();
    json["h"] = of_range(record.H);
    json["dof_bandwidth"] = of_range(record.DofBandwidth);
    json["dof_area"] = json_number(if_positive(model.DofArea));
    json["bias"] = of_range(record.Bias);
    json["weights"] = settings.Optimal ? "optimal" : "uniform";
    json["effective_weights"] = of_range(record.EffectiveWeights);
    json["zero_weights"] = done ? Json(record.ZeroWeights) : Json();
    json["isopleths"] = isopleths_json(record);
    return json;
}

std::string range_line(const RangeRecord& record) {
    const std::string name = platform::ValueText(record.Id);
    if (!record.IsDone()) return fmt::format("{}: failed ({})", name, record.Reason);
    const FittedModel& model = *record.Chosen;
    return fmt::format("{}: {} fixes, {}, worth {:.4g} fixes, h {:.4g}, {} x {} cells: {}", name, record.Used,
                       model_title(model.Model.Kind, model.Shape), model.DofArea, record.H, record.Grid.Columns,
                       record.Grid.Rows, record.Files.front());
}

void print_range(const RangeRecord& record, const platform::SpatialReference& reference, Console& console) {
    console.Result(range_line(record));
    for (const RangeIsopleth& isopleth : record.Isopleths)
        if (isopleth.Bound == "est")
            console.Result(fmt::format("  {} %: {}{} ({} to {})", NumberText(isopleth.Percent),
                                       kilometres_or_none(isopleth.Area, reference), kilometres_unit(reference),
                                       kilometres_or_none(record.AreaAt(isopleth.Percent, "low"), reference),
                                       kilometres_or_none(record.AreaAt(isopleth.Percent, "high"), reference)));
}

AkdeOutput::AkdeOutput(const RangeSettings& settings, const platform::SpatialReference& reference,
                       const platform::Services& services, bool json, Console& console)
    : m_settings(settings),
      m_console(console),
      m_asJson(json),
      m_reference(reference),
      m_page(services, settings, reference) {}

void AkdeOutput::Add(const RangeRecord& record) {
    if (m_settings.Html) m_page.Add(record);
    if (m_asJson)
        m_animals.push_back(json_of(record, m_settings));
    else
        print_range(record, m_reference, m_console);
}

/// Where the page stands; "" where there is none.
std::string AkdeOutput::WritePage(const akde::RangeOutcome& outcome) {
    if (!m_settings.Html) return {};
    const std::filesystem::path written = m_page.Write(outcome);
    if (written.empty())
        m_console.Problem(
            fmt::format("Warning: {} is not a page of this tool and was left as it is; no page was written.",
                        (m_settings.Folder / results_page::kRangePageFile).string()));
    return written.string();
}

void AkdeOutput::PrintPlaces(const akde::RangeOutcome& outcome, const std::string& page) {
    const std::string summary = outcome.Summary.string();
    const std::string package = outcome.Package.string();
    if (m_asJson)
        return m_console.Text(json_text(Json{{"summary", summary.empty() ? Json() : Json(summary)},
                                             {"package", package.empty() ? Json() : Json(package)},
                                             {"page", page.empty() ? Json() : Json(page)},
                                             {"animals", std::move(m_animals)}}));
    if (!summary.empty()) m_console.Result("summary: " + summary);
    if (!package.empty()) m_console.Result("ranges: " + package);
    if (!page.empty()) m_console.Result("page: " + page);
}

int AkdeOutput::Finish(const akde::RangeOutcome& outcome) {
    PrintPlaces(outcome, WritePage(outcome));
    if (outcome.Failed > 0)
        m_console.Problem(
            fmt::format("wxl: {} of {} distributions could not be computed", outcome.Failed, outcome.Done));
    if (outcome.Stopped) m_console.Problem("wxl: stopped; what was done until then is kept");
    const bool failed = outcome.Stopped || outcome.NotWritten || (outcome.Failed > 0 && outcome.Failed == outcome.Done);
    return failed ? exit_code::kFailed : exit_code::kDone;
}

}  // namespace wxl::cli
