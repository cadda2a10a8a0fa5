#pragma once
#include "adapters/qgis/breath.h"

#include <optional>
#include <qgsfeature.h>
#include <qgsfeatureiterator.h>
#include <QString>
#include <span>

class QgsFeatureRequest;
class QgsVectorLayer;

namespace wxl::qgis {

/// Gives the rows of a layer that a request asks for. QGIS leaves out what a provider fails to read, or gives it
/// without its shape: here that is RuntimeError 57, so that nothing is computed from the other rows alone. Windows live
/// on meanwhile (see Breath).
class LayerRows {
public:
    /// Of `only` (ascending; empty: of all) the rows that the request gives; others are passed over, readable or not.
    LayerRows(const QgsVectorLayer& layer, const QgsFeatureRequest& request, std::span<const QgsFeatureId> only = {});

    /// False behind the last.
    bool Next(QgsFeature& row);

private:
    QString m_layer;  ///< its name
    QgsFeatureIterator m_rows;
    std::span<const QgsFeatureId> m_only;
    std::optional<QgsFeatureId> m_last;
    Breath m_breath;
};

/// Throws RuntimeError 57 for a row, named like "The row 3", of the layer of that name.
[[noreturn]] void raise_unread(const QString& row, const QString& layer, const QString& reason);

}  // namespace wxl::qgis
