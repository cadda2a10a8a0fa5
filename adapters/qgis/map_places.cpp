#include "adapters/qgis/map_places.h"

#include <algorithm>
#include <cmath>
#include <qgsexception.h>
#include <qgsproject.h>

namespace wxl::qgis {
namespace {

constexpr int kMostHalvings = 10;

platform::Point between(const platform::Point& a, const platform::Point& b, double share) {
    return {a.X + (b.X - a.X) * share, a.Y + (b.Y - a.Y) * share};
}

double distance(const QgsPointXY& a, const QgsPointXY& b) {
    return std::hypot(b.x() - a.x(), b.y() - a.y());
}

/// Whether `place` lies at that share of the way, as far as anybody can see.
bool is_straight(const QgsPointXY& from, const QgsPointXY& to, const QgsPointXY& place, double share) {
    const QgsPointXY expected(from.x() + (to.x() - from.x()) * share, from.y() + (to.y() - from.y()) * share);
    // Millimetres: what the arithmetic of projections leaves of a short leg.
    const double arithmetic = 1e-9 * std::max(std::abs(place.x()), std::abs(place.y()));
    return distance(place, expected) <= std::max(1e-4 * distance(from, to), arithmetic);
}

}  // namespace

MapPlaces::MapPlaces(const QgsMapCanvas& canvas, const QgsCoordinateReferenceSystem& crs)
    : m_transform(crs, canvas.mapSettings().destinationCrs(), QgsProject::instance()->transformContext()) {}

std::optional<QgsPointXY> MapPlaces::PlaceOf(const platform::Point& place) const {
    try {
        const QgsPointXY found = m_transform.transform(QgsPointXY(place.X, place.Y));
        if (std::isfinite(found.x()) && std::isfinite(found.y())) return found;
    } catch (const QgsCsException&) {
        // Outside of what the map's system can show.
    }
    return std::nullopt;
}

std::vector<QPolygonF> MapPlaces::LineOf(const platform::TrackLeg& leg) const {
    const Stop from = StopAt(leg.From);
    const Stop to = StopAt(leg.To);
    std::vector<QPolygonF> parts;
    if (!from.OnMap || !to.OnMap) return parts;
    parts.emplace_back(QPolygonF() << from.OnMap->toQPointF());
    if (m_transform.isShortCircuited())
        parts.back() << to.OnMap->toQPointF();
    else
        Continue(parts, from, to, kMostHalvings);
    std::erase_if(parts, [](const QPolygonF& part) { return part.size() < 2; });
    return parts;
}

void MapPlaces::Continue(std::vector<QPolygonF>& parts, const Stop& from, const Stop& to, int halvings) const {
    const Stop middle = StopAt(between(from.Own, to.Own, 0.5));
    // A second probe off the middle: a course may cross its chord just there.
    const auto probe = PlaceOf(between(from.Own, to.Own, 0.3));
    const bool known = from.OnMap && to.OnMap && middle.OnMap && probe;
    if (known && is_straight(*from.OnMap, *to.OnMap, *middle.OnMap, 0.5) &&
        is_straight(*from.OnMap, *to.OnMap, *probe, 0.3)) {
        parts.back() << to.OnMap->toQPointF();
    } else if (halvings > 0) {
        Continue(parts, from, middle, halvings - 1);
        Continue(parts, middle, to, halvings - 1);
    } else if (to.OnMap) {
        parts.emplace_back(QPolygonF() << to.OnMap->toQPointF());
    }
}

}  // namespace wxl::qgis
