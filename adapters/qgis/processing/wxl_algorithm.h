#pragma once
#include "adapters/ogr/disk_services.h"
#include "adapters/qgis/processing/feedback.h"
#include "adapters/qgis/processing/fixed_map.h"
#include "adapters/qgis/qgis_versions.h"
#include "platform/services.h"
#include "utilities/Utilities.h"

#include <memory>
#include <qgsprocessingalgorithm.h>
#include <qgsvectorlayer.h>
#include <QStringList>
#include <string>

namespace wxl::qgis {

/// What the tools need around them while one algorithm runs: a map of its own, its log as message boxes, the disk.
class ProcessingSession {
public:
    /// The feedback must outlive the session.
    explicit ProcessingSession(QgsProcessingFeedback& feedback);
    ProcessingSession(const ProcessingSession&) = delete;
    ProcessingSession& operator=(const ProcessingSession&) = delete;

    /// The first layer that is added is the highlighted one. Returns its name in the map: the layer's own, or its
    /// source where another layer has that name.
    std::string Add(QgsMapLayer& layer);
    FixedMap& Map() { return m_application->Map(); }
    const std::shared_ptr<FixedApplication>& Application() const { return m_application; }
    FeedbackMessages& Messages() { return m_messages; }
    FeedbackHost& Host() { return m_host; }
    const platform::Services& Services() const { return m_services; }
    utilities::Utilities& Geodata() { return m_geodata; }

private:
    class NoDialogs final : public platform::IFileDialogs {
    public:
        std::optional<std::filesystem::path> OpenFile(const platform::FileDialog&) override { return std::nullopt; }
        std::optional<std::filesystem::path> SaveFile(const platform::FileDialog&) override { return std::nullopt; }
        std::optional<std::filesystem::path> ChooseFolder(const std::string&) override { return std::nullopt; }
    };

    FeedbackMessages m_messages;
    FeedbackHost m_host;
    NoDialogs m_dialogs;
    files::DiskServices m_disk;
    platform::Services m_services;
    std::shared_ptr<FixedApplication> m_application;
    utilities::Utilities m_geodata;
};

/// Folds a parameter away among the advanced ones.
template <class Parameter>
Parameter* advanced(Parameter* parameter) {
    parameter->setFlags(parameter->flags() | kParameterAdvanced);
    return parameter;
}

/// What all algorithms share.
///
/// They run in the main thread (no threading): the tools are made for the thread of the user interface. They read
/// layers of the project, the engine plans its transforms and the adapters remember coordinate systems without locks,
/// and none has threads of its own. The desktop stays alive, because every turn that a tool gives its host reaches the
/// event loop: the log grows, the bar moves, Cancel is heard.
class WxlAlgorithm : public QgsProcessingAlgorithm {
public:
    QString group() const override { return QStringLiteral("Home ranges"); }
    QString groupId() const override { return QStringLiteral("homeranges"); }
    QIcon icon() const override;

    /// The page of the guide as a file; "" without a desktop.
    QString helpUrl() const override;
    AlgorithmFlags flags() const override { return QgsProcessingAlgorithm::flags() | kAlgorithmNoThreading; }

protected:
    /// Adds the parameter INPUT for points, also of the selected ones alone.
    void AddInput(const QString& description);

    /// Adds the parameter ID_FIELD.
    void AddIdField();

    /// Adds the parameters REFERENCE, PREFIX, SCALING and RASTER_FORMAT of a run that writes rasters.
    void AddRasterFiles(const QString& prefixTitle);

    /// Adds the parameter GPKG of a run that can write all its ranges into one file.
    void AddPackage();

    /// Whether GPKG is ticked.
    bool WantsPackage(const QVariantMap& parameters, QgsProcessingContext& context) const;

    /// Adds the parameter LOAD.
    void AddLoad();

    /// Adds the folder OUTPUT.
    void AddFolder(const char* help);

    /// Adds the folder OUTPUT and what a run into it gives: the file `name`, PAGE, PACKAGE, RASTERS, ISOPLETHS,
    /// DISTRIBUTIONS and FAILED.
    void AddRunOutputs(const QString& name, const QString& title);

    /// The folder of OUTPUT, which is made where it is not there. QgsProcessingException where it cannot be.
    QString FolderOf(const QVariantMap& parameters, QgsProcessingContext& context) const;

    /// The format of RASTER_FORMAT: "GRID" or "GTiff".
    std::string RasterFormatOf(const QVariantMap& parameters, QgsProcessingContext& context) const;

    /// A layer to be read, and whether only its selected features are meant.
    struct ReadLayer {
        QgsVectorLayer* Layer = nullptr;
        bool SelectedOnly = false;
        std::shared_ptr<QgsVectorLayer> Owned;  ///< where the source is no whole layer
    };

    /// The layer of INPUT itself, as the desktop's dialog reads it. QgsProcessingException when it holds no points.
    ReadLayer LayerToRead(const QVariantMap& parameters, QgsProcessingContext& context,
                          QgsProcessingFeedback& feedback) const;

    /// A copy of INPUT in memory that a tool may change, with every feature selected. The features keep their order.
    std::unique_ptr<QgsVectorLayer> CopyToChange(const QVariantMap& parameters, QgsProcessingContext& context,
                                                 QgsProcessingFeedback& feedback) const;

    /// Writes all features of the layer into the sink OUTPUT and returns its ID.
    QString WriteOutput(QgsVectorLayer& layer, const QVariantMap& parameters, QgsProcessingContext& context,
                        QgsProcessingFeedback& feedback) const;

    /// Throws what the tool said when it failed: its last message, or `otherwise` where it said nothing.
    [[noreturn]] static void Fail(const FeedbackMessages& messages, const QString& otherwise);
};

}  // namespace wxl::qgis
