// The movement tools through the desktop's application and document, on layers as users have them.

#include "adapters/memory/memory_services.h"
#include "adapters/ogr/disk_services.h"
#include "adapters/ogr/files_map.h"
#include "adapters/qgis/form_presenter.h"
#include "adapters/qgis/qgis_feature_class.h"
#include "adapters/qgis/qgis_map.h"
#include "adapters/qgis/qgis_values.h"
#include "adapters/qgis/travel_dialog.h"
#include "movement/FIndDupTime2.h"
#include "movement/FindDupxy.h"
#include "movement/OVIOBS.h"
#include "platform/runtime_error.h"
#include "tests/contract/vector_files.h"
#include "tests/support/scratch_folder.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <qgsmapcanvas.h>
#include <qgsproject.h>
#include <qgsvectorlayer.h>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <random>

namespace wxl::qgis {
namespace {

using namespace platform;

enum class Format { kShapefile, kGeoPackage, kMemory };

struct TestFormat {
    const char* Name;
    Format Kind;
};

constexpr int kRows = 30000;

/// A walk of `kRows` fixes, ten minutes apart.
std::vector<contract::Row> walk() {
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> step(-400.0, 400.0);
    std::vector<contract::Row> rows;
    Point place{500000.0, 5800000.0};
    for (std::int64_t i = 0; i < kRows; ++i) {
        rows.push_back({Geometry::OfPoint(place), {i * 600, std::string("Freja")}});
        place = {place.X + step(random), place.Y + step(random)};
    }
    return rows;
}

/// Fixes of which every third has the time, and every fourth the place, of an earlier one.
std::vector<contract::Row> walk_with_duplicates() {
    std::vector<contract::Row> rows = walk();
    std::mt19937_64 random(11);
    for (std::size_t i = 1; i < rows.size(); ++i) {
        const std::size_t earlier = random() % i;
        if (i % 3 == 0) rows[i].Values[0] = rows[earlier].Values[0];
        if (i % 4 == 0) rows[i].Shape = rows[earlier].Shape;
    }
    return rows;
}

/// Every row as a line of text: place and cells. Row numbers differ from format to format and are left out.
std::vector<std::string> rows_of(IFeatureClass& features) {
    std::vector<std::string> lines;
    const auto columns = static_cast<int>(features.Table().Fields().size());
    const auto rows = features.Find({});
    while (const auto row = rows->NextFeature()) {
        const Point place = row->Shape().Location;
        std::string line = std::to_string(place.X) + " " + std::to_string(place.Y);
        // A GeoPackage shows its row number as the first column.
        const int first = features.Table().FindField("fid") == 0 ? 1 : 0;
        for (int column = first; column < columns; ++column) line += "|" + ValueText(row->Value(column));
        lines.push_back(std::move(line));
    }
    return lines;
}

class MovementInQgis : public testing::TestWithParam<TestFormat> {
protected:
    MovementInQgis() {
        m_services.Messages = &Messages;
        m_services.Dialogs = &m_dialogs;
        m_services.Host = &Host;
        m_services = m_disk.Complete(m_services);
        Messages.AlwaysAnswer(Topic::kAddFields, Answer::kYes);
    }

    ~MovementInQgis() override {
        Canvas.stopRendering();
        Canvas.setLayers({});
        QgsProject::instance()->clear();
    }

    /// Puts the rows into the project as the highlighted layer, all selected.
    QgsVectorLayer& Open(const std::vector<contract::Row>& rows) {
        m_twin = contract::WriteShapefile(m_twinFolder.Path(), Definition(), rows);
        std::unique_ptr<QgsVectorLayer> layer;
        if (GetParam().Kind == Format::kGeoPackage)
            layer = OpenFile(contract::WriteGeoPackage(m_folder.Path(), Definition(), rows));
        else
            layer = OpenFile(contract::WriteShapefile(m_folder.Path(), Definition(), rows));
        if (GetParam().Kind == Format::kMemory) layer.reset(layer->materialize(QgsFeatureRequest()));
        EXPECT_TRUE(layer->isValid());
        Layer = layer.release();
        QgsProject::instance()->addMapLayer(Layer);
        Canvas.resize(400, 300);
        Canvas.setLayers({Layer});
        Canvas.setDestinationCrs(Layer->crs());
        Canvas.setExtent(Layer->extent());
        Canvas.show();
        Layer->selectAll();
        WaitForCanvas();
        return *Layer;
    }

