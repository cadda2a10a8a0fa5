#include "adapters/ogr/ogr_source.h"

#include "adapters/gdal/database_check.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <cmath>
#include <cpl_vsi.h>

namespace wxl::files {

using platform::Field;
using platform::FieldType;
using platform::FieldValue;
using platform::Geometry;
using platform::Point;
using platform::ShapeType;
namespace error_number = platform::error_number;
namespace fs = std::filesystem;

namespace {

OGRLayer* only_layer(GDALDataset& dataset, const fs::path& path) {
    if (dataset.GetLayerCount() == 1) return dataset.GetLayer(0);
    std::string names;
    for (int i = 0; i < dataset.GetLayerCount(); ++i)
        names += std::string(names.empty() ? "" : ", ") + dataset.GetLayer(i)->GetName();
    if (names.empty()) platform::Raise(error_number::kInvalidCall, path.string() + " holds no layer.");
    platform::Raise(error_number::kInvalidCall,
                    path.string() + " holds several layers (" + names + "): name one as PATH:LAYER.");
}

FieldType field_type(OGRFieldType type) {
    switch (type) {
        case OFTInteger:
        case OFTInteger64:
            return FieldType::kInteger;
        case OFTReal:
            return FieldType::kDouble;
        case OFTDate:
        case OFTTime:
        case OFTDateTime:
            return FieldType::kDate;
        default:
            return FieldType::kText;
    }
}

ShapeType shape_type(OGRwkbGeometryType type) {
    switch (wkbFlatten(type)) {
        case wkbPoint:
        case wkbMultiPoint:
            return ShapeType::kPoint;
        case wkbLineString:
        case wkbMultiLineString:
        case wkbCircularString:
        case wkbCompoundCurve:
        case wkbMultiCurve:
            return ShapeType::kPolyline;
        case wkbPolygon:
        case wkbMultiPolygon:
        case wkbCurvePolygon:
        case wkbMultiSurface:
            return ShapeType::kPolygon;
        default:
            return ShapeType::kNull;
    }
}

std::string decoded(const char* text) {
    std::string bytes(text);
    return platform::IsUtf8(bytes) ? bytes : platform::FromWindows1252(bytes);
}

std::vector<Point> points_of(const OGRSimpleCurve& curve) {
    std::vector<Point> points(static_cast<std::size_t>(curve.getNumPoints()));
    for (int i = 0; i < curve.getNumPoints(); ++i) points[static_cast<std::size_t>(i)] = {curve.getX(i), curve.getY(i)};
    return points;
}

void append_ring(const OGRLinearRing& ring, bool clockwise, Geometry& shape) {
    if (ring.IsEmpty()) return;
    std::vector<Point> points = points_of(ring);
    if (points.front() != points.back()) points.push_back(points.front());
    if ((ring.isClockwise() != 0) != clockwise) std::reverse(points.begin(), points.end());
    shape.Parts.push_back(std::move(points));
}

void append_parts(const OGRGeometry& geometry, Geometry& shape) {
    switch (wkbFlatten(geometry.getGeometryType())) {
        case wkbLineString:
            shape.Parts.push_back(points_of(*geometry.toLineString()));
            return;
        case wkbPolygon: {
            const OGRPolygon& polygon = *geometry.toPolygon();
            if (polygon.getExteriorRing() == nullptr) return;
            append_ring(*polygon.getExteriorRing(), true, shape);
            for (int i = 0; i < polygon.getNumInteriorRings(); ++i)
                append_ring(*polygon.getInteriorRing(i), false, shape);
            return;
        }
        case wkbMultiLineString:
        case wkbMultiPolygon:
            for (const OGRGeometry* part : *geometry.toGeometryCollection()) append_parts(*part, shape);
            return;
        default:
            platform::Raise(error_number::kInvalidCall,
                            std::string("Shapes of the type ") + geometry.getGeometryName() + " cannot be used.");
    }
}

Geometry point_of(const OGRGeometry& geometry) {
    const OGRGeometry* member = &geometry;
    if (wkbFlatten(geometry.getGeometryType()) == wkbMultiPoint) {
        const OGRMultiPoint& points = *geometry.toMultiPoint();
        if (points.getNumGeometries() > 1)
            platform::Raise(error_number::kInvalidCall, "A feature of several points cannot be used.");
        member = points.getGeometryRef(0);
    }
    return Geometry::OfPoint({member->toPoint()->getX(), member->toPoint()->getY()});
}

void add_points(OGRSimpleCurve& curve, const std::vector<Point>& points) {
    for (const Point& point : points) curve.addPoint(point.X, point.Y);
}

double clockwise_measure(const std::vector<Point>& ring) {
    double sum = 0.0;
    for (std::size_t i = 1; i < ring.size(); ++i)
        sum += (ring[i].X - ring[0].X) * (ring[i - 1].Y - ring[0].Y) -
               (ring[i - 1].X - ring[0].X) * (ring[i].Y - ring[0].Y);
    return sum;
}

std::unique_ptr<OGRGeometry> polygons_of(const Geometry& shape) {
    auto polygons = std::make_unique<OGRMultiPolygon>();
    std::unique_ptr<OGRPolygon> polygon;
    for (const auto& part : shape.Parts) {
        if (part.size() < 4) continue;
        if (!polygon || clockwise_measure(part) > 0.0) {
            if (polygon) polygons->addGeometryDirectly(polygon.release());
            polygon = std::make_unique<OGRPolygon>();
        }
        auto ring = std::make_unique<OGRLinearRing>();
        add_points(*ring, part);
        polygon->addRingDirectly(ring.release());
    }
    if (polygon) polygons->addGeometryDirectly(polygon.release());
    return polygons;
}

std::unique_ptr<OGRGeometry> lines_of(const Geometry& shape) {
    auto lines = std::make_unique<OGRMultiLineString>();
    for (const auto& part : shape.Parts) {
        auto line = std::make_unique<OGRLineString>();
        add_points(*line, part);
        lines->addGeometryDirectly(line.release());
    }
    return lines;
}

}  // namespace

OgrSource::OgrSource(const fs::path& path, const std::string& layer, Sources sources) {
    RegisterGdal();
    const GdalErrors errors;
    const bool isDatabase = sources == Sources::kPlain && is_database(path);
    if (isDatabase) CheckDatabase(path);
    m_dataset.reset(
        GDALDataset::Open(path.c_str(), GDAL_OF_VECTOR | GDAL_OF_READONLY, AllowedDrivers(sources, DataKind::kVector)));
    if (sources == Sources::kPlain && !m_dataset) CheckFormat(path, DataKind::kVector);
    if (!m_dataset) errors.RaiseReading(path);
    m_layer = layer.empty() ? only_layer(*m_dataset, path) : m_dataset->GetLayerByName(layer.c_str());
    if (m_layer == nullptr)
        platform::Raise(error_number::kInvalidCall, path.string() + " holds no layer \"" + layer + "\".");
    if (isDatabase) CheckView(path, m_layer->GetName());
}

std::string OgrSource::DriverName() const {
    return m_dataset->GetDriverName();
}

bool OgrSource::IsView() const {
    const std::string driver = DriverName();
    if (driver != "GPKG" && driver != "SQLite") return false;
    const GdalErrors errors;
    OGRLayer* views = m_dataset->ExecuteSQL("SELECT name FROM sqlite_master WHERE type = 'view'", nullptr, nullptr);
    if (views == nullptr) return false;
    bool found = false;
    for (const auto& view : *views)
        found = found || platform::EqualNoCase(view->GetFieldAsString(0), m_layer->GetName());
    m_dataset->ReleaseResultSet(views);
    return found;
}

std::vector<fs::path> OgrSource::Files() const {
    return files_of(*m_dataset);
}

void OgrSource::SetWanted(bool withShape, const std::vector<std::string>& fields) {
    std::vector<std::string> ignored;
    if (!withShape) ignored.emplace_back("OGR_GEOMETRY");
    OGRFeatureDefn& columns = *m_layer->GetLayerDefn();
    for (int i = 0; i < columns.GetFieldCount(); ++i) {
        const std::string name = columns.GetFieldDefn(i)->GetNameRef();
        const bool wanted = fields.empty() || std::any_of(fields.begin(), fields.end(), [&](const std::string& wish) {
                                return platform::EqualNoCase(wish, name);
                            });
        if (!wanted) ignored.push_back(name);
    }
    if (ignored == m_ignored) return;
    m_ignored = std::move(ignored);
    std::vector<const char*> names;
    for (const std::string& name : m_ignored) names.push_back(name.c_str());
    names.push_back(nullptr);
    m_layer->SetIgnoredFields(names.data());
}

std::pair<fs::path, std::string> split_input(const std::string& input, Sources sources) {
    const std::size_t colon = input.rfind(':');
    const auto exists = [&](const std::string& path) {
        std::error_code ignored;
        VSIStatBufL status = {};
        return fs::exists(path, ignored) || (sources == Sources::kAny && VSIStatL(path.c_str(), &status) == 0);
    };
    if (colon == std::string::npos || exists(input) || !exists(input.substr(0, colon))) return {input, {}};
    return {input.substr(0, colon), input.substr(colon + 1)};
}

std::string table_encoding(OGRLayer& layer) {
    const char* encoding = layer.GetMetadataItem("SOURCE_ENCODING", "SHAPEFILE");
    return encoding == nullptr ? "" : encoding;
}

std::vector<Field> fields_of(OGRLayer& layer) {
    std::vector<Field> fields;
    OGRFeatureDefn& definitions = *layer.GetLayerDefn();
    for (int i = 0; i < definitions.GetFieldCount(); ++i) {
        const OGRFieldDefn& definition = *definitions.GetFieldDefn(i);
        fields.push_back({decoded(definition.GetNameRef()), field_type(definition.GetType()), definition.GetWidth(),
                          definition.GetPrecision()});
    }
    return fields;
}

ShapeType shape_type_of(OGRLayer& layer) {
    const OGRwkbGeometryType declared = layer.GetGeomType();
    if (declared == wkbNone || shape_type(declared) != ShapeType::kNull) return shape_type(declared);
    layer.ResetReading();
    for (const auto& feature : layer)
        if (const OGRGeometry* geometry = feature->GetGeometryRef()) return shape_type(geometry->getGeometryType());
    return ShapeType::kNull;
}

FieldValue value_of(const OGRFeature& feature, int field) {
    if (!feature.IsFieldSetAndNotNull(field)) return {};
    switch (feature.GetFieldDefnRef(field)->GetType()) {
        case OFTInteger:
            return std::int64_t{feature.GetFieldAsInteger(field)};
        case OFTInteger64:
            return static_cast<std::int64_t>(feature.GetFieldAsInteger64(field));
        case OFTReal: {
            const double number = feature.GetFieldAsDouble(field);
            return std::isfinite(number) ? FieldValue(number) : FieldValue();
        }
        default:
            // GetFieldAsString keeps its result inside the feature and is not const for that reason alone.
            return decoded(const_cast<OGRFeature&>(feature).GetFieldAsString(field));
    }
}

void set_value(OGRFeature& feature, int field, const FieldValue& value) {
    if (const auto* whole = std::get_if<std::int64_t>(&value))
        feature.SetField(field, static_cast<GIntBig>(*whole));
    else if (const auto* number = std::get_if<double>(&value))
        feature.SetField(field, *number);
    else if (const auto* text = std::get_if<std::string>(&value))
        feature.SetField(field, text->c_str());
    else
        feature.SetFieldNull(field);
}

Geometry shape_of(const OGRGeometry* geometry) {
    if (geometry == nullptr || geometry->IsEmpty()) return {};
    const ShapeType type = shape_type(geometry->getGeometryType());
    if (type == ShapeType::kPoint) return point_of(*geometry);
    Geometry shape{type, {}, {}};
    if (geometry->hasCurveGeometry() != 0) {
        const std::unique_ptr<OGRGeometry> straight(geometry->getLinearGeometry());
        append_parts(*straight, shape);
    } else {
        append_parts(*geometry, shape);
    }
    return shape;
}

std::unique_ptr<OGRGeometry> to_ogr(const Geometry& shape, OGRwkbGeometryType wanted) {
    std::unique_ptr<OGRGeometry> geometry;
    if (shape.Type == ShapeType::kPoint) geometry = std::make_unique<OGRPoint>(shape.Location.X, shape.Location.Y);
    if (shape.Type == ShapeType::kPolyline) geometry = lines_of(shape);
    if (shape.Type == ShapeType::kPolygon) geometry = polygons_of(shape);
    if (!geometry || wkbFlatten(wanted) == wkbUnknown) return geometry;
    return std::unique_ptr<OGRGeometry>(OGRGeometryFactory::forceTo(geometry.release(), wkbFlatten(wanted)));
}

std::unique_ptr<OGRFieldDefn> field_definition(const Field& field) {
    const auto type = [&] {
        switch (field.Type) {
            case FieldType::kInteger:
                return OFTInteger64;
            case FieldType::kDouble:
                return OFTReal;
            case FieldType::kDate:
                return OFTDate;
            case FieldType::kText:
                return OFTString;
            default:
                platform::Raise(error_number::kInvalidCall,
                                "The field \"" + field.Name + "\" is of a type that no column can hold.");
        }
    }();
    auto definition = std::make_unique<OGRFieldDefn>(field.Name.c_str(), type);
    if (field.Length > 0) definition->SetWidth(field.Length);
    if (field.Precision > 0) definition->SetPrecision(field.Precision);
    return definition;
}

}  // namespace wxl::files
