#pragma once
#include "platform/features.h"

#include <functional>
#include <initializer_list>
#include <map>
#include <set>

namespace wxl::memory {

/// One row of a MemoryFeatureClass.
struct MemoryRow {
    platform::Geometry Shape;
    std::vector<platform::FieldValue> Values;
    bool Deleted = false;  ///< kept until the class goes, so that cursors opened before can still meet it
};

/// What a MemoryFeatureClass, its cursors and its features share.
struct MemoryTable {
    platform::ShapeType Shape = platform::ShapeType::kPoint;
    platform::SpatialReference Reference;
    std::vector<platform::Field> Fields;
    std::map<std::int64_t, MemoryRow> Rows;  ///< by object ID
    std::int64_t NextOID = 0;

    bool CursorsMeetDeletedRows = false;
    std::function<void()> BeforeFind;
    std::function<void(std::int64_t)> BeforeStore;
    std::function<void(std::int64_t)> BeforeDelete;
    std::int64_t Finds = 0;
    std::int64_t Flushes = 0;
};

/// A feature class that lives in memory: rows by object ID, columns, and switches that make it as awkward as any real
/// store. Object IDs count up from a first one of the owner's choice; deletions never renumber.
class MemoryFeatureClass final : public platform::IFeatureClass, private platform::ITable {
public:
    MemoryFeatureClass(platform::ShapeType shape, std::vector<platform::Field> fields,
                       platform::SpatialReference reference = {}, std::int64_t firstOID = 0);

    // IFeatureClass
    platform::ShapeType Shape() const override { return m_table->Shape; }
    platform::SpatialReference Reference() const override { return m_table->Reference; }
    platform::Extent Bounds() const override;
    std::int64_t FeatureCount() const override;
    platform::ITable& Table() override { return *this; }
    std::unique_ptr<platform::IFeatureCursor> Find(const platform::Search& search) override;
    std::unique_ptr<platform::IInsertCursor> Insert() override;

    /// As Find, over these object IDs only, ascending.
    std::unique_ptr<platform::IFeatureCursor> FindAmong(const std::set<std::int64_t>& oids,
                                                        const platform::Search& search);

    /// Adds a row and returns its object ID. Missing values at the end may be left out.
    std::int64_t Add(const platform::Geometry& shape, std::span<const platform::FieldValue> values);
    std::int64_t Add(const platform::Geometry& shape, std::initializer_list<platform::FieldValue> values);
    std::int64_t AddPoint(double x, double y, std::initializer_list<platform::FieldValue> values = {});

    /// The next added row gets this object ID (RuntimeError 5 unless it is above all earlier ones).
    void SetNextOID(std::int64_t oid);

    /// A stored cell by object ID and field name; RuntimeError 5 when there is no such row, 9 for no such field.
    platform::FieldValue ValueOf(std::int64_t oid, std::string_view field) const;
    bool HasRow(std::int64_t oid) const;

    /// Object IDs of the rows that stand, ascending.
    std::vector<std::int64_t> OIDs() const;

    /// Whether a cursor opened before a row was deleted still returns it (some hosts do). False at first.
    void LetCursorsMeetDeletedRows(bool value) { m_table->CursorsMeetDeletedRows = value; }

    /// Called before each Find, of a selection too; may throw.
    void SetBeforeFind(std::function<void()> action) { m_table->BeforeFind = std::move(action); }

    /// Called with the object ID before each Store or Delete; may throw, as a failing disk does.
    void SetBeforeStore(std::function<void(std::int64_t)> action) { m_table->BeforeStore = std::move(action); }
    void SetBeforeDelete(std::function<void(std::int64_t)> action) { m_table->BeforeDelete = std::move(action); }

    /// How many cursors were opened, and how many explicit flushes there were.
    std::int64_t Finds() const { return m_table->Finds; }
    std::int64_t Flushes() const { return m_table->Flushes; }

private:
    std::vector<platform::Field> Fields() const override { return m_table->Fields; }
    int FindField(std::string_view name) const override;
    int AddField(const platform::Field& field) override;
    void DeleteField(int field) override;

    std::shared_ptr<MemoryTable> m_table;
};

/// Index of a field without regard to case, or -1.
int find_field(std::span<const platform::Field> fields, std::string_view name);

}  // namespace wxl::memory
