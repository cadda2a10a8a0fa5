#pragma once
// Where the versions of QGIS and Qt differ that this adapter is built with: each under one name, which stands for what
// the newest version calls it. Each entry names the version in which it ends: once no older one is supported, the entry
// goes, and its name is replaced by the newer one.

#include <qgis.h>
#include <qgsfield.h>
#include <QMetaType>
#include <QString>
#include <QVariant>

#if _QGIS_VERSION_INT < 33000
#include <qgsmaplayer.h>
#include <qgsunittypes.h>
#include <qgswkbtypes.h>
#endif
#if _QGIS_VERSION_INT < 33600
#include <qgscoordinatereferencesystem.h>
#include <qgsfeaturerequest.h>
#include <qgsprocessing.h>
#include <qgsprocessingalgorithm.h>
#include <qgsprocessingparameters.h>
#include <qgsrasterbandstats.h>
#endif
#if _QGIS_VERSION_INT < 33800
#include <qgsfields.h>
#endif
#if _QGIS_VERSION_INT < 34000
#include <qgsvectordataprovider.h>
#endif

namespace wxl::qgis {

// Kinds of geometries and layers, units of length. Ends with QGIS 3.30.
#if _QGIS_VERSION_INT < 33000
using GeometryType = QgsWkbTypes::GeometryType;
constexpr auto kPointGeometry = QgsWkbTypes::PointGeometry;
constexpr auto kLineGeometry = QgsWkbTypes::LineGeometry;
constexpr auto kPolygonGeometry = QgsWkbTypes::PolygonGeometry;
constexpr auto kWithoutGeometry = QgsWkbTypes::NoGeometry;
constexpr auto kPolygonShapes = QgsWkbTypes::Polygon;
constexpr auto kMeshLayer = QgsMapLayerType::MeshLayer;
constexpr auto kAnnotationLayer = QgsMapLayerType::AnnotationLayer;
constexpr auto kMetres = QgsUnitTypes::DistanceMeters;
constexpr auto kUnknownUnit = QgsUnitTypes::DistanceUnknownUnit;
#else
using GeometryType = Qgis::GeometryType;
constexpr auto kPointGeometry = Qgis::GeometryType::Point;
constexpr auto kLineGeometry = Qgis::GeometryType::Line;
constexpr auto kPolygonGeometry = Qgis::GeometryType::Polygon;
constexpr auto kWithoutGeometry = Qgis::WkbType::NoGeometry;
constexpr auto kPolygonShapes = Qgis::WkbType::Polygon;
constexpr auto kMeshLayer = Qgis::LayerType::Mesh;
constexpr auto kAnnotationLayer = Qgis::LayerType::Annotation;
constexpr auto kMetres = Qgis::DistanceUnit::Meters;
constexpr auto kUnknownUnit = Qgis::DistanceUnit::Unknown;
#endif

// Requests, statistics of rasters, texts of coordinate systems, and the toolbox. Ends with QGIS 3.36.
#if _QGIS_VERSION_INT < 33600
constexpr auto kRequestNoGeometry = QgsFeatureRequest::NoGeometry;
constexpr auto kPreferredWkt = QgsCoordinateReferenceSystem::WKT_PREFERRED;
using AlgorithmFlags = QgsProcessingAlgorithm::Flags;
constexpr auto kAlgorithmCanCancel = QgsProcessingAlgorithm::FlagCanCancel;
constexpr auto kAlgorithmNoThreading = QgsProcessingAlgorithm::FlagNoThreading;
constexpr auto kParameterAdvanced = QgsProcessingParameterDefinition::FlagAdvanced;
constexpr auto kNumberDouble = QgsProcessingParameterNumber::Double;
constexpr auto kNumberInteger = QgsProcessingParameterNumber::Integer;
constexpr auto kFieldOfAnyType = QgsProcessingParameterField::Any;
constexpr auto kBandMaximum = QgsRasterBandStats::Max;
constexpr auto kSourceVector = QgsProcessing::TypeVector;
constexpr auto kSourceVectorPoint = QgsProcessing::TypeVectorPoint;
constexpr auto kSourceVectorPolygon = QgsProcessing::TypeVectorPolygon;
#else
constexpr auto kRequestNoGeometry = Qgis::FeatureRequestFlag::NoGeometry;
constexpr auto kPreferredWkt = Qgis::CrsWktVariant::Preferred;
using AlgorithmFlags = Qgis::ProcessingAlgorithmFlags;
constexpr auto kAlgorithmCanCancel = Qgis::ProcessingAlgorithmFlag::CanCancel;
constexpr auto kAlgorithmNoThreading = Qgis::ProcessingAlgorithmFlag::NoThreading;
constexpr auto kParameterAdvanced = Qgis::ProcessingParameterFlag::Advanced;
constexpr auto kNumberDouble = Qgis::ProcessingNumberParameterType::Double;
constexpr auto kNumberInteger = Qgis::ProcessingNumberParameterType::Integer;
constexpr auto kFieldOfAnyType = Qgis::ProcessingFieldParameterDataType::Any;
constexpr auto kBandMaximum = Qgis::RasterBandStatistic::Max;
constexpr auto kSourceVector = Qgis::ProcessingSourceType::Vector;
constexpr auto kSourceVectorPoint = Qgis::ProcessingSourceType::VectorPoint;
constexpr auto kSourceVectorPolygon = Qgis::ProcessingSourceType::VectorPolygon;
#endif

// Types of fields, and where fields come from. Ends with QGIS 3.38.
#if _QGIS_VERSION_INT < 33800
constexpr auto kFieldOfProvider = QgsFields::OriginProvider;
inline QMetaType::Type type_of(const QgsField& field) {
    return static_cast<QMetaType::Type>(field.type());
}
inline QgsField make_field(const QString& name, QMetaType::Type type, const QString& typeName = {}, int length = 0,
                           int precision = 0) {
    return {name, static_cast<QVariant::Type>(type), typeName, length, precision};
}
#else
constexpr auto kFieldOfProvider = Qgis::FieldOrigin::Provider;
inline QMetaType::Type type_of(const QgsField& field) {
    return field.type();
}
inline QgsField make_field(const QString& name, QMetaType::Type type, const QString& typeName = {}, int length = 0,
                           int precision = 0) {
    return {name, type, typeName, length, precision};
}
#endif

// What a provider can do. Ends with QGIS 3.40.
#if _QGIS_VERSION_INT < 34000
constexpr auto kAddAttributes = QgsVectorDataProvider::AddAttributes;
constexpr auto kChangeAttributeValues = QgsVectorDataProvider::ChangeAttributeValues;
constexpr auto kDeleteFeatures = QgsVectorDataProvider::DeleteFeatures;
#else
constexpr auto kAddAttributes = Qgis::VectorProviderCapability::AddAttributes;
constexpr auto kChangeAttributeValues = Qgis::VectorProviderCapability::ChangeAttributeValues;
constexpr auto kDeleteFeatures = Qgis::VectorProviderCapability::DeleteFeatures;
#endif

// A null that knows its type. Ends with Qt 6.
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
inline QVariant null_of(QMetaType::Type type) {
    return QVariant(static_cast<QVariant::Type>(type));
}
#else
inline QVariant null_of(QMetaType::Type type) {
    return QVariant(QMetaType(type));
}
#endif

/// The type of a value: the one call that both Qt 5 and Qt 6 have for it.
inline QMetaType::Type type_of(const QVariant& value) {
    return static_cast<QMetaType::Type>(value.userType());
}

}  // namespace wxl::qgis
