#include "adapters/qgis/processing/statistics_algorithm.h"

#include "adapters/qgis/qgis_values.h"
#include "kde_tool/frmKDE.h"

#include <qgsprocessingoutputs.h>
#include <qgsprocessingparameters.h>

namespace wxl::qgis {
namespace {

QVariant value_of(const std::optional<double>& number) {
    return number ? QVariant(*number) : null_of(QMetaType::Double);
}

QgsFields table_fields(const QgsField& idField) {
    QgsFields fields;
    fields.append(
        make_field(QStringLiteral("id"), type_of(idField), idField.typeName(), idField.length(), idField.precision()));
    fields.append(make_field(QStringLiteral("count"), QMetaType::LongLong));
    for (const char* name : {"schoener", "swihart_slade", "sd_x", "sd_y", "ratio", "href", "href_scaled"})
        fields.append(make_field(QLatin1String(name), QMetaType::Double));
    return fields;
}

}  // namespace

QString StatisticsAlgorithm::shortDescription() const {
    return QStringLiteral("Serial independence, standard deviations and reference bandwidth of every animal");
}

QString StatisticsAlgorithm::shortHelpString() const {
    return QStringLiteral(
        "Makes a table with one row for each animal: number of fixes, Schoener's ratio and the index of Swihart and "
        "Slade of serial independence, standard deviations of x and y with their ratio, and the reference bandwidth of "
        "the fixes as they are and rescaled to unit variance.\n\n"
        "Schoener: below 1.6 or above 2.4 means significant autocorrelation. Swihart and Slade: above 0.6 does. Fixes "
        "count in the order of the layer, which should be the order of time. For autocorrelated fixes there is "
        "\"Home ranges for autocorrelated tracks (AKDE)\".\n\n"
        "A value that is not defined for an animal is left empty.");
}

QStringList StatisticsAlgorithm::tags() const {
    return QStringLiteral("autocorrelation,independence,schoener,swihart,slade,href,bandwidth,telemetry")
        .split(QLatin1Char(','));
}

void StatisticsAlgorithm::initAlgorithm(const QVariantMap&) {
    AddInput(QStringLiteral("Fixes (projected points)"));
    addParameter(new QgsProcessingParameterField(QStringLiteral("ID_FIELD"), QStringLiteral("Animal ID field"),
                                                 QVariant(), QStringLiteral("INPUT")));
    addParameter(
        new QgsProcessingParameterFeatureSink(QStringLiteral("OUTPUT"), QStringLiteral("Statistics"), kSourceVector));
    addOutput(new QgsProcessingOutputNumber(QStringLiteral("ANIMALS"), QStringLiteral("Number of animals")));
}

QVariantMap StatisticsAlgorithm::processAlgorithm(const QVariantMap& parameters, QgsProcessingContext& context,
                                                  QgsProcessingFeedback* feedback) {
    ProcessingSession session(*feedback);
    const ReadLayer input = LayerToRead(parameters, context, *feedback);
    session.Add(*input.Layer);
    const QString idField = parameterAsString(parameters, QStringLiteral("ID_FIELD"), context);
    const int idIndex = input.Layer->fields().lookupField(idField);

    kde_tool::frmKDE form(session.Services(), session.Geodata());
    form.Form_Load();
    if (idIndex < 0 || !form.cmbUIDFLD.Select(FromQString(input.Layer->fields().at(idIndex).name())))
        throw QgsProcessingException(QStringLiteral("The layer has no field \"%1\".").arg(idField));
    form.cmbUIDFLD_Click();
    form.chkUseSel.Value = input.SelectedOnly ? 1 : 0;
    form.SSTab1.Current = 1;
    form.SSTab1_Click(0);
    form.btnCalcIO_Click();
    if (session.Messages().Faults() > 0)
        Fail(session.Messages(), QStringLiteral("The statistics could not be computed."));

    QString destination;
    const QgsFields fields = table_fields(input.Layer->fields().at(idIndex));
    const std::unique_ptr<QgsFeatureSink> sink(
        parameterAsSink(parameters, QStringLiteral("OUTPUT"), context, destination, fields, kWithoutGeometry));
    if (!sink) throw QgsProcessingException(invalidSinkError(parameters, QStringLiteral("OUTPUT")));
    const std::size_t animals = form.IndependenceNumbers().size();
    for (std::size_t i = 0; i < animals && !feedback->isCanceled(); ++i) {
        const analysis::IndependenceRow& independence = form.IndependenceNumbers().at(i);
        const analysis::VarianceRow& spread = form.VarianceNumbers().at(i);
        const analysis::HrefRow& bandwidth = form.HrefNumbers().at(i);
        QgsFeature row(fields);
        row.setAttributes(QVector<QVariant>{
            ToVariant(independence.Id, type_of(fields.at(0))), qlonglong{independence.Count},
            value_of(independence.Schoener), value_of(independence.SwihartSlade), value_of(spread.SdX),
            value_of(spread.SdY), value_of(spread.Ratio), value_of(bandwidth.Href), value_of(bandwidth.HrefScaled)});
        if (!sink->addFeature(row, QgsFeatureSink::FastInsert))
            throw QgsProcessingException(writeFeatureError(sink.get(), parameters, QStringLiteral("OUTPUT")));
    }
    sink->flushBuffer();
    return {{QStringLiteral("OUTPUT"), destination}, {QStringLiteral("ANIMALS"), static_cast<int>(animals)}};
}

}  // namespace wxl::qgis
