#include "pictures/axis.h"
#include "pictures/variogram_picture.h"
#include "pictures/xml_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <utility>

namespace wxl::pictures {

namespace {

constexpr int kWidth = 720;
constexpr int kHeight = 430;
constexpr double kLeft = 84.0;
constexpr double kRight = 698.0;
constexpr double kTop = 82.0;
constexpr double kBottom = 362.0;
constexpr std::size_t kShownTitle = 60;

constexpr const char* kStyle =
    ".wxl-variogram .paper{fill:#fff}.wxl-variogram text{fill:#1f2933}"
    "@media (prefers-color-scheme:dark){.wxl-variogram .paper{fill:#15191e}.wxl-variogram text{fill:#e4e8ec}"
    ".wxl-variogram .faint{stroke:#3a424b}.wxl-variogram .frame{stroke:#e4e8ec}.wxl-variogram .fixes{stroke:#e4e8ec}"
    ".wxl-variogram .limits{fill:#4a5560}.wxl-variogram .model{stroke:#ff8a80}.wxl-variogram .band{fill:#ff8a80}}";

std::string at(double coordinate) {
    std::array<char, 64> text{};
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), std::round(coordinate * 100.0) / 100.0 + 0.0);
    return {text.data(), end.ptr};
}

bool drawable(const Banded& point) {
    return std::isfinite(point.X) && std::isfinite(point.Value);
}

/// The highest value worth showing: limits of few pairs would press everything else flat.
double highest(const VariogramPicture& picture) {
    double high = 0.0;
    for (const Banded& point : picture.Points)
        if (drawable(point)) high = std::max(high, point.Value);
    for (const Banded& point : picture.Curve)
        if (drawable(point)) high = std::max(high, point.Value);
    return 1.3 * high;
}

class Plot {
public:
    Plot(const VariogramPicture& picture, std::string id) : m_picture(picture), m_id(std::move(id)) {
        double last = 0.0;
        for (const Banded& point : picture.Points) last = std::max(last, point.X);
        m_x = MakeAxis(0.0, last, 6, 0.0);
        m_y = MakeAxis(0.0, highest(picture), 6, 0.0);
    }

    std::string Svg() const { return Scales() + Clipped() + Legend(); }

private:
    double X(double value) const {
        return kLeft + (kRight - kLeft) * std::clamp((value - m_x.From) / (m_x.To - m_x.From), 0.0, 1.0);
    }
    double Y(double value) const {
        return kBottom - (kBottom - kTop) * std::clamp((value - m_y.From) / (m_y.To - m_y.From), 0.0, 1.5);
    }

