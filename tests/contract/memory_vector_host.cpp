#include "adapters/memory/memory_map.h"
#include "adapters/memory/memory_shapefile_workspace.h"
#include "vector_contract.h"

namespace wxl::contract {
namespace {

/// Object IDs start at 5, so that nobody takes them for row numbers.
class MemoryHost final : public VectorHost {
public:
    std::shared_ptr<platform::IFeatureLayer> MakeLayer(const platform::FeatureClassDefinition& definition,
                                                       const std::vector<Row>& rows) override {
        auto features =
            std::make_shared<memory::MemoryFeatureClass>(definition.Shape, definition.Fields, definition.Reference, 5);
        for (const Row& row : rows) features->Add(row.Shape, row.Values);
        return std::make_shared<memory::MemoryFeatureLayer>(definition.Name, features);
    }
    void Select(platform::IFeatureLayer& layer, const std::vector<std::int64_t>& oids) override {
        dynamic_cast<memory::MemoryFeatureLayer&>(layer).Select({oids.begin(), oids.end()});
    }
    std::shared_ptr<platform::IFeatureClass> Reopen(platform::IFeatureLayer& layer) override {
        return layer.FeatureClass();
    }
    platform::IShapefileWorkspace* Shapefiles() override { return &m_shapefiles; }
    std::filesystem::path Folder() const override { return "/memory"; }

private:
    memory::MemoryShapefileWorkspace m_shapefiles;
};

INSTANTIATE_TEST_SUITE_P(Adapter, VectorContract,
                         testing::Values(NamedHost{"Memory", [] { return std::make_unique<MemoryHost>(); }}), HostName);

}  // namespace
}  // namespace wxl::contract
