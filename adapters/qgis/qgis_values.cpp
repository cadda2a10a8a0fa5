#include "adapters/qgis/qgis_values.h"

#include "platform/runtime_error.h"

#include <algorithm>
#include <QDateTime>
#include <qgslinestring.h>
#include <qgsmultilinestring.h>
#include <qgsmultipoint.h>
#include <qgsmultipolygon.h>
#include <qgspolygon.h>

namespace wxl::qgis {
namespace {

using platform::Geometry;
using platform::Point;
using platform::ShapeType;
using Ring = std::vector<Point>;

Ring vertices(const QgsCurve& curve) {
    Ring ring;
    const std::unique_ptr<QgsLineString> line(curve.curveToLine());
    ring.reserve(static_cast<std::size_t>(line->numPoints()));
    for (int i = 0; i < line->numPoints(); ++i) ring.push_back({line->xAt(i), line->yAt(i)});
    return ring;
}

double twice_signed_area(const Ring& ring) {
    double sum = 0.0;
    for (std::size_t i = 0; i + 1 < ring.size(); ++i)
        sum += (ring[i].X - ring[0].X) * (ring[i + 1].Y - ring[0].Y) -
               (ring[i + 1].X - ring[0].X) * (ring[i].Y - ring[0].Y);
    return sum;
}

Ring turned(Ring ring, bool clockwise) {
    if ((twice_signed_area(ring) < 0.0) != clockwise) std::reverse(ring.begin(), ring.end());
    return ring;
}

std::unique_ptr<QgsLineString> line_of(const Ring& ring) {
    QVector<double> x;
    QVector<double> y;
    for (const Point& p : ring) {
        x.push_back(p.X);
        y.push_back(p.Y);
    }
    return std::make_unique<QgsLineString>(x, y);
}

}  // namespace

platform::FieldValue FromVariant(const QVariant& value) {
    if (!value.isValid() || value.isNull()) return std::monostate{};
    switch (type_of(value)) {
        case QMetaType::Int:
        case QMetaType::LongLong:
        case QMetaType::UInt:
        case QMetaType::Bool:
            return std::int64_t{value.toLongLong()};
        case QMetaType::Double:
        case QMetaType::ULongLong:
            return value.toDouble();
        case QMetaType::QDate:
            return FromQString(value.toDate().toString(Qt::ISODate));
        case QMetaType::QTime:
            return FromQString(value.toTime().toString(Qt::ISODate));
        case QMetaType::QDateTime:
            return FromQString(value.toDateTime().toString(Qt::ISODate));
        default:
            return FromQString(value.toString());
    }
}

QVariant ToVariant(const platform::FieldValue& value, QMetaType::Type type) {
    if (platform::IsMissing(value)) return null_of(type);
    if (const auto* whole = std::get_if<std::int64_t>(&value)) return QVariant(qlonglong{*whole});
    if (const auto* number = std::get_if<double>(&value)) return QVariant(*number);
    return QVariant(ToQString(std::get<std::string>(value)));
}

ShapeType ShapeTypeOf(GeometryType type) {
    switch (type) {
        case kPointGeometry:
            return ShapeType::kPoint;
        case kLineGeometry:
            return ShapeType::kPolyline;
        case kPolygonGeometry:
            return ShapeType::kPolygon;
        default:
            return ShapeType::kNull;
    }
}

Geometry FromQgsGeometry(const QgsGeometry& geometry) {
    if (geometry.isNull() || geometry.isEmpty()) return {};
    Geometry result;
    result.Type = ShapeTypeOf(geometry.type());
    if (result.Type == ShapeType::kPoint) {
        if (const auto* points = qgsgeometry_cast<const QgsMultiPoint*>(geometry.constGet());
            points && points->numGeometries() > 1)
            platform::Raise(platform::error_number::kInvalidCall, "A feature of several points cannot be used.");
        const QgsPoint vertex = geometry.vertexAt(0);
        result.Location = {vertex.x(), vertex.y()};
        return result;
    }
    for (auto part = geometry.const_parts_begin(); part != geometry.const_parts_end(); ++part) {
        if (const auto* curve = qgsgeometry_cast<const QgsCurve*>(*part)) {
            result.Parts.push_back(vertices(*curve));
        } else if (const auto* polygon = qgsgeometry_cast<const QgsCurvePolygon*>(*part)) {
            result.Parts.push_back(turned(vertices(*polygon->exteriorRing()), true));
            for (int i = 0; i < polygon->numInteriorRings(); ++i)
                result.Parts.push_back(turned(vertices(*polygon->interiorRing(i)), false));
        }
    }
    return result;
}

QgsGeometry ToQgsGeometry(const Geometry& geometry) {
    switch (geometry.Type) {
        case ShapeType::kPoint:
            return QgsGeometry::fromPointXY({geometry.Location.X, geometry.Location.Y});
        case ShapeType::kPolyline: {
            auto lines = std::make_unique<QgsMultiLineString>();
            for (const Ring& part : geometry.Parts) lines->addGeometry(line_of(part).release());
            return QgsGeometry(std::move(lines));
        }
        case ShapeType::kPolygon: {
            auto polygons = std::make_unique<QgsMultiPolygon>();
            std::unique_ptr<QgsPolygon> polygon;
            const auto finish = [&] {
                if (polygon) polygons->addGeometry(polygon.release());
            };
            for (const Ring& ring : geometry.Parts) {
                if (polygon && twice_signed_area(ring) > 0.0) {
                    polygon->addInteriorRing(line_of(ring).release());
                    continue;
                }
                finish();
                polygon = std::make_unique<QgsPolygon>();
                polygon->setExteriorRing(line_of(ring).release());
            }
            finish();
            return QgsGeometry(std::move(polygons));
        }
        case ShapeType::kNull:
            break;
    }
    return {};
}

platform::Field FromQgsField(const QgsField& field) {
    platform::Field result;
    result.Name = FromQString(field.name());
    result.Length = field.length();
    result.Precision = field.precision();
    switch (type_of(field)) {
        case QMetaType::Int:
        case QMetaType::LongLong:
        case QMetaType::UInt:
        case QMetaType::Bool:
            result.Type = platform::FieldType::kInteger;
            break;
        case QMetaType::Double:
        case QMetaType::ULongLong:
            result.Type = platform::FieldType::kDouble;
            break;
        case QMetaType::QDate:
        case QMetaType::QTime:
        case QMetaType::QDateTime:
            result.Type = platform::FieldType::kDate;
            break;
        default:
            result.Type = platform::FieldType::kText;
            break;
    }
    return result;
}

QgsField ToQgsField(const platform::Field& field) {
    QMetaType::Type type = QMetaType::QString;
    if (field.Type == platform::FieldType::kDouble) type = QMetaType::Double;
    if (field.Type == platform::FieldType::kInteger) type = QMetaType::LongLong;
    if (field.Type == platform::FieldType::kDate) type = QMetaType::QDate;
    return make_field(ToQString(field.Name), type, QString(), field.Length, field.Precision);
}

platform::SpatialReference FromCrs(const QgsCoordinateReferenceSystem& crs) {
    if (!crs.isValid()) return {};
    platform::SpatialReference reference;
    reference.Name = FromQString(crs.description());
    reference.Wkt = FromQString(crs.toWkt(kPreferredWkt));
    reference.UnitName = FromQString(QgsUnitTypes::encodeUnit(crs.mapUnits()));
    reference.IsGeographic = crs.isGeographic();
    if (!crs.isGeographic() && crs.mapUnits() != kUnknownUnit)
        reference.MetersPerUnit = QgsUnitTypes::fromUnitToUnitFactor(crs.mapUnits(), kMetres);
    return reference;
}

QgsCoordinateReferenceSystem ToCrs(const platform::SpatialReference& reference) {
    return reference.Wkt.empty() ? QgsCoordinateReferenceSystem()
                                 : QgsCoordinateReferenceSystem::fromWkt(ToQString(reference.Wkt));
}

}  // namespace wxl::qgis
