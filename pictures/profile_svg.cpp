#include "pictures/profile_axes.h"
#include "pictures/profile_picture.h"
#include "pictures/svg_parts.h"
#include "pictures/xml_text.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <vector>

namespace wxl::pictures {

namespace {

constexpr std::size_t kShownTitle = 56;  ///< characters; the whole title stands in the title element

constexpr double kLeft = 84.0;
constexpr double kTop = 78.0;
constexpr double kPlotHeight = 250.0;
constexpr double kRightMargin = 22.0;
constexpr int kHeight = 402;

// A viewer that knows no CSS variables keeps the presentation attributes.
constexpr std::string_view kStyle =
    ".wxl-profile{max-width:100%;height:auto}"
    ".wxl-profile .paper{fill:var(--wxl-paper,#fff)}"
    ".wxl-profile text{fill:var(--wxl-ink,#1f2933)}"
    ".wxl-profile .faint{stroke:var(--wxl-faint,#d9dee4)}"
    ".wxl-profile .frame{stroke:var(--wxl-ink,#1f2933)}"
    ".wxl-profile .curve{stroke:var(--wxl-curve,#1b6ca8)}"
    ".wxl-profile .dot{fill:var(--wxl-curve,#1b6ca8);stroke:var(--wxl-paper,#fff)}"
    ".wxl-profile .href{stroke:var(--wxl-href,#39424c)}"
    ".wxl-profile .used{stroke:var(--wxl-used,#b3261e)}"
    "@media (prefers-color-scheme:dark){"
    ".wxl-profile .paper{fill:var(--wxl-paper,#15191e)}"
    ".wxl-profile text{fill:var(--wxl-ink,#e4e8ec)}"
    ".wxl-profile .faint{stroke:var(--wxl-faint,#3a424b)}"
    ".wxl-profile .frame{stroke:var(--wxl-ink,#e4e8ec)}"
    ".wxl-profile .curve{stroke:var(--wxl-curve,#6cb8f0)}"
    ".wxl-profile .dot{fill:var(--wxl-curve,#6cb8f0);stroke:var(--wxl-paper,#15191e)}"
    ".wxl-profile .href{stroke:var(--wxl-href,#e4e8ec)}"
    ".wxl-profile .used{stroke:var(--wxl-used,#ff8a80)}}";

constexpr std::string_view kDot = R"(class="dot" fill="#1b6ca8" stroke="#ffffff" stroke-width="1.5")";
constexpr std::string_view kHref = R"(class="href" stroke="#39424c" stroke-width="2" stroke-dasharray="6 4")";
constexpr std::string_view kUsed = R"(class="used" stroke="#b3261e" stroke-width="4")";

std::string at(double coordinate) {
    return SvgNumber(coordinate);
}

/// The plot's rectangle and both scales.
class Plot {
public:
    Plot(const ProfilePicture& picture, const ScoreRange& scores, double width)
        : Axes(AxesOf(picture, scores)), X(Axes.Bandwidths), Y(Axes.Scores), m_width(width - kLeft - kRightMargin) {}

    double Right() const { return kLeft + m_width; }
    double Bottom() const { return kTop + kPlotHeight; }

    /// Numbers beyond the scales, which end at 1E+300, are drawn at its ends.
    double AtX(double bandwidth) const {
        return kLeft + m_width * std::clamp((bandwidth - X.From) / (X.To - X.From), 0.0, 1.0);
    }

    /// Far above the plot at most, so that coordinates stay short.
    double AtY(double score) const {
        return Bottom() - kPlotHeight * std::clamp((score - Y.From) / (Y.To - Y.From), 0.0, 20.0);
    }

    const ProfileAxes Axes;
    const Axis& X;
    const Axis& Y;

private:
    double m_width;
};

std::string scales(const Plot& plot) {
    std::string svg = R"(<g font-size="12">)";
    for (const Tick& tick : plot.Y.Ticks) {
        const double y = plot.AtY(tick.Value);
        svg +=
            R"(<path class="faint" stroke="#d9dee4" d="M)" + at(kLeft) + " " + at(y) + "H" + at(plot.Right()) + "\"/>";
        svg += R"(<text text-anchor="end" x=")" + at(kLeft - 8) + "\" y=\"" + at(y + 4) + "\">" + tick.Text + "</text>";
    }
    for (const Tick& tick : plot.X.Ticks) {
        const double x = plot.AtX(tick.Value);
        svg += R"(<path class="frame" stroke="#1f2933" d="M)" + at(x) + " " + at(plot.Bottom()) + "v5\"/>";
        svg += R"(<text text-anchor="middle" x=")" + at(x) + "\" y=\"" + at(plot.Bottom() + 20) + "\">" + tick.Text +
               "</text>";
    }
    svg += R"(<path class="frame" stroke="#1f2933" fill="none" d="M)" + at(kLeft) + " " + at(kTop) + "V" +
           at(plot.Bottom()) + "H" + at(plot.Right()) + "\"/>";
    svg += R"(<text text-anchor="middle" x=")" + at((kLeft + plot.Right()) / 2) + "\" y=\"" + at(plot.Bottom() + 42) +
           "\">" + XmlText(plot.Axes.BandwidthTitle) + "</text>";
    svg += R"(<text text-anchor="middle" transform="translate(20 )" + at(kTop + kPlotHeight / 2) +
           R"svg() rotate(-90)">)svg" + XmlText(plot.Axes.ScoreTitle) + "</text>";
    return svg + "</g>\n";
}

