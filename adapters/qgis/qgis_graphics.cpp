#include "adapters/qgis/qgis_graphics.h"

#include "adapters/qgis/map_places.h"
#include "movement/track_symbol.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <map>
#include <qgsmapcanvasitem.h>
#include <qgsproject.h>
#include <QImage>
#include <QPainter>
#include <utility>
#include <vector>

namespace wxl::qgis {
namespace {

using namespace movement::track_symbol;

QColor to_qcolor(const Colour& colour) {
    return {colour.Red, colour.Green, colour.Blue};
}

QPen pen_of(const Colour& colour, double width) {
    QPen pen(to_qcolor(colour), width);
    pen.setJoinStyle(Qt::RoundJoin);
    return pen;
}

/// A straight line has its own way of drawing, which is the faster one.
void draw_line(QPainter& painter, const QPolygonF& line) {
    if (line.size() == 2)
        painter.drawLine(line.front(), line.back());
    else
        painter.drawPolyline(line);
}

/// A line whose casing goes behind all that is there already.
void draw_leg(QPainter& painter, const QPolygonF& line) {
    painter.setCompositionMode(QPainter::CompositionMode_DestinationOver);
    painter.setPen(pen_of(kCasingColour, kCasingWidth));
    draw_line(painter, line);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.setPen(pen_of(kLineColour, kLineWidth));
    draw_line(painter, line);
}

/// An arrow head with its tip there, turned as seen from `from`.
void draw_head(QPainter& painter, const QPointF& from, const QPointF& tip) {
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

/// All legs, drawn once for each scale: the map's plane is cut into tiles of device pixels that are kept while it is
/// panned. A tile gets what it lacks when it comes into view. The plane hangs on the first leg, whose place on screen
/// is rounded to whole pixels, so that tiles fit wherever they are shown.
class QgisTrackGraphics::Item final : public QgsMapCanvasItem {
public:
    Item(QgsMapCanvas* canvas, const QgsCoordinateReferenceSystem& crs)
        : QgsMapCanvasItem(canvas), m_crs(crs), m_places(*canvas, crs) {
        setZValue(50);
    }

    const MapPlaces& Places() const { return m_places; }

    void Add(const platform::TrackLeg& leg) {
        m_legs.push_back(leg);
        Place(leg);
    }

    void Clear() {
        m_legs.clear();
        Forget();
    }

    /// Looks anew where the legs are on the map.
    void PlaceAnew() {
        Forget();
        m_places = MapPlaces(*mMapCanvas, m_crs);
        for (const platform::TrackLeg& leg : m_legs) Place(leg);
        Show();
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
        if (m_lines.empty()) return;
        const QTransform view = mMapCanvas->mapSettings().mapToPixel().transform();
        TakeScale(view);
        const QPointF first = view.map(m_first) * m_ratio;
        const TilePlace origin(std::llround(first.x()), std::llround(first.y()));
        const QSize size = mMapCanvas->mapSettings().outputSize() * m_ratio;
        const auto [left, top] = TilePlace(tile_at(-origin.first), tile_at(-origin.second));
        const auto right = tile_at(size.width() - origin.first);
        const auto bottom = tile_at(size.height() - origin.second);
        ++m_paints;
        for (auto y = top; y <= bottom; ++y)
            for (auto x = left; x <= right; ++x) {
                const QImage& tile = Drawn({x, y});
                painter->drawImage(QPointF(static_cast<qreal>(x * kTile + origin.first) / m_ratio,
                                           static_cast<qreal>(y * kTile + origin.second) / m_ratio),
                                   tile);
            }
        DropOldTiles(static_cast<std::size_t>((right - left + 1) * (bottom - top + 1)));
    }

private:
    /// A column and a row of tiles, or of device pixels.
    using TilePlace = std::pair<std::int64_t, std::int64_t>;

    struct Tile {
        QImage Picture;
        std::size_t Drawn = 0;  ///< legs that were looked at
        std::int64_t LastPaint = 0;
    };

    static constexpr std::int64_t kTile = 256;  ///< side, device pixels
    static constexpr std::size_t kSpareTiles = 200;
    /// Symbols reach no further from their leg, pixels: to the back corners of a head that is longer than its leg, and
    /// the blur of its edge.
    static inline const double kMargin = std::hypot(kMarkerLength, kMarkerWidth / 2.0) + 1.0;

    /// A line of a leg on the map, as a part that is seen without a break.
    struct Line {
        QPolygonF Path;  ///< from the first leg's place
        bool HasHead = false;
    };

    void Forget() {
        m_lines.clear();
        m_tiles.clear();
    }

    void Place(const platform::TrackLeg& leg) {
        std::vector<QPolygonF> parts = m_places.LineOf(leg);
        for (QPolygonF& part : parts) {
            if (m_lines.empty()) m_first = part.front();
            part.translate(-m_first);
            m_lines.push_back({part, &part == &parts.back()});
        }
    }

    static std::int64_t tile_at(std::int64_t pixel) {
        return pixel >= 0 ? pixel / kTile : -((-pixel + kTile - 1) / kTile);
    }

    /// Forgets the tiles of another scale, rotation or screen. The digits of a scale shake a little when a map is
    /// panned.
    void TakeScale(const QTransform& view) {
        const auto same = [](double a, double b, double size) { return std::abs(a - b) <= 1e-9 * size; };
        const double size = std::hypot(view.m11(), view.m12());
        const double ratio = mMapCanvas->devicePixelRatioF();
        if (m_ratio == ratio && same(m_scale.m11(), view.m11(), size) && same(m_scale.m12(), view.m12(), size) &&
            same(m_scale.m21(), view.m21(), size) && same(m_scale.m22(), view.m22(), size))
            return;
        m_scale = QTransform(view.m11(), view.m12(), view.m21(), view.m22(), 0.0, 0.0);
        m_ratio = ratio;
        m_tiles.clear();
    }

    /// The tile with all legs that meet it.
    const QImage& Drawn(const TilePlace& place) {
        Tile& tile = m_tiles[place];
        tile.LastPaint = m_paints;
        if (tile.Picture.isNull()) {
            tile.Picture = QImage(kTile, kTile, QImage::Format_ARGB32_Premultiplied);
            tile.Picture.fill(Qt::transparent);
            tile.Picture.setDevicePixelRatio(m_ratio);
        }
        if (tile.Drawn == m_lines.size()) return tile.Picture;
        const double side = static_cast<double>(kTile) / m_ratio;
        const QPointF corner(static_cast<double>(place.first) * side, static_cast<double>(place.second) * side);
        const QRectF reach = QRectF(corner, QSizeF(side, side)).adjusted(-kMargin, -kMargin, kMargin, kMargin);
        QPainter painter(&tile.Picture);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.translate(-corner);
        for (; tile.Drawn < m_lines.size(); ++tile.Drawn) {
            const QPolygonF line = m_scale.map(m_lines[tile.Drawn].Path);
            const QRectF box = line.boundingRect();
            const bool beside = box.right() < reach.left() || box.left() > reach.right();
            const bool above = box.bottom() < reach.top() || box.top() > reach.bottom();
            if (beside || above) continue;
            draw_leg(painter, line);
            if (m_lines[tile.Drawn].HasHead) draw_head(painter, line.at(line.size() - 2), line.back());
        }
        return tile.Picture;
    }

    void DropOldTiles(std::size_t visible) {
        if (m_tiles.size() <= 2 * visible + kSpareTiles) return;
        std::erase_if(m_tiles, [this](const auto& entry) { return entry.second.LastPaint + 10 < m_paints; });
    }

    QgsCoordinateReferenceSystem m_crs;
    MapPlaces m_places;
    std::vector<platform::TrackLeg> m_legs;
    std::vector<Line> m_lines;  ///< in the order of the legs
    QPointF m_first;            ///< the map's place from which lines are measured
    std::map<TilePlace, Tile> m_tiles;
    QTransform m_scale;  ///< from the map to logical pixels, without a shift
    double m_ratio = 0.0;
    std::int64_t m_paints = 0;
};

QgisTrackGraphics::QgisTrackGraphics(QgsMapCanvas& canvas, const QgsCoordinateReferenceSystem& crs)
    : m_canvas(&canvas), m_item(new Item(&canvas, crs)) {
    const auto follow = [item = m_item] { item->PlaceAnew(); };
    m_connections = {QObject::connect(&canvas, &QgsMapCanvas::destinationCrsChanged, &canvas, follow),
                     QObject::connect(QgsProject::instance(), &QgsProject::transformContextChanged, &canvas, follow)};
}

QgisTrackGraphics::~QgisTrackGraphics() {
    for (const QMetaObject::Connection& connection : m_connections) QObject::disconnect(connection);
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

bool QgisTrackGraphics::CanPlace(const platform::Point& place) const {
    return m_canvas.isNull() || m_item->Places().PlaceOf(place);
}

bool QgisTrackGraphics::IsInView(const platform::Point& place) const {
    if (m_canvas.isNull()) return true;
    const auto onMap = m_item->Places().PlaceOf(place);
    if (!onMap) return true;
    const QgsPointXY pixel = m_canvas->mapSettings().mapToPixel().transform(*onMap);
    const QSize size = m_canvas->mapSettings().outputSize();
    return pixel.x() >= 0.0 && pixel.x() <= size.width() && pixel.y() >= 0.0 && pixel.y() <= size.height();
}

void QgisTrackGraphics::PanTo(const platform::Point& centre) {
    if (m_canvas.isNull()) return;
    const auto onMap = m_item->Places().PlaceOf(centre);
    if (!onMap) return;
    m_canvas->setCenter(*onMap);
    m_canvas->refresh();
}

void QgisTrackGraphics::Zoom(double factor, const platform::Point& centre) {
    if (m_canvas.isNull()) return;
    const auto onMap = m_item->Places().PlaceOf(centre);
    m_canvas->zoomByFactor(factor, onMap ? &*onMap : nullptr);
}

void QgisTrackGraphics::ZoomTo(const std::vector<platform::Point>& places) {
    if (m_canvas.isNull()) return;
    platform::Extent box;
    for (const platform::Point& place : places)
        if (const auto found = m_item->Places().PlaceOf(place)) box.Include({found->x(), found->y()});
    if (box.IsEmpty()) return;
    QgsRectangle shown(box.XMin, box.YMin, box.XMax, box.YMax);
    m_canvas->zoomToFeatureExtent(shown);
}

}  // namespace wxl::qgis
