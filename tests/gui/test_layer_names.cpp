// Several layers of one name, and lists of layers that follow the project.

#include "adapters/memory/memory_file_system.h"
#include "adapters/memory/memory_services.h"
#include "adapters/qgis/kde_dialog.h"
#include "adapters/qgis/layer_lists.h"
#include "adapters/qgis/layer_names.h"
#include "adapters/qgis/qgis_map.h"
#include "movement/selected_layer.h"
#include "tests/gui/qgis_environment.h"
#include "tests/support/scratch_folder.h"
#include "utilities/Utilities.h"

#include <gdal_priv.h>
#include <gtest/gtest.h>
#include <QComboBox>
#include <qgslayertree.h>
#include <qgsproject.h>
#include <qgsrasterlayer.h>
#include <qgsvectordataprovider.h>
#include <qgsvectorlayer.h>
#include <QRadioButton>
#include <QTest>

namespace wxl::qgis {
namespace {

using Names = std::vector<std::string>;

class LayerNamesTest : public testing::Test {
protected:
    LayerNamesTest() {
        m_services.Messages = &Messages;
        m_services.Host = &Host;
        m_services.Files = &m_files;
        m_services.Folders = &m_folders;
        Geodata.ConnectToApplication(
            std::make_shared<QgisApplication>(Desktop{nullptr, nullptr, [this] { return Highlighted; }}));
    }
    ~LayerNamesTest() override { QgsProject::instance()->clear(); }

    /// A point layer at the end of the tree with so many fixes and one field named after them.
    QgsVectorLayer& AddPoints(const QString& name, int fixes) {
        auto* layer = new QgsVectorLayer(QStringLiteral("Point?crs=EPSG:32632&field=of%1:integer").arg(fixes), name,
                                         QStringLiteral("memory"));
        QgsFeatureList features;
        for (int i = 0; i < fixes; ++i) {
            QgsFeature feature(layer->fields());
            feature.setGeometry(QgsGeometry::fromPointXY({500000.0 + i, 5800000.0}));
            features << feature;
        }
        EXPECT_TRUE(layer->dataProvider()->addFeatures(features));
        Append(layer);
        return *layer;
    }

    QgsRasterLayer& AddRaster(const QString& name, int columns) {
        const std::string path = (m_folder.Path() / (std::to_string(columns) + ".tif")).string();
        GDALDataset* raster =
            GetGDALDriverManager()->GetDriverByName("GTiff")->Create(path.c_str(), columns, 2, 1, GDT_Float32, nullptr);
        double place[6] = {500000.0, 10.0, 0.0, 5800000.0, 0.0, -10.0};
        raster->SetGeoTransform(place);
        GDALClose(raster);
        auto* layer = new QgsRasterLayer(QString::fromStdString(path), name);
        EXPECT_TRUE(layer->isValid());
        Append(layer);
        return *layer;
    }

    void Append(QgsMapLayer* layer) {
        QgsProject::instance()->addMapLayer(layer, false);
        QgsProject::instance()->layerTreeRoot()->addLayer(layer);
    }

    Names Listed(int kind) {
        platform::ComboBox combo;
        Geodata.ListLayers(kind, combo);
        return combo.Items;
    }

    std::int64_t FixesOf(const std::string& name) {
        return Geodata.GetLayerByName(name).Feature->FeatureClass()->FeatureCount();
    }

