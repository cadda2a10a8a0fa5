#pragma once
#include "adapters/qgis/qgis_versions.h"
#include "adapters/qgis/qt_text.h"
#include "platform/values.h"

#include <qgscoordinatereferencesystem.h>
#include <qgsfield.h>
#include <qgsgeometry.h>
#include <QVariant>

namespace wxl::qgis {

// Values of QGIS and Qt as values of the platform, and back.

platform::FieldValue FromVariant(const QVariant& value);

/// A null of the field's type for a missing value.
QVariant ToVariant(const platform::FieldValue& value, QMetaType::Type type);

platform::ShapeType ShapeTypeOf(GeometryType type);

/// The one point of a (multi)point, RuntimeError 5 where there are several; all parts of a line; rings of a polygon,
/// outer rings clockwise before their holes.
platform::Geometry FromQgsGeometry(const QgsGeometry& geometry);
QgsGeometry ToQgsGeometry(const platform::Geometry& geometry);

platform::Field FromQgsField(const QgsField& field);
QgsField ToQgsField(const platform::Field& field);

platform::SpatialReference FromCrs(const QgsCoordinateReferenceSystem& crs);

/// Invalid for an unknown reference.
QgsCoordinateReferenceSystem ToCrs(const platform::SpatialReference& reference);

}  // namespace wxl::qgis