    template <class Tool>
    void Run() {
        Tool tool(m_services, m_presenter);
        tool.OnCreate(m_application);
        tool.OnClick();
    }

    /// What the same tool makes of the same rows as files, without the desktop.
    template <class Tool>
    std::vector<std::string> OutcomeOfFiles() {
        const auto application = std::make_shared<files::FilesApplication>();
        const auto layer = files::OpenFeatureLayer(m_twin.string());
        layer->SelectAll();
        application->Doc().AddSelectedLayer(files::layer_of(layer));
        Tool tool(m_services, m_presenter);
        tool.OnCreate(application);
        tool.OnClick();
        return rows_of(*files::OpenFeatureLayer(m_twin.string())->FeatureClass());
    }

    /// The rows as another program sees them, where there is a file.
    std::vector<std::string> Outcome() {
        if (GetParam().Kind == Format::kMemory) return rows_of(*std::make_shared<QgisFeatureClass>(*Layer));
        return rows_of(*files::OpenFeatureLayer(FromQString(Layer->source()))->FeatureClass());
    }

    void WaitForCanvas() {
        QSignalSpy drawn(&Canvas, &QgsMapCanvas::mapCanvasRefreshed);
        Canvas.clearCache();
        Canvas.refresh();
        ASSERT_TRUE(drawn.wait(20000));
    }

    static FeatureClassDefinition Definition() {
        const QgsCoordinateReferenceSystem utm(QStringLiteral("EPSG:32632"));
        return {"fixes",
                ShapeType::kPoint,
                {{.Name = "Time2", .Type = FieldType::kInteger}, {.Name = "animal", .Type = FieldType::kText}},
                FromCrs(utm)};
    }

    const platform::Services& Services() const { return m_services; }
    const std::shared_ptr<IApplication>& Application() const { return m_application; }

    memory::MemoryMessages Messages;
    QgisHost Host{{}};
    QgsMapCanvas Canvas;
    QgsVectorLayer* Layer = nullptr;

private:
    static std::unique_ptr<QgsVectorLayer> OpenFile(const std::filesystem::path& file) {
        return std::make_unique<QgsVectorLayer>(ToQString(file.string()), QStringLiteral("fixes"),
                                                QStringLiteral("ogr"));
    }

