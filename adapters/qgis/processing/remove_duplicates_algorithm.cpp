#include "adapters/qgis/processing/remove_duplicates_algorithm.h"

#include "movement/FIndDupTime2.h"
#include "movement/FindDupxy.h"
#include "platform/runtime_error.h"

#include <qgsprocessingoutputs.h>
#include <qgsprocessingparameters.h>

namespace wxl::qgis {
namespace {

// Values of the parameter BY.
enum By { kTime2, kPlace };

template <class Tool>
void click(ProcessingSession& session, FeedbackWaitWindow& window, bool large) {
    Tool tool(session.Services(), window);
    tool.SetBeyondLimits(large);
    tool.OnCreate(session.Application());
    tool.OnClick();
}

}  // namespace

QString RemoveDuplicatesAlgorithm::shortDescription() const {
    return QStringLiteral("Leaves one fix of each time, or of each place");
}

QString RemoveDuplicatesAlgorithm::shortHelpString() const {
    return QStringLiteral(
        "Copies a point layer without duplicate fixes. By time: of fixes with equal whole seconds in the field Time2 "
        "the first stays. By place: of fixes within 1 mm the first stays.\n\n"
        "Fixes are compared with all others of the input: where a layer holds several animals, select one of them or "
        "split the layer first.");
}

QStringList RemoveDuplicatesAlgorithm::tags() const {
    return QStringLiteral("duplicates,time,same,clean,telemetry").split(QLatin1Char(','));
}

void RemoveDuplicatesAlgorithm::initAlgorithm(const QVariantMap&) {
    AddInput(QStringLiteral("Fixes of one animal"));
    addParameter(
        new QgsProcessingParameterEnum(QStringLiteral("BY"), QStringLiteral("Duplicates are fixes of the same"),
                                       {QStringLiteral("Time (field Time2)"), QStringLiteral("Place")}, false, kTime2));
    addParameter(advanced(new QgsProcessingParameterBoolean(QStringLiteral("LARGE"),
                                                            QStringLiteral("Lift the limit of 32767 fixes"), false)));
    addParameter(new QgsProcessingParameterFeatureSink(QStringLiteral("OUTPUT"),
                                                       QStringLiteral("Fixes without duplicates"), kSourceVectorPoint));
    addOutput(new QgsProcessingOutputNumber(QStringLiteral("COMPARED"), QStringLiteral("Number of fixes compared")));
    addOutput(new QgsProcessingOutputNumber(QStringLiteral("DELETED"), QStringLiteral("Number of fixes left out")));
}

QVariantMap RemoveDuplicatesAlgorithm::processAlgorithm(const QVariantMap& parameters, QgsProcessingContext& context,
                                                        QgsProcessingFeedback* feedback) {
    const std::unique_ptr<QgsVectorLayer> copy = CopyToChange(parameters, context, *feedback);
    const qlonglong compared = copy->featureCount();
    ProcessingSession session(*feedback);
    session.Add(*copy);
    session.Host().SetOnCancel([] { platform::Raise(platform::error_number::kInvalidCall, "Cancelled."); });
    FeedbackWaitWindow window(session.Host());
    const bool large = parameterAsBoolean(parameters, QStringLiteral("LARGE"), context);
    if (parameterAsEnum(parameters, QStringLiteral("BY"), context) == kTime2)
        click<movement::FIndDupTime2>(session, window, large);
    else
        click<movement::FindDupxy>(session, window, large);
    if (feedback->isCanceled()) return {};
    if (!window.WasShown() || session.Messages().Faults() > 0)
        Fail(session.Messages(), QStringLiteral("The duplicates could not be removed."));
    return {{QStringLiteral("OUTPUT"), WriteOutput(*copy, parameters, context, *feedback)},
            {QStringLiteral("COMPARED"), compared},
            {QStringLiteral("DELETED"), compared - static_cast<qlonglong>(copy->featureCount())}};
}

}  // namespace wxl::qgis
