#include "tests/contract/vector_files.h"

#include "adapters/gdal/gdal_support.h"
#include "adapters/ogr/ogr_source.h"
#include "adapters/ogr/shapefile_workspace.h"

namespace wxl::contract {

std::filesystem::path WriteShapefile(const std::filesystem::path& folder,
                                     const platform::FeatureClassDefinition& definition, const std::vector<Row>& rows) {
    files::ShapefileWorkspace shapefiles;
    const auto created = shapefiles.Create(folder, definition);
    const auto cursor = created->Insert();
    for (const Row& row : rows) cursor->Insert(row.Shape, row.Values);
    shapefiles.Publish(created);
    return folder / (definition.Name + ".shp");
}

std::filesystem::path WriteGeoPackage(const std::filesystem::path& folder,
                                      const platform::FeatureClassDefinition& definition,
                                      const std::vector<Row>& rows) {
    files::RegisterGdal();
    const auto path = folder / (definition.Name + ".gpkg");
    const files::GdalDatasetPtr dataset(
        GetGDALDriverManager()->GetDriverByName("GPKG")->Create(path.c_str(), 0, 0, 0, GDT_Unknown, nullptr));
    const OGRwkbGeometryType type = definition.Shape == platform::ShapeType::kPoint      ? wkbPoint
                                    : definition.Shape == platform::ShapeType::kPolyline ? wkbMultiLineString
                                                                                         : wkbMultiPolygon;
    OGRSpatialReference reference = files::ToOgr(definition.Reference);
    OGRLayer* layer = dataset->CreateLayer(definition.Name.c_str(), reference.IsEmpty() ? nullptr : &reference, type);
    for (const platform::Field& field : definition.Fields)
        EXPECT_EQ(layer->CreateField(files::field_definition(field).get()), OGRERR_NONE);
    for (const Row& row : rows) {
        const OGRFeatureUniquePtr feature(OGRFeature::CreateFeature(layer->GetLayerDefn()));
        for (std::size_t i = 0; i < row.Values.size(); ++i)
            files::set_value(*feature, static_cast<int>(i), row.Values[i]);
        feature->SetGeometryDirectly(files::to_ogr(row.Shape, type).release());
        EXPECT_EQ(layer->CreateFeature(feature.get()), OGRERR_NONE);
    }
    return path;
}

}  // namespace wxl::contract
