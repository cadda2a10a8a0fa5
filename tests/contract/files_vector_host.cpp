#include "adapters/files/files_map.h"
#include "adapters/files/gdal_support.h"
#include "adapters/files/ogr_source.h"
#include "adapters/files/shapefile_workspace.h"
#include "tests/support/scratch_folder.h"
#include "vector_contract.h"

namespace wxl::contract {
namespace {

/// Layers over files of one format in a scratch folder.
class FilesHost : public VectorHost {
public:
    std::shared_ptr<platform::IFeatureLayer> MakeLayer(const platform::FeatureClassDefinition& definition,
                                                       const std::vector<Row>& rows) override {
        const auto layer = files::OpenFeatureLayer(WriteFile(definition, rows).string());
        layer->Select({});
        return layer;
    }
    void Select(platform::IFeatureLayer& layer, const std::vector<std::int64_t>& oids) override {
        dynamic_cast<files::FilesFeatureLayer&>(layer).Select(oids);
    }
    std::shared_ptr<platform::IFeatureClass> Reopen(platform::IFeatureLayer& layer) override {
        return files::OgrFeatureClass::Open(dynamic_cast<files::FilesFeatureLayer&>(layer).Features().Path().string());
    }
    std::filesystem::path Folder() const override { return m_folder.Path(); }

protected:
    virtual std::filesystem::path WriteFile(const platform::FeatureClassDefinition& definition,
                                            const std::vector<Row>& rows) = 0;

private:
    tests::ScratchFolder m_folder;
};

class ShapefileHost final : public FilesHost {
public:
    platform::IShapefileWorkspace* Shapefiles() override { return &m_shapefiles; }

private:
    std::filesystem::path WriteFile(const platform::FeatureClassDefinition& definition,
                                    const std::vector<Row>& rows) override {
        const auto created = m_shapefiles.Create(Folder(), definition);
        const auto cursor = created->Insert();
        for (const Row& row : rows) cursor->Insert(row.Shape, row.Values);
        m_shapefiles.Publish(created);
        return Folder() / (definition.Name + ".shp");
    }

    files::ShapefileWorkspace m_shapefiles;
};

class GeoPackageHost final : public FilesHost {
public:
    platform::IShapefileWorkspace* Shapefiles() override { return nullptr; }

private:
    std::filesystem::path WriteFile(const platform::FeatureClassDefinition& definition,
                                    const std::vector<Row>& rows) override {
        files::RegisterGdal();
        const auto path = Folder() / (definition.Name + ".gpkg");
        const files::GdalDatasetPtr dataset(
            GetGDALDriverManager()->GetDriverByName("GPKG")->Create(path.c_str(), 0, 0, 0, GDT_Unknown, nullptr));
        const OGRwkbGeometryType type = definition.Shape == platform::ShapeType::kPoint      ? wkbPoint
                                        : definition.Shape == platform::ShapeType::kPolyline ? wkbMultiLineString
                                                                                             : wkbMultiPolygon;
        OGRSpatialReference reference = files::ToOgr(definition.Reference);
        OGRLayer* layer =
            dataset->CreateLayer(definition.Name.c_str(), reference.IsEmpty() ? nullptr : &reference, type);
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
};

INSTANTIATE_TEST_SUITE_P(Adapter, VectorContract,
                         testing::Values(NamedHost{"Shapefile", [] { return std::make_unique<ShapefileHost>(); }},
                                         NamedHost{"GeoPackage", [] { return std::make_unique<GeoPackageHost>(); }}),
                         HostName);

}  // namespace
}  // namespace wxl::contract
