#include "adapters/qgis/qgis_graphics.h"
#include "movement/track_symbol.h"
#include "tests/gui/qgis_environment.h"

#include <cmath>
#include <gtest/gtest.h>
#include <QApplication>
#include <qgsmapcanvas.h>
#include <QPainter>
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
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&Canvas));
        Canvas.setExtent(QgsRectangle(0.0, 0.0, 800.0, 600.0));
        tests::SettleWindows();
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

    /// The plain drawing: every leg straight onto a white picture, from the first leg's place in whole pixels.
    QImage Plain(const std::vector<platform::TrackLeg>& legs) {
        using namespace movement::track_symbol;
        const qreal ratio = Canvas.devicePixelRatioF();
        const QTransform view = Canvas.mapSettings().mapToPixel().transform();
        const QTransform scale(view.m11(), view.m12(), view.m21(), view.m22(), 0.0, 0.0);
        const QPointF first = view.map(QPointF(legs.front().From.X, legs.front().From.Y)) * ratio;
        const QPointF origin = QPointF(std::round(first.x()), std::round(first.y())) / ratio;
        const auto place = [&](const platform::Point& p) {
            return origin + scale.map(QPointF(p.X - legs.front().From.X, p.Y - legs.front().From.Y));
        };
        QImage picture(Canvas.mapSettings().outputSize() * ratio, QImage::Format_RGB32);
        picture.setDevicePixelRatio(ratio);
        picture.fill(Qt::white);
        QPainter painter(&picture);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(QColor(kCasingColour.Red, kCasingColour.Green, kCasingColour.Blue), kCasingWidth));
        for (const auto& leg : legs) painter.drawLine(place(leg.From), place(leg.To));
        for (const auto& leg : legs) {
            const QPointF from = place(leg.From);
            const QPointF to = place(leg.To);
            painter.setPen(QPen(QColor(kLineColour.Red, kLineColour.Green, kLineColour.Blue), kLineWidth));
            painter.drawLine(from, to);
            const QPointF along = (to - from) / std::hypot(to.x() - from.x(), to.y() - from.y());
            const QPointF half = QPointF(-along.y(), along.x()) * (kMarkerWidth / 2.0);
            const QPointF base = to - along * kMarkerLength;
            painter.setPen(Qt::NoPen);
            painter.setBrush(QColor(kMarkerColour.Red, kMarkerColour.Green, kMarkerColour.Blue));
            painter.drawPolygon(QPolygonF({to, base + half, base - half}));
        }
        return picture;
    }

    /// Pixels inside the canvas's frame that differ visibly: by more than the rounding of blended edges, which of dark
    /// casings on white is up to 1/32 of 185.
    static int Differences(const QImage& a, const QImage& b) {
        int count = 0;
        for (int y = 3; y < a.height() - 3; ++y)
            for (int x = 3; x < a.width() - 3; ++x) {
                const QRgb left = a.pixel(x, y);
                const QRgb right = b.pixel(x, y);
                count += std::abs(qRed(left) - qRed(right)) > 6 || std::abs(qGreen(left) - qGreen(right)) > 6 ||
                         std::abs(qBlue(left) - qBlue(right)) > 6;
            }
        return count;
    }

    QgsMapCanvas Canvas;
};

TEST_F(TrackGraphicsTest, A_leg_is_a_grey_line_with_a_red_marker_at_its_end) {
    QgisTrackGraphics graphics(Canvas, {});
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
        QgisTrackGraphics graphics(Canvas, {});
        for (const auto& leg : legs) {
            graphics.AddLeg(leg);
            graphics.Refresh();
            QApplication::processEvents();
        }
        oneByOne = Picture();
    }
    QgisTrackGraphics graphics(Canvas, {});
    for (const auto& leg : legs) graphics.AddLeg(leg);
    graphics.Refresh();
    EXPECT_EQ(Picture(), oneByOne);
}

TEST_F(TrackGraphicsTest, Legs_follow_the_map_when_it_moves) {
    QgisTrackGraphics graphics(Canvas, {});
    graphics.AddLeg({{100.0, 300.0}, {500.0, 300.0}});
    graphics.Refresh();
    Picture();
    Canvas.setExtent(QgsRectangle(200.0, 100.0, 1000.0, 700.0));
    tests::SettleWindows();
    const QImage picture = Picture();
    EXPECT_TRUE(Shows(picture, 300.0, 300.0, kGrey));
    EXPECT_TRUE(Shows(picture, 494.0, 300.0, kRed));
    EXPECT_FALSE(Shows(picture, 600.0, 300.0, kGrey));
}

