#pragma once
#include "adapters/qgis/qgis_versions.h"
#include "analysis/settings_text.h"

#include <QString>
#include <QVariantMap>

class QgsVectorLayer;

namespace wxl::qgis {

/// A parameter with a sentence of help.
template <class Parameter>
Parameter* with_help(Parameter* parameter, const char* help) {
    parameter->setHelp(QString::fromUtf8(help));
    return parameter;
}

/// Whether an optional parameter has a value: dialogs hand on a null, scripts an empty text, where it has none.
bool is_given(const QVariantMap& parameters, const char* name);

/// What is wrong with a list of numbers that a user typed: all must be above 0, percentages at most 100. "" where all
/// is well.
QString problem_of_list(const QString& name, const QString& text, bool percentages);

/// Distances are measured in the layer's units: degrees are none. QgsProcessingException.
void refuse_degrees(const QgsVectorLayer& layer);

}  // namespace wxl::qgis
