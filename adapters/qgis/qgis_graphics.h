#pragma once
#include "platform/map.h"

#include <memory>
#include <qgscoordinatereferencesystem.h>
#include <qgsmapcanvas.h>
#include <vector>

namespace wxl::qgis {

/// Legs of one track on the map canvas: grey lines with a red marker at each leg's end, turned along the leg. A leg is
/// straight in its own coordinate system, and follows the canvas when that changes its system.
/// Drawing touches only the legs in view; adding a leg costs the same however many are there.
class QgisTrackGraphics final : public platform::IGraphicsContainer {
public:
    /// Places are in `crs`; with an invalid one they are in the canvas's system.
    QgisTrackGraphics(QgsMapCanvas& canvas, const QgsCoordinateReferenceSystem& crs);
    ~QgisTrackGraphics() override;
    QgisTrackGraphics(const QgisTrackGraphics&) = delete;
    QgisTrackGraphics& operator=(const QgisTrackGraphics&) = delete;

    void AddLeg(const platform::TrackLeg& leg) override;
    void DeleteLegs() override;
    void Refresh() override;
    bool CanPlace(const platform::Point& place) const override;
    bool IsInView(const platform::Point& place) const override;
    void PanTo(const platform::Point& centre) override;
    void Zoom(double factor, const platform::Point& centre) override;
    void ZoomTo(const std::vector<platform::Point>& places) override;

private:
    class Item;

    QPointer<QgsMapCanvas> m_canvas;
    std::vector<QMetaObject::Connection> m_connections;
    Item* m_item;  // owned by the canvas scene while the canvas lives
};

}  // namespace wxl::qgis
