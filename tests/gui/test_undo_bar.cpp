// What the message bar says after a command changed a table, and its Undo.

#include "adapters/memory/memory_services.h"
#include "adapters/ogr/disk_services.h"
#include "adapters/qgis/form_presenter.h"
#include "adapters/qgis/qgis_map.h"
#include "adapters/qgis/qgis_values.h"
#include "adapters/qgis/undo_bar.h"
#include "movement/FIndDupTime2.h"
#include "movement/FindDupxy.h"
#include "movement/OVIOBS.h"
#include "tests/contract/vector_files.h"
#include "tests/gui/qgis_environment.h"
#include "tests/support/scratch_folder.h"

#include <fstream>
#include <gtest/gtest.h>
#include <qgsmessagebar.h>
#include <qgsmessagebaritem.h>
#include <qgsproject.h>
#include <qgsvectordataprovider.h>
#include <qgsvectorlayer.h>
#include <QPushButton>
#include <sstream>

namespace wxl::qgis {
namespace {

using namespace platform;

enum class Format { kShapefile, kGeoPackage, kMemory };

class UndoBarTest : public testing::TestWithParam<Format> {
protected:
    UndoBarTest() {
        m_services.Messages = &Messages;
        m_services.Dialogs = &m_dialogs;
        m_services.Host = &m_host;
        m_services = m_disk.Complete(m_services);
        Messages.AlwaysAnswer(Topic::kAddFields, Answer::kYes);
    }

    ~UndoBarTest() override { QgsProject::instance()->clear(); }

    /// Two animals, three fixes each; the second and third fix of the first have one time and one place.
    void Open() {
        const auto fix = [](double x, std::int64_t time, const char* animal) {
            return contract::Row{Geometry::OfPoint({500000.0 + x, 5800000.0}), {time, std::string(animal)}};
        };
        const std::vector<contract::Row> rows = {fix(0, 0, "Asta"),     fix(10, 60, "Asta"),   fix(10, 60, "Asta"),
                                                 fix(50, 120, "Freja"), fix(60, 180, "Freja"), fix(70, 240, "Freja")};
        const FeatureClassDefinition definition{
            "fixes",
            ShapeType::kPoint,
            {{.Name = "Time2", .Type = FieldType::kInteger}, {.Name = "animal", .Type = FieldType::kText}},
            FromCrs(QgsCoordinateReferenceSystem(QStringLiteral("EPSG:32632")))};
        File = GetParam() == Format::kGeoPackage ? contract::WriteGeoPackage(m_folder.Path(), definition, rows)
                                                 : contract::WriteShapefile(m_folder.Path(), definition, rows);
        auto layer =
            std::make_unique<QgsVectorLayer>(ToQString(File.string()), QStringLiteral("fixes"), QStringLiteral("ogr"));
        if (GetParam() == Format::kMemory) layer.reset(layer->materialize(QgsFeatureRequest()));
        ASSERT_TRUE(layer->isValid());
        layer->setName(QStringLiteral("fixes"));
        Layer = layer.release();
        QgsProject::instance()->addMapLayer(Layer);
        Layer->selectAll();
    }

    template <class Tool>
    void Run() {
        Tool tool(m_services, m_presenter);
        tool.OnCreate(m_application);
        m_undo.Run(tool);
    }

    /// Places and cells of all rows, in the layer's order.
    std::vector<std::string> Rows() {
        std::vector<std::string> rows;
        QgsFeature row;
        auto features = Layer->getFeatures();
        while (features.nextFeature(row)) {
            std::string text = row.geometry().asWkt(3).toStdString();
            for (const QVariant& cell : row.attributes()) text += "|" + cell.toString().toStdString();
            rows.push_back(text);
        }
        return rows;
    }

    std::string Told() { return Bar.currentItem() ? Bar.currentItem()->text().toStdString() : ""; }

    void PressUndo() {
        auto* button = Bar.currentItem()->findChild<QPushButton*>(QStringLiteral("wxlUndo"));
        ASSERT_NE(button, nullptr);
        button->click();
    }

    std::string Bytes(const char* extension) {
        std::stringstream bytes;
        bytes << std::ifstream(std::filesystem::path(File).replace_extension(extension), std::ios::binary).rdbuf();
        return bytes.str();
    }

