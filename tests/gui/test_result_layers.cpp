#include "adapters/memory/memory_services.h"
#include "adapters/ogr/disk_services.h"
#include "adapters/qgis/kde_dialog.h"
#include "adapters/qgis/qgis_versions.h"
#include "adapters/qgis/result_layers.h"
#include "adapters/qgis/result_styles.h"
#include "tests/gui/qgis_environment.h"
#include "tests/support/quick_folder.h"
#include "utilities/Utilities.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <qgscategorizedsymbolrenderer.h>
#include <qgscolorrampshader.h>
#include <qgslayertree.h>
#include <qgslayertreemodel.h>
#include <qgsproject.h>
#include <qgsrasterlayer.h>
#include <qgsrastershader.h>
#include <qgsrendercontext.h>
#include <qgssinglebandpseudocolorrenderer.h>
#include <qgssinglesymbolrenderer.h>
#include <qgssymbol.h>
#include <qgssymbollayer.h>
#include <qgsvectordataprovider.h>
#include <qgsvectorlayer.h>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <random>
#include <set>

namespace wxl::qgis {
namespace {

using testing::ElementsAre;
namespace fs = std::filesystem;

/// Deletes a dataset when the run ends, before its layers are made.
class Deleter final : public analysis::IRunObserver {
public:
    explicit Deleter(fs::path path) : m_path(std::move(path)) {}
    void RunBegins(const analysis::RunFrame&, const analysis::GroupedFixes&) override {}
    void AnimalDone(const analysis::AnimalRecord&) override {}
    void RunEnds(analysis::RunOutcome) override { fs::remove_all(m_path); }

private:
    fs::path m_path;
};

/// A project with one point layer, a canvas and a layer tree, and the dialog over them that writes to disk.
class ResultLayersTest : public testing::Test {
protected:
    ResultLayersTest() {
        m_tree.setModel(new QgsLayerTreeModel(QgsProject::instance()->layerTreeRoot(), &m_tree));
        m_canvas.resize(400, 400);
        m_services.Messages = &m_messages;
        m_services.Dialogs = &m_dialogs;
        m_services.Host = &m_host;
        m_services = m_disk.Complete(m_services);
        m_geodata = std::make_unique<utilities::Utilities>(m_services);
        m_geodata->ConnectToApplication(std::make_shared<QgisApplication>(Desktop{&m_canvas, &m_tree, {}}));
    }

    ~ResultLayersTest() override {
        m_dialog.reset();
        QgsProject::instance()->clear();
    }

    /// Animals "1", "2", ... of 15 fixes each, 2 km apart, and the dialog filled for a quick run.
    void Open(int animals, const QString& crs = QStringLiteral("EPSG:32632")) {
        auto* layer = new QgsVectorLayer(QStringLiteral("Point?crs=%1&field=animal:integer").arg(crs),
                                         QStringLiteral("wolves"), QStringLiteral("memory"));
        std::mt19937_64 random(7);
        std::normal_distribution<double> metres(0.0, 250.0);
        QgsFeatureList features;
        for (int i = 0; i < 15 * animals; ++i) {
            QgsFeature feature(layer->fields());
            feature.setAttribute(0, i / 15 + 1);
            feature.setGeometry(
                QgsGeometry::fromPointXY({500000.0 + 2000.0 * (i / 15) + metres(random), 5800000.0 + metres(random)}));
            features << feature;
        }
        ASSERT_TRUE(layer->dataProvider()->addFeatures(features));
        QgsProject::instance()->addMapLayer(layer);
        m_form = std::make_unique<kde_tool::frmKDE>(m_services, *m_geodata);
        m_results = std::make_unique<ResultLayers>(*m_form, Desktop{&m_canvas, &m_tree, {}}, m_host);
        m_dialog = std::make_unique<KdeDialog>(*m_form, m_host, nullptr);
        m_dialog->show();
        Find<QComboBox>("cmbUIDFLD").setCurrentIndex(0);
        Find<QRadioButton>("optSmall").click();
        Find<QLineEdit>("txtCellSize").setText(QStringLiteral("100"));
        Find<QCheckBox>("chkBnds").click();
        Find<QLineEdit>("txtBnds").setText(QStringLiteral("50, 95"));
    }

