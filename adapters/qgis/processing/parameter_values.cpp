#include "adapters/qgis/processing/parameter_values.h"

#include "adapters/qgis/qt_text.h"
#include "platform/text.h"

#include <optional>
#include <qgsexception.h>
#include <qgsvectorlayer.h>

namespace wxl::qgis {

bool is_given(const QVariantMap& parameters, const char* name) {
    const QVariant value = parameters.value(QLatin1String(name));
    const bool isText = type_of(value) == QMetaType::QString;
    return value.isValid() && !value.isNull() && !(isText && value.toString().trimmed().isEmpty());
}

QString problem_of_list(const QString& name, const QString& text, bool percentages) {
    const analysis::TypedNumbers list = analysis::typed_numbers(FromQString(text));
    const QString range = percentages ? QStringLiteral(" and at most 100") : QString();
    const auto problem = [&](const std::string& piece) {
        return QStringLiteral("%1: \"%2\" is not a number above 0%3").arg(name, ToQString(piece).trimmed(), range);
    };
    if (const auto piece = analysis::not_positive(list)) return problem(*piece);
    const auto above = percentages ? analysis::above_hundred(list) : std::nullopt;
    return above ? problem(platform::NumberText(*above)) : QString();
}

void refuse_degrees(const QgsVectorLayer& layer) {
    if (layer.crs().isGeographic())
        throw QgsProcessingException(
            QStringLiteral("The layer \"%1\" is in degrees (%2), in which distances cannot be measured. Please "
                           "reproject it first, for example to its UTM zone.")
                .arg(layer.name(), layer.crs().authid()));
}

}  // namespace wxl::qgis
