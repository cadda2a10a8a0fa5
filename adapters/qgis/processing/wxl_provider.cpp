#include "adapters/qgis/processing/wxl_provider.h"

#include "adapters/qgis/processing/area_curve_algorithm.h"
#include "adapters/qgis/processing/autocorrelated_ranges_algorithm.h"
#include "adapters/qgis/processing/convex_polygons_algorithm.h"
#include "adapters/qgis/processing/kernel_density_algorithm.h"
#include "adapters/qgis/processing/observation_fields_algorithm.h"
#include "adapters/qgis/processing/overlap_algorithm.h"
#include "adapters/qgis/processing/remove_duplicates_algorithm.h"
#include "adapters/qgis/processing/statistics_algorithm.h"
#include "adapters/qgis/processing/wxl_icon.h"

#include <qgsapplication.h>
#include <qgsprocessingregistry.h>

namespace wxl::qgis {
namespace {

const QString kId = QStringLiteral("wxltools");

}  // namespace

QIcon WxlProvider::icon() const {
    return WxlIcon();
}

void WxlProvider::loadAlgorithms() {
    addAlgorithm(new KernelDensityAlgorithm);
    addAlgorithm(new AutocorrelatedRangesAlgorithm);
    addAlgorithm(new OverlapAlgorithm);
    addAlgorithm(new ConvexPolygonsAlgorithm);
    addAlgorithm(new AreaCurveAlgorithm);
    addAlgorithm(new StatisticsAlgorithm);
    addAlgorithm(new ObservationFieldsAlgorithm);
    addAlgorithm(new RemoveDuplicatesAlgorithm);
}

void AddWxlProvider() {
    QgsProcessingRegistry* registry = QgsApplication::processingRegistry();
    if (registry && !registry->providerById(kId)) registry->addProvider(new WxlProvider);
}

void RemoveWxlProvider() {
    QgsProcessingRegistry* registry = QgsApplication::processingRegistry();
    if (registry && registry->providerById(kId)) registry->removeProvider(kId);
}

}  // namespace wxl::qgis
