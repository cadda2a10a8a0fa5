#include "adapters/qgis/result_styles.h"

#include "adapters/qgis/qgis_versions.h"

#include <algorithm>
#include <array>
#include <memory>
#include <qgscategorizedsymbolrenderer.h>
#include <qgscolorramp.h>
#include <qgscolorrampshader.h>
#include <qgsfeaturerequest.h>
#include <qgsfillsymbol.h>
#include <qgsfillsymbollayer.h>
#include <qgslinesymbol.h>
#include <qgslinesymbollayer.h>
#include <qgsrastershader.h>
#include <qgssinglebandpseudocolorrenderer.h>
#include <QPainter>
#include <tuple>

namespace wxl::qgis {
namespace {

constexpr double kFade = 0.05;     ///< of the range of densities
constexpr int kFillOpacity = 45;   ///< of 255
constexpr double kOutline = 0.46;  ///< millimetres

/// Twelve hues that are told apart with the common kinds of colour blindness: those of Okabe and Ito (2008) and of Tol
/// (2021), ordered so that neighbours differ most.
const std::array kHues = {QColor(0, 114, 178), QColor(213, 94, 0),    QColor(17, 119, 51),  QColor(170, 68, 153),
                          QColor(230, 159, 0), QColor(86, 180, 233),  QColor(136, 34, 85),  QColor(153, 153, 51),
                          QColor(51, 34, 136), QColor(204, 102, 119), QColor(68, 170, 153), QColor(146, 106, 61)};

QColor between(const QColor& from, const QColor& to, double share) {
    const auto mixed = [share](int a, int b) { return a + static_cast<int>(share * (b - a)); };
    return {mixed(from.red(), to.red()), mixed(from.green(), to.green()), mixed(from.blue(), to.blue())};
}

/// From nothing over a light tint and the hue itself to a dark shade of it: lighter is always less.
QgsGradientColorRamp* density_ramp(const QColor& hue) {
    QColor nothing = between(hue, Qt::white, 0.6);
    nothing.setAlpha(0);
    const QgsGradientStopsList stops = {{kFade, between(hue, Qt::white, 0.6)}, {0.5, hue}};
    return new QgsGradientColorRamp(nothing, between(hue, Qt::black, 0.6), false, stops);
}

/// The colour of class `rank` of `count`, 0 being the outermost.
QColor class_colour(const QColor& hue, std::size_t rank, std::size_t count) {
    if (count < 2) return hue;
    return between(hue, Qt::black, 0.65 * static_cast<double>(rank) / static_cast<double>(count - 1));
}

std::unique_ptr<QgsSymbol> line_symbol(const QColor& colour, Qt::PenStyle pen = Qt::SolidLine) {
    return std::make_unique<QgsLineSymbol>(QgsSymbolLayerList{new QgsSimpleLineSymbolLayer(colour, kOutline, pen)});
}

/// Only what has an unbroken outline is filled.
std::unique_ptr<QgsSymbol> area_symbol(const QColor& colour, Qt::PenStyle pen = Qt::SolidLine) {
    QColor fill = colour;
    fill.setAlpha(kFillOpacity);
    const Qt::BrushStyle brush = pen == Qt::SolidLine ? Qt::SolidPattern : Qt::NoBrush;
    return std::make_unique<QgsFillSymbol>(
        QgsSymbolLayerList{new QgsSimpleFillSymbolLayer(fill, brush, colour, pen, kOutline)});
}

void sort_falling(std::vector<IsoplethClass>& classes) {
    std::sort(classes.begin(), classes.end(),
              [](const IsoplethClass& a, const IsoplethClass& b) { return a.Percent > b.Percent; });
}

/// Features are told apart by `expression`; those with large values of the field `size` are drawn first.
void show_categories(QgsVectorLayer& layer, const QString& expression, const QString& size,
                     const QgsCategoryList& categories) {
    auto renderer = std::make_unique<QgsCategorizedSymbolRenderer>(expression, categories);
    using Order = QgsFeatureRequest::OrderByClause;
    renderer->setOrderBy(QgsFeatureRequest::OrderBy({Order(QgsExpression::quotedColumnRef(size), false)}));
    renderer->setOrderByEnabled(true);
    layer.setRenderer(renderer.release());
}

}  // namespace

QColor animal_colour(std::size_t number) {
    const QColor& hue = kHues[number % kHues.size()];
    const std::size_t round = number / kHues.size();
    if (round == 0) return hue;
    const double share = 0.2 + 0.15 * static_cast<double>((round - 1) / 2 % 3);
    return between(hue, round % 2 == 1 ? Qt::white : Qt::black, share);
}

void StyleDensity(QgsRasterLayer& layer, double maximum, const QColor& hue) {
    auto ramp = std::make_unique<QgsColorRampShader>(0.0, maximum > 0.0 ? maximum : 1.0, density_ramp(hue));
    ramp->classifyColorRamp(0, -1);
    auto shader = std::make_unique<QgsRasterShader>(ramp->minimumValue(), ramp->maximumValue());
    const double highest = ramp->maximumValue();
    shader->setRasterShaderFunction(ramp.release());
    auto renderer = std::make_unique<QgsSingleBandPseudoColorRenderer>(layer.dataProvider(), 1, shader.release());
    renderer->setClassificationMin(0.0);
    renderer->setClassificationMax(highest);
    layer.setRenderer(renderer.release());
    // Roads and waters of a base map stay in sight beneath the colours.
    layer.setBlendMode(QPainter::CompositionMode_Multiply);
}

void StyleIsopleths(QgsVectorLayer& layer, const QString& field, std::vector<IsoplethClass> classes,
                    const QColor& hue) {
    sort_falling(classes);
    const bool areas = layer.geometryType() == kPolygonGeometry;
    QgsCategoryList categories;
    for (std::size_t rank = 0; rank < classes.size(); ++rank) {
        const QColor colour = class_colour(hue, rank, classes.size());
        auto symbol = areas ? area_symbol(colour) : line_symbol(colour);
        categories << QgsRendererCategory(classes[rank].Percent, symbol.release(), classes[rank].Label);
    }
    show_categories(layer, field, field, categories);
}

void style_limits(QgsVectorLayer& layer, const QString& field, std::vector<IsoplethClass> classes, const QColor& hue) {
    sort_falling(classes);
    const bool areas = layer.geometryType() == kPolygonGeometry;
    QgsCategoryList categories;
    for (std::size_t rank = 0; rank < classes.size(); ++rank) {
        const QColor colour = class_colour(hue, rank, classes.size());
        const QString percent = QString::number(classes[rank].Percent);
        for (const auto& [bound, ending, pen] :
             {std::tuple("high", " high", Qt::DashLine), {"est", "", Qt::SolidLine}, {"low", " low", Qt::DotLine}}) {
            auto symbol = areas ? area_symbol(colour, pen) : line_symbol(colour, pen);
            categories << QgsRendererCategory(QString(QLatin1String(bound) + QLatin1Char(' ') + percent),
                                              symbol.release(), classes[rank].Label + QLatin1String(ending));
        }
    }
    const QString column = QgsExpression::quotedColumnRef(field);
    show_categories(layer, QStringLiteral("\"BOUND\" || ' ' || to_string(%1)").arg(column), QStringLiteral("AREA"),
                    categories);
}

}  // namespace wxl::qgis
