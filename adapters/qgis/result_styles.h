#pragma once
#include <qgsrasterlayer.h>
#include <qgsvectorlayer.h>
#include <QString>
#include <vector>

namespace wxl::qgis {

/// Density from 0 to `maximum` in the colours of a perceptual ramp (viridis: equal steps look equal, also without
/// colours). Zero is transparent, and the outermost twentieth of the range fades into it.
void StyleDensity(QgsRasterLayer& layer, double maximum);

/// One class of isopleths: the value of the field that tells the percentages apart, and what the legend says.
struct IsoplethClass {
    double Percent = 0.0;
    QString Label;
};

/// Isopleths graded from orange (the largest percentage) to dark red (the core), each with an outline, areas with a
/// see-through fill; large areas are drawn beneath small ones. `field` holds the percentages.
void StyleIsopleths(QgsVectorLayer& layer, const QString& field, std::vector<IsoplethClass> classes);

}  // namespace wxl::qgis