    tests::ScratchFolder m_folder;
    tests::ScratchFolder m_twinFolder;
    std::filesystem::path m_twin;
    files::DiskServices m_disk;
    memory::MemoryFileDialogs m_dialogs;
    platform::Services m_services;
    QgisFormPresenter m_presenter{Host, nullptr, Desktop{}};
    std::shared_ptr<IApplication> m_application =
        std::make_shared<QgisApplication>(Desktop{&Canvas, nullptr, [this] { return Layer; }});
};

TEST_P(MovementInQgis, Observation_fields_are_those_of_the_files) {
    Open(walk());
    Run<movement::OVIOBS>();
    const auto outcome = Outcome();
    ASSERT_EQ(outcome.size(), std::size_t{kRows});
    EXPECT_EQ(outcome, OutcomeOfFiles<movement::OVIOBS>());
    EXPECT_EQ(Messages.Boxes().size(), 2U) << "one question each";
    EXPECT_EQ(Layer->fields().count(), GetParam().Kind == Format::kGeoPackage ? 9 : 8);
}

TEST_P(MovementInQgis, Duplicates_in_time_go_as_in_files) {
    Open(walk_with_duplicates());
    Run<movement::FIndDupTime2>();
    const auto outcome = Outcome();
    EXPECT_EQ(outcome.size(), std::size_t{kRows} / 3 * 2 + 1);
    EXPECT_EQ(Messages.Last().Text, "Deleted 9999 duplicate features");
    EXPECT_EQ(outcome, OutcomeOfFiles<movement::FIndDupTime2>());
}

TEST_P(MovementInQgis, Duplicates_in_place_go_as_in_files) {
    Open(walk_with_duplicates());
    Run<movement::FindDupxy>();
    const auto outcome = Outcome();
    EXPECT_EQ(outcome.size(), std::size_t{kRows} / 4 * 3 + 1);
    EXPECT_EQ(Messages.Last().Text, "Deleted 7499 duplicate features");
    EXPECT_EQ(outcome, OutcomeOfFiles<movement::FindDupxy>());
}

TEST_P(MovementInQgis, A_long_track_keeps_every_leg_until_the_player_is_closed) {
    Open(walk());
    movement::frmOVI form(Services());
    form.SetApplication(Application());
    form.SetLastFID(kRows - 1);
    TravelDialog dialog(form, Host, &Canvas);
    dialog.show();
    auto* step = dialog.findChild<QPushButton*>(QStringLiteral("CmbStep"));
    ASSERT_NE(step, nullptr);
    form.CBKeepGraphic.Value = 1;
    constexpr int kSteps = 50;
    for (int i = 1; i < kRows - kSteps; ++i) form.CmbStep_Click();
    Canvas.viewport()->repaint();
    for (int i = 0; i < kSteps; ++i) {
        step->click();
        QApplication::processEvents();
        Canvas.viewport()->repaint();
    }
    EXPECT_EQ(form.Legs().size(), std::size_t{kRows} - 1);
    EXPECT_TRUE(Messages.Texts().empty()) << Messages.Texts().front();
    dialog.reject();
    EXPECT_TRUE(form.Legs().empty());
}

TEST_P(MovementInQgis, The_map_and_its_selection_show_the_deletions) {
    std::vector<contract::Row> rows(3, {Geometry::OfPoint({500000.0, 5800000.0}), {std::int64_t{0}}});
    rows[1].Shape = Geometry::OfPoint({500100.0, 5800100.0});
    rows[2].Values = {std::int64_t{60}};
    QgsVectorLayer& layer = Open(rows);
    const QImage before = Canvas.grab().toImage();
    QSignalSpy repaints(&layer, &QgsVectorLayer::repaintRequested);
    QSignalSpy drawn(&Canvas, &QgsMapCanvas::mapCanvasRefreshed);
    Run<movement::FIndDupTime2>();
    EXPECT_EQ(Messages.Last().Text, "Deleted 1 duplicate features");
    EXPECT_GE(repaints.count(), 1);
    EXPECT_TRUE(drawn.count() > 0 || drawn.wait(20000)) << "the canvas is drawn anew of its own accord";
    EXPECT_NE(Canvas.grab().toImage(), before) << "the deleted fix is off the map";
    for (const QgsFeatureId id : layer.selectedFeatureIds()) EXPECT_TRUE(layer.getFeature(id).isValid()) << id;
    EXPECT_EQ(layer.featureCount(), 2);
}

TEST_P(MovementInQgis, A_selection_is_walked_by_number_without_the_rows_between) {
    std::vector<contract::Row> rows;
    for (std::int64_t i = 0; i < 200; ++i)
        rows.push_back({Geometry::OfPoint({500000.0 + static_cast<double>(i), 5800000.0 + static_cast<double>(i)}),
                        {i % 2, std::string("a")}});
    QgsVectorLayer& layer = Open(rows);
    const QgsFeatureIds all = layer.allFeatureIds();
    std::vector<QgsFeatureId> ids(all.begin(), all.end());
    std::sort(ids.begin(), ids.end());
    ASSERT_EQ(ids.size(), 200U);
    // Rows: one of two, three that lie far apart, one alone; and in each how many have the Time2 0 (the even rows).
    const std::vector<std::pair<std::vector<std::size_t>, std::size_t>> selections = {
        {{10, 12, 13, 15, 17}, 2}, {{0, 99, 199}, 1}, {{42}, 1}};
    for (const auto& [selected, even] : selections) {
        std::vector<QgsFeatureId> expected;
        for (const std::size_t row : selected) expected.push_back(ids[row]);
        layer.selectByIds(QgsFeatureIds(expected.begin(), expected.end()));
        QgisSelectionSet selection(layer);
        std::vector<QgsFeatureId> walked;
        const auto cursor = selection.Find({});
        while (const auto row = cursor->NextFeature()) walked.push_back(row->OID());
        EXPECT_EQ(walked, expected);
        std::size_t met = 0;
        const auto query = selection.Find({.Where = AttributeQuery{"Time2 = 0", "Time2", std::int64_t{0}}});
        while (query->NextFeature()) ++met;
        EXPECT_EQ(met, even);
    }
}

TEST_P(MovementInQgis, A_layer_in_edit_mode_is_left_alone) {
    const std::string reason = "The layer \"fixes\" is being edited. Please save or discard the edits and try again.";
    const contract::Row twice{Geometry::OfPoint({500000.0, 5800000.0}), {std::int64_t{0}, std::string("Freja")}};
    const contract::Row other{Geometry::OfPoint({500100.0, 5800100.0}), {std::int64_t{60}, std::string("Freja")}};
    QgsVectorLayer& layer = Open({twice, twice, other});
    const auto before = Outcome();
    ASSERT_TRUE(layer.startEditing());
    Run<movement::OVIOBS>();
    Run<movement::FIndDupTime2>();
    Run<movement::FindDupxy>();
    EXPECT_EQ(Messages.Texts(), (std::vector<std::string>{reason, reason, reason}));
    EXPECT_FALSE(layer.isModified());
    ASSERT_TRUE(layer.rollBack());
    EXPECT_EQ(Outcome(), before);
}

TEST_P(MovementInQgis, Edits_begun_during_a_pass_end_it_without_a_change) {
    QgsVectorLayer& layer = Open({{Geometry::OfPoint({500000.0, 5800000.0}), {std::int64_t{0}}},
                                  {Geometry::OfPoint({500100.0, 5800100.0}), {std::int64_t{60}}}});
    const auto before = Outcome();
    QgisFeatureClass features(layer);
    const auto refused = [](auto&& action) {
        try {
            action();
        } catch (const RuntimeError& error) {
            EXPECT_STREQ(error.what(),
                         "The layer \"fixes\" is being edited. Please save or discard the edits and try again.");
            return error.Number;
        }
        return 0;
    };
    const auto cursor = features.Find({});
    const auto row = cursor->NextFeature();
    const auto inserting = features.Insert();
    inserting->Insert(Geometry::OfPoint({500000.0, 5800000.0}), {});
    ASSERT_TRUE(layer.startEditing());
    row->SetValue(features.FindField("Time2"), std::int64_t{5});
    row->Store();
    EXPECT_EQ(refused([&] { cursor->Flush(); }), error_number::kPermissionDenied);
    row->Delete();
    EXPECT_EQ(refused([&] { cursor->Flush(); }), error_number::kPermissionDenied);
    EXPECT_EQ(refused([&] { inserting->Flush(); }), error_number::kPermissionDenied);
    EXPECT_EQ(refused([&] { features.AddField({.Name = "Dist"}); }), error_number::kPermissionDenied);
    EXPECT_EQ(refused([&] { features.DeleteField(0); }), error_number::kPermissionDenied);
    EXPECT_FALSE(layer.isModified());
    ASSERT_TRUE(layer.rollBack());
    EXPECT_EQ(Outcome(), before);
}

INSTANTIATE_TEST_SUITE_P(Layers, MovementInQgis,
                         testing::Values(TestFormat{"Shapefile", Format::kShapefile},
                                         TestFormat{"GeoPackage", Format::kGeoPackage},
                                         TestFormat{"Memory", Format::kMemory}),
                         [](const auto& each) { return std::string(each.param.Name); });

}  // namespace
}  // namespace wxl::qgis
