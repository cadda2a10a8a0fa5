#pragma once
#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace wxl::platform {

/// A position in map units.
struct Point {
    double X = 0.0;
    double Y = 0.0;
    friend bool operator==(const Point&, const Point&) = default;
};

/// A rectangle in map units; empty (XMin > XMax) until Include is called.
struct Extent {
    double XMin = std::numeric_limits<double>::infinity();
    double YMin = std::numeric_limits<double>::infinity();
    double XMax = -std::numeric_limits<double>::infinity();
    double YMax = -std::numeric_limits<double>::infinity();

    bool IsEmpty() const { return !(XMin <= XMax && YMin <= YMax); }
    double Width() const { return XMax - XMin; }
    double Height() const { return YMax - YMin; }
    void Include(const Point& point);
    friend bool operator==(const Extent&, const Extent&) = default;
};

/// The box around points; empty without any.
Extent bounds_of(std::span<const Point> points);

/// Shape type codes of feature classes.
enum class ShapeType : std::int32_t { kNull = 0, kPoint = 1, kPolyline = 3, kPolygon = 4 };

/// Field type codes.
enum class FieldType : std::int32_t { kInteger = 1, kDouble = 3, kText = 4, kDate = 5, kObjectId = 6, kGeometry = 7 };

/// A feature's shape. Points use Location; lines and polygons use Parts: the paths of a line, or the rings of a
/// polygon (first and last vertex equal; an outer ring before its holes, outer rings clockwise, holes the other way).
struct Geometry {
    ShapeType Type = ShapeType::kNull;  ///< kNull: the feature has no shape
    Point Location;
    std::vector<std::vector<Point>> Parts;

    static Geometry OfPoint(Point location) { return {ShapeType::kPoint, location, {}}; }
    bool IsNull() const { return Type == ShapeType::kNull; }
    friend bool operator==(const Geometry&, const Geometry&) = default;
};

/// A column of an attribute table.
struct Field {
    std::string Name;
    FieldType Type = FieldType::kDouble;
    int Length = 0;     ///< 0: the store's default
    int Precision = 0;  ///< decimals; 0: the store's default
    friend bool operator==(const Field&, const Field&) = default;
};

/// A cell of an attribute table: missing, a whole number, a number or a text (UTF-8). Dates arrive as text.
using FieldValue = std::variant<std::monostate, std::int64_t, double, std::string>;

bool IsMissing(const FieldValue& value);

/// The value as text: numbers as NumberText writes them, a missing value as "".
std::string ValueText(const FieldValue& value);

/// The value as a number; a text must be one (RuntimeError 13), a missing value is RuntimeError 13 too.
double ValueNumber(const FieldValue& value);

/// The value as a column of that type holds it: whole numbers and numbers are turned into each other (rounded half to
/// even; RuntimeError 6 when a whole number would not fit in 64 bits), a number becomes text in a text or date column.
/// A text in a number column must be a number (RuntimeError 13). Infinite values and NaN are RuntimeError 6.
FieldValue ValueForColumn(const FieldValue& value, FieldType type);

/// Whether a cell holds the wanted value: numbers by size, texts by their bytes, missing equals missing. A text and a
/// number are equal when the text is a number of that size.
bool ValueEquals(const FieldValue& cell, const FieldValue& wanted);

/// Ascending: missing values, then numbers by size (NaN before all others), then texts by their bytes.
bool ValueLess(const FieldValue& a, const FieldValue& b);

/// A coordinate system, as far as the tools look at it.
struct SpatialReference {
    std::string Name;            ///< "NAD83 / UTM zone 15N"; empty: unknown
    std::string Wkt;             ///< well-known text that the store reads back; empty: unknown
    std::string UnitName;        ///< "metre", "degree", ...; empty: unknown
    double MetersPerUnit = 0.0;  ///< 1 for metres; 0: unknown or degrees
    bool IsGeographic = false;   ///< coordinates are degrees
    friend bool operator==(const SpatialReference&, const SpatialReference&) = default;
};

/// Where a raster lies: lower-left corner, square cells, size in cells. Row 0 is the north row.
struct RasterGeometry {
    double OriginX = 0.0;
    double OriginY = 0.0;
    double CellSize = 0.0;  ///< map units
    std::int32_t Columns = 0;
    std::int32_t Rows = 0;

    Extent Bounds() const { return {OriginX, OriginY, OriginX + Columns * CellSize, OriginY + Rows * CellSize}; }
    friend bool operator==(const RasterGeometry&, const RasterGeometry&) = default;
};

}  // namespace wxl::platform
