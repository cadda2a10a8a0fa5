#pragma once
#include "platform/map.h"

#include <functional>
#include <memory>
#include <qgslayertreeview.h>
#include <qgsmapcanvas.h>
#include <QObject>
#include <QPointer>

class QgsProject;

namespace wxl::qgis {

/// What the adapter needs of the desktop around it: the canvas and the layer tree. Both outlive the adapter's objects.
struct Desktop {
    QgsMapCanvas* Canvas = nullptr;
    QgsLayerTreeView* LayerTree = nullptr;  ///< null where there is no tree on screen; ActiveLayer answers then
    std::function<QgsMapLayer*()> ActiveLayer;
};

/// The one layer that is highlighted, or null.
QgsMapLayer* HighlightedLayer(const Desktop& desktop);

/// The project's layers in tree order, and the canvas.
class QgisMap final : public platform::IMap {
public:
    explicit QgisMap(Desktop desktop);
    std::vector<platform::Layer> Layers() override;
    void AddDataset(const std::filesystem::path& dataset) override;
    std::unique_ptr<platform::IGraphicsContainer> NewGraphics(const platform::SpatialReference& reference) override;

private:
    Desktop m_desktop;
};

/// The project as the one map document. Map events reach the listener while it is set.
class QgisDocument final : public QObject, public platform::IMxDocument {
public:
    explicit QgisDocument(Desktop desktop);
    std::shared_ptr<platform::IMap> FocusMap() override;
    std::optional<platform::Layer> SelectedLayer() override;
    void Redraw() override;
    void SetListener(platform::IMapEvents* listener) override;

private:
    void WatchSelections();

    Desktop m_desktop;
    std::shared_ptr<QgisMap> m_map;
    platform::IMapEvents* m_listener = nullptr;
};

class QgisApplication final : public platform::IApplication {
public:
    explicit QgisApplication(Desktop desktop) : m_document(std::make_shared<QgisDocument>(std::move(desktop))) {}
    std::shared_ptr<platform::IMxDocument> Document() override { return m_document; }

    /// QGIS has no extensions in this sense.
    std::shared_ptr<platform::IExtension> FindExtension(std::string_view identifier) override;

private:
    std::shared_ptr<QgisDocument> m_document;
};

}  // namespace wxl::qgis