    memory::MemoryMessages Messages;
    QgisHost Host{{}};
    QgsMapLayer* Highlighted = nullptr;

private:
    tests::ScratchFolder m_folder;
    std::shared_ptr<memory::MemoryDisk> m_disk = std::make_shared<memory::MemoryDisk>();
    memory::MemoryFileSystem m_files{m_disk};
    memory::MemoryFolders m_folders{m_disk};
    platform::Services m_services;

protected:
    const platform::Services& Services() const { return m_services; }
    utilities::Utilities Geodata{m_services};
};

TEST_F(LayerNamesTest, Layers_of_one_name_are_told_apart_and_found) {
    AddPoints(QStringLiteral("fixes"), 1);
    AddPoints(QStringLiteral("fixes"), 2);
    AddPoints(QStringLiteral("fixes"), 3);
    EXPECT_EQ(Listed(3), (Names{"fixes", "fixes [2]", "fixes [3]"}));
    EXPECT_EQ(FixesOf("fixes"), 1);
    EXPECT_EQ(FixesOf("fixes [2]"), 2);
    EXPECT_EQ(FixesOf("fixes [3]"), 3);
    EXPECT_TRUE(Geodata.LayerExists("fixes [3]"));
    EXPECT_FALSE(Geodata.LayerExists("fixes [4]"));
}

TEST_F(LayerNamesTest, A_layer_that_has_such_a_name_of_its_own_keeps_it) {
    AddPoints(QStringLiteral("fixes"), 1);
    AddPoints(QStringLiteral("fixes"), 2);
    AddPoints(QStringLiteral("fixes [2]"), 3);
    EXPECT_EQ(Listed(3), (Names{"fixes", "fixes [3]", "fixes [2]"}));
    EXPECT_EQ(FixesOf("fixes [2]"), 3);
    EXPECT_EQ(FixesOf("fixes [3]"), 2);
}

TEST_F(LayerNamesTest, Rasters_and_points_of_one_name_are_told_apart) {
    AddPoints(QStringLiteral("wolves"), 1);
    AddRaster(QStringLiteral("wolves"), 3);
    AddRaster(QStringLiteral("wolves"), 4);
    EXPECT_EQ(Listed(3), Names{"wolves"});
    EXPECT_EQ(Listed(2), (Names{"wolves [2]", "wolves [3]"}));
    EXPECT_EQ(Geodata.GetLayerByName("wolves [2]").Raster->Geometry().Columns, 3);
    EXPECT_EQ(Geodata.GetLayerByName("wolves [3]").Raster->Geometry().Columns, 4);
    EXPECT_EQ(Geodata.GetLayerByName("wolves [3]").Raster->Name(), "wolves [3]");
}

TEST_F(LayerNamesTest, The_highlighted_layer_has_the_name_under_which_it_is_found) {
    AddPoints(QStringLiteral("fixes"), 1);
    QgsVectorLayer& second = AddPoints(QStringLiteral("fixes"), 2);
    second.selectAll();
    Highlighted = &second;
    QgisDocument document(Desktop{nullptr, nullptr, [this] { return Highlighted; }});
    const auto layer = document.SelectedLayer();
    ASSERT_TRUE(layer);
    EXPECT_EQ(layer->Name, "fixes [2]");
    EXPECT_EQ(layer->Feature->Name(), "fixes [2]");
    EXPECT_EQ(movement::selection_of_layer_named(document, "fixes [2]")->Count(), 2);
}

TEST_F(LayerNamesTest, A_group_does_not_take_the_name_of_a_layer) {
    QgsProject::instance()->layerTreeRoot()->addGroup(QStringLiteral("fixes"));
    AddPoints(QStringLiteral("fixes"), 1).selectAll();
    EXPECT_EQ(Listed(3), Names{"fixes"});
    QgisDocument document(Desktop{});
    EXPECT_EQ(movement::selection_of_layer_named(document, "fixes")->Count(), 1);
}

/// The dialog over such a project, with lists that follow it.
class LayerListsTest : public LayerNamesTest {
protected:
    void Open() {
        Form.emplace(Services(), Geodata);
        Dialog = std::make_unique<KdeDialog>(*Form, Host, nullptr);
        Lists = std::make_unique<LayerLists>(*Form, [this] { Dialog->Refresh(); });
        Dialog->AlsoRefresh([this] { Lists->FormChanged(); });
        Dialog->show();
    }

    ~LayerListsTest() override {
        Dialog.reset();
        Lists.reset();
        Form.reset();
    }

    QComboBox& Box(const char* name) { return *Dialog->findChild<QComboBox*>(QLatin1String(name)); }

    Names Shown(const char* name) {
        tests::SettleWindows();
        Names names;
        for (int i = 0; i < Box(name).count(); ++i) names.push_back(Box(name).itemText(i).toStdString());
        return names;
    }

