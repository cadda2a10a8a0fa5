#include "results_page/map_svg.h"

#include "pictures/axis.h"
#include "pictures/xml_text.h"
#include "platform/text.h"
#include "results_page/fix_dots.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace wxl::results_page {
namespace {

using pictures::XmlText;
using platform::NumberText;

constexpr double kPlotSide = 440.0;
constexpr double kLeft = 26.0;
constexpr double kTop = 8.0;
constexpr double kRight = 10.0;
constexpr double kBottom = 26.0;
constexpr double kShortestSide = 0.6;
constexpr double kMargin = 0.03;  ///< of the longer side, around the picture
constexpr int kGridLines = 4;

std::string attribute(const char* name, double value) {
    return std::string(" ") + name + "=\"" + tenth(value) + "\"";
}

/// Round numbers within a range.
std::vector<double> grid_values(double from, double to) {
    std::vector<double> values;
    for (const pictures::Tick& tick : pictures::MakeAxis(from, to, kGridLines, 0.0).Ticks)
        if (tick.Value > from && tick.Value < to) values.push_back(tick.Value);
    return values;
}

std::string image(const MapPicture& map, const MapLayout& layout) {
    if (map.Png.empty()) return {};
    const platform::Point corner = layout.Scale.At({map.Bounds.XMin, map.Bounds.YMax});
    return "<image" + attribute("x", corner.X) + attribute("y", corner.Y) +
           attribute("width", map.Bounds.Width() * layout.Scale.Units) +
           attribute("height", map.Bounds.Height() * layout.Scale.Units) +
           " preserveAspectRatio=\"none\" href=\"data:image/png;base64," + base64(map.Png) + "\"/>\n";
}

constexpr double kCharacter = 7.0;  ///< of a coordinate

/// Places of labels that are kept within `least` and `most`; none where a label would be moved onto another.
std::vector<std::optional<double>> label_places(const std::vector<double>& wanted, double least, double most,
                                                double room) {
    const auto kept = [&](double place) { return std::clamp(place, least, most); };
    std::vector<std::optional<double>> places;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        bool meets = false;
        for (std::size_t k = 0; k < wanted.size(); ++k) {
            const bool first = kept(wanted[k]) == wanted[k] || k < i;
            meets = meets || (k != i && first && std::abs(kept(wanted[k]) - kept(wanted[i])) < room);
        }
        const bool moved = kept(wanted[i]) != wanted[i];
        places.push_back(moved && meets ? std::nullopt : std::optional(kept(wanted[i])));
    }
    return places;
}

/// Room that the longest of the labels takes.
double room_of(const std::vector<double>& values) {
    std::size_t longest = 0;
    for (const double value : values) longest = std::max(longest, NumberText(value).size());
    return kCharacter * static_cast<double>(longest);
}

/// Grid lines with their coordinates at the left and below.
std::string graticule(const MapLayout& layout) {
    const double right = kLeft + layout.PlotWidth;
    const double bottom = kTop + layout.PlotHeight;
    std::string lines;
    std::string labels;
    const std::vector<double> eastings = grid_values(layout.Shown.XMin, layout.Shown.XMax);
    const std::vector<double> northings = grid_values(layout.Shown.YMin, layout.Shown.YMax);
    std::vector<double> xs;
    std::vector<double> ys;
    for (const double value : eastings) xs.push_back(layout.Scale.At({value, 0.0}).X);
    for (const double value : northings) ys.push_back(layout.Scale.At({0.0, value}).Y);
    const auto below = label_places(xs, kLeft + 30.0, right - 24.0, room_of(eastings));
    const auto beside = label_places(ys, kTop + 34.0, bottom - 34.0, room_of(northings));
    for (std::size_t i = 0; i < xs.size(); ++i) {
        const double x = xs[i];
        lines += "M" + tenth(x) + " " + tenth(kTop) + "V" + tenth(bottom);
        if (!below[i]) continue;
        labels += "<text" + attribute("x", *below[i]) + attribute("y", bottom + 16.0) + " text-anchor=\"middle\">" +
                  NumberText(eastings[i]) + "</text>";
    }
    for (std::size_t i = 0; i < ys.size(); ++i) {
        const double y = ys[i];
        lines += "M" + tenth(kLeft) + " " + tenth(y) + "H" + tenth(right);
        if (!beside[i]) continue;
        labels += "<text text-anchor=\"middle\" transform=\"translate(" + tenth(kLeft - 8.0) + " " + tenth(*beside[i]) +
                  ") rotate(-90)\">" + NumberText(northings[i]) + "</text>";
    }
    return "<path class=\"grid\" d=\"" + lines + "\"/>\n<g class=\"coordinates\">" + labels + "</g>\n";
}

