// Where the track player draws on maps whose coordinate system is not the layer's.

#include "adapters/memory/memory_services.h"
#include "adapters/ogr/disk_services.h"
#include "adapters/qgis/qgis_map.h"
#include "adapters/qgis/travel_dialog.h"
#include "movement/frmOVI.h"
#include "tests/gui/qgis_environment.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <iostream>
#include <optional>
#include <QAccessible>
#include <qgscoordinatetransform.h>
#include <qgsmapcanvas.h>
#include <qgsproject.h>
#include <qgsvectordataprovider.h>
#include <qgsvectorlayer.h>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QTextBrowser>
#include <utility>

namespace wxl::qgis {
namespace {

const QRgb kGrey = qRgb(223, 223, 223);
const QRgb kRed = qRgb(255, 0, 0);
const QgsRectangle kAround(499000, 5797500, 505000, 5802500);

/// Fixes in UTM zone 32, 2 km apart, on a map in another system.
class TrackPlaces : public testing::Test {
protected:
    TrackPlaces() {
        m_services.Messages = &Messages;
        m_services.Dialogs = &m_dialogs;
        m_services.Host = &Host;
        m_services = m_disk.Complete(m_services);
        Canvas.resize(800, 600);
        Canvas.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&Canvas));
    }

    ~TrackPlaces() override {
        if (Dialog) Dialog->reject();
        Dialog.reset();
        Form.reset();
        Canvas.stopRendering();
        Canvas.setLayers({});
        QgsProject::instance()->clear();
    }

    /// Puts the places into the project as the highlighted layer, all selected.
    QgsVectorLayer& Open(const std::vector<QgsPointXY>& places, const QString& crs = QStringLiteral("EPSG:32632")) {
        Layer =
            new QgsVectorLayer(QStringLiteral("Point?crs=") + crs, QStringLiteral("fixes"), QStringLiteral("memory"));
        QgsFeatureList features;
        for (const QgsPointXY& place : places) {
            QgsFeature feature(Layer->fields());
            feature.setGeometry(QgsGeometry::fromPointXY(place));
            features << feature;
        }
        EXPECT_TRUE(Layer->dataProvider()->addFeatures(features));
        QgsProject::instance()->addMapLayer(Layer);
        Layer->selectAll();
        return *Layer;
    }

    /// The map in this system, showing these places of the layer's system.
    void ShowMap(const QString& crs, const QgsRectangle& part) {
        Canvas.setDestinationCrs(QgsCoordinateReferenceSystem(crs));
        Canvas.setExtent(ToMap().transformBoundingBox(part));
        tests::SettleWindows();
    }

    QgsCoordinateTransform ToMap() const {
        return QgsCoordinateTransform(Layer->crs(), Canvas.mapSettings().destinationCrs(),
                                      QgsProject::instance()->transformContext());
    }

    void OpenPlayer() {
        Form.emplace(m_services);
        Form->SetApplication(std::make_shared<QgisApplication>(Desktop{&Canvas, nullptr, [this] { return Layer; }}));
        Form->SetLastFID(Layer->featureCount());
        Dialog = std::make_unique<TravelDialog>(*Form, Host, &Canvas);
        Dialog->show();
    }

    void Step() { Dialog->findChild<QPushButton*>(QStringLiteral("CmbStep"))->click(); }

    QImage Picture() {
        QApplication::processEvents();
        return Canvas.grab().toImage().convertToFormat(QImage::Format_RGB32);
    }

    /// Where a place of the layer's system is on screen.
    QPointF OnScreen(const QgsPointXY& place) const {
        return Canvas.mapSettings().mapToPixel().transform(ToMap().transform(place)).toQPointF();
    }

    bool Shows(const QImage& picture, const QPointF& at, QRgb colour, int reach = 1) {
        for (int dy = -reach; dy <= reach; ++dy)
            for (int dx = -reach; dx <= reach; ++dx) {
                const QPoint pixel = at.toPoint() + QPoint(dx, dy);
                if (picture.rect().contains(pixel) && picture.pixel(pixel) == colour) return true;
            }
        return false;
    }

    /// Whether the line between two places is seen somewhere about its middle: a slanting one covers few pixels wholly.
    bool ShowsMiddle(const QImage& picture, const QgsPointXY& from, const QgsPointXY& to) {
        for (int percent = 40; percent <= 60; ++percent)
            if (Shows(picture, OnScreen(from + (to - from) * (percent / 100.0)), kGrey)) return true;
        return false;
    }

    static int CountOf(const QImage& picture, QRgb colour) {
        int count = 0;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x) count += picture.pixel(x, y) == colour;
        return count;
    }

    memory::MemoryMessages Messages;
    QgisHost Host{{}};
    QgsMapCanvas Canvas;
    QgsVectorLayer* Layer = nullptr;

private:
    files::DiskServices m_disk;
    memory::MemoryFileDialogs m_dialogs;
    platform::Services m_services;

protected:
    std::optional<movement::frmOVI> Form;
    std::unique_ptr<TravelDialog> Dialog;
};