    std::optional<kde_tool::frmKDE> Form;
    std::unique_ptr<KdeDialog> Dialog;
    std::unique_ptr<LayerLists> Lists;
};

TEST_F(LayerListsTest, The_second_layer_of_a_name_is_the_one_that_is_chosen) {
    AddPoints(QStringLiteral("fixes"), 1);
    AddPoints(QStringLiteral("fixes"), 2);
    Open();
    EXPECT_EQ(Shown("cmbPntL"), (Names{"fixes", "fixes [2]"}));
    EXPECT_EQ(Shown("cmbUIDFLD"), Names{"of1"});
    Box("cmbPntL").setCurrentIndex(1);
    EXPECT_EQ(Shown("cmbUIDFLD"), Names{"of2"});
}

TEST_F(LayerListsTest, Layers_that_come_and_are_renamed_are_listed_and_the_choice_stays) {
    QgsVectorLayer& first = AddPoints(QStringLiteral("fixes"), 1);
    QgsVectorLayer& second = AddPoints(QStringLiteral("wolves"), 2);
    Open();
    Box("cmbPntL").setCurrentIndex(1);
    Box("cmbUIDFLD").setCurrentIndex(0);
    AddPoints(QStringLiteral("lynx"), 3);
    EXPECT_EQ(Shown("cmbPntL"), (Names{"fixes", "wolves", "lynx"}));
    EXPECT_EQ(Box("cmbPntL").currentText(), "wolves");
    second.setName(QStringLiteral("fixes"));
    EXPECT_EQ(Shown("cmbPntL"), (Names{"fixes", "fixes [2]", "lynx"}));
    EXPECT_EQ(Box("cmbPntL").currentText(), "fixes [2]");
    QgsProject::instance()->removeMapLayer(&first);
    EXPECT_EQ(Shown("cmbPntL"), (Names{"fixes", "lynx"}));
    EXPECT_EQ(Box("cmbPntL").currentText(), "fixes");
    EXPECT_EQ(Box("cmbUIDFLD").currentText(), "of2") << "still the fields of the second layer";
    EXPECT_TRUE(Messages.Texts().empty());
}

TEST_F(LayerListsTest, Nothing_is_chosen_once_the_chosen_layer_is_gone) {
    QgsVectorLayer& first = AddPoints(QStringLiteral("fixes"), 1);
    AddPoints(QStringLiteral("fixes"), 2);
    Open();
    QgsProject::instance()->removeMapLayer(&first);
    EXPECT_EQ(Shown("cmbPntL"), Names{"fixes"});
    EXPECT_EQ(Box("cmbPntL").currentIndex(), -1);
    EXPECT_EQ(Shown("cmbUIDFLD"), Names{});
    EXPECT_TRUE(Messages.Texts().empty());
}

TEST_F(LayerListsTest, The_first_layer_that_comes_into_an_empty_list_is_chosen) {
    Open();
    EXPECT_EQ(Messages.Texts().size(), 1U);
    AddPoints(QStringLiteral("fixes"), 1);
    EXPECT_EQ(Shown("cmbPntL"), Names{"fixes"});
    EXPECT_EQ(Box("cmbPntL").currentText(), "fixes");
    EXPECT_EQ(Shown("cmbUIDFLD"), Names{"of1"});
}

TEST_F(LayerListsTest, Rasters_that_come_and_go_open_and_close_their_option) {
    AddPoints(QStringLiteral("fixes"), 1);
    Open();
    auto& option = *Dialog->findChild<QRadioButton*>(QStringLiteral("optExtRef"));
    EXPECT_FALSE(option.isEnabled());
    QgsRasterLayer& raster = AddRaster(QStringLiteral("grid"), 3);
    EXPECT_EQ(Shown("cmbExtRef"), Names{"grid"});
    EXPECT_TRUE(option.isEnabled());
    option.click();
    Box("cmbExtRef").setCurrentIndex(0);
    raster.setName(QStringLiteral("snow"));
    EXPECT_EQ(Shown("cmbExtRef"), Names{"snow"});
    EXPECT_EQ(Box("cmbExtRef").currentText(), "snow");
    QgsProject::instance()->removeMapLayer(&raster);
    EXPECT_EQ(Shown("cmbExtRef"), Names{});
    EXPECT_FALSE(option.isEnabled());
    EXPECT_TRUE(Dialog->findChild<QRadioButton*>(QStringLiteral("optFull"))->isChecked());
}

TEST_F(LayerListsTest, During_a_run_the_lists_stay_and_follow_when_it_is_over) {
    AddPoints(QStringLiteral("fixes"), 1);
    Open();
    Form->btnOK.Enabled = false;
    AddPoints(QStringLiteral("lynx"), 2);
    EXPECT_EQ(Shown("cmbPntL"), Names{"fixes"});
    Form->btnOK.Enabled = true;
    Dialog->Refresh();
    EXPECT_EQ(Shown("cmbPntL"), (Names{"fixes", "lynx"}));
}

}  // namespace
}  // namespace wxl::qgis
