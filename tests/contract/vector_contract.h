#pragma once
// What every adapter's feature classes, layers and shapefile workspaces must do. A test program compiles
// vector_contract.cpp in and instantiates VectorContract with its own hosts:
//
//     INSTANTIATE_TEST_SUITE_P(Memory, VectorContract, testing::Values(NamedHost{"Memory", MakeMemoryHost}), HostName);

#include "platform/map.h"
#include "platform/workspaces.h"

#include <functional>
#include <gtest/gtest.h>
#include <ostream>

namespace wxl::contract {

/// A row to start with.
struct Row {
    platform::Geometry Shape;
    std::vector<platform::FieldValue> Values;
};

/// An adapter under test, with a place of its own for data.
class VectorHost {
public:
    virtual ~VectorHost() = default;

    /// A layer over a new dataset that holds these rows, none of them selected.
    virtual std::shared_ptr<platform::IFeatureLayer> MakeLayer(const platform::FeatureClassDefinition& definition,
                                                               const std::vector<Row>& rows) = 0;
    virtual void Select(platform::IFeatureLayer& layer, const std::vector<std::int64_t>& oids) = 0;

    /// The same dataset opened anew, as another program would see it.
    virtual std::shared_ptr<platform::IFeatureClass> Reopen(platform::IFeatureLayer& layer) = 0;

    /// Null where the adapter has none.
    virtual platform::IShapefileWorkspace* Shapefiles() = 0;
    virtual std::filesystem::path Folder() const = 0;
};

struct NamedHost {
    std::string Name;
    std::function<std::unique_ptr<VectorHost>()> Make;

    friend void PrintTo(const NamedHost& host, std::ostream* out) { *out << host.Name; }
};

inline std::string HostName(const testing::TestParamInfo<NamedHost>& info) {
    return info.param.Name;
}

class VectorContract : public testing::TestWithParam<NamedHost> {
protected:
    std::unique_ptr<VectorHost> host = GetParam().Make();
};

}  // namespace wxl::contract
