#pragma once
#include "platform/map.h"

#include <optional>
#include <qgscoordinatetransform.h>
#include <qgsmapcanvas.h>
#include <QPolygonF>
#include <vector>

namespace wxl::qgis {

/// Where places of a layer are in the present coordinate system of the map.
class MapPlaces {
public:
    /// Places are in `crs`; with an invalid one they are in the canvas's system.
    MapPlaces(const QgsMapCanvas& canvas, const QgsCoordinateReferenceSystem& crs);

    /// Nothing where the place does not exist in the map's system.
    std::optional<QgsPointXY> PlaceOf(const platform::Point& place) const;

    /// The leg, straight in its own system, on the map: at most a ten-thousandth of its length beside its true course.
    /// Several parts where the map's world ends between them; none where an end does not exist on the map.
    std::vector<QPolygonF> LineOf(const platform::TrackLeg& leg) const;

private:
    struct Stop {
        platform::Point Own;
        std::optional<QgsPointXY> OnMap;
    };

    Stop StopAt(const platform::Point& place) const { return {place, PlaceOf(place)}; }
    void Continue(std::vector<QPolygonF>& parts, const Stop& from, const Stop& to, int halvings) const;

    QgsCoordinateTransform m_transform;
};

}  // namespace wxl::qgis
