#include "adapters/qgis/qgis_graphics.h"

#include "movement/track_symbol.h"

#include <array>
#include <cmath>
#include <qgsmapcanvasitem.h>
#include <QPainter>
#include <QPolygonF>
#include <vector>

namespace wxl::qgis {
namespace {

using namespace movement::track_symbol;

QColor to_qcolor(const Colour& colour) {
    return {colour.Red, colour.Green, colour.Blue};
}

/// An arrow head whose tip lies at `tip`, turned along the leg.
void draw_marker(QPainter& painter, const QPointF& from, const QPointF& tip) {
    const qreal length = std::hypot(tip.x() - from.x(), tip.y() - from.y());
    const QPointF along = length > 0.0 ? (tip - from) / length : QPointF(1.0, 0.0);
    const QPointF across(-along.y(), along.x());
    const QPointF base = tip - along * kMarkerLength;
    const std::array<QPointF, 3> head = {tip, base + across * (kMarkerWidth / 2.0),
                                         base - across * (kMarkerWidth / 2.0)};
    painter.drawPolygon(head.data(), static_cast<int>(head.size()));
}

}  // namespace

class QgisTrackGraphics::Item final : public QgsMapCanvasItem {
public:
    explicit Item(QgsMapCanvas* canvas) : QgsMapCanvasItem(canvas) { setZValue(50); }

    void Add(const platform::TrackLeg& leg) { m_legs.push_back(leg); }

    void Clear() { m_legs.clear(); }

    void Show() {
        updatePosition();
        update();
    }

    void updatePosition() override {
        // The whole canvas: legs may lie anywhere, and the painter is clipped to the view.
        setRect(mMapCanvas->extent());
    }

    void paint(QPainter* painter) override {
        painter->setRenderHint(QPainter::Antialiasing);
        const QgsRectangle view = mMapCanvas->extent();
        const QPointF origin = pos();
        const auto canvas_point = [&](const platform::Point& p) { return toCanvasCoordinates({p.X, p.Y}) - origin; };
        const auto in_view = [&](const platform::TrackLeg& leg) {
            return view.intersects(QgsRectangle(leg.From.X, leg.From.Y, leg.To.X, leg.To.Y));
        };
        painter->setPen(QPen(to_qcolor(kLineColour), kLineWidth));
        for (const platform::TrackLeg& leg : m_legs)
            if (in_view(leg)) painter->drawLine(canvas_point(leg.From), canvas_point(leg.To));
        painter->setPen(Qt::NoPen);
        painter->setBrush(to_qcolor(kMarkerColour));
        for (const platform::TrackLeg& leg : m_legs)
            if (in_view(leg)) draw_marker(*painter, canvas_point(leg.From), canvas_point(leg.To));
    }

private:
    std::vector<platform::TrackLeg> m_legs;
};

QgisTrackGraphics::QgisTrackGraphics(QgsMapCanvas& canvas) : m_canvas(&canvas), m_item(new Item(&canvas)) {}

QgisTrackGraphics::~QgisTrackGraphics() {
    if (!m_canvas.isNull()) delete m_item;
}

void QgisTrackGraphics::AddLeg(const platform::TrackLeg& leg) {
    if (!m_canvas.isNull()) m_item->Add(leg);
}

void QgisTrackGraphics::DeleteLegs() {
    if (!m_canvas.isNull()) m_item->Clear();
}

void QgisTrackGraphics::Refresh() {
    if (!m_canvas.isNull()) m_item->Show();
}

}  // namespace wxl::qgis
