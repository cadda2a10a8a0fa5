#pragma once
// What an OgrFeatureClass, its cursors and its rows share.

#include "adapters/ogr/ogr_feature_class.h"
#include "adapters/ogr/ogr_source.h"
#include "adapters/shapefile/point_shapefile.h"
#include "adapters/shapefile/row_editor.h"
#include "adapters/shapefile/shapefile_editor.h"
#include "adapters/shapefile/shapefile_swap.h"

#include <optional>
#include <set>

namespace wxl::files {

/// How object IDs follow one another in the order of the rows.
enum class RowOrder { kRising, kUnordered, kRepeating };

/// For Search::Fields: no cells at all.
inline const std::vector<std::string> kNoCells = {""};

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

    /// Databases lock out writers while a row is being read: the rows of a table are fetched in groups.
    bool ReadsInGroups() { return m_isTable && Order() == RowOrder::kRising; }

    /// How the object IDs of the rows follow one another in the layer's own order.
    RowOrder Order();

    /// Object IDs in that order. Only of layers that OGR reads.
    std::shared_ptr<const std::vector<std::int64_t>> Numbers();

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

    /// Throws RuntimeError 57 for a row, named like "the row 3", that is there and cannot be read, with GDAL's words.
    [[noreturn]] void RaiseUnread(const std::string& row, const GdalErrors& errors);

    /// RuntimeError 57 for a row without a shape of which the file tells a location that means none.
    void CheckHasNoShape(std::int64_t oid);

    /// Ascending; all for an empty condition.
    std::vector<std::int64_t> OIDs(const std::string& condition);
    ChosenRows Choose(std::vector<std::int64_t> oids);
    ChosenRows ChooseWhere(const std::string& condition);

    /// Brings a choice up to the rows as they are now; RuntimeError 70 when another program changed the file so that
    /// nothing is known of them. To be called in a pass.
    void Follow(ChosenRows& rows) const;
    std::string WhyReadOnly();

    const std::filesystem::path& Path() const { return m_path; }
    const std::vector<std::filesystem::path>& Files() const { return m_files; }
    const std::string& Name() const { return m_name; }
    platform::ShapeType Shape() const { return m_shape; }
    const platform::SpatialReference& Reference() const { return m_reference; }

private:
    /// Rows that went at the end of a pass.
    struct Removal {
        std::vector<std::int64_t> OIDs;  ///< ascending
        bool OthersMoveUp = false;
    };

    /// Rows of which the file tells a location that means none.
    const std::set<std::int64_t>& UnreadShapes();

    void Load();
    void GatherParts();
    bool IsChangedByOthers() const;
    const std::filesystem::path& PathToRead() const { return m_gathered ? m_gathered->Path() : m_path; }
    void LoadEditor(OgrSource& source);
    IRowEditor& Editor() const;
    void DropSources();

    /// Calls `action` with every row that meets the condition (empty: all), as an OGRFeatureUniquePtr of its own.
    template <class Action>
    void ForEach(const std::string& condition, const platform::Search& wanted, Action&& action);

    /// Places of the rows with these object IDs (ascending), and of the rows that meet a condition.
    std::vector<std::int64_t> PlacesOf(const std::vector<std::int64_t>& oids);
    std::vector<std::int64_t> PlacesWhere(const std::string& condition);

    Sources m_sources;
    std::filesystem::path m_path;
    std::vector<std::filesystem::path> m_files;
    std::string m_name;
    std::string m_driver;  // GDAL's name of the format
    platform::ShapeType m_shape = platform::ShapeType::kNull;
    platform::SpatialReference m_reference;
    std::vector<platform::Field> m_fields;
    bool m_isShapefile = false;
    bool m_isTable = false;  // of a database, with a column of row numbers
    bool m_isView = false;   // of a database
    std::string m_encoding;  // of a shapefile's texts, as GDAL names it; empty when nothing says so
    FileStamp m_stamp;
    std::unique_ptr<GatheredShapefile> m_gathered;  // where a change of the shapefile was cut short
    std::unique_ptr<IRowEditor> m_editor;
    std::string m_whyNoEditor;
    std::shared_ptr<const std::vector<std::int64_t>> m_numbers;
    std::optional<RowOrder> m_order;
    std::optional<std::int64_t> m_count;
    std::optional<platform::Extent> m_bounds;
    std::optional<std::set<std::int64_t>> m_unreadShapes;
    std::size_t m_loads = 0;

    std::vector<std::unique_ptr<OgrSource>> m_idle;
    std::size_t m_version = 0;
    std::weak_ptr<Pass> m_pass;
    RowEdits m_edits;
    std::set<std::int64_t> m_marked;
    std::vector<Removal> m_removals;
};

/// Gives the rows of an open layer of the class one by one; RuntimeError 57 for one that is there and cannot be read.
class RowReader {
public:
    RowReader(OgrFeatureClass::State& state, OGRLayer& layer) : m_state(state), m_layer(layer) {}

    /// Null behind the last.
    OGRFeatureUniquePtr Next();

private:
    OgrFeatureClass::State& m_state;
    OGRLayer& m_layer;
    std::optional<GIntBig> m_last;
};

/// Extent of the shapes of all rows that stand.
platform::Extent bounds_of(const std::shared_ptr<Pass>& pass);

/// Cursors over a state: all rows, or some.
std::unique_ptr<platform::IFeatureCursor> open_cursor(std::shared_ptr<Pass> pass, const platform::Search& search);
std::unique_ptr<platform::IFeatureCursor> open_cursor(std::shared_ptr<Pass> pass, const platform::Search& search,
                                                      const ChosenRows& chosen);
std::unique_ptr<platform::IInsertCursor> open_insert_cursor(std::shared_ptr<Pass> pass);

}  // namespace wxl::files
