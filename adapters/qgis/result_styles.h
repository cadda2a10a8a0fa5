#pragma once
#include <QColor>
#include <qgsrasterlayer.h>
#include <qgsvectorlayer.h>
#include <QString>
#include <vector>

namespace wxl::qgis {

/// The hue of the animal of that running number: twelve that are told apart by the colour-blind too, then lighter and
/// darker ones of the same.
QColor animal_colour(std::size_t number);

/// Density from 0 to `maximum` from light to dark in one hue. Zero is transparent, the outermost twentieth of the range
/// fades into it, and what lies beneath shows through.
void StyleDensity(QgsRasterLayer& layer, double maximum, const QColor& hue);

/// One class of isopleths: the value of the field that tells the percentages apart, and what the legend says.
struct IsoplethClass {
    double Percent = 0.0;
    QString Label;
};

/// Isopleths graded from the hue itself (the largest percentage) to a dark shade of it (the core), each with an
/// outline, areas with a see-through fill; large areas are drawn beneath small ones. `field` holds the percentages.
void StyleIsopleths(QgsVectorLayer& layer, const QString& field, std::vector<IsoplethClass> classes, const QColor& hue);

/// The same for isopleths with their limits, told apart by the field BOUND: the estimate unbroken, areas with a
/// see-through fill; the lower limit dotted and the upper one dashed, without a fill.
void style_limits(QgsVectorLayer& layer, const QString& field, std::vector<IsoplethClass> classes, const QColor& hue);

}  // namespace wxl::qgis
