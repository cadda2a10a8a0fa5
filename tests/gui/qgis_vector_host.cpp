#include "adapters/ogr/ogr_feature_class.h"
#include "adapters/ogr/shapefile_workspace.h"
#include "adapters/qgis/qgis_feature_class.h"
#include "adapters/qgis/qgis_layers.h"
#include "adapters/qgis/qgis_values.h"
#include "tests/contract/vector_contract.h"
#include "tests/contract/vector_files.h"
#include "tests/support/scratch_folder.h"

#include <map>
#include <qgsvectordataprovider.h>
#include <qgsvectorlayer.h>

namespace wxl::contract {
namespace {

enum class Format { kShapefile, kMemory };

/// Vector layers of QGIS over files of one format.
class QgisHost final : public VectorHost {
public:
    explicit QgisHost(Format format) : m_format(format) {}

    std::shared_ptr<platform::IFeatureLayer> MakeLayer(const platform::FeatureClassDefinition& definition,
                                                       const std::vector<Row>& rows) override {
        std::filesystem::path file;
        std::unique_ptr<QgsVectorLayer> vector;
        if (m_format == Format::kShapefile) {
            file = WriteShapefile(Folder(), definition, rows);
            vector = std::make_unique<QgsVectorLayer>(qgis::ToQString(file.string()), qgis::ToQString(definition.Name),
                                                      QStringLiteral("ogr"));
        } else {
            vector = MemoryLayer(definition, rows);
        }
        EXPECT_TRUE(vector->isValid());
        const auto layer = std::make_shared<qgis::QgisFeatureLayer>(*vector, vector->name().toStdString());
        m_layers[layer.get()] = {std::move(vector), file};
        return layer;
    }

    void Select(platform::IFeatureLayer& layer, const std::vector<std::int64_t>& oids) override {
        QgsFeatureIds ids;
        for (const std::int64_t oid : oids) ids.insert(oid);
        m_layers.at(&layer).Vector->selectByIds(ids);
    }

    std::shared_ptr<platform::IFeatureClass> Reopen(platform::IFeatureLayer& layer) override {
        const Made& made = m_layers.at(&layer);
        if (m_format == Format::kShapefile) return files::OgrFeatureClass::Open(made.File.string());
        return std::make_shared<qgis::QgisFeatureClass>(*made.Vector);
    }

    platform::IShapefileWorkspace* Shapefiles() override {
        return m_format == Format::kShapefile ? &m_shapefiles : nullptr;
    }
    std::filesystem::path Folder() const override { return m_folder.Path(); }

private:
    static std::unique_ptr<QgsVectorLayer> MemoryLayer(const platform::FeatureClassDefinition& definition,
                                                       const std::vector<Row>& rows) {
        const char* type = definition.Shape == platform::ShapeType::kPoint      ? "Point"
                           : definition.Shape == platform::ShapeType::kPolyline ? "MultiLineString"
                                                                                : "MultiPolygon";
        auto vector = std::make_unique<QgsVectorLayer>(QLatin1String(type), qgis::ToQString(definition.Name),
                                                       QStringLiteral("memory"));
        vector->setCrs(QgsCoordinateReferenceSystem::fromWkt(qgis::ToQString(definition.Reference.Wkt)));
        QList<QgsField> fields;
        for (const platform::Field& field : definition.Fields) fields << qgis::ToQgsField(field);
        vector->dataProvider()->addAttributes(fields);
        vector->updateFields();
        const auto cursor = qgis::QgisFeatureClass(*vector).Insert();
        for (const Row& row : rows) cursor->Insert(row.Shape, row.Values);
        cursor->Flush();
        return vector;
    }

    struct Made {
        std::unique_ptr<QgsVectorLayer> Vector;
        std::filesystem::path File;
    };

    Format m_format;
    tests::ScratchFolder m_folder;
    files::ShapefileWorkspace m_shapefiles;
    std::map<platform::IFeatureLayer*, Made> m_layers;
};

INSTANTIATE_TEST_SUITE_P(
    Qgis, VectorContract,
    testing::Values(NamedHost{"Shapefile", [] { return std::make_unique<QgisHost>(Format::kShapefile); }},
                    NamedHost{"Memory", [] { return std::make_unique<QgisHost>(Format::kMemory); }}),
    HostName);

}  // namespace
}  // namespace wxl::contract
