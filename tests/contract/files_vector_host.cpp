#include "adapters/ogr/files_map.h"
#include "adapters/ogr/shapefile_workspace.h"
#include "tests/contract/vector_contract.h"
#include "tests/contract/vector_files.h"
#include "tests/support/scratch_folder.h"

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
        return WriteShapefile(Folder(), definition, rows);
    }

    files::ShapefileWorkspace m_shapefiles;
};

class GeoPackageHost final : public FilesHost {
public:
    platform::IShapefileWorkspace* Shapefiles() override { return nullptr; }

private:
    std::filesystem::path WriteFile(const platform::FeatureClassDefinition& definition,
                                    const std::vector<Row>& rows) override {
        return WriteGeoPackage(Folder(), definition, rows);
    }
};

INSTANTIATE_TEST_SUITE_P(Adapter, VectorContract,
                         testing::Values(NamedHost{"Shapefile", [] { return std::make_unique<ShapefileHost>(); }},
                                         NamedHost{"GeoPackage", [] { return std::make_unique<GeoPackageHost>(); }}),
                         HostName);

}  // namespace
}  // namespace wxl::contract
