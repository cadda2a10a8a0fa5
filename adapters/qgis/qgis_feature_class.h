#pragma once
#include "platform/features.h"

#include <memory>
#include <qgsvectorlayer.h>
#include <QPointer>

namespace wxl::qgis {

/// The features of a vector layer of any provider, written through that, in bulk at Flush. A layer in edit mode is read
/// with its unsaved edits and never written (RuntimeError 70): the user saves or discards them first.
class QgisFeatureClass final : public platform::IFeatureClass, public platform::ITable {
public:
    explicit QgisFeatureClass(QgsVectorLayer& layer);

    platform::ShapeType Shape() const override;
    platform::SpatialReference Reference() const override;
    platform::Extent Bounds() const override;
    std::int64_t FeatureCount() const override;
    platform::ITable& Table() override { return *this; }
    std::unique_ptr<platform::IFeatureCursor> Find(const platform::Search& search) override;
    std::unique_ptr<platform::IInsertCursor> Insert() override;

    std::vector<platform::Field> Fields() const override;
    int FindField(std::string_view name) const override;
    int AddField(const platform::Field& field) override;
    void DeleteField(int field) override;

private:
    QPointer<QgsVectorLayer> m_layer;
};

/// The layer's selection at the time of each call.
class QgisSelectionSet final : public platform::ISelectionSet {
public:
    explicit QgisSelectionSet(QgsVectorLayer& layer);
    std::int64_t Count() const override;
    std::unique_ptr<platform::IFeatureCursor> Find(const platform::Search& search) override;

private:
    QPointer<QgsVectorLayer> m_layer;
};

}  // namespace wxl::qgis
