#pragma once
#include "platform/map.h"

#include <memory>
#include <qgsmapcanvas.h>

namespace wxl::qgis {

/// Legs of one track on the map canvas: grey lines with a red marker at each leg's end, turned along the leg.
/// Drawing touches only the legs in view; adding a leg costs the same however many are there.
class QgisTrackGraphics final : public platform::IGraphicsContainer {
public:
    explicit QgisTrackGraphics(QgsMapCanvas& canvas);
    ~QgisTrackGraphics() override;
    QgisTrackGraphics(const QgisTrackGraphics&) = delete;
    QgisTrackGraphics& operator=(const QgisTrackGraphics&) = delete;

    void AddLeg(const platform::TrackLeg& leg) override;
    void DeleteLegs() override;
    void Refresh() override;

private:
    class Item;
    QPointer<QgsMapCanvas> m_canvas;
    Item* m_item;  // owned by the canvas scene while the canvas lives
};

}  // namespace wxl::qgis
