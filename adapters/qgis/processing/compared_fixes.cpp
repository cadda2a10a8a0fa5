#include "adapters/qgis/processing/compared_fixes.h"

#include "adapters/qgis/qgis_values.h"
#include "analysis/animal_fixes.h"
#include "analysis/settings_text.h"
#include "platform/values.h"

#include <algorithm>
#include <QDomDocument>
#include <qgsmaplayer.h>

namespace wxl::qgis {

std::vector<comparison::NamedFixes> animals_of(const platform::Layer& layer, const std::string& idField,
                                               bool selectedOnly, QgsProcessingFeedback& feedback) {
    const analysis::GroupedFixes grouped = analysis::GroupFixes(*layer.Feature, idField, selectedOnly);
    if (grouped.WithoutId > 0)
        feedback.pushWarning(
            QStringLiteral("%1 fixes left out: no animal in %2").arg(grouped.WithoutId).arg(ToQString(idField)));
    if (grouped.NullGeometry) feedback.pushWarning(QStringLiteral("Fixes without a location are left out."));
    std::vector<comparison::NamedFixes> animals;
    for (const analysis::AnimalFixes& animal : grouped.Animals)
        animals.push_back({platform::ValueText(animal.Id), {animal.Fixes.begin(), animal.Fixes.end()}});
    if (animals.empty()) throw QgsProcessingException(QStringLiteral("There is no animal among the fixes."));
    return animals;
}

std::vector<double> percentages_of(const QString& text) {
    std::vector<double> kept;
    for (const double percent : analysis::typed_numbers(FromQString(text)).Values)
        if (std::find(kept.begin(), kept.end(), percent) == kept.end()) kept.push_back(percent);
    return kept;
}

void StyledOnLoad::postProcessLayer(QgsMapLayer* layer, QgsProcessingContext&, QgsProcessingFeedback*) {
    QDomDocument style;
    QString problem;
    if (layer != nullptr && style.setContent(QString::fromStdString(m_style))) layer->importNamedStyle(style, problem);
}

}  // namespace wxl::qgis
