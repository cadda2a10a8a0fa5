#include "adapters/qgis/curve_plot.h"

#include <algorithm>
#include <cmath>
#include <QPen>
#include <qwt_legend.h>
#include <qwt_plot.h>
#include <qwt_plot_canvas.h>
#include <qwt_plot_curve.h>
#include <qwt_plot_grid.h>
#include <qwt_plot_marker.h>
#include <qwt_scale_div.h>
#include <qwt_scale_draw.h>
#include <qwt_symbol.h>
#include <qwt_text.h>

namespace wxl::qgis {
namespace {

/// Labels the ticks with the texts of the axis.
class AxisLabels final : public QwtScaleDraw {
public:
    explicit AxisLabels(const QVector<PlotTick>& ticks) : m_ticks(ticks) {}

    QwtText label(double value) const override {
        for (const PlotTick& tick : m_ticks)
            if (tick.Value == value) return plain(tick.Text);
        return {};
    }

    /// A text as it stands, whatever an ID looks like.
    static QwtText plain(const QString& text) { return QwtText(text, QwtText::PlainText); }

private:
    QVector<PlotTick> m_ticks;
};

QwtText in_font(const QString& text, const QFont& font) {
    QwtText shown = AxisLabels::plain(text);
    shown.setFont(font);
    return shown;
}

void set_axis(QwtPlot& plot, QwtPlot::Axis which, const PlotAxis& axis) {
    QList<double> ticks;
    for (const PlotTick& tick : axis.Ticks) ticks << tick.Value;
    plot.setAxisScaleDraw(which, new AxisLabels(axis.Ticks));
    plot.setAxisScaleDiv(which, QwtScaleDiv(axis.From, axis.To, {}, {}, ticks));
    plot.setAxisFont(which, plot.font());
    plot.setAxisTitle(which, in_font(axis.Title, plot.font()));
}

QColor curve_colour(const QPalette& palette) {
    return ReadableOn(palette.color(QPalette::Base), QColor(0x1b, 0x6c, 0xa8));
}

QColor between(const QColor& from, const QColor& to, double share) {
    return QColor::fromRgbF(from.redF() + (to.redF() - from.redF()) * share,
                            from.greenF() + (to.greenF() - from.greenF()) * share,
                            from.blueF() + (to.blueF() - from.blueF()) * share);
}

void add_piece(QwtPlot& plot, const QVector<QPointF>& piece) {
    auto* curve = new QwtPlotCurve;
    curve->setItemAttribute(QwtPlotItem::Legend, false);
    curve->setRenderHint(QwtPlotItem::RenderAntialiased);
    curve->setPen(curve_colour(plot.palette()), 2.0);
    curve->setSamples(piece);
    curve->attach(&plot);
}

/// Every mark has a shape of its own; dashes lie on the wider line where both stand at one place.
void add_mark(QwtPlot& plot, const PlotMark& mark) {
    const QPalette palette = plot.palette();
    auto* marker = new QwtPlotMarker;
    marker->setTitle(in_font(mark.Name, plot.font()));
    marker->setItemAttribute(QwtPlotItem::Legend, true);
    marker->setRenderHint(QwtPlotItem::RenderAntialiased);
    marker->setLegendIconSize({24, 14});
    marker->setValue(mark.At);
    switch (mark.Shape) {
        case PlotMark::Look::kDot:
            marker->setSymbol(new QwtSymbol(QwtSymbol::Ellipse, curve_colour(palette),
                                            QPen(palette.color(QPalette::Base), 1.5), QSize(11, 11)));
            marker->setZ(50.0);
            break;
        case PlotMark::Look::kDashes:
            marker->setLineStyle(QwtPlotMarker::VLine);
            marker->setLinePen(palette.color(QPalette::Text), 2.0, Qt::DashLine);
            marker->setZ(40.0);
            break;
        case PlotMark::Look::kLine:
            marker->setLineStyle(QwtPlotMarker::VLine);
            marker->setLinePen(ReadableOn(palette.color(QPalette::Base), QColor(0xd6, 0x45, 0x3d)), 4.0);
            marker->setZ(30.0);
            break;
    }
    marker->attach(&plot);
}

}  // namespace

double ContrastOf(const QColor& a, const QColor& b) {
    const auto light = [](const QColor& colour) {
        const auto linear = [](double part) {
            return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
    };
    const double first = light(a) + 0.05;
    const double second = light(b) + 0.05;
    return std::max(first, second) / std::min(first, second);
}

QColor ReadableOn(const QColor& ground, const QColor& wanted) {
    constexpr double kReadable = 4.5;
    const bool darkGround = ContrastOf(ground, Qt::white) > ContrastOf(ground, Qt::black);
    QColor colour = wanted;
    for (int step = 1; step <= 20 && ContrastOf(ground, colour) < kReadable; ++step) {
        colour = between(wanted, darkGround ? Qt::white : Qt::black, step / 20.0);
    }
    return colour;
}

QWidget* NewCurvePlot(QWidget* parent) {
    auto* plot = new QwtPlot(parent);
    plot->setMinimumSize(280, 220);
    QFont small = plot->font();
    small.setPointSizeF(0.85 * small.pointSizeF());
    plot->setFont(small);
    plot->insertLegend(new QwtLegend, QwtPlot::TopLegend);
    if (auto* canvas = qobject_cast<QwtPlotCanvas*>(plot->canvas())) canvas->setFrameStyle(QFrame::NoFrame);
    return plot;
}

void ShowCurve(QWidget& plotWidget, const CurvePicture& picture) {
    auto& plot = static_cast<QwtPlot&>(plotWidget);
    plot.detachItems();
    set_axis(plot, QwtPlot::xBottom, picture.X);
    set_axis(plot, QwtPlot::yLeft, picture.Y);
    plot.setCanvasBackground(plot.palette().color(QPalette::Base));
    auto* grid = new QwtPlotGrid;
    grid->enableX(false);
    grid->setPen(between(plot.palette().color(QPalette::Base), plot.palette().color(QPalette::Text), 0.2), 1.0);
    grid->attach(&plot);
    for (const QVector<QPointF>& piece : picture.Pieces) add_piece(plot, piece);
    for (const PlotMark& mark : picture.Marks) add_mark(plot, mark);
    plot.setFooter(in_font(picture.Note, plot.font()));
    plot.replot();
}

}  // namespace wxl::qgis