    /// Presses OK for a run into a folder of its own under `name`.
    void Run(const std::string& name) {
        fs::create_directories(m_folder / name);
        m_form->SetOutputFolder((m_folder / name).string());
        Find<QPushButton>("btnOK").click();
    }

    template <class Widget>
    Widget& Find(const char* name) {
        auto* widget = m_dialog->findChild<Widget*>(QLatin1String(name));
        if (!widget) throw std::runtime_error(std::string("no widget ") + name);
        return *widget;
    }

    /// The group right below the fixes, which stand on top of the layer tree.
    static QgsLayerTreeGroup& Top() {
        return *QgsLayerTree::toGroup(QgsProject::instance()->layerTreeRoot()->children().at(1));
    }

    static std::vector<std::string> NamesIn(const QgsLayerTreeGroup& group) {
        std::vector<std::string> names;
        for (const QgsLayerTreeNode* node : group.children()) names.push_back(node->name().toStdString());
        return names;
    }

    static QgsMapLayer& LayerOf(int place) { return *QgsLayerTree::toLayer(Top().children().at(place))->layer(); }

    static std::vector<std::string> LegendOf(int place) {
        auto& vector = dynamic_cast<QgsVectorLayer&>(LayerOf(place));
        auto& renderer = dynamic_cast<QgsCategorizedSymbolRenderer&>(*vector.renderer());
        std::vector<std::string> labels = {renderer.classAttribute().toStdString()};
        for (const QgsRendererCategory& category : renderer.categories())
            labels.push_back(category.label().toStdString());
        return labels;
    }

    tests::QuickFolder m_folder;
    QgsMapCanvas m_canvas;
    QgsLayerTreeView m_tree;
    memory::MemoryMessages m_messages;
    memory::MemoryFileDialogs m_dialogs;
    QgisHost m_host{{}};
    files::DiskServices m_disk;
    platform::Services m_services;
    std::unique_ptr<utilities::Utilities> m_geodata;
    std::unique_ptr<kde_tool::frmKDE> m_form;
    std::unique_ptr<ResultLayers> m_results;
    std::unique_ptr<KdeDialog> m_dialog;

