#pragma once
#include "adapters/gdal/gdal_support.h"
#include "adapters/gdal/source_rules.h"
#include "platform/features.h"

#include <ogrsf_frmts.h>
#include <vector>

namespace wxl::files {

/// A layer of an open dataset, read-only.
class OgrSource {
public:
    /// `layer` empty: the only one. Errors as OgrFeatureClass::Open.
    OgrSource(const std::filesystem::path& path, const std::string& layer, Sources sources);

    OGRLayer& Layer() { return *m_layer; }
    std::string DriverName() const;

    /// Whether the layer is a view of a database, whose rows are those of other tables.
    bool IsView() const;

    /// The files that the dataset is read from, as far as OGR knows them.
    std::vector<std::filesystem::path> Files() const;

    /// The next rows are read with their shapes or without, and with the cells of these fields only (empty: all).
    void SetWanted(bool withShape, const std::vector<std::string>& fields);

    /// The owner's count of changes at the time of opening.
    std::size_t Version = 0;

private:
    GdalDatasetPtr m_dataset;
    OGRLayer* m_layer = nullptr;
    std::vector<std::string> m_ignored;
};

/// "PATH" or "PATH:LAYER" as the two. A path that exists is never split; with Sources::kAny it may be one of GDAL's
/// virtual ones.
std::pair<std::filesystem::path, std::string> split_input(const std::string& input, Sources sources);

/// How the texts of a shapefile's table are encoded, as GDAL names it; empty when nothing says so.
std::string table_encoding(OGRLayer& layer);

/// Columns of a layer.
std::vector<platform::Field> fields_of(OGRLayer& layer);

/// The shape type of a layer; one that does not say is judged by its first shape.
platform::ShapeType shape_type_of(OGRLayer& layer);

/// A cell. Missing, and numbers that are not finite, are missing.
platform::FieldValue value_of(const OGRFeature& feature, int field);

void set_value(OGRFeature& feature, int field, const platform::FieldValue& value);

/// A shape as the platform has it: rings closed and turned, outer ones before their holes.
platform::Geometry shape_of(const OGRGeometry* geometry);

/// A shape as OGR has it; null for a null shape. `wanted` is the layer's type.
std::unique_ptr<OGRGeometry> to_ogr(const platform::Geometry& shape, OGRwkbGeometryType wanted);

std::unique_ptr<OGRFieldDefn> field_definition(const platform::Field& field);

}  // namespace wxl::files
