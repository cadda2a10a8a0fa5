#include "adapters/memory/memory_services.h"
#include "adapters/ogr/disk_services.h"
#include "adapters/qgis/kde_dialog.h"
#include "adapters/qgis/qgis_layers.h"
#include "adapters/qgis/qgis_versions.h"
#include "adapters/qgis/utm_copies.h"
#include "platform/runtime_error.h"
#include "tests/gui/qgis_environment.h"
#include "tests/support/scratch_folder.h"
#include "utilities/Utilities.h"

#include <algorithm>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <QCheckBox>
#include <QComboBox>
#include <qgsproject.h>
#include <qgsvectordataprovider.h>
#include <qgsvectorfilewriter.h>
#include <qgsvectorlayer.h>
#include <QLabel>
#include <QPushButton>

namespace wxl::qgis {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
namespace fs = std::filesystem;

class UtmCopiesTest : public testing::Test {
protected:
    ~UtmCopiesTest() override { QgsProject::instance()->clear(); }

    /// A memory layer "gps" in degrees with these positions.
    QgsVectorLayer& AddDegrees(const std::vector<QgsPointXY>& positions) {
        auto* layer = new QgsVectorLayer(QStringLiteral("Point?crs=EPSG:4326&field=animal:string(20)&field=n:integer"),
                                         QStringLiteral("gps"), QStringLiteral("memory"));
        QgsFeatureList features;
        for (const QgsPointXY& position : positions) {
            QgsFeature feature(layer->fields());
            feature.setAttribute(0, QStringLiteral("Björn"));
            feature.setAttribute(1, features.size());
            feature.setGeometry(QgsGeometry::fromPointXY(position));
            features << feature;
        }
        EXPECT_TRUE(layer->dataProvider()->addFeatures(features));
        QgsProject::instance()->addMapLayer(layer);
        return *layer;
    }

    /// The same as a shapefile in the scratch folder: its FIDs begin at 0.
    QgsVectorLayer& AddShapefile(const std::vector<QgsPointXY>& positions) {
        QgsVectorLayer& memory = AddDegrees(positions);
        const QString path = QString::fromStdString((m_folder / "gps.shp").string());
        QgsVectorFileWriter::SaveVectorOptions options;
        options.driverName = QStringLiteral("ESRI Shapefile");
        QgsVectorFileWriter::writeAsVectorFormatV3(&memory, path, {}, options);
        QgsProject::instance()->clear();
        auto* layer = new QgsVectorLayer(path, QStringLiteral("gps"), QStringLiteral("ogr"));
        QgsProject::instance()->addMapLayer(layer);
        return *layer;
    }

    static QgsVectorLayer& LayerNamed(const std::string& name) {
        auto* layer = qobject_cast<QgsVectorLayer*>(
            QgsProject::instance()->mapLayersByName(QString::fromStdString(name)).value(0));
        if (!layer) throw std::runtime_error("no layer " + name);
        return *layer;
    }

    std::string ZonesOf(const std::vector<QgsPointXY>& positions) {
        QgsProject::instance()->clear();
        const auto target = m_copies.Target(FromQgsLayer(AddDegrees(positions)));
        if (!target) return "none";
        return target->Name() + " of " + std::to_string(target->WesternZone) + " to " +
               std::to_string(target->EasternZone);
    }

    std::vector<std::string> FilesIn() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(m_folder.Path())) names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }

    tests::ScratchFolder m_folder;
    UtmCopies m_copies{Desktop{}};
};

TEST_F(UtmCopiesTest, The_zone_is_that_of_the_middle_of_the_extent) {
    EXPECT_EQ(ZonesOf({{9.0, 48.0}, {9.5, 47.0}}), "32N of 32 to 32");
    EXPECT_EQ(ZonesOf({{31.5, -24.0}, {31.6, -25.0}}), "36S of 36 to 36");
    EXPECT_EQ(ZonesOf({{5.0, 48.0}, {13.5, 47.0}}), "32N of 31 to 33");
    EXPECT_EQ(ZonesOf({{30.0, 1.0}, {31.0, -2.0}}), "36S of 36 to 36");
    EXPECT_EQ(ZonesOf({{179.0, 60.0}, {-177.5, 61.0}, {-178.0, 62.0}}), "1N of 60 to 1") << "over the 180th meridian";
    EXPECT_EQ(ZonesOf({{359.0, 50.0}, {1.0, 50.0}}), "31N of 30 to 31") << "longitudes up to 360";
    EXPECT_EQ(ZonesOf({{0.0, 85.0}}), "none");
    EXPECT_EQ(ZonesOf({}), "none");
}