    /// Adds the results to the map as the plugin does.
    void Observe() { m_form->AddObserver(*m_results); }
};

TEST_F(ResultLayersTest, A_run_becomes_one_group_with_isopleths_above_rasters) {
    Open(2);
    Observe();
    Find<QCheckBox>("chkLines").click();
    Find<QCheckBox>("chkPolys").click();
    Find<QCheckBox>("chkDonuts").click();
    Run("out");
    EXPECT_EQ(m_messages.Last().Text, "Processing complete.");
    EXPECT_EQ(Top().name().toStdString(), "Home ranges: wolves, reference bandwidth");
    EXPECT_THAT(NamesIn(Top()),
                ElementsAre("1: isopleth lines", "1: isopleth polygons", "1: isopleth donuts", "2: isopleth lines",
                            "2: isopleth polygons", "2: isopleth donuts", "1: density", "2: density"));
    for (int i = 0; i < 8; ++i) EXPECT_EQ(LayerOf(i).crs().authid().toStdString(), "EPSG:32632");
    EXPECT_THAT(LegendOf(0), ElementsAre("PERCENT", "95 %", "50 %"));
    EXPECT_THAT(LegendOf(1), ElementsAre("PERCENT", "95 %", "50 %"));
    EXPECT_THAT(LegendOf(2), ElementsAre("PERCENT2", "50 to 95 %", "50 %"));
}

// Anybody who opens the package sees it so, without the plugin.
TEST_F(ResultLayersTest, The_package_of_ranges_brings_its_styles_into_the_desktop) {
    Open(2);
    Find<QCheckBox>("chkPolys").click();
    Find<QCheckBox>("chkGpkg").click();
    Run("out");
    const auto opened = [&](const char* name) {
        const QString source = QString::fromStdString((m_folder / "out" / "RANGES.gpkg").string());
        return std::make_unique<QgsVectorLayer>(source + QStringLiteral("|layername=") + QLatin1String(name),
                                                QLatin1String(name), QStringLiteral("ogr"));
    };
    const auto ranges = opened("isopleths");
    ASSERT_TRUE(ranges->isValid());
    EXPECT_EQ(ranges->featureCount(), 4);
    const auto* range = dynamic_cast<const QgsSingleSymbolRenderer*>(ranges->renderer());
    ASSERT_NE(range, nullptr);
    EXPECT_EQ(range->symbol()->color(), QColor(0, 114, 178, 45));
    EXPECT_TRUE(range->orderByEnabled()) << "the largest first";
    EXPECT_TRUE(range->symbol()->symbolLayer(0)->dataDefinedProperties().hasActiveProperties())
        << "darker towards the core";
    const auto fixes = opened("fixes");
    ASSERT_TRUE(fixes->isValid());
    EXPECT_EQ(fixes->featureCount(), 30);
    const auto* fix = dynamic_cast<const QgsSingleSymbolRenderer*>(fixes->renderer());
    ASSERT_NE(fix, nullptr);
    EXPECT_EQ(fix->symbol()->color(), QColor(40, 40, 40));
    EXPECT_EQ(fix->symbol()->opacity(), 0.7);
    EXPECT_TRUE(opened("summary")->isValid());
}

TEST_F(ResultLayersTest, Results_stand_below_the_fixes_and_above_the_base_map) {
    Open(1);
    auto* map = new QgsVectorLayer(QStringLiteral("Polygon?crs=EPSG:32632"), QStringLiteral("base map"),
                                   QStringLiteral("memory"));
    QgsProject::instance()->addMapLayer(map, false);
    QgsLayerTreeGroup& root = *QgsProject::instance()->layerTreeRoot();
    root.addLayer(map);
    // The fixes in a group of the user's own.
    QgsLayerTreeGroup* own = root.insertGroup(0, QStringLiteral("tags"));
    QgsLayerTreeLayer* fixes = root.findLayer(QgsProject::instance()->mapLayersByName("wolves").first()->id());
    own->addChildNode(fixes->clone());
    root.removeChildNode(fixes);
    Observe();
    Run("out");
    EXPECT_THAT(NamesIn(root), ElementsAre("tags", "Home ranges: wolves, reference bandwidth", "base map"));
}

TEST_F(ResultLayersTest, Every_animal_has_a_hue_of_its_own) {
    Open(2);
    Observe();
    Find<QCheckBox>("chkPolys").click();
    Run("out");
    const auto core = [](int place) {
        auto& vector = dynamic_cast<QgsVectorLayer&>(LayerOf(place));
        return dynamic_cast<QgsCategorizedSymbolRenderer&>(*vector.renderer()).categories().first().symbol()->color();
    };
    ASSERT_THAT(NamesIn(Top()),
                ElementsAre("1: isopleth polygons", "2: isopleth polygons", "1: density", "2: density"));
    EXPECT_EQ(core(0).rgb(), QColor(0, 114, 178).rgb());
    EXPECT_EQ(core(1).rgb(), QColor(213, 94, 0).rgb());
}

TEST(AnimalColours, Twelve_hues_and_then_their_lighter_and_darker_ones) {
    std::set<QRgb> colours;
    for (std::size_t i = 0; i < 60; ++i) colours.insert(animal_colour(i).rgb());
    EXPECT_EQ(colours.size(), 60U);
    EXPECT_GT(animal_colour(12).lightness(), animal_colour(0).lightness());
    EXPECT_LT(animal_colour(24).lightness(), animal_colour(0).lightness());
}

TEST_F(ResultLayersTest, A_coordinate_system_without_a_code_is_kept) {
    const auto crs =
        QStringLiteral("PROJ:+proj=tmerc +lat_0=51 +lon_0=8.5 +k=0.9997 +x_0=500000 +y_0=100 +datum=WGS84");
    Open(1, crs);
    Observe();
    Run("out");
    const QgsCoordinateReferenceSystem expected = QgsProject::instance()->mapLayersByName("wolves").first()->crs();
    ASSERT_TRUE(expected.isValid());
    EXPECT_EQ(LayerOf(0).crs(), expected);
}

TEST_F(ResultLayersTest, Isopleths_are_graded_with_the_largest_beneath) {
    Open(1);
    Observe();
    Find<QCheckBox>("chkPolys").click();
    Find<QLineEdit>("txtBnds").setText(QStringLiteral("50, 95, 75"));
    Run("out");
    EXPECT_THAT(LegendOf(0), ElementsAre("PERCENT", "95 %", "75 %", "50 %"));
    auto& polygons = dynamic_cast<QgsVectorLayer&>(LayerOf(0));
    auto& renderer = dynamic_cast<QgsCategorizedSymbolRenderer&>(*polygons.renderer());
    std::vector<int> lightness;
    for (const QgsRendererCategory& category : renderer.categories())
        lightness.push_back(category.symbol()->color().lightness());
    EXPECT_GT(lightness[0], lightness[1]);
    EXPECT_GT(lightness[1], lightness[2]);
    ASSERT_TRUE(renderer.orderByEnabled());
    EXPECT_FALSE(renderer.orderBy().first().ascending()) << "the largest percentage is drawn first";
    // Every feature has its class.
    QgsRenderContext context;
    context.expressionContext().setFields(polygons.fields());
    renderer.startRender(context, polygons.fields());
    QgsFeature feature;
    auto features = polygons.getFeatures();
    int classed = 0;
    while (features.nextFeature(feature)) classed += renderer.symbolForFeature(feature, context) != nullptr;
    renderer.stopRender(context);
    EXPECT_EQ(classed, 3);
}

TEST_F(ResultLayersTest, Zero_is_transparent_and_the_largest_density_dark) {
    Open(1);
    Observe();
    Find<QCheckBox>("chkBnds").click();
    Run("out");
    auto& raster = dynamic_cast<QgsRasterLayer&>(LayerOf(0));
    auto& renderer = dynamic_cast<QgsSingleBandPseudoColorRenderer&>(*raster.renderer());
    const double highest = raster.dataProvider()->bandStatistics(1, kBandMaximum, raster.extent(), 0).maximumValue;
    EXPECT_EQ(renderer.classificationMax(), highest);
    int red = 0;
    int green = 0;
    int blue = 0;
    int alpha = 0;
    const auto colour = [&](double value) { renderer.shader()->shade(value, &red, &green, &blue, &alpha); };
    colour(0.0);
    EXPECT_EQ(alpha, 0);
    colour(highest);
    EXPECT_EQ(std::vector({red, green, blue, alpha}), std::vector({0, 46, 72, 255}))
        << "three fifths from the hue to black";
    colour(0.5 * highest);
    EXPECT_EQ(std::vector({red, green, blue, alpha}), std::vector({0, 114, 178, 255}));
    EXPECT_EQ(raster.blendMode(), QPainter::CompositionMode_Multiply) << "a base map shows through";
}

TEST_F(ResultLayersTest, Several_bandwidths_are_told_apart_and_a_second_group_is_numbered) {
    Open(1);
    Observe();
    Find<QRadioButton>("optPropHref").click();
    Find<QLineEdit>("txtPropHref").setText(QStringLiteral("0.8, 1"));
    Find<QCheckBox>("chkBnds").click();
    Run("first");
    EXPECT_THAT(NamesIn(Top()), ElementsAre("1 (b1): density", "1 (b2): density"));
    EXPECT_EQ(Top().name().toStdString(), "Home ranges: wolves, proportions of the reference bandwidth");
    Run("second");
    EXPECT_EQ(Top().name().toStdString(), "Home ranges: wolves, proportions of the reference bandwidth (2)");
    Run("third");
    EXPECT_EQ(Top().name().toStdString(), "Home ranges: wolves, proportions of the reference bandwidth (3)");
    EXPECT_THAT(NamesIn(Top()), ElementsAre("1 (b1): density", "1 (b2): density"));
}

TEST_F(ResultLayersTest, Nothing_is_added_when_the_box_is_not_ticked) {
    Open(1);
    Observe();
    Find<QCheckBox>("chkAddToMap").click();
    Run("out");
    EXPECT_EQ(m_messages.Last().Text, "Processing complete.");
    EXPECT_EQ(QgsProject::instance()->count(), 1);
    EXPECT_EQ(QgsProject::instance()->layerTreeRoot()->children().size(), 1);
}

TEST_F(ResultLayersTest, Results_that_cannot_be_opened_are_named_and_the_others_added) {
    Open(2);
    Deleter deleter(m_folder / "out" / "1");
    m_form->AddObserver(deleter);
    Observe();
    Find<QCheckBox>("chkBnds").click();
    Run("out");
    ASSERT_EQ(m_messages.Boxes().size(), 2U);
    EXPECT_EQ(m_messages.Boxes()[0].Text,
              "These results could not be added to the map:\n" + (m_folder / "out" / "1").string());
    EXPECT_EQ(m_messages.Boxes()[1].Text, "Processing complete.");
    EXPECT_THAT(NamesIn(Top()), ElementsAre("2: density"));
}

TEST_F(ResultLayersTest, Exit_during_a_run_asks_and_what_was_done_comes_onto_the_map) {
    Open(3);
    Observe();
    Find<QCheckBox>("chkBnds").click();
    m_messages.AlwaysAnswer(platform::Topic::kStop, platform::Answer::kYes);
    int kernels = 0;
    const auto token = m_host.OnYield([&] {
        if (m_form->txtStatus.Text == "Calculating kernel..." && ++kernels == 2) Find<QPushButton>("btnExit").click();
    });
    Run("out");
    EXPECT_EQ(m_messages.Last().Text, "Processing stopped.");
    EXPECT_TRUE(m_dialog->isVisible());
    EXPECT_THAT(NamesIn(Top()), ElementsAre("1: density", "2: density"));
    Find<QPushButton>("btnExit").click();
    EXPECT_FALSE(m_dialog->isVisible());
}

TEST_F(ResultLayersTest, Closing_the_window_during_a_run_asks_too) {
    QgisMessages boxes(nullptr);
    m_services.Messages = &boxes;
    Open(3);
    Find<QCheckBox>("chkBnds").click();
    std::vector<std::string> met;
    QTimer answering;
    QObject::connect(&answering, &QTimer::timeout, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box) return;
        met.push_back(box->windowTitle().toStdString() + ": " + box->text().toStdString());
        // The first question is answered with No.
        QAbstractButton* yes = met.size() == 1 ? box->button(QMessageBox::No) : box->button(QMessageBox::Yes);
        (yes ? yes : box->button(QMessageBox::Ok))->click();
    });
    answering.start(5);
    int kernels = 0;
    const auto token = m_host.OnYield([&] {
        if (m_form->txtStatus.Text == "Calculating kernel..." && ++kernels <= 2) m_dialog->close();
    });
    Run("out");
    const std::string question =
        "Kernel Density Estimation: The analysis is running. Do you want to stop it after the present animal? What was "
        "done until then is kept.";
    EXPECT_THAT(met, ElementsAre(question, question, "Status: Processing stopped."));
    EXPECT_TRUE(m_dialog->isVisible());
    EXPECT_TRUE(fs::exists(m_folder / "out" / "2"));
    EXPECT_FALSE(fs::exists(m_folder / "out" / "3"));
    m_dialog->close();
    EXPECT_FALSE(m_dialog->isVisible());
}

TEST_F(ResultLayersTest, Two_hundred_animals_leave_the_desktop_alive) {
    Open(200);
    Observe();
    Find<QCheckBox>("chkPolys").click();
    int turns = 0;
    const auto token = m_host.OnYield([&] { turns += m_form->PBar.Value == m_form->PBar.Maximum ? 1 : 0; });
    Run("out");
    EXPECT_EQ(Top().children().size(), 400);
    EXPECT_FALSE(Top().isExpanded());
    EXPECT_GE(turns, 400) << "one with each layer that is added";
}

}  // namespace
}  // namespace wxl::qgis