    memory::MemoryMessages Messages;
    QgsMessageBar Bar;
    QgsVectorLayer* Layer = nullptr;
    std::filesystem::path File;

private:
    tests::ScratchFolder m_folder;
    files::DiskServices m_disk;
    memory::MemoryFileDialogs m_dialogs;
    QgisHost m_host{{}};
    platform::Services m_services;
    QgisFormPresenter m_presenter{m_host, nullptr, Desktop{}};
    Desktop m_desktop{nullptr, nullptr, [this] { return Layer; }};
    std::shared_ptr<IApplication> m_application = std::make_shared<QgisApplication>(m_desktop);
    UndoBar m_undo{Bar, m_desktop};
};

/// What holds of a shapefile alone.
class ShapefileUndoTest : public UndoBarTest {};

TEST_P(UndoBarTest, Removed_fixes_come_back_in_their_order) {
    Open();
    const auto before = Rows();
    Run<movement::FIndDupTime2>();
    EXPECT_EQ(Rows().size(), 5U);
    EXPECT_EQ(Told(), "1 duplicate fix removed from \"fixes\". 2 animals (field animal) taken as one.");
    PressUndo();
    EXPECT_EQ(Rows(), before);
    EXPECT_EQ(Told(), "The removed fixes are back in \"fixes\".");
    EXPECT_EQ(Layer->featureCount(), 6);
}

TEST_P(ShapefileUndoTest, Its_bytes_come_back) {
    Open();
    const auto before = std::vector{Bytes("shp"), Bytes("shx"), Bytes("dbf")};
    Run<movement::FindDupxy>();
    EXPECT_NE(Bytes("dbf"), before[2]);
    PressUndo();
    EXPECT_EQ((std::vector{Bytes("shp"), Bytes("shx"), Bytes("dbf")}), before);
}

TEST_P(UndoBarTest, New_fields_go_and_earlier_values_come_back) {
    Open();
    Layer->selectByExpression(QStringLiteral("Time2 <> 60"));
    Run<movement::FIndDupTime2>();
    EXPECT_EQ(Told(), "") << "nothing was removed";
    Layer->selectAll();
    Run<movement::FIndDupTime2>();
    const auto before = Rows();
    Run<movement::OVIOBS>();
    EXPECT_EQ(Told(), "Travel times and distances written into \"fixes\". 2 animals (field animal) taken as one.");
    const auto filled = Rows();
    EXPECT_NE(filled, before);
    PressUndo();
    EXPECT_EQ(Rows(), before);
    EXPECT_EQ(Told(), "The earlier values are back in \"fixes\".");
    // A second pass over other values, taken back to those of the first.
    Run<movement::OVIOBS>();
    ASSERT_EQ(Rows(), filled);
    QgsFeature first;
    Layer->getFeatures().nextFeature(first);
    const int time = Layer->fields().lookupField(QStringLiteral("Time2"));
    ASSERT_TRUE(Layer->dataProvider()->changeAttributeValues({{first.id(), {{time, -60}}}}));
    const auto shifted = Rows();
    Run<movement::OVIOBS>();
    EXPECT_NE(Rows(), shifted);
    PressUndo();
    EXPECT_EQ(Rows(), shifted);
}

TEST_P(UndoBarTest, A_layer_that_was_changed_since_stays_as_it_is) {
    Open();
    Run<movement::FIndDupTime2>();
    QgsFeature another(Layer->fields());
    another.setGeometry(QgsGeometry::fromPointXY({500100.0, 5800000.0}));
    ASSERT_TRUE(Layer->dataProvider()->addFeature(another));
    const auto changed = Rows();
    PressUndo();
    EXPECT_EQ(Rows(), changed);
    EXPECT_EQ(Told(), "Nothing was put back: The layer \"fixes\" was changed since.");
}

TEST_P(UndoBarTest, A_layer_being_edited_stays_as_it_is) {
    Open();
    Run<movement::FIndDupTime2>();
    ASSERT_TRUE(Layer->startEditing());
    PressUndo();
    EXPECT_EQ(
        Told(),
        "Nothing was put back: The layer \"fixes\" is being edited. Please save or discard the edits and try again.");
    ASSERT_TRUE(Layer->rollBack());
    EXPECT_EQ(Rows().size(), 5U);
}

TEST_P(UndoBarTest, The_offer_goes_with_the_layer_and_with_the_next_command) {
    Open();
    Run<movement::FIndDupTime2>();
    EXPECT_NE(Bar.currentItem(), nullptr);
    Layer->selectAll();
    Run<movement::FindDupxy>();
    EXPECT_EQ(Bar.currentItem(), nullptr) << "nothing to remove, and nothing of the first pass to undo any more";
    Run<movement::OVIOBS>();
    EXPECT_NE(Bar.currentItem(), nullptr);
    QgsVectorLayer* removed = std::exchange(Layer, nullptr);
    QgsProject::instance()->removeMapLayer(removed);
    EXPECT_EQ(Bar.currentItem(), nullptr);
}

INSTANTIATE_TEST_SUITE_P(Layers, ShapefileUndoTest, testing::Values(Format::kShapefile),
                         [](const auto&) { return std::string("Shapefile"); });

INSTANTIATE_TEST_SUITE_P(Layers, UndoBarTest, testing::Values(Format::kShapefile, Format::kGeoPackage, Format::kMemory),
                         [](const auto& format) {
                             return std::string(format.param == Format::kShapefile    ? "Shapefile"
                                                : format.param == Format::kGeoPackage ? "GeoPackage"
                                                                                      : "Memory");
                         });

}  // namespace
}  // namespace wxl::qgis