TEST_F(UtmCopiesTest, A_copy_keeps_object_IDs_cells_order_and_selection) {
    QgsVectorLayer& source = AddShapefile({{9.0, 0.0}, {9.0, 48.0}, {10.0, 48.0}, {9.25, 47.5}});
    source.selectByIds({0, 2});
    const platform::Layer layer = FromQgsLayer(source);
    const std::string name = m_copies.AddUtmCopy(layer, {32, false, 32, 32});
    EXPECT_EQ(name, "gps UTM 32N");
    QgsVectorLayer& copy = LayerNamed(name);
    EXPECT_EQ(copy.crs().authid().toStdString(), "EPSG:32632");
    EXPECT_EQ(copy.selectedFeatureIds(), (QgsFeatureIds{0, 2}));
    EXPECT_EQ(copy.fields().names(), (QStringList{"fid", "animal", "n"}));
    QgsFeature feature;
    auto rows = copy.getFeatures();
    std::vector<std::string> met;
    while (rows.nextFeature(feature))
        met.push_back(std::to_string(feature.id()) + " " + feature.attribute("animal").toString().toStdString() + " " +
                      feature.attribute("n").toString().toStdString());
    EXPECT_THAT(met, ElementsAre("0 Björn 0", "1 Björn 1", "2 Björn 2", "3 Björn 3"));
    // The central meridian lies at 500000, the equator at 0. At 48 N and one degree east of it, the series of Snyder
    // (1987), equations 8-9 and 8-10, gives 574595.11 and 5316784.01.
    const QgsPointXY first = copy.getFeature(0).geometry().asPoint();
    EXPECT_NEAR(first.x(), 500000.0, 1e-3);
    EXPECT_NEAR(first.y(), 0.0, 1e-3);
    const QgsPointXY east = copy.getFeature(2).geometry().asPoint();
    EXPECT_NEAR(east.x(), 574595.11, 0.1);
    EXPECT_NEAR(east.y(), 5316784.01, 0.1);
    EXPECT_TRUE(fs::exists(m_folder / "gps UTM 32N.gpkg")) << "beside the shapefile";
}

TEST_F(UtmCopiesTest, A_field_named_as_the_object_IDs_usually_are_is_kept) {
    QgsVectorLayer& source = AddShapefile({{9.0, 48.0}, {9.0, 49.0}, {9.0, 50.0}});
    ASSERT_TRUE(source.dataProvider()->addAttributes({make_field(QStringLiteral("fid"), QMetaType::Int)}));
    ASSERT_TRUE(source.dataProvider()->changeAttributeValues({{0, {{2, 7}}}, {1, {{2, 7}}}, {2, {{2, 3}}}}));
    source.updateFields();
    QgsVectorLayer& copy = LayerNamed(m_copies.AddUtmCopy(FromQgsLayer(source), {32, false, 32, 32}));
    std::vector<std::string> met;
    QgsFeature feature;
    auto rows = copy.getFeatures();
    while (rows.nextFeature(feature))
        met.push_back(std::to_string(feature.id()) + " " + feature.attribute("fid").toString().toStdString());
    EXPECT_THAT(met, ElementsAre("0 7", "1 7", "2 3"));
}

TEST_F(UtmCopiesTest, A_copy_of_a_geopackage_has_the_same_fields_and_object_IDs) {
    QgsVectorLayer& memory = AddDegrees({{9.0, 48.0}, {9.0, 49.0}, {9.0, 50.0}});
    ASSERT_TRUE(memory.dataProvider()->deleteFeatures({2}));
    const QString path = QString::fromStdString((m_folder / "gps.gpkg").string());
    QgsVectorFileWriter::SaveVectorOptions options;
    QgsVectorFileWriter::writeAsVectorFormatV3(&memory, path, {}, options);
    QgsProject::instance()->clear();
    auto* source = new QgsVectorLayer(path, QStringLiteral("gps"), QStringLiteral("ogr"));
    QgsProject::instance()->addMapLayer(source);
    ASSERT_TRUE(source->dataProvider()->deleteFeatures({1}));
    QgsVectorLayer& copy = LayerNamed(m_copies.AddUtmCopy(FromQgsLayer(*source), {32, false, 32, 32}));
    EXPECT_EQ(copy.fields().names(), source->fields().names());
    EXPECT_EQ(copy.allFeatureIds(), source->allFeatureIds());
}