/// Each line twice: a pale band below, so that it shows on dark densities, and the line itself.
std::string isopleths(const MapPicture& map) {
    std::string paths;
    std::string bands;
    std::string ink;
    for (std::size_t i = 0; i < map.Lines.size(); ++i) {
        const auto& [path, look] = map.Lines[i];
        if (path.empty()) continue;
        const std::string id = map.Id + "-l" + std::to_string(i);
        paths += "<path id=\"" + id + "\" d=\"" + path + "\"/>";
        bands += "<use href=\"#" + id + "\"/>";
        ink += "<use href=\"#" + id + "\" stroke-width=\"" + tenth(look.Width) + "\"" +
               (*look.Dashes == '\0' ? std::string() : " stroke-dasharray=\"" + std::string(look.Dashes) + "\"") + "/>";
    }
    if (paths.empty()) return {};
    return "<defs>" + paths + "</defs><g class=\"bands\">" + bands + "</g><g class=\"isopleths\">" + ink + "</g>\n";
}

std::string areas(const MapPicture& map) {
    std::string paths;
    for (const MapArea& area : map.Areas) {
        if (area.Path.empty()) continue;
        paths += "<path d=\"" + area.Path + "\" fill=\"" + area.Fill + "\" stroke=\"" + area.Stroke + "\">" +
                 (area.Title.empty() ? std::string() : "<title>" + XmlText(area.Title) + "</title>") + "</path>\n";
    }
    return paths.empty() ? paths : "<g class=\"areas\">" + paths + "</g>\n";
}

std::string labels(const MapPicture& map) {
    std::string texts;
    for (const MapLabel& label : map.Labels)
        texts += "<text" + attribute("x", label.Place.X) + attribute("y", label.Place.Y) + " text-anchor=\"middle\">" +
                 XmlText(label.Text) + "</text>";
    return texts.empty() ? texts : "<g class=\"names\">" + texts + "</g>\n";
}

std::string dots(const MapPicture& map) {
    if (map.Dots.empty()) return {};
    constexpr std::ptrdiff_t kFew = 300;
    const char* look = std::ranges::count(map.Dots, 'M') > kFew ? "dots" : "dots few";
    return std::string("<path class=\"") + look + "\" transform=\"scale(" + NumberText(1.0 / kDotUnits) + ")\" d=\"" +
           map.Dots + "\"/>\n";
}

std::string scale_mark(const MapPicture& map, const MapLayout& layout) {
    const ScaleBar bar = scale_bar(layout.Shown.Width(), map.Reference);
    const double x = kLeft + 12.0;
    const double y = kTop + layout.PlotHeight - 14.0;
    const double width = bar.Length * layout.Scale.Units;
    return "<g class=\"scale\"><path d=\"M" + tenth(x) + " " + tenth(y - 5.0) + "v5h" + tenth(width) + "v-5\"/><text" +
           attribute("x", x + width / 2.0) + attribute("y", y - 6.0) + " text-anchor=\"middle\">" + XmlText(bar.Text) +
           "</text></g>\n";
}

std::string north_mark(const MapLayout& layout) {
    const double x = kLeft + layout.PlotWidth - 18.0;
    return "<g class=\"north\" transform=\"translate(" + tenth(x) + " " + tenth(kTop + 10.0) +
           ")\"><path d=\"M0 0l6 18-6-4-6 4z\"/><text y=\"31\" text-anchor=\"middle\">N</text></g>\n";
}