class TrackPlacesIn : public TrackPlaces, public testing::WithParamInterface<const char*> {};

TEST_P(TrackPlacesIn, Legs_stand_where_the_layer_stands) {
    const std::vector<QgsPointXY> places = {{500000, 5800000}, {502000, 5801000}, {504000, 5799000}};
    Open(places);
    ShowMap(QString::fromLatin1(GetParam()), kAround);
    OpenPlayer();
    const QgsRectangle before = Canvas.extent();
    Step();
    EXPECT_EQ(Canvas.extent(), before) << "the leg's end is in view";
    QImage picture = Picture();
    EXPECT_TRUE(ShowsMiddle(picture, {500000, 5800000}, {502000, 5801000}));
    const QPointF tip = OnScreen(places[1]);
    const QPointF back = OnScreen(places[0]) - tip;
    EXPECT_TRUE(Shows(picture, tip + back * (6.0 / std::hypot(back.x(), back.y())), kRed));
    Step();
    picture = Picture();
    EXPECT_TRUE(ShowsMiddle(picture, places[1], places[2]));
    EXPECT_TRUE(Messages.Texts().empty());
}

TEST_P(TrackPlacesIn, The_map_follows_a_leg_that_leaves_the_view) {
    Open({{500000, 5800000}, {502000, 5801000}, {520000, 5801000}});
    ShowMap(QString::fromLatin1(GetParam()), kAround);
    OpenPlayer();
    Step();
    Step();
    const QgsPointXY centre = Canvas.extent().center();
    const QgsPointXY end = ToMap().transform(QgsPointXY(520000, 5801000));
    EXPECT_NEAR(centre.x(), end.x(), Canvas.extent().width() * 1e-6);
    EXPECT_NEAR(centre.y(), end.y(), Canvas.extent().height() * 1e-6);
}

TEST_P(TrackPlacesIn, Legs_follow_the_map_into_another_system) {
    Open({{500000, 5800000}, {502000, 5801000}});
    ShowMap(QString::fromLatin1(GetParam()), kAround);
    OpenPlayer();
    Step();
    for (const char* other : {"EPSG:3035", "EPSG:4326", "EPSG:3857"}) {
        ShowMap(QString::fromLatin1(other), kAround);
        const QImage picture = Picture();
        EXPECT_TRUE(ShowsMiddle(picture, {500000, 5800000}, {502000, 5801000})) << other;
        EXPECT_LT(CountOf(picture, kRed), 60) << other << ": the leg is there once";
    }
}

TEST_P(TrackPlacesIn, Zoom_to_track_shows_every_fix) {
    const std::vector<QgsPointXY> places = {{500000, 5800000}, {502000, 5801000}, {520000, 5831000}};
    Open(places);
    ShowMap(QString::fromLatin1(GetParam()), kAround);
    OpenPlayer();
    Dialog->findChild<QPushButton*>(QStringLiteral("cmdZoomTrack"))->click();
    for (const QgsPointXY& place : places) EXPECT_TRUE(QRectF(Canvas.rect()).contains(OnScreen(place)));
    const double width = Canvas.extent().width();
    Dialog->findChild<QPushButton*>(QStringLiteral("cmdZoomIn"))->click();
    EXPECT_NEAR(Canvas.extent().width(), width / 2.0, width * 1e-3);
    Dialog->findChild<QPushButton*>(QStringLiteral("cmdZoomOut"))->click();
    EXPECT_NEAR(Canvas.extent().width(), width, width * 1e-3);
}

INSTANTIATE_TEST_SUITE_P(Systems, TrackPlacesIn, testing::Values("EPSG:3857", "EPSG:32632", "EPSG:4326"),
                         [](const auto& system) {
                             std::string name = system.param;
                             name.replace(4, 1, "_");
                             return name;
                         });

// On the ground from 10 E to 30 E along the parallel of 60 N: in ETRS89-LAEA a curve whose middle, at 20 E, is far
// north of the straight line between its ends.
TEST_F(TrackPlaces, A_long_leg_is_straight_in_the_system_of_its_layer) {
    Open({{10, 60}, {30, 60}}, QStringLiteral("EPSG:4326"));
    ShowMap(QStringLiteral("EPSG:3035"), QgsRectangle(8, 58, 32, 64));
    OpenPlayer();
    Step();
    const QImage picture = Picture();
    const QPointF middle = OnScreen({20, 60});
    const QPointF chord = (OnScreen({10, 60}) + OnScreen({30, 60})) / 2.0;
    ASSERT_GT(std::abs(middle.y() - chord.y()), 15.0);
    EXPECT_TRUE(Shows(picture, middle, kGrey));
    EXPECT_FALSE(Shows(picture, chord, kGrey, 4));
}

