#pragma once
#include "adapters/qgis/layer_names.h"
#include "platform/map.h"

#include <qgsrasterlayer.h>
#include <qgsvectorlayer.h>
#include <QPointer>
#include <string>
#include <utility>

namespace wxl::qgis {

/// A vector layer of the project under the name by which the tools know it; removed layers answer with RuntimeError 91.
class QgisFeatureLayer final : public platform::IFeatureLayer {
public:
    QgisFeatureLayer(QgsVectorLayer& layer, std::string name) : m_layer(&layer), m_name(std::move(name)) {}
    std::string Name() const override;
    std::shared_ptr<platform::IFeatureClass> FeatureClass() override;
    std::shared_ptr<platform::ISelectionSet> Selection() override;
    std::string WhyReadOnly() const override;
    bool IsRemoved() const override { return m_layer.isNull(); }

private:
    QPointer<QgsVectorLayer> m_layer;
    std::string m_name;
};

class QgisRasterLayer final : public platform::IRasterLayer {
public:
    QgisRasterLayer(QgsRasterLayer& layer, std::string name) : m_layer(&layer), m_name(std::move(name)) {}
    std::string Name() const override;
    platform::RasterGeometry Geometry() const override;
    bool LiesIn(const platform::SpatialReference& reference) const override;

private:
    QPointer<QgsRasterLayer> m_layer;
    std::string m_name;
};

/// The layer in the platform's terms, under a name that no other layer of the project has.
platform::Layer FromQgsLayer(QgsMapLayer& layer);
platform::Layer FromQgsLayer(QgsMapLayer& layer, const LayerNames& names);

}  // namespace wxl::qgis
