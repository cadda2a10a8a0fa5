#include "pictures/area_curve_picture.h"
#include "pictures/axis.h"
#include "pictures/svg_parts.h"
#include "pictures/xml_text.h"

#include <algorithm>
#include <string_view>

namespace wxl::pictures {

namespace {

constexpr double kLeft = 92.0;
constexpr double kTop = 56.0;
constexpr double kPlotHeight = 250.0;
constexpr double kRightMargin = 22.0;
constexpr int kHeight = 384;

// A viewer that knows no CSS variables keeps the presentation attributes.
constexpr std::string_view kStyle =
    ".wxl-curve{max-width:100%;height:auto}"
    ".wxl-curve .paper{fill:var(--wxl-paper,#fff)}"
    ".wxl-curve text{fill:var(--wxl-ink,#1f2933)}"
    ".wxl-curve .faint{stroke:var(--wxl-faint,#d9dee4)}"
    ".wxl-curve .frame{stroke:var(--wxl-ink,#1f2933)}"
    ".wxl-curve .curve{stroke:var(--wxl-curve,#1b6ca8)}"
    ".wxl-curve .spread{fill:var(--wxl-curve,#1b6ca8)}"
    ".wxl-curve .near{fill:var(--wxl-faint,#d9dee4)}"
    ".wxl-curve .level{stroke:var(--wxl-used,#b3261e)}"
    "@media (prefers-color-scheme:dark){"
    ".wxl-curve .paper{fill:var(--wxl-paper,#15191e)}"
    ".wxl-curve text{fill:var(--wxl-ink,#e4e8ec)}"
    ".wxl-curve .faint{stroke:var(--wxl-faint,#3a424b)}"
    ".wxl-curve .near{fill:var(--wxl-faint,#3a424b)}"
    ".wxl-curve .frame{stroke:var(--wxl-ink,#e4e8ec)}"
    ".wxl-curve .curve{stroke:var(--wxl-curve,#6cb8f0)}"
    ".wxl-curve .spread{fill:var(--wxl-curve,#6cb8f0)}"
    ".wxl-curve .level{stroke:var(--wxl-used,#ff8a80)}}";

std::string at(double coordinate) {
    return SvgNumber(coordinate);
}

double largest_area(const AreaCurvePicture& picture) {
    double largest = 0.0;
    for (const AreaCurvePoint& point : picture.Points)
        largest = std::max({largest, point.Area.value_or(0.0), point.High.value_or(0.0)});
    return largest;
}

std::optional<double> last_area(const AreaCurvePicture& picture) {
    return picture.Points.empty() ? std::nullopt : picture.Points.back().Area;
}

/// The plot's rectangle and both scales; both begin at 0.
class Plot {
public:
    Plot(const AreaCurvePicture& picture, double width)
        : X(MakeAxis(0.0, static_cast<double>(picture.Points.back().Fixes), 8, 0.0)),
          Y(MakeAxis(0.0, 1.06 * largest_area(picture), 6, 0.0)),
          m_width(width - kLeft - kRightMargin) {}

    double Right() const { return kLeft + m_width; }
    double Bottom() const { return kTop + kPlotHeight; }
    double AtX(double fixes) const { return kLeft + m_width * (fixes - X.From) / (X.To - X.From); }
    double AtY(double area) const { return Bottom() - kPlotHeight * (area - Y.From) / (Y.To - Y.From); }

