#include "adapters/qgis/processing/observation_fields_algorithm.h"

#include "movement/OVIOBS.h"
#include "platform/runtime_error.h"

#include <qgsprocessingoutputs.h>
#include <qgsprocessingparameters.h>

namespace wxl::qgis {

QString ObservationFieldsAlgorithm::shortDescription() const {
    return QStringLiteral("Time, distance and speed between each fix and the one before it");
}

QString ObservationFieldsAlgorithm::shortHelpString() const {
    return QStringLiteral(
        "Copies a point layer with the fields T_Obs_Sec, T_Cumul, Dist, Dist_Cumul, Me_per_Sec and Mi_per_hr: time, "
        "distance and speed between each fix and the one before it, in the order of the layer.\n\n"
        "The layer needs whole seconds in a field Time2, in ascending order, and a UTM projection. All fixes are one "
        "track: split a layer of several animals first (\"Split vector layer\"), or run this algorithm as a batch on "
        "selections. Two fixes of the same time are an error: \"Remove duplicate fixes\" helps.");
}

QStringList ObservationFieldsAlgorithm::tags() const {
    return QStringLiteral("speed,distance,duration,track,step,telemetry").split(QLatin1Char(','));
}

void ObservationFieldsAlgorithm::initAlgorithm(const QVariantMap&) {
    AddInput(QStringLiteral("Fixes of one animal (UTM, with a field Time2)"));
    addParameter(advanced(new QgsProcessingParameterBoolean(QStringLiteral("LARGE"),
                                                            QStringLiteral("Lift the limit of 32767 fixes"), false)));
    addParameter(new QgsProcessingParameterFeatureSink(
        QStringLiteral("OUTPUT"), QStringLiteral("Fixes with times and distances"), kSourceVectorPoint));
    addOutput(new QgsProcessingOutputNumber(QStringLiteral("ROWS"), QStringLiteral("Number of fixes")));
}

QVariantMap ObservationFieldsAlgorithm::processAlgorithm(const QVariantMap& parameters, QgsProcessingContext& context,
                                                         QgsProcessingFeedback* feedback) {
    const std::unique_ptr<QgsVectorLayer> copy = CopyToChange(parameters, context, *feedback);
    ProcessingSession session(*feedback);
    session.Add(*copy);
    session.Messages().WillAnswer(platform::Topic::kAddFields, platform::Answer::kYes);
    session.Host().SetOnCancel([] { platform::Raise(platform::error_number::kInvalidCall, "Cancelled."); });
    FeedbackWaitWindow window(session.Host());
    movement::OVIOBS tool(session.Services(), window);
    tool.SetBeyondLimits(parameterAsBoolean(parameters, QStringLiteral("LARGE"), context));
    tool.OnCreate(session.Application());
    tool.OnClick();
    if (feedback->isCanceled()) return {};
    if (!window.WasShown() || session.Messages().Notices() + session.Messages().Faults() > 0)
        Fail(session.Messages(), QStringLiteral("The fields could not be computed."));
    return {{QStringLiteral("OUTPUT"), WriteOutput(*copy, parameters, context, *feedback)},
            {QStringLiteral("ROWS"), static_cast<qlonglong>(copy->featureCount())}};
}

}  // namespace wxl::qgis
