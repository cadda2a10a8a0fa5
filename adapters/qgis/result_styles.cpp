#include "adapters/qgis/result_styles.h"

#include "adapters/qgis/qgis_versions.h"

#include <algorithm>
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

namespace wxl::qgis {
namespace {

constexpr double kFade = 0.05;     ///< of the range of densities
constexpr int kFillOpacity = 45;   ///< of 255
constexpr double kOutline = 0.46;  ///< millimetres

const QColor kOuter(244, 133, 40);
const QColor kMiddle(214, 39, 40);
const QColor kCore(103, 0, 31);

/// Viridis (van der Walt and Smith, 2015) at six even steps.
QgsGradientColorRamp* density_ramp() {
    QColor transparent(68, 1, 84);
    transparent.setAlpha(0);
    const QgsGradientStopsList stops = {
        {kFade, QColor(69, 21, 101)}, {0.2, QColor(65, 68, 135)},  {0.4, QColor(42, 120, 142)},
        {0.6, QColor(34, 168, 132)},  {0.8, QColor(122, 209, 81)},
    };
    return new QgsGradientColorRamp(transparent, QColor(253, 231, 37), false, stops);
}

QColor between(const QColor& from, const QColor& to, double share) {
    const auto mixed = [share](int a, int b) { return a + static_cast<int>(share * (b - a)); };
    return {mixed(from.red(), to.red()), mixed(from.green(), to.green()), mixed(from.blue(), to.blue())};
}

/// The colour of class `rank` of `count`, 0 being the outermost.
QColor class_colour(std::size_t rank, std::size_t count) {
    if (count < 2) return kMiddle;
    const double share = 2.0 * static_cast<double>(rank) / static_cast<double>(count - 1);
    return share <= 1.0 ? between(kOuter, kMiddle, share) : between(kMiddle, kCore, share - 1.0);
}

std::unique_ptr<QgsSymbol> line_symbol(const QColor& colour) {
    return std::make_unique<QgsLineSymbol>(QgsSymbolLayerList{new QgsSimpleLineSymbolLayer(colour, kOutline)});
}

std::unique_ptr<QgsSymbol> area_symbol(const QColor& colour) {
    QColor fill = colour;
    fill.setAlpha(kFillOpacity);
    auto* area = new QgsSimpleFillSymbolLayer(fill, Qt::SolidPattern, colour, Qt::SolidLine, kOutline);
    return std::make_unique<QgsFillSymbol>(QgsSymbolLayerList{area});
}

}  // namespace

void StyleDensity(QgsRasterLayer& layer, double maximum) {
    auto ramp = std::make_unique<QgsColorRampShader>(0.0, maximum > 0.0 ? maximum : 1.0, density_ramp());
    ramp->classifyColorRamp(0, -1);
    auto shader = std::make_unique<QgsRasterShader>(ramp->minimumValue(), ramp->maximumValue());
    const double highest = ramp->maximumValue();
    shader->setRasterShaderFunction(ramp.release());
    auto renderer = std::make_unique<QgsSingleBandPseudoColorRenderer>(layer.dataProvider(), 1, shader.release());
    renderer->setClassificationMin(0.0);
    renderer->setClassificationMax(highest);
    layer.setRenderer(renderer.release());
}

void StyleIsopleths(QgsVectorLayer& layer, const QString& field, std::vector<IsoplethClass> classes) {
    std::sort(classes.begin(), classes.end(),
              [](const IsoplethClass& a, const IsoplethClass& b) { return a.Percent > b.Percent; });
    const bool areas = layer.geometryType() == kPolygonGeometry;
    QgsCategoryList categories;
    for (std::size_t rank = 0; rank < classes.size(); ++rank) {
        const QColor colour = class_colour(rank, classes.size());
        auto symbol = areas ? area_symbol(colour) : line_symbol(colour);
        categories << QgsRendererCategory(classes[rank].Percent, symbol.release(), classes[rank].Label);
    }
    auto renderer = std::make_unique<QgsCategorizedSymbolRenderer>(field, categories);
    using Order = QgsFeatureRequest::OrderByClause;
    renderer->setOrderBy(QgsFeatureRequest::OrderBy({Order(QgsExpression::quotedColumnRef(field), false)}));
    renderer->setOrderByEnabled(true);
    layer.setRenderer(renderer.release());
}

}  // namespace wxl::qgis