    Axis X;
    Axis Y;

private:
    double m_width;
};

std::string scales(const AreaCurvePicture& picture, const Plot& plot) {
    std::string svg = R"(<g font-size="12">)";
    for (const Tick& tick : plot.Y.Ticks) {
        const double y = plot.AtY(tick.Value);
        svg += R"(<path class="faint" stroke="#d9dee4" d="M)" + at(kLeft) + " " + at(y) + "H" + at(plot.Right()) +
               R"("/><text text-anchor="end" x=")" + at(kLeft - 8) + "\" y=\"" + at(y + 4) + "\">" + tick.Text +
               "</text>";
    }
    for (const Tick& tick : plot.X.Ticks) {
        const double x = plot.AtX(tick.Value);
        svg += R"(<path class="frame" stroke="#1f2933" d="M)" + at(x) + " " + at(plot.Bottom()) +
               R"(v5"/><text text-anchor="middle" x=")" + at(x) + "\" y=\"" + at(plot.Bottom() + 20) + "\">" +
               tick.Text + "</text>";
    }
    svg += R"(<path class="frame" stroke="#1f2933" fill="none" d="M)" + at(kLeft) + " " + at(kTop) + "V" +
           at(plot.Bottom()) + "H" + at(plot.Right()) + R"("/><text text-anchor="middle" x=")" +
           at((kLeft + plot.Right()) / 2) + "\" y=\"" + at(plot.Bottom() + 42) + "\">Fixes</text>";
    std::string areas = "Area";
    if (!plot.Y.Factor.empty()) areas += " × " + plot.Y.Factor;
    if (!picture.Units.empty()) areas += " (" + picture.Units + ")";
    svg += R"(<text text-anchor="middle" transform="translate(20 )" + at(kTop + kPlotHeight / 2) +
           R"svg() rotate(-90)">)svg" + XmlText(areas) + "</text>";
    return svg + "</g>\n";
}

/// What counts as near the last area, across the plot.
std::string asymptote(const AreaCurvePicture& picture, const Plot& plot) {
    if (!picture.LevelsAt || !last_area(picture)) return {};
    const double last = *last_area(picture);
    const double top = plot.AtY(std::min(plot.Y.To, last * (1.0 + picture.Tolerance)));
    const double bottom = plot.AtY(last * (1.0 - picture.Tolerance));
    std::string svg = R"(<rect class="near" fill="#d9dee4" fill-opacity="0.6" x=")" + at(kLeft) + "\" y=\"" + at(top) +
                      "\" width=\"" + at(plot.Right() - kLeft) + "\" height=\"" + at(bottom - top) + "\"/>\n";
    if (picture.Reached)
        svg += R"(<path class="level" stroke="#b3261e" stroke-width="2" stroke-dasharray="6 4" d="M)" +
               at(plot.AtX(static_cast<double>(*picture.LevelsAt))) + " " + at(kTop) + "V" + at(plot.Bottom()) +
               "\"/>\n";
    return svg;
}

/// The band of the replicates, forth along its upper edge and back along the lower one.
std::string spread(const AreaCurvePicture& picture, const Plot& plot) {
    std::string upper;
    std::string lower;
    for (const AreaCurvePoint& point : picture.Points) {
        if (!point.Low || !point.High) continue;
        const std::string x = at(plot.AtX(static_cast<double>(point.Fixes)));
        upper += (upper.empty() ? "M" : "L") + x + " " + at(plot.AtY(*point.High));
        lower.insert(0, "L" + x + " " + at(plot.AtY(*point.Low)));
    }
    if (upper.empty()) return {};
    return R"(<path class="spread" fill="#1b6ca8" fill-opacity="0.25" d=")" + upper + lower + "Z\"/>\n";
}

/// A missing area interrupts the curve.
std::string curve(const AreaCurvePicture& picture, const Plot& plot) {
    std::string path;
    bool drawing = false;
    for (const AreaCurvePoint& point : picture.Points) {
        if (point.Area)
            path += (drawing ? "L" : "M") + at(plot.AtX(static_cast<double>(point.Fixes))) + " " +
                    at(plot.AtY(*point.Area));
        drawing = point.Area.has_value();
    }
    return R"(<path class="curve" stroke="#1b6ca8" stroke-width="2" stroke-linejoin="round" stroke-linecap="round" fill="none" d=")" +
           path + "\"/>\n";
}

}  // namespace

std::string AsymptoteText(const AreaCurvePicture& picture) {
    const std::string share = ShortNumber(100.0 * picture.Tolerance, 3) + " %";
    if (!picture.LevelsAt) return "There is no area to level off at.";
    if (picture.Reached)
        return "From " + std::to_string(*picture.LevelsAt) + " fixes on, every area lies within " + share +
               " of the last.";
    return "No asymptote: the area still changes by more than " + share + " near the end.";
}

std::string AreaCurveSvg(const AreaCurvePicture& picture, const std::string& idPrefix, int width) {
    const std::string prefix = SvgIdPrefix(idPrefix, "curve");
    const std::string title = picture.Title + ": area against fixes";
    constexpr std::size_t kShownTitle = 56;
    std::string svg = R"(<svg xmlns="http://www.w3.org/2000/svg" class="wxl-curve" role="img" aria-labelledby=")" +
                      prefix + "-title " + prefix + "-desc\" width=\"" + std::to_string(width) + "\" height=\"" +
                      std::to_string(kHeight) + "\" viewBox=\"0 0 " + std::to_string(width) + " " +
                      std::to_string(kHeight) + R"(" font-family="system-ui, sans-serif" fill="#1f2933">)" + "\n";
    svg += "<title id=\"" + prefix + "-title\">" + XmlText(title) + "</title>\n";
    svg += "<desc id=\"" + prefix + "-desc\">" + XmlText(picture.Of + ". " + AsymptoteText(picture)) + "</desc>\n";
    svg += "<style>" + std::string(kStyle) + "</style>\n";
    svg += R"(<rect class="paper" fill="#ffffff" width=")" + std::to_string(width) + "\" height=\"" +
           std::to_string(kHeight) + "\"/>\n";
    svg += R"(<text font-size="15" font-weight="600" x=")" + at(kLeft) + R"(" y="24">)" +
           XmlText(Shortened(title, kShownTitle)) + R"(</text><text font-size="12" x=")" + at(kLeft) + R"(" y="43">)" +
           XmlText(picture.Of) + "</text>\n";
    if (picture.Points.empty() || !(largest_area(picture) > 0.0)) {
        svg += R"(<text font-size="13" x=")" + at(kLeft) + R"(" y="76">There is no area to show.</text>)" + "\n";
    } else {
        const Plot plot(picture, width);
        svg += asymptote(picture, plot) + scales(picture, plot) + spread(picture, plot) + curve(picture, plot);
    }
    svg += R"(<text font-size="11" text-anchor="end" x=")" + at(width - kRightMargin) + "\" y=\"" + at(kHeight - 10) +
           "\">" + XmlText(AsymptoteText(picture)) + "</text>\n";
    return svg + "</svg>\n";
}

}  // namespace wxl::pictures
