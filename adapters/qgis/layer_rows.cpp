#include "adapters/qgis/layer_rows.h"

#include "adapters/gdal/gdal_support.h"
#include "adapters/qgis/qgis_values.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <qgsfeaturerequest.h>
#include <qgsvectorlayer.h>

namespace wxl::qgis {

void raise_unread(const QString& row, const QString& layer, const QString& reason) {
    const QString why = reason.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(reason);
    platform::Raise(platform::error_number::kDeviceIo,
                    FromQString(QStringLiteral("%1 of the layer \"%2\" could not be read%3. Please correct it or take "
                                               "it out of the layer and try again.")
                                    .arg(row, layer, why)));
}

LayerRows::LayerRows(const QgsVectorLayer& layer, const QgsFeatureRequest& request, std::span<const QgsFeatureId> only)
    : m_layer(layer.name()), m_rows(layer.getFeatures(request)), m_only(only) {}

bool LayerRows::Next(QgsFeature& row) {
    m_breath.Take();
    while (true) {
        const files::GdalErrors errors;
        const bool found = m_rows.nextFeature(row);
        if (found) m_last = row.id();
        if (found && !m_only.empty() && !std::binary_search(m_only.begin(), m_only.end(), row.id())) continue;
        if (!errors.Failed()) return found;
        const QString last = m_last ? QStringLiteral("row %1").arg(*m_last) : QString();
        raise_unread(found            ? QStringLiteral("The ") + last
                     : last.isEmpty() ? QStringLiteral("The first row")
                                      : QStringLiteral("The row after the ") + last,
                     m_layer, ToQString(errors.Text()));
    }
}

}  // namespace wxl::qgis