std::string unit_text(double length, const platform::SpatialReference& reference) {
    const double metres = reference.IsGeographic ? 0.0 : length * reference.MetersPerUnit;
    if (metres > 0.0) return metres >= 1000.0 ? NumberText(metres / 1000.0) + " km" : NumberText(metres) + " m";
    return NumberText(length) + (reference.UnitName.empty() ? " units" : " " + reference.UnitName);
}

}  // namespace

LineLook look_of(std::size_t index) {
    static constexpr std::array<LineLook, 5> kLooks = {
        {{1.2, ""}, {1.6, "7 3"}, {2.4, ""}, {1.8, "2 3"}, {1.4, "8 3 2 3"}}};
    return kLooks.at(index % kLooks.size());
}

std::string line_sample(const LineLook& look) {
    return "<svg class=\"sample\" viewBox=\"0 0 34 8\" aria-hidden=\"true\"><path d=\"M1 4h32\" stroke-width=\"" +
           tenth(look.Width) + "\" stroke-dasharray=\"" + (*look.Dashes == '\0' ? "none" : look.Dashes) + "\"/></svg>";
}

MapLayout layout_of(const platform::Extent& bounds) {
    MapLayout layout;
    const double longest = std::max(bounds.Width(), bounds.Height());
    const auto widened = [&](double width) {
        return std::max(width, kShortestSide * longest) + 2.0 * kMargin * longest;
    };
    const double width = widened(bounds.Width());
    const double height = widened(bounds.Height());
    const double x = (bounds.XMin + bounds.XMax) / 2.0;
    const double y = (bounds.YMin + bounds.YMax) / 2.0;
    layout.Shown = {x - width / 2.0, y - height / 2.0, x + width / 2.0, y + height / 2.0};
    layout.Scale = {kLeft, kTop, layout.Shown.XMin, layout.Shown.YMax, kPlotSide / std::max(width, height)};
    layout.PlotWidth = width * layout.Scale.Units;
    layout.PlotHeight = height * layout.Scale.Units;
    layout.Width = kLeft + layout.PlotWidth + kRight;
    layout.Height = kTop + layout.PlotHeight + kBottom;
    return layout;
}

std::string map_svg(const MapPicture& map, const MapLayout& layout) {
    const std::string frame = attribute("x", kLeft) + attribute("y", kTop) + attribute("width", layout.PlotWidth) +
                              attribute("height", layout.PlotHeight);
    return "<svg class=\"map\" role=\"img\" aria-labelledby=\"" + map.Id + "-t " + map.Id + "-d\" viewBox=\"0 0 " +
           tenth(layout.Width) + " " + tenth(layout.Height) + "\">\n<title id=\"" + map.Id + "-t\">" +
           XmlText(map.Title) + "</title><desc id=\"" + map.Id + "-d\">" + XmlText(map.Description) +
           "</desc>\n<rect class=\"paper\"" + frame + "/>\n" + image(map, layout) + graticule(layout) + dots(map) +
           areas(map) + isopleths(map) + labels(map) + scale_mark(map, layout) + north_mark(layout) +
           "<rect class=\"frame\"" + frame + "/></svg>";
}

ScaleBar scale_bar(double width, const platform::SpatialReference& reference) {
    const double metres = reference.IsGeographic || !(reference.MetersPerUnit > 0.0) ? 1.0 : reference.MetersPerUnit;
    const double wanted = width * metres / 4.0;
    if (!(wanted > 0.0) || !std::isfinite(wanted)) return {width, NumberText(width)};
    const double power = std::pow(10.0, std::floor(std::log10(wanted)));
    double length = power;
    for (const double step : {2.0, 5.0})
        if (step * power <= wanted * (1.0 + 1e-9)) length = step * power;
    return {length / metres, unit_text(length / metres, reference)};
}

std::string base64(std::string_view bytes) {
    static constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 3; ++k)
            group = group << 8U | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0U);
        for (std::size_t k = 0; k < 4; ++k) text += i + k > bytes.size() ? '=' : kDigits[group >> (18U - 6U * k) & 63U];
    }
    return text;
}

}  // namespace wxl::results_page
