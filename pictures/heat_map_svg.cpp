#include "pictures/axis.h"
#include "pictures/heat_map_picture.h"
#include "pictures/svg_parts.h"
#include "pictures/xml_text.h"

#include <algorithm>
#include <cmath>
#include <string_view>

namespace wxl::pictures {

namespace {

constexpr std::size_t kValuesShown = 12;
constexpr std::size_t kNamesShown = 60;
constexpr std::size_t kShownName = 18;  ///< characters; the whole name stands in the cell's title
constexpr double kTop = 44.0;
constexpr double kMargin = 14.0;
constexpr double kLegend = 52.0;
constexpr double kLetter = 6.6;  ///< mean width of a character at 12 units

// A viewer that knows no CSS variables keeps the presentation attributes.
constexpr std::string_view kStyle =
    ".wxl-heat{max-width:100%;height:auto}"
    ".wxl-heat .paper{fill:var(--wxl-paper,#fff)}"
    ".wxl-heat text{fill:var(--wxl-ink,#1f2933)}"
    ".wxl-heat .deep{fill:var(--wxl-paper,#fff)}"
    ".wxl-heat .cell{fill:var(--wxl-curve,#1b6ca8);stroke:var(--wxl-faint,#d9dee4)}"
    ".wxl-heat .none{stroke:var(--wxl-faint,#d9dee4)}"
    "@media (prefers-color-scheme:dark){"
    ".wxl-heat .paper{fill:var(--wxl-paper,#15191e)}"
    ".wxl-heat text{fill:var(--wxl-ink,#e4e8ec)}"
    ".wxl-heat .deep{fill:var(--wxl-paper,#15191e)}"
    ".wxl-heat .cell{fill:var(--wxl-curve,#6cb8f0);stroke:var(--wxl-faint,#3a424b)}"
    ".wxl-heat .none{stroke:var(--wxl-faint,#3a424b)}}";

std::string at(double coordinate) {
    return SvgNumber(coordinate);
}

/// Where cells and names stand.
struct Layout {
    double Side;
    double Left;
    double Top;
    double Width;
    double Height;

