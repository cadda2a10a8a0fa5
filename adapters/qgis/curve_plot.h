#pragma once
#include <QColor>
#include <QPointF>
#include <QString>
#include <QVector>

class QWidget;

namespace wxl::qgis {

// A plot of one curve with marks, in the toolkit's values alone: the plotting library's headers want an older language
// standard than ours.

struct PlotTick {
    double Value;
    QString Text;
};

struct PlotAxis {
    double From;
    double To;
    QVector<PlotTick> Ticks;
    QString Title;
};

/// One marked place of the plot and its name in the legend.
struct PlotMark {
    enum class Look { kDot, kDashes, kLine };
    QString Name;
    Look Shape;
    QPointF At;  ///< lines are upright and use x alone
};

struct CurvePicture {
    PlotAxis X;
    PlotAxis Y;
    QVector<QVector<QPointF>> Pieces;  ///< unbroken pieces of the curve
    QVector<PlotMark> Marks;
    QString Note;  ///< below the plot
};

/// How far apart two colours are in lightness, 1 to 21 (relative luminances of the WCAG, W3C 2008).
double ContrastOf(const QColor& a, const QColor& b);

/// The wanted colour, made lighter or darker until it is read on that ground: a contrast of 4.5.
QColor ReadableOn(const QColor& ground, const QColor& wanted);

/// An empty plot in the colours of its palette.
QWidget* NewCurvePlot(QWidget* parent);

/// Replaces what a plot of NewCurvePlot shows.
void ShowCurve(QWidget& plotWidget, const CurvePicture& picture);

}  // namespace wxl::qgis
