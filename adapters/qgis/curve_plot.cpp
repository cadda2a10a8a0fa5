#include "adapters/qgis/curve_plot.h"

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
    return palette.color(QPalette::Base).lightness() < 128 ? QColor(0x6c, 0xb8, 0xf0) : QColor(0x1b, 0x6c, 0xa8);
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
            marker->setLinePen(QColor(0xd6, 0x45, 0x3d), 4.0);
            marker->setZ(30.0);
            break;
    }
    marker->attach(&plot);
}

}  // namespace

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

void ShowCurve(QWidget& widget, const CurvePicture& picture) {
    auto& plot = static_cast<QwtPlot&>(widget);
    plot.detachItems();
    set_axis(plot, QwtPlot::xBottom, picture.X);
    set_axis(plot, QwtPlot::yLeft, picture.Y);
    plot.setCanvasBackground(plot.palette().color(QPalette::Base));
    auto* grid = new QwtPlotGrid;
    grid->enableX(false);
    grid->setPen(plot.palette().color(QPalette::Midlight), 1.0);
    grid->attach(&plot);
    for (const QVector<QPointF>& piece : picture.Pieces) add_piece(plot, piece);
    for (const PlotMark& mark : picture.Marks) add_mark(plot, mark);
    plot.setFooter(in_font(picture.Note, plot.font()));
    plot.replot();
}

}  // namespace wxl::qgis
