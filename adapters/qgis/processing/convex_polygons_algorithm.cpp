#include "adapters/qgis/processing/convex_polygons_algorithm.h"

#include "adapters/qgis/guide_window.h"
#include "adapters/qgis/processing/compared_fixes.h"
#include "adapters/qgis/processing/parameter_values.h"
#include "adapters/qgis/qgis_values.h"
#include "analysis/range_styles.h"
#include "comparison/minimum_convex_polygon.h"
#include "platform/runtime_error.h"

#include <qgsgeometry.h>
#include <qgspolygon.h>
#include <qgsprocessingoutputs.h>
#include <qgsprocessingparameters.h>

namespace wxl::qgis {
namespace {

using comparison::MinimumConvexPolygon;
using comparison::PolygonStatus;

QgsFields polygon_fields() {
    QgsFields fields;
    fields.append(make_field(QStringLiteral("animal"), QMetaType::QString));
    for (const char* name : {"percent", "area"}) fields.append(make_field(QLatin1String(name), QMetaType::Double));
    fields.append(make_field(QStringLiteral("n"), QMetaType::LongLong));
    fields.append(make_field(QStringLiteral("status"), QMetaType::QString));
    return fields;
}

QgsGeometry geometry_of(const MinimumConvexPolygon& polygon) {
    if (polygon.Status != PolygonStatus::kGood) return {};
    QgsPolygonXY rings(1);
    for (const platform::Point& corner : polygon.Corners) rings[0].append(QgsPointXY(corner.X, corner.Y));
    rings[0].append(rings[0].first());
    return QgsGeometry::fromPolygonXY(rings);
}

QgsFeature feature_of(const QgsFields& fields, const std::string& animal, const MinimumConvexPolygon& polygon) {
    QgsFeature feature(fields);
    const std::optional<double> area = area_of(polygon);
    feature.setAttributes(
        QVector<QVariant>{ToQString(animal), polygon.Percent, area ? QVariant(*area) : null_of(QMetaType::Double),
                          static_cast<qlonglong>(polygon.Kept), ToQString(std::string(status_name(polygon.Status)))});
    if (const QgsGeometry geometry = geometry_of(polygon); !geometry.isNull()) feature.setGeometry(geometry);
    return feature;
}

}  // namespace

QString ConvexPolygonsAlgorithm::shortDescription() const {
    return QStringLiteral("The smallest convex polygon around the fixes of every animal");
}

QString ConvexPolygonsAlgorithm::shortHelpString() const {
    return QStringLiteral(
        "Draws the smallest convex polygon around the fixes of every animal (Mohr 1947). Below 100 % the fixes "
        "farthest "
        "from their centre (the means of x and y) are left out.\n\n"
        "The layer has a row for each animal and percentage: its area in square map units, the number of fixes that "
        "were kept, and \"no area\" where they lie at fewer than three places or on a line. The numbers are those of "
        "the command \"wxl mcp\".\n\n"
        "A polygon grows with the number of fixes: see \"Area curve\".");
}

QStringList ConvexPolygonsAlgorithm::tags() const {
    return QStringLiteral("mcp,minimum convex polygon,home range,convex hull,telemetry").split(QLatin1Char(','));
}

QString ConvexPolygonsAlgorithm::helpUrl() const {
    return guide_file(QStringLiteral("comparing-ranges"));
}

void ConvexPolygonsAlgorithm::initAlgorithm(const QVariantMap&) {
    AddInput(QStringLiteral("Fixes (projected points)"));
    AddIdField();
    addParameter(with_help(
        new QgsProcessingParameterString(QStringLiteral("PERCENTAGES"), QStringLiteral("Percentages of the fixes"),
                                         QStringLiteral("100, 95, 50")),
        "Above 0 and up to 100"));
    addParameter(new QgsProcessingParameterFeatureSink(
        QStringLiteral("OUTPUT"), QStringLiteral("Minimum convex polygons"), kSourceVectorPolygon));
    addOutput(new QgsProcessingOutputNumber(QStringLiteral("ANIMALS"), QStringLiteral("Number of animals")));
}

bool ConvexPolygonsAlgorithm::checkParameterValues(const QVariantMap& parameters, QgsProcessingContext& context,
                                                   QString* message) const {
    const QString problem = problem_of_list(
        QStringLiteral("Percentages"), parameterAsString(parameters, QStringLiteral("PERCENTAGES"), context), true);
    if (problem.isEmpty()) return QgsProcessingAlgorithm::checkParameterValues(parameters, context, message);
    if (message != nullptr) *message = problem;
    return false;
}

QVariantMap ConvexPolygonsAlgorithm::processAlgorithm(const QVariantMap& parameters, QgsProcessingContext& context,
                                                      QgsProcessingFeedback* feedback) try {
    ProcessingSession session(*feedback);
    const ReadLayer input = LayerToRead(parameters, context, *feedback);
    refuse_degrees(*input.Layer);
    session.Add(*input.Layer);
    const auto animals = animals_of(session.Map().Layers().front(),
                                    FromQString(parameterAsString(parameters, QStringLiteral("ID_FIELD"), context)),
                                    input.SelectedOnly, *feedback);
    const std::vector<double> percentages =
        percentages_of(parameterAsString(parameters, QStringLiteral("PERCENTAGES"), context));
    QString destination;
    const QgsFields fields = polygon_fields();
    const std::unique_ptr<QgsFeatureSink> sink(parameterAsSink(
        parameters, QStringLiteral("OUTPUT"), context, destination, fields, kPolygonShapes, input.Layer->crs()));
    if (!sink) throw QgsProcessingException(invalidSinkError(parameters, QStringLiteral("OUTPUT")));
    for (const comparison::NamedFixes& animal : animals) {
        if (feedback->isCanceled()) break;
        for (const double percent : percentages) {
            QgsFeature feature =
                feature_of(fields, animal.Name, comparison::minimum_convex_polygon(animal.Fixes, percent));
            if (!sink->addFeature(feature, QgsFeatureSink::FastInsert))
                throw QgsProcessingException(writeFeatureError(sink.get(), parameters, QStringLiteral("OUTPUT")));
        }
    }
    sink->flushBuffer();
    if (context.willLoadLayerOnCompletion(destination))
        context.layerToLoadOnCompletionDetails(destination)
            .setPostProcessor(new StyledOnLoad(analysis::convex_polygon_style()));
    return {{QStringLiteral("OUTPUT"), destination}, {QStringLiteral("ANIMALS"), static_cast<int>(animals.size())}};
} catch (const platform::RuntimeError& error) {
    throw QgsProcessingException(ToQString(error.Description));
}

}  // namespace wxl::qgis
