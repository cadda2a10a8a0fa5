#include "adapters/qgis/qgis_graphics.h"

#include "movement/track_symbol.h"

#include <array>
#include <cmath>
#include <qgsmapcanvasitem.h>
#include <QPainter>
#include <QPixmap>
#include <QPolygonF>
#include <vector>

namespace wxl::qgis {
namespace {

using namespace movement::track_symbol;

QColor to_qcolor(const Colour& colour) {
    return {colour.Red, colour.Green, colour.Blue};
}

/// A line from `from` to `tip`, and on it an arrow head whose tip lies there, turned along the leg.
void draw_leg(QPainter& painter, const QPointF& from, const QPointF& tip) {
    painter.setPen(QPen(to_qcolor(kLineColour), kLineWidth));
    painter.drawLine(from, tip);
    const qreal length = std::hypot(tip.x() - from.x(), tip.y() - from.y());
    const QPointF along = length > 0.0 ? (tip - from) / length : QPointF(1.0, 0.0);
    const QPointF across(-along.y(), along.x());
    const QPointF base = tip - along * kMarkerLength;
    const std::array<QPointF, 3> head = {tip, base + across * (kMarkerWidth / 2.0),
                                         base - across * (kMarkerWidth / 2.0)};
    painter.setPen(Qt::NoPen);
    painter.setBrush(to_qcolor(kMarkerColour));
    painter.drawPolygon(head.data(), static_cast<int>(head.size()));
}

}  // namespace

/// All legs as one picture of the view, which is begun anew when the view changes; a new leg is added to it.
class QgisTrackGraphics::Item final : public QgsMapCanvasItem {
public:
    explicit Item(QgsMapCanvas* canvas) : QgsMapCanvasItem(canvas) { setZValue(50); }

    void Add(const platform::TrackLeg& leg) { m_legs.push_back(leg); }

    void Clear() {
        m_legs.clear();
        m_picture = {};
    }

    void Show() {
        updatePosition();
        update();
    }

    void updatePosition() override {
        // The whole view, turned or not; only a map that is being dragged shifts it.
        const QgsPointXY corner = mMapCanvas->getCoordinateTransform()->toMapCoordinates(0, 0);
        prepareGeometryChange();
        setPos(toCanvasCoordinates(corner));
        mItemSize = mMapCanvas->mapSettings().outputSize() + QSize(2, 2);
    }

    void paint(QPainter* painter) override {
        BeginPicture();
        AddToPicture();
        painter->drawPixmap(QPointF(0.0, 0.0), m_picture);
    }

private:
    /// Forgets a picture of another view.
    void BeginPicture() {
        const qreal ratio = mMapCanvas->devicePixelRatioF();
        const QSize size = mMapCanvas->mapSettings().outputSize() * ratio;
        const QTransform view = mMapCanvas->mapSettings().mapToPixel().transform();
        if (m_picture.size() == size && m_picture.devicePixelRatio() == ratio && m_view == view) return;
        m_picture = QPixmap(size);
        m_picture.setDevicePixelRatio(ratio);
        m_picture.fill(Qt::transparent);
        m_view = view;
        m_drawn = 0;
    }

    /// Draws the legs that the picture lacks and that meet the view.
    void AddToPicture() {
        if (m_picture.isNull()) return;
        QPainter painter(&m_picture);
        painter.setRenderHint(QPainter::Antialiasing);
        const QgsRectangle view = mMapCanvas->mapSettings().visibleExtent();
        const QPointF origin = pos();
        const auto canvas_point = [&](const platform::Point& p) { return toCanvasCoordinates({p.X, p.Y}) - origin; };
        for (; m_drawn < m_legs.size(); ++m_drawn) {
            const platform::TrackLeg& leg = m_legs[m_drawn];
            if (view.intersects(QgsRectangle(leg.From.X, leg.From.Y, leg.To.X, leg.To.Y)))
                draw_leg(painter, canvas_point(leg.From), canvas_point(leg.To));
        }
    }

    std::vector<platform::TrackLeg> m_legs;
    QPixmap m_picture;
    QTransform m_view;        ///< from the map to the pixels of the picture
    std::size_t m_drawn = 0;  ///< legs that the picture shows
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