/// The points joined by lines; a score that is no number interrupts them.
std::string curve(const ProfilePicture& picture, const Plot& plot) {
    std::string path;
    bool drawing = false;
    for (const engine::ProfileRow& row : picture.Curve) {
        const bool shown = std::isfinite(row.Bandwidth) && std::isfinite(row.Score);
        if (shown) path += (drawing ? "L" : "M") + at(plot.AtX(row.Bandwidth)) + " " + at(plot.AtY(row.Score));
        drawing = shown;
    }
    // A round line cap makes a dot of a single point.
    return R"(<path class="curve" stroke="#1b6ca8" stroke-width="2" stroke-linejoin="round" stroke-linecap="round" fill="none" d=")" +
           path + "\"/>\n";
}

std::string upright(std::string_view look, double x, const Plot& plot) {
    return "<path " + std::string(look) + " d=\"M" + at(x) + " " + at(kTop) + "V" + at(plot.Bottom()) + "\"/>\n";
}

std::string circle(double x, double y) {
    return "<circle " + std::string(kDot) + " cx=\"" + at(x) + "\" cy=\"" + at(y) + "\" r=\"5\"/>\n";
}

bool drawable(const std::optional<double>& bandwidth) {
    return bandwidth && std::isfinite(*bandwidth);
}

/// Both lines and the dot; they are told apart where they fall together, because the dashes lie on the solid line.
std::string marks(const ProfilePicture& picture, const Plot& plot) {
    std::string svg;
    if (drawable(picture.Bandwidth)) svg += upright(kUsed, plot.AtX(*picture.Bandwidth), plot);
    if (drawable(picture.Href)) svg += upright(kHref, plot.AtX(*picture.Href), plot);
    return svg;
}

/// One line above the plot that names the marks, each in a column of its own, so that no name covers another.
std::string legend(const ProfilePicture& picture, double width) {
    constexpr double kY = 56.0;
    const double column = (width - kLeft - kRightMargin) / 3.0;
    std::string svg = R"(<g font-size="12">)";
    double x = kLeft;
    const auto name = [&](const std::string& text) {
        svg += "<text x=\"" + at(x + 30) + "\" y=\"" + at(kY + 4) + "\">" + text + "</text>";
        x += column;
    };
    const auto line = [&](std::string_view look) {
        svg += "<path " + std::string(look) + " d=\"M" + at(x) + " " + at(kY) + "h22\"/>";
    };
    svg += circle(x + 11, kY);
    name(MinimumName(picture));
    if (drawable(picture.Href)) {
        line(kHref);
        name(HrefName(picture));
    }
    if (drawable(picture.Bandwidth)) {
        line(kUsed);
        name(BandwidthName(picture));
    }
    return svg + "</g>\n";
}

std::string note(const std::string& text, const Plot& plot) {
    return R"(<text font-size="11" text-anchor="end" x=")" + at(plot.Right()) + "\" y=\"" + at(kHeight - 6) + "\">" +
           text + "</text>\n";
}

std::string plot_of(const ProfilePicture& picture, const ScoreRange& scores, const SvgOptions& options,
                    const std::string& prefix) {
    const Plot plot(picture, scores, options.Width);
    std::string svg = "<clipPath id=\"" + prefix + "-plot\"><rect x=\"" + at(kLeft) + "\" y=\"" + at(kTop) +
                      "\" width=\"" + at(plot.Right() - kLeft) + "\" height=\"" + at(kPlotHeight) + "\"/></clipPath>\n";
    svg += scales(plot);
    svg += "<g clip-path=\"url(#" + prefix + "-plot)\">" + curve(picture, plot) + "</g>\n";
    svg += marks(picture, plot);
    svg += circle(plot.AtX(picture.Minimum->Bandwidth), plot.AtY(picture.Minimum->Score));
    svg += legend(picture, options.Width);
    if (const std::string text = NoteOf(picture, scores); !text.empty()) svg += note(text, plot);
    return svg;
}

}  // namespace

std::string ProfileSvg(const ProfilePicture& picture, const SvgOptions& options) {
    const std::string prefix = SvgIdPrefix(options.IdPrefix, "profile");
    const std::string width = std::to_string(options.Width);
    const std::string height = std::to_string(kHeight);
    const std::optional<ScoreRange> scores = ShownScores(picture);
    std::string svg = R"(<svg xmlns="http://www.w3.org/2000/svg" class="wxl-profile" role="img" aria-labelledby=")" +
                      prefix + "-title " + prefix + "-desc\" width=\"" + width + "\" height=\"" + height +
                      "\" viewBox=\"0 0 " + width + " " + height +
                      R"(" font-family="system-ui, sans-serif" fill="#1f2933">)" + "\n";
    svg += "<title id=\"" + prefix + "-title\">" + XmlText(TitleOf(picture)) + "</title>\n";
    svg += "<desc id=\"" + prefix + "-desc\">" + XmlText(DescriptionOf(picture)) + "</desc>\n";
    svg += "<style>" + std::string(kStyle) + "</style>\n";
    svg += R"(<rect class="paper" fill="#ffffff" width=")" + width + "\" height=\"" + height + "\"/>\n";
    svg += R"(<text font-size="15" font-weight="600" x=")" + at(kLeft) + R"(" y="28">)" +
           XmlText(Shortened(TitleOf(picture), kShownTitle)) + "</text>\n";
    if (scores && picture.Minimum)
        svg += plot_of(picture, *scores, options, prefix);
    else
        svg += R"(<text font-size="13" x=")" + at(kLeft) + R"(" y="60">There are no scores to show.</text>)" + "\n";
    return svg + "</svg>\n";
}

}  // namespace wxl::pictures
