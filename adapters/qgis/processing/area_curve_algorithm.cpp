#include "adapters/qgis/processing/area_curve_algorithm.h"

#include "adapters/qgis/guide_window.h"
#include "adapters/qgis/processing/parameter_values.h"
#include "adapters/qgis/qgis_values.h"
#include "akde/timed_animals.h"
#include "comparison/area_curve.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <qgsprocessingoutputs.h>
#include <qgsprocessingparameters.h>
#include <vector>

namespace wxl::qgis {
namespace {

using comparison::AreaCurve;
using comparison::CurveOf;
using comparison::CurveOrder;
using comparison::CurveSettings;

// Values of the parameters OF and ORDER.
enum OfRange { kPolygon, kKernel };
enum Order { kTime, kRandom };

QgsFields curve_fields() {
    QgsFields fields;
    for (const char* name : {"id", "of", "order"}) fields.append(make_field(QLatin1String(name), QMetaType::QString));
    for (const char* name : {"seed", "n"}) fields.append(make_field(QLatin1String(name), QMetaType::LongLong));
    for (const char* name : {"area", "low", "high"}) fields.append(make_field(QLatin1String(name), QMetaType::Double));
    return fields;
}

QVariant value_of(const std::optional<double>& number) {
    return number ? QVariant(*number) : null_of(QMetaType::Double);
}

/// The fixes in the order of time; equal times in the layer's.
std::vector<platform::Point> in_order(const akde::TimedAnimal& animal) {
    std::vector<std::size_t> order(animal.Fixes.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return animal.Times[a].Seconds < animal.Times[b].Seconds; });
    std::vector<platform::Point> fixes;
    for (const std::size_t place : order) fixes.push_back(animal.Fixes[place]);
    return fixes;
}

QString levelling_text(const QString& animal, const AreaCurve& curve) {
    if (!curve.Levelling) return QStringLiteral("%1: there is no area to level off").arg(animal);
    return (curve.Levelling->Reached ? QStringLiteral("%1: level from %2 fixes on")
                                     : QStringLiteral("%1: within 5 % of the last area from %2 fixes on, but too few "
                                                      "follow: no asymptote"))
        .arg(animal)
        .arg(curve.Levelling->N);
}

}  // namespace

QString AreaCurveAlgorithm::shortDescription() const {
    return QStringLiteral("How the area of a home range grows with the number of fixes");
}

QString AreaCurveAlgorithm::shortHelpString() const {
    return QStringLiteral(
        "Computes for every animal the area of the first 5, 6, 7 ... fixes in the order of time, or of random subsets "
        "(median, 2.5 and 97.5 % over the replicates; the same seed gives the same subsets everywhere): of minimum "
        "convex polygons, or of kernel ranges with the reference bandwidth (Odum and Kuenzler 1955).\n\n"
        "The table has a row for each animal and number of fixes; areas are in square map units. The log tells from "
        "which number on all areas lie within 5 % of the last, and whether that is an asymptote: a tenth of the fixes, "
        "and 5 at least, must follow. The numbers are those of the command \"wxl curve\".\n\n"
        "Successive fixes are seldom independent: a curve that is level by their number may still grow with time.");
}

QStringList AreaCurveAlgorithm::tags() const {
    return QStringLiteral("area curve,asymptote,accumulation,home range,sample size,telemetry").split(QLatin1Char(','));
}

QString AreaCurveAlgorithm::helpUrl() const {
    return guide_file(QStringLiteral("comparing-ranges"));
}

void AreaCurveAlgorithm::initAlgorithm(const QVariantMap&) {
    AddInput(QStringLiteral("Fixes (projected points)"));
    AddIdField();
    addParameter(with_help(
        new QgsProcessingParameterField(QStringLiteral("TIME_FIELD"), QStringLiteral("Field of date and time"),
                                        QVariant(), QStringLiteral("INPUT")),
        "A text, a date, or seconds"));
    addParameter(new QgsProcessingParameterEnum(
        QStringLiteral("OF"), QStringLiteral("Area of"),
        {QStringLiteral("Minimum convex polygons"), QStringLiteral("Kernel ranges")}, false, kPolygon));
    addParameter(with_help(new QgsProcessingParameterNumber(QStringLiteral("PERCENT"), QStringLiteral("Percentage"),
                                                            kNumberDouble, QVariant(), true, 0.0, 100.0),
                           "Without one 100 for polygons, 95 for kernels"));
    addParameter(new QgsProcessingParameterEnum(QStringLiteral("ORDER"), QStringLiteral("Order of the fixes"),
                                                {QStringLiteral("By time"), QStringLiteral("At random")}, false,
                                                kTime));
    addParameter(advanced(new QgsProcessingParameterNumber(
        QStringLiteral("REPLICATES"), QStringLiteral("Random orders"), kNumberInteger, 100, false, 1, 100000)));
    addParameter(advanced(new QgsProcessingParameterNumber(
        QStringLiteral("SEED"), QStringLiteral("Seed of the random orders"), kNumberInteger, 1, false, 0)));
    addParameter(
        new QgsProcessingParameterFeatureSink(QStringLiteral("OUTPUT"), QStringLiteral("Area curve"), kSourceVector));
    addOutput(new QgsProcessingOutputNumber(QStringLiteral("ANIMALS"), QStringLiteral("Number of animals")));
}

