#include "adapters/qgis/processing/wxl_algorithm.h"

#include "adapters/gdal/gdal_support.h"
#include "adapters/qgis/guide_window.h"
#include "adapters/qgis/processing/parameter_values.h"
#include "adapters/qgis/processing/wxl_icon.h"
#include "adapters/qgis/qgis_layers.h"
#include "adapters/qgis/qgis_values.h"

#include <algorithm>
#include <QDir>
#include <QFileInfo>
#include <qgsprocessingoutputs.h>
#include <qgsprocessingparameters.h>
#include <qgsprocessingutils.h>
#include <utility>
#include <vector>

namespace wxl::qgis {
namespace {

const QString kInput = QStringLiteral("INPUT");
const QString kOutput = QStringLiteral("OUTPUT");
const QString kPackage = QStringLiteral("GPKG");
const QString kRasterFormat = QStringLiteral("RASTER_FORMAT");
const QStringList kFormats = {QStringLiteral("GRID"), QStringLiteral("GTiff")};

/// The layer that the value of INPUT names, and how it restricts that layer.
struct SourceChoice {
    QVariant Layer;
    bool SelectedOnly = false;
    bool Limited = false;
};

SourceChoice choice_of(const QVariant& value) {
    if (!value.canConvert<QgsProcessingFeatureSourceDefinition>()) return {value};
    const auto definition = value.value<QgsProcessingFeatureSourceDefinition>();
    return {QVariant::fromValue(definition.source), definition.selectedFeaturesOnly, definition.featureLimit >= 0};
}

}  // namespace

ProcessingSession::ProcessingSession(QgsProcessingFeedback& feedback)
    : m_messages(feedback),
      m_host(feedback),
      m_services(m_disk.Complete({.Messages = &m_messages, .Dialogs = &m_dialogs, .Host = &m_host})),
      m_application(std::make_shared<FixedApplication>()),
      m_geodata(m_services) {
    m_geodata.ConnectToApplication(m_application);
}

std::string ProcessingSession::Add(QgsMapLayer& layer) {
    platform::Layer added = FromQgsLayer(layer);
    const std::vector<platform::Layer> layers = Map().Layers();
    const auto has_its_name = [&](const platform::Layer& other) { return other.Name == added.Name; };
    if (std::any_of(layers.begin(), layers.end(), has_its_name)) added.Name = FromQString(layer.source());
    std::string name = added.Name;
    Map().Add(std::move(added));
    return name;
}

QString WxlAlgorithm::helpUrl() const {
    return guide_file(QStringLiteral("processing"));
}

QIcon WxlAlgorithm::icon() const {
    return WxlIcon();
}

void WxlAlgorithm::AddInput(const QString& description) {
    addParameter(new QgsProcessingParameterFeatureSource(kInput, description, {static_cast<int>(kSourceVectorPoint)}));
}

void WxlAlgorithm::AddIdField() {
    addParameter(with_help(new QgsProcessingParameterField(QStringLiteral("ID_FIELD"),
                                                           QStringLiteral("Animal ID field"), QVariant(), kInput),
                           "The field that names the animal of each fix"));
}

void WxlAlgorithm::AddRasterFiles(const QString& prefixTitle) {
    addParameter(with_help(
        new QgsProcessingParameterRasterLayer(
            QStringLiteral("REFERENCE"), QStringLiteral("Reference raster (only for its extent)"), QVariant(), true),
        "Its extent and cells are taken over where \"As a reference raster\" is chosen"));
    addParameter(
        advanced(new QgsProcessingParameterString(QStringLiteral("PREFIX"), prefixTitle, QVariant(), false, true)));
    addParameter(
        advanced(with_help(new QgsProcessingParameterNumber(QStringLiteral("SCALING"), QStringLiteral("Scaling factor"),
                                                            kNumberDouble, 1000000.0, false, 0.0),
                           "The volume of a complete distribution")));
    addParameter(
        advanced(new QgsProcessingParameterEnum(kRasterFormat, QStringLiteral("Raster format"), kFormats, false, 0)));
}

void WxlAlgorithm::AddPackage() {
    addParameter(with_help(
        new QgsProcessingParameterBoolean(kPackage, QStringLiteral("Write all ranges into one GeoPackage"), false),
        "Puts isopleths, fixes and a summary of all animals into the file RANGES.gpkg of the output folder, with "
        "styles; later runs add to it"));
}

bool WxlAlgorithm::WantsPackage(const QVariantMap& parameters, QgsProcessingContext& context) const {
    return parameterAsBoolean(parameters, kPackage, context);
}

void WxlAlgorithm::AddLoad() {
    addParameter(new QgsProcessingParameterBoolean(QStringLiteral("LOAD"), QStringLiteral("Add results to map"), true));
}

void WxlAlgorithm::AddFolder(const char* help) {
    addParameter(
        with_help(new QgsProcessingParameterFolderDestination(kOutput, QStringLiteral("Output folder")), help));
}

void WxlAlgorithm::AddRunOutputs(const QString& name, const QString& title) {
    AddFolder("A new or empty folder; made when it is not there");
    addOutput(new QgsProcessingOutputFile(name, title));
    addOutput(new QgsProcessingOutputHtml(QStringLiteral("PAGE"), QStringLiteral("HTML page of the results")));
    addOutput(new QgsProcessingOutputFile(QStringLiteral("PACKAGE"), QStringLiteral("GeoPackage of all ranges")));
    addOutput(new QgsProcessingOutputMultipleLayers(QStringLiteral("RASTERS"), QStringLiteral("Rasters")));
    addOutput(new QgsProcessingOutputMultipleLayers(QStringLiteral("ISOPLETHS"), QStringLiteral("Isopleths")));
    addOutput(
        new QgsProcessingOutputNumber(QStringLiteral("DISTRIBUTIONS"), QStringLiteral("Number of distributions")));
    addOutput(new QgsProcessingOutputNumber(QStringLiteral("FAILED"),
                                            QStringLiteral("Number of distributions that could not be computed")));
}

QString WxlAlgorithm::FolderOf(const QVariantMap& parameters, QgsProcessingContext& context) const {
    QString folder = QFileInfo(parameterAsString(parameters, kOutput, context)).absoluteFilePath();
    if (!QDir().mkpath(folder))
        throw QgsProcessingException(QStringLiteral("The folder \"%1\" could not be made.").arg(folder));
    return folder;
}

std::string WxlAlgorithm::RasterFormatOf(const QVariantMap& parameters, QgsProcessingContext& context) const {
    return FromQString(kFormats.at(parameterAsEnum(parameters, kRasterFormat, context)));
}

WxlAlgorithm::ReadLayer WxlAlgorithm::LayerToRead(const QVariantMap& parameters, QgsProcessingContext& context,
                                                  QgsProcessingFeedback& feedback) const {
    const SourceChoice choice = choice_of(parameters.value(kInput));
    ReadLayer read;
    read.SelectedOnly = choice.SelectedOnly;
    if (!choice.Limited) read.Layer = parameterAsVectorLayer({{kInput, choice.Layer}}, kInput, context);
    if (!read.Layer) {
        read.Owned = CopyToChange(parameters, context, feedback);
        read.Layer = read.Owned.get();
        read.SelectedOnly = false;
    }
    if (read.Layer->geometryType() != kPointGeometry)
        throw QgsProcessingException(
            QStringLiteral("The layer \"%1\" holds no points: choose a point layer.").arg(read.Layer->name()));
    return read;
}

std::unique_ptr<QgsVectorLayer> WxlAlgorithm::CopyToChange(const QVariantMap& parameters, QgsProcessingContext& context,
                                                           QgsProcessingFeedback& feedback) const {
    const std::unique_ptr<QgsProcessingFeatureSource> source(parameterAsSource(parameters, kInput, context));
    if (!source) throw QgsProcessingException(invalidSourceError(parameters, kInput));
    const files::GdalErrors errors;
    std::unique_ptr<QgsVectorLayer> copy(source->materialize(QgsFeatureRequest(), &feedback));
    // The copy would lack a row that cannot be read, or its place.
    if (errors.Failed())
        throw QgsProcessingException(QStringLiteral("A row of the layer \"%1\" could not be read (%2). Please correct "
                                                    "it or take it out of the layer and try again.")
                                         .arg(source->sourceName(), ToQString(errors.Text())));
    if (!copy) throw QgsProcessingException(QStringLiteral("The layer could not be read."));
    copy->setName(source->sourceName());
    copy->selectAll();
    return copy;
}

QString WxlAlgorithm::WriteOutput(QgsVectorLayer& layer, const QVariantMap& parameters, QgsProcessingContext& context,
                                  QgsProcessingFeedback& feedback) const {
    QString destination;
    const std::unique_ptr<QgsFeatureSink> sink(
        parameterAsSink(parameters, kOutput, context, destination, layer.fields(), layer.wkbType(), layer.crs()));
    if (!sink) throw QgsProcessingException(invalidSinkError(parameters, kOutput));
    QgsFeatureIterator features = layer.getFeatures();
    QgsFeature feature;
    while (features.nextFeature(feature))
        if (!sink->addFeature(feature, QgsFeatureSink::FastInsert))
            throw QgsProcessingException(writeFeatureError(sink.get(), parameters, kOutput));
    sink->flushBuffer();
    feedback.setProgress(100.0);
    return destination;
}

void WxlAlgorithm::Fail(const FeedbackMessages& messages, const QString& otherwise) {
    throw QgsProcessingException(messages.LastText().isEmpty() ? otherwise : messages.LastText());
}

}  // namespace wxl::qgis
