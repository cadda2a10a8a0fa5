#pragma once
// What an OgrFeatureClass, its cursors and its rows share.

#include "adapters/files/ogr_feature_class.h"
#include "adapters/files/ogr_source.h"
#include "adapters/files/point_shapefile.h"
#include "adapters/files/row_editor.h"
#include "adapters/files/shapefile_editor.h"

#include <optional>

namespace wxl::files {

/// Keeps object IDs as they are while it lives: every cursor and row holds it. With the last holder held-back changes
/// are written and marked rows dropped.
class Pass {
public:
    explicit Pass(std::shared_ptr<OgrFeatureClass::State> state) : m_state(std::move(state)) {}
    ~Pass();
    Pass(const Pass&) = delete;
    Pass& operator=(const Pass&) = delete;
    OgrFeatureClass::State& State() { return *m_state; }

private:
    std::shared_ptr<OgrFeatureClass::State> m_state;
};

struct OgrFeatureClass::State final : platform::ITable, std::enable_shared_from_this<OgrFeatureClass::State> {
    State(const std::string& input, Sources sources);

    // ITable
    std::vector<platform::Field> Fields() const override { return m_fields; }
    int FindField(std::string_view name) const override;
    int AddField(const platform::Field& field) override;
    void DeleteField(int field) override;

    /// The pass that goes on now, or a new one over the files as they are now.
    std::shared_ptr<Pass> JoinPass();

    /// An open layer of its own for one reader, and its way back for the next.
    std::unique_ptr<OgrSource> Borrow(const platform::Search& wanted);
    void GiveBack(std::unique_ptr<OgrSource> source);

    /// The same rows read without OGR, where the files allow it; else null.
    std::unique_ptr<PointShapefile> Points(const platform::Search& wanted) const;

    /// Databases lock out writers while a row is being read: their rows are fetched in groups.
    bool ReadsInGroups() const { return !m_isShapefile && m_editor != nullptr; }

    /// Rows that are deleted, on disk or not yet.
    bool IsDeleted(std::int64_t oid) const { return m_edits.Deleted.contains(oid) || m_marked.contains(oid); }

    /// A value that was stored and is not written yet, or null.
    const platform::FieldValue* HeldBack(std::int64_t oid, int field) const;

    /// The value as the column takes it; RuntimeError when it cannot.
    platform::FieldValue Checked(int field, const platform::FieldValue& value) const;
    void Store(std::int64_t oid, const std::map<int, platform::FieldValue>& values);
    void Delete(std::int64_t oid);
    void CheckInsert() const { Editor().CheckInsert(); }
    void Insert(const platform::Geometry& shape, std::span<const platform::FieldValue> values);

    /// Writes what is held back.
    void Commit();

    /// End of a pass: Commit, then drops marked rows.
    void Finish() noexcept;

    std::int64_t FeatureCount();
    platform::Extent Bounds();
    std::vector<std::int64_t> OIDs(const std::string& condition);
    std::vector<std::int64_t> Follow(std::span<const std::int64_t> oids, std::size_t generation) const;
    std::string WhyReadOnly() const;

    const std::filesystem::path& Path() const { return m_path; }
    const std::string& Name() const { return m_name; }
    platform::ShapeType Shape() const { return m_shape; }
    const platform::SpatialReference& Reference() const { return m_reference; }
    std::size_t Generation() const { return m_removals.size(); }

private:
    /// Rows that went at the end of a pass.
    struct Removal {
        std::vector<std::int64_t> OIDs;  ///< ascending
        bool OthersMoveUp = false;
    };

    void Load();
    void LoadEditor(OgrSource& source);
    IRowEditor& Editor() const;
    void DropSources() { m_idle.clear(), ++m_version; }
    platform::Extent ScannedBounds(OGRLayer& layer);

    Sources m_sources;
    std::filesystem::path m_path;
    std::string m_name;
    platform::ShapeType m_shape = platform::ShapeType::kNull;
    platform::SpatialReference m_reference;
    std::vector<platform::Field> m_fields;
    bool m_isShapefile = false;
    std::string m_encoding;  // of a shapefile's texts, as GDAL names it; empty when nothing says so
    FileStamp m_stamp;
    std::unique_ptr<IRowEditor> m_editor;
    std::string m_whyNoEditor;
    std::optional<std::int64_t> m_count;

    std::vector<std::unique_ptr<OgrSource>> m_idle;
    std::size_t m_version = 0;
    std::weak_ptr<Pass> m_pass;
    RowEdits m_edits;
    std::set<std::int64_t> m_marked;
    std::vector<Removal> m_removals;
};

/// Cursors over a state: all rows, or the rows of some object IDs.
std::unique_ptr<platform::IFeatureCursor> open_cursor(std::shared_ptr<Pass> pass, const platform::Search& search);
std::unique_ptr<platform::IFeatureCursor> open_cursor(std::shared_ptr<Pass> pass, const platform::Search& search,
                                                      std::vector<std::int64_t> oids);
std::unique_ptr<platform::IInsertCursor> open_insert_cursor(std::shared_ptr<Pass> pass);

}  // namespace wxl::files