bool AreaCurveAlgorithm::checkParameterValues(const QVariantMap& parameters, QgsProcessingContext& context,
                                              QString* message) const {
    const bool zero =
        is_given(parameters, "PERCENT") && !(parameterAsDouble(parameters, QStringLiteral("PERCENT"), context) > 0.0);
    if (!zero) return QgsProcessingAlgorithm::checkParameterValues(parameters, context, message);
    if (message != nullptr) *message = QStringLiteral("The percentage must be above 0.");
    return false;
}

QVariantMap AreaCurveAlgorithm::processAlgorithm(const QVariantMap& parameters, QgsProcessingContext& context,
                                                 QgsProcessingFeedback* feedback) try {
    ProcessingSession session(*feedback);
    const ReadLayer input = LayerToRead(parameters, context, *feedback);
    refuse_degrees(*input.Layer);
    const std::string name = session.Add(*input.Layer);
    const auto text = [&](const char* parameter) {
        return FromQString(parameterAsString(parameters, QLatin1String(parameter), context));
    };
    const auto number = [&](const char* parameter) {
        return parameterAsInt(parameters, QLatin1String(parameter), context);
    };
    CurveSettings settings;
    settings.Of = parameterAsEnum(parameters, QStringLiteral("OF"), context) == kKernel
                      ? CurveOf::kKernel
                      : CurveOf::kMinimumConvexPolygon;
    settings.Percent = settings.Of == CurveOf::kKernel ? 95.0 : 100.0;
    if (is_given(parameters, "PERCENT"))
        settings.Percent = parameterAsDouble(parameters, QStringLiteral("PERCENT"), context);
    const bool random = parameterAsEnum(parameters, QStringLiteral("ORDER"), context) == kRandom;
    settings.Order = random ? CurveOrder::kRandom : CurveOrder::kTime;
    settings.Replicates = static_cast<std::size_t>(number("REPLICATES"));
    settings.Seed = static_cast<std::uint64_t>(number("SEED"));
    const akde::TimedAnimals animals =
        akde::read_timed_animals(*session.Map().Layers().front().Feature, {text("ID_FIELD"), text("TIME_FIELD")},
                                 input.SelectedOnly, "The layer \"" + name + "\"");
    if (animals.Animals.empty()) throw QgsProcessingException(QStringLiteral("There is no animal among the fixes."));

    QString destination;
    const QgsFields fields = curve_fields();
    const std::unique_ptr<QgsFeatureSink> sink(
        parameterAsSink(parameters, QStringLiteral("OUTPUT"), context, destination, fields, kWithoutGeometry));
    if (!sink) throw QgsProcessingException(invalidSinkError(parameters, QStringLiteral("OUTPUT")));
    const QString of =
        ToQString((settings.Of == CurveOf::kKernel ? "kernel:" : "mcp:") + platform::NumberText(settings.Percent));
    double done = 0.0;
    for (const akde::TimedAnimal& animal : animals.Animals) {
        const QString id = ToQString(platform::ValueText(animal.Id));
        if (animal.WithoutTime > 0)
            feedback->pushWarning(QStringLiteral("%1: %2 without a time left out").arg(id).arg(animal.WithoutTime));
        const AreaCurve curve = comparison::area_curve(in_order(animal), settings, [&](double share) {
            feedback->setProgress(100.0 * (done + share) / static_cast<double>(animals.Animals.size()));
            session.Host().Yield();
            if (feedback->isCanceled()) throw QgsProcessingException(QStringLiteral("Cancelled."));
        });
        done += 1.0;
        for (const comparison::CurveSize& size : curve.Sizes) {
            QgsFeature row(fields);
            row.setAttributes(QVector<QVariant>{
                id, of, random ? QStringLiteral("random") : QStringLiteral("time"),
                random ? QVariant(static_cast<qlonglong>(settings.Seed)) : null_of(QMetaType::LongLong),
                static_cast<qlonglong>(size.N), value_of(size.Area), value_of(size.Low), value_of(size.High)});
            if (!sink->addFeature(row, QgsFeatureSink::FastInsert))
                throw QgsProcessingException(writeFeatureError(sink.get(), parameters, QStringLiteral("OUTPUT")));
        }
        feedback->pushInfo(levelling_text(id, curve));
    }
    sink->flushBuffer();
    return {{QStringLiteral("OUTPUT"), destination},
            {QStringLiteral("ANIMALS"), static_cast<int>(animals.Animals.size())}};
} catch (const platform::RuntimeError& error) {
    throw QgsProcessingException(ToQString(error.Description));
}

}  // namespace wxl::qgis
