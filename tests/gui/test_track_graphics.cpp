#include "adapters/qgis/qgis_graphics.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <gtest/gtest.h>
#include <iostream>
#include <QApplication>
#include <qgsmapcanvas.h>
#include <QTest>
#include <random>

namespace wxl::qgis {
namespace {

const QRgb kGrey = qRgb(223, 223, 223);
const QRgb kRed = qRgb(255, 0, 0);

/// A canvas of 800 x 600 pixels of 1 m each, its lower-left corner at the origin.
class TrackGraphicsTest : public testing::Test {
protected:
    TrackGraphicsTest() {
        Canvas.resize(800, 600);
        Canvas.show();
        QTest::qWait(20);
        Canvas.setExtent(QgsRectangle(0.0, 0.0, 800.0, 600.0));
        QTest::qWait(20);
    }

    QImage Picture() {
        QApplication::processEvents();
        return Canvas.grab().toImage().convertToFormat(QImage::Format_RGB32);
    }

    /// Whether the place, give or take a pixel, shows exactly this colour.
    bool Shows(const QImage& picture, double x, double y, QRgb colour) {
        const QgsPointXY place = Canvas.mapSettings().mapToPixel().transform(x, y);
        const QPoint pixel(static_cast<int>(place.x()), static_cast<int>(place.y()));
        for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx)
                if (picture.pixel(pixel + QPoint(dx, dy)) == colour) return true;
        return false;
    }

    static std::vector<platform::TrackLeg> RandomLegs(int count, double reach) {
        std::mt19937_64 random(3);
        std::uniform_real_distribution<double> x(-reach, 800.0 + reach);
        std::uniform_real_distribution<double> y(-reach, 600.0 + reach);
        std::vector<platform::TrackLeg> legs;
        platform::Point from{x(random), y(random)};
        for (int i = 0; i < count; ++i) {
            const platform::Point to{x(random), y(random)};
            legs.push_back({from, to});
            from = to;
        }
        return legs;
    }

    QgsMapCanvas Canvas;
};

TEST_F(TrackGraphicsTest, A_leg_is_a_grey_line_with_a_red_marker_at_its_end) {
    QgisTrackGraphics graphics(Canvas);
    graphics.AddLeg({{100.0, 300.0}, {500.0, 300.0}});
    graphics.Refresh();
    const QImage picture = Picture();
    EXPECT_TRUE(Shows(picture, 300.0, 300.0, kGrey));
    EXPECT_TRUE(Shows(picture, 494.0, 300.0, kRed));
    EXPECT_FALSE(Shows(picture, 494.0, 310.0, kRed)) << "the marker is no wider than 8";
    EXPECT_FALSE(Shows(picture, 506.0, 300.0, kRed)) << "the marker ends with the leg";
    graphics.DeleteLegs();
    graphics.Refresh();
    EXPECT_FALSE(Shows(Picture(), 300.0, 300.0, kGrey));
}

TEST_F(TrackGraphicsTest, Legs_drawn_one_by_one_look_like_legs_drawn_at_once) {
    const auto legs = RandomLegs(60, 200.0);
    QImage oneByOne;
    {
        QgisTrackGraphics graphics(Canvas);
        for (const auto& leg : legs) {
            graphics.AddLeg(leg);
            graphics.Refresh();
            QApplication::processEvents();
        }
        oneByOne = Picture();
    }
    QgisTrackGraphics graphics(Canvas);
    for (const auto& leg : legs) graphics.AddLeg(leg);
    graphics.Refresh();
    EXPECT_EQ(Picture(), oneByOne);
}

TEST_F(TrackGraphicsTest, Legs_follow_the_map_when_it_moves) {
    QgisTrackGraphics graphics(Canvas);
    graphics.AddLeg({{100.0, 300.0}, {500.0, 300.0}});
    graphics.Refresh();
    Picture();
    Canvas.setExtent(QgsRectangle(200.0, 100.0, 1000.0, 700.0));
    QTest::qWait(20);
    const QImage picture = Picture();
    EXPECT_TRUE(Shows(picture, 300.0, 300.0, kGrey));
    EXPECT_TRUE(Shows(picture, 494.0, 300.0, kRed));
    EXPECT_FALSE(Shows(picture, 600.0, 300.0, kGrey));
}

TEST_F(TrackGraphicsTest, Legs_turn_with_the_map) {
    QgisTrackGraphics graphics(Canvas);
    graphics.AddLeg({{100.0, 300.0}, {500.0, 300.0}});
    graphics.Refresh();
    Picture();
    Canvas.setRotation(40.0);
    QTest::qWait(20);
    const QImage picture = Picture();
    EXPECT_TRUE(Shows(picture, 300.0, 300.0, kGrey));
    EXPECT_TRUE(Shows(picture, 494.0, 300.0, kRed));
}

TEST_F(TrackGraphicsTest, A_resized_map_shows_the_legs) {
    QgisTrackGraphics graphics(Canvas);
    graphics.AddLeg({{100.0, 300.0}, {500.0, 300.0}});
    graphics.Refresh();
    Picture();
    Canvas.resize(500, 500);
    QTest::qWait(20);
    const QImage picture = Picture();
    EXPECT_TRUE(Shows(picture, 300.0, 300.0, kGrey));
}

TEST_F(TrackGraphicsTest, A_step_with_30000_kept_legs_is_measured) {
    QgisTrackGraphics graphics(Canvas);
    auto legs = RandomLegs(30000, 0.0);
    // Steps of an animal, most of them short.
    for (std::size_t i = 1; i < legs.size(); ++i) {
        auto& leg = legs[i];
        leg.From = legs[i - 1].To;
        leg.To = {leg.From.X + (leg.To.X - leg.From.X) / 20.0, leg.From.Y + (leg.To.Y - leg.From.Y) / 20.0};
    }
    for (const auto& leg : legs) graphics.AddLeg(leg);
    graphics.Refresh();
    Picture();
    std::array<double, 21> steps{};
    for (double& step : steps) {
        const auto start = std::chrono::steady_clock::now();
        graphics.AddLeg({{100.0, 300.0}, {500.0, 300.0}});
        graphics.Refresh();
        QApplication::processEvents();
        Canvas.viewport()->repaint();
        step = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    }
    std::sort(steps.begin(), steps.end());
    std::cout << "step with 30000 kept legs in view: median " << steps[10] << " ms, worst " << steps[20] << " ms\n";
    EXPECT_TRUE(Shows(Picture(), 300.0, 300.0, kGrey)) << "the step is on screen";

    const auto start = std::chrono::steady_clock::now();
    Canvas.setCenter({410.0, 300.0});
    QApplication::processEvents();
    Canvas.viewport()->repaint();
    const std::chrono::duration<double, std::milli> moved = std::chrono::steady_clock::now() - start;
    std::cout << "30000 legs drawn anew for a map that moved: " << moved.count() << " ms\n";
    EXPECT_TRUE(Shows(Picture(), 300.0, 300.0, kGrey));
}

}  // namespace
}  // namespace wxl::qgis
