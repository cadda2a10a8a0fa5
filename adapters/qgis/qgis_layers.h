#pragma once
#include "platform/map.h"

#include <qgsrasterlayer.h>
#include <qgsvectorlayer.h>
#include <QPointer>

namespace wxl::qgis {

/// A vector layer of the project; removed layers answer with RuntimeError 91.
class QgisFeatureLayer final : public platform::IFeatureLayer {
public:
    explicit QgisFeatureLayer(QgsVectorLayer& layer) : m_layer(&layer) {}
    std::string Name() const override;
    std::shared_ptr<platform::IFeatureClass> FeatureClass() override;
    std::shared_ptr<platform::ISelectionSet> Selection() override;
    std::string WhyReadOnly() const override;
    bool IsRemoved() const override { return m_layer.isNull(); }

private:
    QPointer<QgsVectorLayer> m_layer;
};

class QgisRasterLayer final : public platform::IRasterLayer {
public:
    explicit QgisRasterLayer(QgsRasterLayer& layer) : m_layer(&layer) {}
    std::string Name() const override;
    platform::RasterGeometry Geometry() const override;
    bool LiesIn(const platform::SpatialReference& reference) const override;

private:
    QPointer<QgsRasterLayer> m_layer;
};

/// The layer in the platform's terms.
platform::Layer FromQgsLayer(QgsMapLayer& layer);

}  // namespace wxl::qgis
