#include "adapters/qgis/profile_plot_widget.h"

#include "adapters/qgis/qgis_values.h"
#include "pictures/profile_axes.h"

#include <cmath>
#include <QLabel>
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
#include <utility>

namespace wxl::qgis {
namespace {

/// Labels the ticks with the texts of the axis.
class AxisLabels final : public QwtScaleDraw {
public:
    explicit AxisLabels(pictures::Axis axis) : m_axis(std::move(axis)) {}

    QwtText label(double value) const override {
        for (const pictures::Tick& tick : m_axis.Ticks)
            if (tick.Value == value) return ToQString(tick.Text);
        return {};
    }

private:
    pictures::Axis m_axis;
};

/// A title is text as it stands, whatever an ID looks like.
QwtText small_text(const std::string& text, const QWidget& widget) {
    QwtText shown(ToQString(text), QwtText::PlainText);
    shown.setFont(widget.font());
    return shown;
}

void set_axis(QwtPlot& plot, QwtPlot::Axis which, const pictures::Axis& axis, const std::string& title) {
    QList<double> ticks;
    for (const pictures::Tick& tick : axis.Ticks) ticks << tick.Value;
    plot.setAxisScaleDraw(which, new AxisLabels(axis));
    plot.setAxisScaleDiv(which, QwtScaleDiv(axis.From, axis.To, {}, {}, ticks));
    plot.setAxisFont(which, plot.font());
    plot.setAxisTitle(which, small_text(title, plot));
}

/// A curve without samples outside the numbers: each unbroken piece is a curve of its own.
void add_curve(QwtPlot& plot, const engine::SearchProfile& rows, const QColor& colour) {
    QVector<QPointF> piece;
    const auto finish = [&] {
        if (piece.isEmpty()) return;
        auto* curve = new QwtPlotCurve;
        curve->setItemAttribute(QwtPlotItem::Legend, false);
        curve->setRenderHint(QwtPlotItem::RenderAntialiased);
        curve->setPen(colour, 2.0);
        curve->setSamples(piece);
        curve->attach(&plot);
        piece.clear();
    };
    for (const engine::ProfileRow& row : rows) {
        if (std::isfinite(row.Bandwidth) && std::isfinite(row.Score))
            piece << QPointF(row.Bandwidth, row.Score);
        else
            finish();
    }
    finish();
}

QwtPlotMarker* add_mark(QwtPlot& plot, const std::string& name) {
    auto* mark = new QwtPlotMarker;
    mark->setTitle(small_text(name, plot));
    mark->setItemAttribute(QwtPlotItem::Legend, true);
    mark->setRenderHint(QwtPlotItem::RenderAntialiased);
    mark->setLegendIconSize({22, 12});
    mark->attach(&plot);
    return mark;
}

/// Every mark has a shape of its own, and the dashes of HREF lie on the wider line of the bandwidth in use.
void add_marks(QwtPlot& plot, const pictures::ProfilePicture& picture, const QColor& curve, const QPalette& palette) {
    const auto upright = [&](double bandwidth, const std::string& name, const QPen& pen, double z) {
        QwtPlotMarker* mark = add_mark(plot, name);
        mark->setLineStyle(QwtPlotMarker::VLine);
        mark->setLinePen(pen);
        mark->setXValue(bandwidth);
        mark->setZ(z);
    };
    QwtPlotMarker* minimum = add_mark(plot, pictures::MinimumName(picture));
    minimum->setSymbol(new QwtSymbol(QwtSymbol::Ellipse, curve, QPen(palette.color(QPalette::Base), 1.5), {11, 11}));
    minimum->setValue(picture.Minimum->Bandwidth, picture.Minimum->Score);
    minimum->setZ(50.0);
    if (picture.Href)
        upright(*picture.Href, pictures::HrefName(picture), QPen(palette.color(QPalette::Text), 2.0, Qt::DashLine),
                40.0);
    if (picture.Bandwidth)
        upright(*picture.Bandwidth, pictures::BandwidthName(picture), QPen(QColor(0xd6, 0x45, 0x3d), 4.0), 30.0);
}

bool same(const kde_tool::ProfilePlot& a, const kde_tool::ProfilePlot& b) {
    return a.Hint == b.Hint && a.Picture.Title == b.Picture.Title && a.Picture.Method == b.Picture.Method &&
           a.Picture.Units == b.Picture.Units && a.Picture.Curve == b.Picture.Curve &&
           a.Picture.Href == b.Picture.Href && a.Picture.Bandwidth == b.Picture.Bandwidth &&
           a.Picture.Minimised == b.Picture.Minimised;
}

}  // namespace

ProfilePlotWidget::ProfilePlotWidget(QWidget* parent)
    : QStackedWidget(parent), m_hint(new QLabel(this)), m_plot(new QwtPlot(this)) {
    m_hint->setObjectName(QStringLiteral("plotProfileHint"));
    m_hint->setAlignment(Qt::AlignCenter);
    m_hint->setWordWrap(true);
    m_hint->setTextFormat(Qt::PlainText);
    m_hint->setForegroundRole(QPalette::PlaceholderText);
    m_plot->setObjectName(QStringLiteral("plotProfileCurve"));
    m_plot->setMinimumSize(280, 170);
    m_plot->insertLegend(new QwtLegend, QwtPlot::TopLegend);
    if (auto* canvas = qobject_cast<QwtPlotCanvas*>(m_plot->canvas())) canvas->setFrameStyle(QFrame::NoFrame);
    addWidget(m_hint);
    addWidget(m_plot);
}

void ProfilePlotWidget::Show(const kde_tool::ProfilePlot& plot) {
    if (same(plot, m_shown)) return;
    m_shown = plot;
    m_hint->setText(ToQString(plot.Hint));
    setCurrentWidget(plot.Hint.empty() ? static_cast<QWidget*>(m_plot) : m_hint);
    if (plot.Hint.empty()) Draw(plot.Picture);
}

void ProfilePlotWidget::Draw(const pictures::ProfilePicture& picture) {
    const auto scores = pictures::ShownScores(picture);
    if (!scores) return;
    m_plot->detachItems();
    const pictures::ProfileAxes axes = pictures::AxesOf(picture, *scores);
    set_axis(*m_plot, QwtPlot::xBottom, axes.Bandwidths, axes.BandwidthTitle);
    set_axis(*m_plot, QwtPlot::yLeft, axes.Scores, axes.ScoreTitle);

    const QColor curve =
        palette().color(QPalette::Base).lightness() < 128 ? QColor(0x6c, 0xb8, 0xf0) : QColor(0x1b, 0x6c, 0xa8);
    m_plot->setCanvasBackground(palette().color(QPalette::Base));
    auto* grid = new QwtPlotGrid;
    grid->enableX(false);
    grid->setPen(palette().color(QPalette::Midlight), 1.0);
    grid->attach(m_plot);
    add_curve(*m_plot, picture.Curve, curve);
    add_marks(*m_plot, picture, curve, palette());

    const QString description = ToQString(pictures::DescriptionOf(picture));
    m_plot->setAccessibleName(ToQString(pictures::TitleOf(picture)));
    m_plot->setAccessibleDescription(description);
    const QString note = ToQString(pictures::NoteOf(picture, *scores));
    m_plot->setFooter(QwtText(note, QwtText::PlainText));
    m_plot->setToolTip(description.toHtmlEscaped());
    m_plot->replot();
}

}  // namespace wxl::qgis