    explicit Layout(const HeatMapPicture& picture) {
        const auto count = static_cast<double>(picture.Names.size());
        const bool named = picture.Names.size() <= kNamesShown;
        Side = std::clamp(640.0 / std::max(1.0, count), 3.0, 64.0);
        double names = 0.0;
        for (const std::string& name : picture.Names)
            names = std::max(names, kLetter * static_cast<double>(std::min(kShownName, name.size())));
        Left = kMargin + (named ? names + 8.0 : 0.0);
        Top = kTop + (named ? names + 8.0 : 0.0);
        Width = std::max(Left + count * Side + kMargin, 300.0);
        Height = Top + count * Side + kLegend;
    }
};

/// Share of the darkest colour.
double depth(double value, double full) {
    return std::clamp(full > 0.0 ? value / full : 0.0, 0.0, 1.0);
}

/// Two digits; what is next to nothing is told so.
std::string short_text(double value) {
    return value > 0.0 && value < 0.001 ? "&lt;.001" : ShortNumber(value, 2);
}

std::string value_text(double value, double x, double y, bool deep) {
    return std::string("<text text-anchor=\"middle\" font-size=\"12\"") +
           (deep ? R"( class="deep" fill="#ffffff")" : "") + " x=\"" + at(x) + "\" y=\"" + at(y) + "\">" +
           short_text(value) + "</text>";
}

std::string cell(const HeatMapPicture& picture, const Layout& layout, std::size_t row, std::size_t column) {
    const double x = layout.Left + static_cast<double>(column) * layout.Side;
    const double y = layout.Top + static_cast<double>(row) * layout.Side;
    const std::optional<double> value = picture.At(row, column);
    if (!value)
        return R"(<path class="none" stroke="#d9dee4" d="M)" + at(x) + " " + at(y) + "l" + at(layout.Side) + " " +
               at(layout.Side) + "m0 " + at(-layout.Side) + "l" + at(-layout.Side) + " " + at(layout.Side) + "\"/>\n";
    const double share = depth(*value, picture.Full);
    std::string svg =
        R"(<rect class="cell" fill="#1b6ca8" stroke="#d9dee4" fill-opacity=")" + at(share) + "\" x=\"" + at(x) +
        "\" y=\"" + at(y) + "\" width=\"" + at(layout.Side) + "\" height=\"" + at(layout.Side) + "\"><title>" +
        XmlText(picture.Names[row] + ", " + picture.Names[column] + ": " + ShortNumber(*value, 4)) + "</title></rect>";
    if (picture.Names.size() <= kValuesShown)
        svg += value_text(*value, x + layout.Side / 2.0, y + layout.Side / 2.0 + 4.0, share > 0.55);
    return svg + "\n";
}

std::string names(const HeatMapPicture& picture, const Layout& layout) {
    if (picture.Names.size() > kNamesShown) return {};
    const std::string size = at(std::clamp(layout.Side - 1.0, 6.0, 12.0));
    std::string svg = "<g font-size=\"" + size + "\">";
    for (std::size_t i = 0; i < picture.Names.size(); ++i) {
        const std::string name = XmlText(Shortened(picture.Names[i], kShownName));
        const double middle = (static_cast<double>(i) + 0.5) * layout.Side + 4.0;
        svg += R"(<text text-anchor="end" x=")" + at(layout.Left - 6.0) + "\" y=\"" + at(layout.Top + middle) + "\">" +
               name + "</text>";
        svg += "<text transform=\"translate(" + at(layout.Left + middle) + " " + at(layout.Top - 6.0) +
               ") rotate(-90)\">" + name + "</text>";
    }
    return svg + "</g>\n";
}

/// Five shades from 0 to the darkest.
std::string legend(const HeatMapPicture& picture, const Layout& layout) {
    constexpr int kShades = 5;
    constexpr double kShade = 28.0;
    const double y = layout.Height - 32.0;
    std::string svg = R"(<g font-size="11">)";
    for (int i = 0; i < kShades; ++i)
        svg += R"(<rect class="cell" fill="#1b6ca8" stroke="#d9dee4" fill-opacity=")" +
               at(static_cast<double>(i) / (kShades - 1)) + "\" x=\"" + at(kMargin + 14.0 + i * kShade) + "\" y=\"" +
               at(y) + "\" width=\"" + at(kShade) + "\" height=\"12\"/>";
    svg += "<text x=\"" + at(kMargin) + "\" y=\"" + at(y + 10.0) + "\">0</text><text x=\"" +
           at(kMargin + 20.0 + kShades * kShade) + "\" y=\"" + at(y + 10.0) + "\">" + ShortNumber(picture.Full, 3) +
           "</text>";
    return svg + "</g>\n";
}

}  // namespace

std::string HeatMapSvg(const HeatMapPicture& picture, const std::string& idPrefix) {
    const std::string prefix = SvgIdPrefix(idPrefix, "overlap");
    const Layout layout(picture);
    std::string svg = R"(<svg xmlns="http://www.w3.org/2000/svg" class="wxl-heat" role="img" aria-labelledby=")" +
                      prefix + "-title\" width=\"" + at(layout.Width) + "\" height=\"" + at(layout.Height) +
                      "\" viewBox=\"0 0 " + at(layout.Width) + " " + at(layout.Height) +
                      R"(" font-family="system-ui, sans-serif" fill="#1f2933">)" + "\n";
    svg += "<title id=\"" + prefix + "-title\">" + XmlText(picture.Title) + "</title>\n";
    svg += "<style>" + std::string(kStyle) + "</style>\n";
    svg += R"(<rect class="paper" fill="#ffffff" width=")" + at(layout.Width) + "\" height=\"" + at(layout.Height) +
           "\"/>\n";
    svg += R"(<text font-size="15" font-weight="600" x=")" + at(kMargin) + R"(" y="26">)" + XmlText(picture.Title) +
           "</text>\n";
    svg += names(picture, layout);
    for (std::size_t row = 0; row < picture.Names.size(); ++row)
        for (std::size_t column = 0; column < picture.Names.size(); ++column) svg += cell(picture, layout, row, column);
    svg += legend(picture, layout);
    return svg + "</svg>\n";
}

}  // namespace wxl::pictures
