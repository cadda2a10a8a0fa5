#include "adapters/qgis/profile_plot_widget.h"

#include "adapters/qgis/curve_plot.h"
#include "adapters/qgis/qt_text.h"
#include "pictures/profile_axes.h"

#include <cmath>
#include <QEvent>
#include <QLabel>

namespace wxl::qgis {
namespace {

PlotAxis shown_axis(const pictures::Axis& axis, const std::string& title) {
    PlotAxis shown{axis.From, axis.To, {}, ToQString(title)};
    for (const pictures::Tick& tick : axis.Ticks) shown.Ticks << PlotTick{tick.Value, ToQString(tick.Text)};
    return shown;
}

/// A score that is no number interrupts the curve.
QVector<QVector<QPointF>> pieces_of(const engine::SearchProfile& rows) {
    QVector<QVector<QPointF>> pieces{{}};
    for (const engine::ProfileRow& row : rows) {
        if (std::isfinite(row.Bandwidth) && std::isfinite(row.Score))
            pieces.back() << QPointF(row.Bandwidth, row.Score);
        else if (!pieces.back().isEmpty())
            pieces << QVector<QPointF>{};
    }
    return pieces;
}

QVector<PlotMark> marks_of(const pictures::ProfilePicture& picture) {
    using Look = PlotMark::Look;
    QVector<PlotMark> marks;
    if (picture.Minimum)
        marks << PlotMark{ToQString(pictures::MinimumName(picture)), Look::kDot,
                          QPointF(picture.Minimum->Bandwidth, picture.Minimum->Score)};
    if (picture.Href)
        marks << PlotMark{ToQString(pictures::HrefName(picture)), Look::kDashes, QPointF(*picture.Href, 0.0)};
    if (picture.Bandwidth)
        marks << PlotMark{ToQString(pictures::BandwidthName(picture)), Look::kLine, QPointF(*picture.Bandwidth, 0.0)};
    return marks;
}

}  // namespace

ProfilePlotWidget::ProfilePlotWidget(QWidget* parent)
    : QStackedWidget(parent), m_hint(new QLabel(this)), m_plot(NewCurvePlot(this)) {
    m_hint->setObjectName(QStringLiteral("plotProfileHint"));
    m_hint->setAlignment(Qt::AlignCenter);
    m_hint->setWordWrap(true);
    m_hint->setTextFormat(Qt::PlainText);
    m_hint->setEnabled(false);
    m_plot->setObjectName(QStringLiteral("plotProfileCurve"));
    addWidget(m_hint);
    addWidget(m_plot);
    m_plot->installEventFilter(this);
}

void ProfilePlotWidget::Show(const kde_tool::ProfilePlot& plot) {
    if (plot == m_shown) return;
    m_shown = plot;
    m_hint->setText(ToQString(plot.Hint));
    setCurrentWidget(plot.Hint.empty() ? m_plot : m_hint);
    if (plot.Hint.empty()) Draw(plot.Picture);
}

bool ProfilePlotWidget::eventFilter(QObject* watched, QEvent* event) {
    const bool looks = event->type() == QEvent::PaletteChange;
    if (looks && watched == m_plot && m_shown.Hint.empty()) Draw(m_shown.Picture);
    return QStackedWidget::eventFilter(watched, event);
}

void ProfilePlotWidget::Draw(const pictures::ProfilePicture& picture) {
    const auto scores = pictures::ShownScores(picture);
    if (!scores) return;
    const pictures::ProfileAxes axes = pictures::AxesOf(picture, *scores);
    ShowCurve(*m_plot, {.X = shown_axis(axes.Bandwidths, axes.BandwidthTitle),
                        .Y = shown_axis(axes.Scores, axes.ScoreTitle),
                        .Pieces = pieces_of(picture.Curve),
                        .Marks = marks_of(picture),
                        .Note = ToQString(pictures::NoteOf(picture, *scores))});
    const QString description = ToQString(pictures::DescriptionOf(picture));
    m_plot->setAccessibleName(ToQString(pictures::TitleOf(picture)));
    m_plot->setAccessibleDescription(description);
    m_plot->setToolTip(description.toHtmlEscaped());
}

}  // namespace wxl::qgis