TEST_F(TrackGraphicsTest, Legs_of_a_panned_and_zoomed_map_equal_the_plain_drawing) {
    const auto legs = RandomLegs(200, 600.0);
    QgisTrackGraphics graphics(Canvas, {});
    std::vector<platform::TrackLeg> drawn;
    std::mt19937_64 random(11);
    std::uniform_real_distribution<double> place(-300.0, 900.0);
    for (std::size_t i = 0; i < legs.size(); ++i) {
        graphics.AddLeg(legs[i]);
        drawn.push_back(legs[i]);
        graphics.Refresh();
        if (i % 10 == 0) Canvas.setCenter({place(random), place(random)});
        if (i == 100) Canvas.zoomScale(Canvas.scale() * 1.37);
        if (i == 150) Canvas.setRotation(33.0);
        if (i % 20 != 5) continue;
        tests::SettleWindows();
        QApplication::processEvents();
        const QImage seen = Canvas.viewport()->grab().toImage().convertToFormat(QImage::Format_RGB32);
        const QImage plain = Plain(drawn);
        ASSERT_EQ(seen.size(), plain.size());
        // Long lines are cut at the edges of tiles, after which some blended pixels round otherwise: less than 0.02 %.
        // A tile in the wrong place differs by thousands.
        ASSERT_LE(Differences(seen, plain), 100) << "after leg " << i;
    }
}

// Tiles are 256 pixels wide from the first leg's start on; the head of a leg shorter than itself reaches 12 pixels back
// and 4 to each side.
TEST_F(TrackGraphicsTest, Heads_of_short_legs_are_whole_where_tiles_meet) {
    const platform::Point first{100.0, 500.0};
    std::vector<platform::TrackLeg> legs = {{first, {130.0, 500.0}}};
    for (const double beyond : {9.0, 10.0, 11.0}) {
        const platform::Point from{first.X + 256.0 + beyond, first.Y - 30.0 * (beyond - 8.0)};
        legs.push_back({from, {from.X + 0.5, from.Y}});
    }
    QgisTrackGraphics graphics(Canvas, {});
    for (const auto& leg : legs) graphics.AddLeg(leg);
    graphics.Refresh();
    QApplication::processEvents();
    const QImage seen = Canvas.viewport()->grab().toImage().convertToFormat(QImage::Format_RGB32);
    EXPECT_EQ(Differences(seen, Plain(legs)), 0);
}

TEST_F(TrackGraphicsTest, Legs_turn_with_the_map) {
    QgisTrackGraphics graphics(Canvas, {});
    graphics.AddLeg({{100.0, 300.0}, {500.0, 300.0}});
    graphics.Refresh();
    Picture();
    Canvas.setRotation(40.0);
    tests::SettleWindows();
    const QImage picture = Picture();
    EXPECT_TRUE(Shows(picture, 300.0, 300.0, kGrey));
    EXPECT_TRUE(Shows(picture, 494.0, 300.0, kRed));
}

TEST_F(TrackGraphicsTest, A_resized_map_shows_the_legs) {
    QgisTrackGraphics graphics(Canvas, {});
    graphics.AddLeg({{100.0, 300.0}, {500.0, 300.0}});
    graphics.Refresh();
    Picture();
    Canvas.resize(500, 500);
    tests::SettleWindows();
    const QImage picture = Picture();
    EXPECT_TRUE(Shows(picture, 300.0, 300.0, kGrey));
}

TEST_F(TrackGraphicsTest, A_step_with_30000_kept_legs_is_on_screen_wherever_the_map_was_moved) {
    QgisTrackGraphics graphics(Canvas, {});
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
    graphics.AddLeg({{100.0, 300.0}, {500.0, 300.0}});
    graphics.Refresh();
    QApplication::processEvents();
    Canvas.viewport()->repaint();
    EXPECT_TRUE(Shows(Picture(), 300.0, 300.0, kGrey));

    // Steps that pan, from one side of the track to the other as the player does.
    for (int i = 0; i < 4; ++i) {
        const double centre = i % 2 == 0 ? 650.3 : 150.7;
        graphics.AddLeg({{centre, 300.0}, {centre + 40.0, 310.0}});
        Canvas.setCenter({centre, 300.0});
        graphics.Refresh();
        QApplication::processEvents();
        Canvas.viewport()->repaint();
    }
    Canvas.setCenter({400.0, 300.0});
    EXPECT_TRUE(Shows(Picture(), 300.0, 300.0, kGrey));
}

}  // namespace
}  // namespace wxl::qgis
