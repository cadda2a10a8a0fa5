#pragma once
#include "platform/features.h"

#include <memory>
#include <vector>

namespace wxl::files {

/// The rows of a feature class that has no files yet, in the order in which they came. Object IDs count from 0;
/// deletions never renumber. Cursors live on when the buffer goes.
class RowBuffer final : public platform::IFeatureClass, private platform::ITable {
public:
    RowBuffer(platform::ShapeType shape, std::vector<platform::Field> fields, platform::SpatialReference reference);

    // IFeatureClass
    platform::ShapeType Shape() const override { return m_shape; }
    platform::SpatialReference Reference() const override { return m_reference; }
    platform::Extent Bounds() const override;
    std::int64_t FeatureCount() const override;
    platform::ITable& Table() override { return *this; }
    std::unique_ptr<platform::IFeatureCursor> Find(const platform::Search& search) override;
    std::unique_ptr<platform::IInsertCursor> Insert() override;

    /// What the buffer shares with its cursors.
    struct Rows;

private:
    std::vector<platform::Field> Fields() const override;
    int FindField(std::string_view name) const override;
    int AddField(const platform::Field& field) override;
    void DeleteField(int field) override;

    platform::ShapeType m_shape;
    platform::SpatialReference m_reference;
    std::shared_ptr<Rows> m_rows;
};

}  // namespace wxl::files