    std::string Scales() const {
        std::string svg = R"(<g font-size="12">)";
        for (const Tick& tick : m_y.Ticks) {
            const std::string y = at(Y(tick.Value));
            svg += R"(<path class="faint" stroke="#d9dee4" d="M)" + at(kLeft) + " " + y + "H" + at(kRight) + "\"/>";
            svg += R"(<text text-anchor="end" x=")" + at(kLeft - 8) + "\" y=\"" + at(Y(tick.Value) + 4) + "\">" +
                   tick.Text + "</text>";
        }
        for (const Tick& tick : m_x.Ticks)
            svg += R"(<path class="frame" stroke="#1f2933" d="M)" + at(X(tick.Value)) + " " + at(kBottom) +
                   R"(v5"/><text text-anchor="middle" x=")" + at(X(tick.Value)) + "\" y=\"" + at(kBottom + 20) + "\">" +
                   tick.Text + "</text>";
        svg += R"(<path class="frame" stroke="#1f2933" fill="none" d="M)" + at(kLeft) + " " + at(kTop) + "V" +
               at(kBottom) + "H" + at(kRight) + "\"/>";
        svg += R"(<text text-anchor="middle" x=")" + at((kLeft + kRight) / 2) + "\" y=\"" + at(kBottom + 42) +
               "\">Time between fixes" + In(m_picture.LagUnit, m_x) + "</text>";
        svg += R"(<text text-anchor="middle" transform="translate(20 )" + at((kTop + kBottom) / 2) +
               R"svg() rotate(-90)">Semivariance)svg" + In(m_picture.AreaUnit, m_y) + "</text>";
        return svg + "</g>\n";
    }

    static std::string In(const std::string& unit, const Axis& axis) {
        const std::string factor = axis.Factor.empty() ? "" : "× " + axis.Factor;
        if (unit.empty() && factor.empty()) return "";
        return " (" + factor + (factor.empty() || unit.empty() ? "" : " ") + XmlText(unit) + ")";
    }

    std::string Line(const std::vector<Banded>& points) const {
        std::string path;
        for (const Banded& point : points)
            if (drawable(point)) path += (path.empty() ? "M" : "L") + at(X(point.X)) + " " + at(Y(point.Value));
        return path;
    }

    std::string Band(const std::vector<Banded>& points) const {
        std::string path;
        for (const Banded& point : points)
            if (drawable(point)) path += (path.empty() ? "M" : "L") + at(X(point.X)) + " " + at(Y(point.High));
        for (auto point = points.rbegin(); point != points.rend(); ++point)
            if (drawable(*point)) path += "L" + at(X(point->X)) + " " + at(Y(point->Low));
        return path.empty() ? path : path + "Z";
    }

    std::string Clipped() const {
        std::string svg = "<clipPath id=\"" + m_id + R"(-plot"><rect x=")" + at(kLeft) + "\" y=\"" + at(kTop) +
                          "\" width=\"" + at(kRight - kLeft) + "\" height=\"" + at(kBottom - kTop) +
                          "\"/></clipPath>\n<g clip-path=\"url(#" + m_id + "-plot)\" fill=\"none\">\n";
        svg += R"(<path class="limits" fill="#d9dee4" fill-opacity="0.7" d=")" + Band(m_picture.Points) + "\"/>\n";
        svg += R"(<path class="band" fill="#b3261e" fill-opacity="0.18" d=")" + Band(m_picture.Curve) + "\"/>\n";
        svg += R"(<path class="fixes" stroke="#1f2933" stroke-width="1.5" stroke-linejoin="round" d=")" +
               Line(m_picture.Points) + "\"/>\n";
        svg += R"(<path class="model" stroke="#b3261e" stroke-width="2.5" stroke-dasharray="9 4" d=")" +
               Line(m_picture.Curve) + "\"/>\n";
        return svg + "</g>\n";
    }

    std::string Legend() const {
        std::string svg = R"(<g font-size="12"><path class="fixes" stroke="#1f2933" stroke-width="1.5" d="M)" +
                          at(kLeft) + R"( 58h24"/><text x=")" + at(kLeft + 32) +
                          R"(" y="62">Fixes, with cautious 95 % limits</text>)";
        if (!m_picture.Curve.empty())
            svg += R"(<path class="model" stroke="#b3261e" stroke-width="2.5" stroke-dasharray="9 4" d="M)" +
                   at(kLeft + 270) + R"( 58h30"/><text x=")" + at(kLeft + 308) + R"(" y="62">)" +
                   XmlText(m_picture.Model) + ", with its 95 % limits</text>";
        return svg + "</g>\n";
    }

    const VariogramPicture& m_picture;
    std::string m_id;
    Axis m_x;
    Axis m_y;
};

std::string title_of(const VariogramPicture& picture) {
    return picture.Title.empty() ? "Variogram" : picture.Title + ": variogram";
}

std::string description_of(const VariogramPicture& picture) {
    if (picture.Points.empty()) return "There are no pairs of fixes to show.";
    const Banded& last = picture.Points.back();
    return "Semivariance of the positions against the time between fixes, up to " + ShortNumber(last.X, 3) + " " +
           picture.LagUnit + ", where it is " + ShortNumber(last.Value, 3) + " " + picture.AreaUnit + "." +
           (picture.Model.empty() ? "" : " The dashed line is the model " + picture.Model + ".");
}

}  // namespace

std::string VariogramSvg(const VariogramPicture& picture, const std::string& id) {
    std::string svg = R"(<svg xmlns="http://www.w3.org/2000/svg" class="wxl-variogram" role="img" )"
                      "aria-labelledby=\"" +
                      id + "-title " + id + R"(-desc" width=")" + std::to_string(kWidth) + "\" height=\"" +
                      std::to_string(kHeight) + "\" viewBox=\"0 0 " + std::to_string(kWidth) + " " +
                      std::to_string(kHeight) + R"(" font-family="system-ui, sans-serif" fill="#1f2933">)" + "\n";
    svg += "<title id=\"" + id + "-title\">" + XmlText(title_of(picture)) + "</title>\n";
    svg += "<desc id=\"" + id + "-desc\">" + XmlText(description_of(picture)) + "</desc>\n";
    svg += "<style>" + std::string(kStyle) + "</style>\n";
    svg += R"(<rect class="paper" fill="#ffffff" width=")" + std::to_string(kWidth) + "\" height=\"" +
           std::to_string(kHeight) + "\"/>\n";
    svg += R"(<text font-size="15" font-weight="600" x=")" + at(kLeft) + R"(" y="30">)" +
           XmlText(Shortened(title_of(picture), kShownTitle)) + "</text>\n";
    if (picture.Points.empty())
        svg += R"(<text font-size="13" x=")" + at(kLeft) +
               R"(" y="62">There are no pairs of fixes to show.</text>)"
               "\n";
    else
        svg += Plot(picture, id).Svg();
    return svg + "</svg>\n";
}

}  // namespace wxl::pictures
