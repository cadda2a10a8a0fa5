#include "results_page/range_section.h"

#include "akde/animal_models.h"
#include "akde/variogram_view.h"
#include "analysis/output_names.h"
#include "pictures/axis.h"
#include "pictures/xml_text.h"
#include "platform/runtime_error.h"
#include "platform/text.h"
#include "results_page/density_picture.h"
#include "results_page/map_svg.h"
#include "results_page/raster_window.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <iterator>

namespace wxl::results_page {
namespace {

using akde::RangeIsopleth;
using akde::RangeRecord;
using movement_models::Ellipse;
using movement_models::FitStatus;
using movement_models::FittedModel;
using pictures::ShortNumber;
using pictures::XmlText;
using platform::NumberText;

constexpr int kDigits = 4;
constexpr double kTolerance = 0.35;  ///< picture units

std::vector<double> falling(std::vector<double> percentages) {
    std::sort(percentages.begin(), percentages.end(), std::greater<>());
    percentages.erase(std::unique(percentages.begin(), percentages.end()), percentages.end());
    return percentages;
}

/// Percentages differ by width, bounds by dashes.
LineLook look_of_bound(std::size_t percentage, const std::string& bound) {
    const double width = percentage == 0 ? 1.3 : 2.2;
    if (bound == "low") return {width, "2 3"};
    return {width, bound == "high" ? "8 4" : ""};
}

struct Level {
    const RangeIsopleth* Isopleth;
    double Value;  ///< of the raster
};

std::vector<Level> levels_of(const RangePageRun& run, const RangeRecord& record) {
    std::vector<Level> levels;
    for (const RangeIsopleth& isopleth : record.Isopleths)
        if (isopleth.Level) levels.push_back({&isopleth, *isopleth.Level * run.Wanted.Scaling});
    return levels;
}

std::vector<MapLine> map_lines(const RangePageRun& run, const std::vector<Level>& levels,
                               platform::IRasterDataset& raster, const MapScale& scale, const PictureSize& size,
                               const platform::Services& services) {
    std::vector<double> values;
    for (const Level& level : levels) values.push_back(level.Value);
    if (values.empty()) return {};
    const auto contours = services.Contours->Contours(raster, values);
    const std::vector<double> percentages = falling(run.Wanted.Percentages);
    std::vector<MapLine> lines;
    for (const Level& level : levels) {
        std::vector<platform::ContourLine> own;
        std::copy_if(contours.begin(), contours.end(), std::back_inserter(own),
                     [&](const platform::ContourLine& line) { return line.Value == level.Value; });
        const auto place = std::find(percentages.begin(), percentages.end(), level.Isopleth->Percent);
        lines.push_back({svg_path(own, scale, kTolerance, size.LinePoints / levels.size()),
                         look_of_bound(static_cast<std::size_t>(place - percentages.begin()), level.Isopleth->Bound)});
    }
    return lines;
}

std::string interval_text(const RangePageRun& run, const RangeRecord& record, double percent) {
    const auto area = [&](const char* bound) { return area_text(run.Units, record.AreaAt(percent, bound)); };
    const std::string low = area("low");
    return area("est") + " " + area_unit(run.Units) + (low.empty() ? "" : " (" + low + " to " + area("high") + ")");
}

std::string description(const RangePageRun& run, const RangeRecord& record) {
    std::string text = "Density of use, dark where it is highest.";
    for (const double percent : falling(run.Wanted.Percentages))
        text += " The area that holds " + NumberText(percent) + " % is " + interval_text(run, record, percent) + ".";
    return text;
}

/// The part of the raster around the outlines.
std::shared_ptr<platform::IRasterDataset> shown_part(std::shared_ptr<platform::IRasterDataset> raster,
                                                     const std::vector<Level>& levels, double& maximum) {
    constexpr double kShare = 0.2;  ///< of the outermost outline's density
    double least = 0.0;
    for (const Level& level : levels) least = least > 0.0 ? std::min(least, level.Value) : level.Value;
    const Window window = occupied_window(*raster->Band(), maximum, kShare * least);
    return windowed(std::move(raster), window);
}

std::string range_map(const RangePageRun& run, std::size_t number, const PictureSize& size,
                      const platform::Services& services) {
    const RangeRecord& record = run.Records[number];
    const auto raster =
        services.Rasters->Open(analysis::subfolder_in(run.Wanted.Folder, record.Subfolder), record.RasterName);
    if (!raster) return {};
    const std::vector<Level> levels = levels_of(run, record);
    double maximum = 0.0;
    const auto part = shown_part(raster, levels, maximum);
    const DensityPicture density = density_picture(*part->Band(), maximum, size.Side);
    const MapLayout layout = layout_of(part->Band()->Geometry().Bounds());
    MapPicture map;
    map.Id = "map-" + std::to_string(number + 1);
    map.Title = "Map of " + platform::ValueText(record.Id);
    map.Description = description(run, record);
    map.Png = services.Pictures->Png(density.Picture);
    map.Bounds = density.Bounds;
    map.Lines = map_lines(run, levels, *part, layout.Scale, size, services);
    map.Reference = run.Units.Reference;
    return map_svg(map, layout);
}

std::string missing(const std::string& text) {
    return "<p class=\"missing\">" + text + "</p>\n";
}

std::string map_figure(const RangePageRun& run, std::size_t number, const PictureSize& size,
                       const platform::Services& services) {
    if (!run.Records[number].IsDone()) return missing("No range was computed, so there is no map.");
    try {
        const std::string map = range_map(run, number, size, services);
        return map.empty() ? missing("The raster is not in the folder, so there is no map.")
                           : "<figure>" + map + "</figure>\n";
    } catch (...) {
        return missing("There is no map: " + XmlText(platform::CurrentError().Description));
    }
}

std::string cell(const std::string& text) {
    return "<td class=\"num\">" + (text.empty() ? "–" : text) + "</td>";
}

std::string number_text(std::optional<double> value) {
    return value && std::isfinite(*value) ? ShortNumber(*value, kDigits) : std::string();
}

std::string areas(const RangePageRun& run, const RangeRecord& record) {
    if (record.Isopleths.empty()) return {};
    std::string html = "<table class=\"areas\"><caption>Areas (" + XmlText(area_unit(run.Units)) +
                       ") with 95 % limits</caption><thead><tr><th scope=\"col\">Percent</th>";
    const std::vector<double> percentages = falling(run.Wanted.Percentages);
    for (const char* bound : {"low", "est", "high"})
        html += "<th scope=\"col\" class=\"num\">" + line_sample(look_of_bound(0, bound)) +
                (std::string(bound) == "est" ? "estimate" : bound) + "</th>";
    html += "</tr></thead><tbody>";
    for (const double percent : percentages) {
        html += "<tr><th scope=\"row\">" + NumberText(percent) + " %</th>";
        for (const char* bound : {"low", "est", "high"})
            html += cell(area_text(run.Units, record.AreaAt(percent, bound)));
        html += "</tr>";
    }
    return html + "</tbody></table>\n";
}

std::string fact(const std::string& name, const std::string& html) {
    return html.empty() ? std::string() : "<div><dt>" + name + "</dt><dd>" + html + "</dd></div>";
}

std::string with_deviation(double seconds, double deviation) {
    if (!(seconds > 0.0)) return {};
    return time_text(seconds) + (deviation > 0.0 ? " ± " + time_text(deviation) : "");
}

std::string speed_text(const RangePageRun& run, const FittedModel& model) {
    const auto speed = model.Speed();
    if (!speed) return {};
    return ShortNumber(*speed, kDigits) + " " + XmlText(length_unit(run.Units)) + "/s";
}

std::string kernel_text(const RangePageRun& run, const RangeRecord& record) {
    const Ellipse kernel = movement_models::ellipse_of(record.Matrix);
    return ShortNumber(kernel.Major, kDigits) + " × " + ShortNumber(kernel.Minor, kDigits) + " " +
           XmlText(length_unit(run.Units)) +
           (kernel.Major > kernel.Minor ? ", " + ShortNumber(kernel.Angle, 3) + "°" : "");
}

std::string weights_text(const RangePageRun& run, const RangeRecord& record) {
    if (!run.Wanted.Optimal) return "uniform";
    return "optimal, worth " + ShortNumber(record.EffectiveWeights, kDigits) + " equal ones; " +
           std::to_string(record.ZeroWeights) + " are 0";
}

std::string volume_of(const RangeRecord& record) {
    return NumberText(std::round(record.Volume * 10000.0) / 100.0) + " %";
}

std::string cells_text(const RangePageRun& run, const RangeRecord& record) {
    return std::to_string(record.Grid.Columns) + " × " + std::to_string(record.Grid.Rows) + " of " +
           NumberText(record.Grid.CellSize) + " " + XmlText(length_unit(run.Units));
}

std::string facts(const RangePageRun& run, const RangeRecord& record) {
    std::string html = "<dl class=\"facts\">" +
                       fact("Fixes", std::to_string(record.Used) +
                                         (record.Used == record.Given ? "" : " of " + std::to_string(record.Given))) +
                       fact("From", XmlText(record.First)) + fact("To", XmlText(record.Last));
    if (!record.Chosen) return html + "</dl>\n";
    const FittedModel& model = *record.Chosen;
    html += fact(record.GivenModel ? "Model, given" : "Model", XmlText(model_text(record))) +
            fact("Range crossed in", with_deviation(model.Model.Scales.Position, model.Deviations.Position)) +
            fact("Direction kept for", with_deviation(model.Model.Scales.Velocity, model.Deviations.Velocity)) +
            fact("Root of the mean squared speed", speed_text(run, model)) +
            fact("Effective fixes for the area",
                 model.DofArea > 0.0 ? ShortNumber(model.DofArea, kDigits) : "not defined") +
            fact("Effective fixes for the middle", ShortNumber(model.DofMean, kDigits));
    if (!record.IsDone()) return html + "</dl>\n";
    return html + fact("Bandwidth", ShortNumber(record.H, kDigits) + " of the range") +
           fact("Kernel (standard deviations)", kernel_text(run, record)) +
           fact("Correction of areas", "÷ " + ShortNumber(record.Bias, kDigits)) +
           fact("Weights", weights_text(run, record)) + fact("Volume captured", volume_of(record)) +
           fact("Raster", "<code>" + XmlText(record.RasterPlace()) + "</code>") +
           fact("Cells", cells_text(run, record)) + "</dl>\n";
}

std::string model_row(const RangePageRun& run, const RangeRecord& record, const FittedModel& model) {
    const bool fitted = model.Status == FitStatus::kFitted;
    const auto of_fit = [&](double value) { return cell(fitted ? number_text(value) : ""); };
    const auto limits = fitted ? movement_models::area_interval(model.GaussianArea(0.95), model.DofArea) : std::nullopt;
    const auto area = [&](std::optional<double> value) { return cell(area_text(run.Units, value)); };
    return "<tr><th scope=\"row\">" + XmlText(model_title(model.Model.Kind, model.Shape)) + "</th>" +
           of_fit(record.Chosen ? model.Aicc - record.Chosen->Aicc : model.Aicc) +
           cell(fitted ? NumberText(std::round(model.LogLikelihood * 100.0) / 100.0) : "") +
           cell(fitted ? time_text(model.Model.Scales.Position) : "") +
           cell(fitted ? time_text(akde::velocity_scale(model)) : "") + of_fit(model.DofArea) +
           area(limits ? std::optional(limits->Low) : std::nullopt) +
           area(fitted ? std::optional(model.GaussianArea(0.95)) : std::nullopt) +
           area(limits ? std::optional(limits->High) : std::nullopt) + "<td>" +
           (record.GivenModel ? "given" : XmlText(akde::status_text(model))) + "</td></tr>\n";
}

std::string models_table(const RangePageRun& run, const RangeRecord& record, const std::string& id) {
    if (record.Models.empty()) return {};
    std::string html = "<div class=\"scroll models\" role=\"region\" aria-labelledby=\"" + id +
                       "-models\" tabindex=\"0\">\n<table><caption id=\"" + id +
                       "-models\">Movement models, best first; areas that hold 95 % under the model, in " +
                       XmlText(area_unit(run.Units)) + "</caption><thead><tr><th scope=\"col\">Model</th>";
    for (const char* column : {"ΔAICc", "log-likelihood", "range crossed in", "direction kept for", "effective fixes",
                               "low", "area", "high"})
        html += "<th scope=\"col\" class=\"num\">" + std::string(column) + "</th>";
    html += "<th scope=\"col\">Fit</th></tr></thead><tbody>\n";
    for (const FittedModel& model : record.Models) html += model_row(run, record, model);
    return html + "</tbody></table></div>\n";
}

std::string variogram(const RangePageRun& run, const RangeRecord& record, const std::string& id) {
    if (record.Variogram.empty()) return {};
    return "<figure class=\"profile\">" +
           pictures::VariogramSvg(
               akde::variogram_picture_of({platform::ValueText(record.Id), record.Variogram, record.Duration,
                                           record.Chosen, has_kilometres(run.Units)}),
               id + "-variogram") +
           "</figure>\n";
}

}  // namespace

std::string model_text(const RangeRecord& record) {
    return record.Chosen ? model_title(record.Chosen->Model.Kind, record.Chosen->Shape) : std::string();
}

std::string time_text(double seconds) {
    return seconds > 0.0 ? movement_models::duration_text(seconds) : std::string();
}

std::string range_section(const RangePageRun& run, std::size_t number, const PictureSize& size,
                          const platform::Services& services) {
    const RangeRecord& record = run.Records[number];
    const std::string id = section_id(number + 1);
    const std::string name = XmlText(platform::ValueText(record.Id));
    std::string html = "<article class=\"animal\" id=\"" + id + "\" aria-labelledby=\"" + id + "-name\">\n<h3 id=\"" +
                       id + "-name\"><bdi>" + name + "</bdi></h3>\n<p" +
                       (record.Verdict.Resident ? "" : " class=\"reason\"") + ">" +
                       XmlText(record.IsDone() || !record.Chosen ? record.Verdict.Text : record.Reason) + "</p>\n";
    for (const std::string& note : record.Notes) html += "<p class=\"quiet\">" + XmlText(note) + "</p>\n";
    html += "<div class=\"columns\"><div>\n" + map_figure(run, number, size, services) + "</div><div>\n" +
            areas(run, record) + facts(run, record) + "</div></div>\n" + models_table(run, record, id) +
            variogram(run, record, id);
    return html + "<p class=\"back\"><a href=\"#results\">Back to the table<span class=\"hidden\"> from " + name +
           "</span></a></p>\n</article>\n";
}

}  // namespace wxl::results_page