TEST_F(UtmCopiesTest, A_second_copy_gets_a_number_and_leaves_the_first_alone) {
    const platform::Layer layer = FromQgsLayer(AddShapefile({{9.0, 48.0}}));
    EXPECT_EQ(m_copies.AddUtmCopy(layer, {32, false, 32, 32}), "gps UTM 32N");
    EXPECT_EQ(m_copies.AddUtmCopy(layer, {32, false, 32, 32}), "gps UTM 32N 2");
    EXPECT_TRUE(fs::exists(m_folder / "gps UTM 32N.gpkg"));
    EXPECT_TRUE(fs::exists(m_folder / "gps UTM 32N 2.gpkg"));
}

TEST_F(UtmCopiesTest, A_position_that_cannot_be_projected_is_named_and_nothing_is_left) {
    const platform::Layer layer = FromQgsLayer(AddShapefile({{9.0, 48.0}, {9.0, 1.0e6}}));
    const auto before = FilesIn();
    try {
        m_copies.AddUtmCopy(layer, {32, false, 32, 32});
        FAIL() << "no error";
    } catch (const platform::RuntimeError& error) {
        EXPECT_EQ(error.Description, "The position of the feature with the FID 1 cannot be projected.");
    }
    EXPECT_EQ(FilesIn(), before);
    EXPECT_EQ(QgsProject::instance()->count(), 1);
}

TEST_F(UtmCopiesTest, A_layer_in_edit_mode_is_not_copied) {
    QgsVectorLayer& source = AddShapefile({{9.0, 48.0}});
    ASSERT_TRUE(source.startEditing());
    try {
        m_copies.AddUtmCopy(FromQgsLayer(source), {32, false, 32, 32});
        FAIL() << "no error";
    } catch (const platform::RuntimeError& error) {
        EXPECT_THAT(error.Description, HasSubstr("is being edited"));
    }
    source.rollBack();
}

TEST_F(UtmCopiesTest, The_notice_in_the_dialog_reprojects_the_layer_and_chooses_it) {
    AddShapefile({{9.0, 48.0}, {9.1, 48.0}, {9.1, 48.1}}).selectByIds({1, 2});
    memory::MemoryMessages messages;
    memory::MemoryFileDialogs dialogs;
    QgisHost host{{}};
    platform::Services services;
    services.Messages = &messages;
    services.Dialogs = &dialogs;
    services.Host = &host;
    services.Reprojection = &m_copies;
    utilities::Utilities geodata(services);
    geodata.ConnectToApplication(std::make_shared<QgisApplication>(Desktop{}));
    kde_tool::frmKDE form(services, geodata);
    KdeDialog dialog(form, host, nullptr);
    dialog.show();
    auto* notice = dialog.findChild<QWidget*>(QStringLiteral("noticeDegrees"));
    ASSERT_NE(notice, nullptr);
    EXPECT_TRUE(notice->isVisible());
    EXPECT_THAT(notice->findChild<QLabel*>(QStringLiteral("lblDegrees"))->text().toStdString(),
                HasSubstr("zone is 32N (EPSG:32632)"));
    tests::SaveScreenshot(dialog, QStringLiteral("kde-degrees"));
    dialog.findChild<QComboBox*>(QStringLiteral("cmbUIDFLD"))->setCurrentText(QStringLiteral("n"));
    dialog.findChild<QPushButton*>(QStringLiteral("btnReproject"))->click();
    EXPECT_FALSE(notice->isVisible());
    EXPECT_EQ(dialog.findChild<QComboBox*>(QStringLiteral("cmbPntL"))->currentText(), "gps UTM 32N");
    EXPECT_EQ(dialog.findChild<QComboBox*>(QStringLiteral("cmbUIDFLD"))->currentText(), "n");
    EXPECT_TRUE(messages.Boxes().empty());
    EXPECT_EQ(LayerNamed("gps UTM 32N").selectedFeatureCount(), 2);
}

}  // namespace
}  // namespace wxl::qgis