TEST_F(TrackPlaces, A_leg_over_the_edge_of_the_world_does_not_cross_the_map) {
    // UTM zone 60 goes over the 180th meridian, where the Mercator map ends.
    Open({{700000, 6000000}, {900000, 6000000}}, QStringLiteral("EPSG:32660"));
    Canvas.setDestinationCrs(QgsCoordinateReferenceSystem(QStringLiteral("EPSG:3857")));
    Canvas.setExtent(QgsRectangle(-20100000, -15000000, 20100000, 15000000));
    tests::SettleWindows();
    OpenPlayer();
    Step();
    const QImage picture = Picture();
    EXPECT_GT(CountOf(picture, kRed), 0);
    const int row = static_cast<int>(OnScreen({700000, 6000000}).y());
    for (int y = row - 5; y <= row + 5; ++y)
        EXPECT_FALSE(Shows(picture, QPointF(400.0, y), kGrey, 0)) << "nothing in the middle of the map";
}

TEST_F(TrackPlaces, A_fix_that_the_map_cannot_show_is_told) {
    // Longitude and latitude of one fix are exchanged: there is no latitude of 120 degrees.
    Open({{10, 50}, {50, 120}, {11, 51}}, QStringLiteral("EPSG:4326"));
    ShowMap(QStringLiteral("EPSG:3035"), QgsRectangle(8, 48, 12, 53));
    OpenPlayer();
    const QgsRectangle before = Canvas.extent();
    Step();
    const auto* notice = Dialog->findChild<QLabel*>(QStringLiteral("lblNotice"));
    EXPECT_EQ(notice->text(),
              "This fix has no place in the project's coordinate system: its legs are not drawn, but saved.");
    EXPECT_TRUE(notice->isVisible());
    EXPECT_EQ(CountOf(Picture(), kRed), 0);
    EXPECT_EQ(Canvas.extent(), before);
    Step();
    EXPECT_FALSE(notice->isVisible());
    EXPECT_TRUE(Messages.Texts().empty());
}

TEST_F(TrackPlaces, A_removed_layer_leaves_its_path_and_a_sentence) {
    Open({{500000, 5800000}, {502000, 5801000}});
    ShowMap(QStringLiteral("EPSG:32632"), kAround);
    OpenPlayer();
    Step();
    QgsVectorLayer* removed = std::exchange(Layer, nullptr);
    QgsProject::instance()->removeMapLayer(removed);
    EXPECT_EQ(Messages.Texts(),
              std::vector<std::string>{"Feature Layer changed. Please restart the display tracks tool."});
    Host.Yield();
    EXPECT_EQ(Dialog->findChild<QLabel*>(QStringLiteral("lblNotice"))->text(),
              "The layer \"fixes\" was removed from the map: its track ends here. The drawn path can still be saved.");
    EXPECT_FALSE(Dialog->findChild<QPushButton*>(QStringLiteral("CmbStep"))->isEnabled());
    EXPECT_GT(CountOf(Picture(), kRed), 0);
}

TEST_F(TrackPlaces, Everything_in_the_player_has_a_name_for_screen_readers) {
    Open({{500000, 5800000}, {502000, 5801000}});
    ShowMap(QStringLiteral("EPSG:32632"), kAround);
    OpenPlayer();
    for (QWidget* widget : Dialog->findChildren<QWidget*>()) {
        if ((widget->focusPolicy() & Qt::TabFocus) == 0) continue;
        EXPECT_NE(QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name), "")
            << widget->objectName().toStdString();
        EXPECT_NE(widget->toolTip(), "") << widget->objectName().toStdString();
    }
    Dialog->findChild<QPushButton*>(QStringLiteral("btnHelp"))->click();
    const auto* guide = Dialog->findChild<QDialog*>(QStringLiteral("guide"));
    ASSERT_NE(guide, nullptr);
    EXPECT_EQ(guide->findChild<QTextBrowser*>()->source().toString(),
              "qrc:/wxl/guide/movement-tools.md#the-track-player-in-qgis");
}

// As many turns of the event loop as there are events, not as many as the machine can make.
TEST_F(TrackPlaces, The_player_sleeps_between_two_steps) {
    Open({{500000, 5800000}, {502000, 5801000}, {504000, 5801000}});
    ShowMap(QStringLiteral("EPSG:32632"), kAround);
    OpenPlayer();
    int turns = 0;
    const auto counting = Host.OnYield([&turns] { ++turns; });
    Form->TxtSec.Text = "0.4";
    Form->CmdTrackMoose_Click();
    EXPECT_EQ(Messages.Last().Text, "No more steps. Please reset.");
    std::cout << "turns in 0.8 s: " << turns << "\n";
    EXPECT_LT(turns, 100) << "0.8 s";
}

TEST_F(TrackPlaces, The_grey_line_is_seen_on_a_white_map) {
    Open({{500000, 5800000}, {504000, 5800000}});
    ShowMap(QStringLiteral("EPSG:32632"), kAround);
    OpenPlayer();
    Step();
    const QImage picture = Picture();
    const QPointF on = OnScreen({501000, 5800000});
    int darkest = 255;
    for (int dy = -4; dy <= 4; ++dy) darkest = std::min(darkest, qGray(picture.pixel(on.toPoint() + QPoint(0, dy))));
    EXPECT_LE(darkest, 90) << "a dark rim";
    EXPECT_TRUE(Shows(picture, on, kGrey));
}

}  // namespace
}  // namespace wxl::qgis
