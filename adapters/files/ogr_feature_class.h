#pragma once
#include "adapters/files/source_rules.h"
#include "platform/features.h"

#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace wxl::files {

/// One vector layer of any format that OGR opens. Rows come in ascending order of object ID (OGR's FID). Whole numbers
/// arrive as std::int64_t, dates as text; texts are decoded to UTF-8. Points, lines and polygons only; a multipoint of
/// several points is RuntimeError 5 when it is read.
///
/// Changing rows. Values stored and rows deleted are held back and written at a cursor's Flush, at its destruction, and
/// before a field is added or deleted; cursors of this class see them at once. What is on disk goes from the old state
/// to the new one in a step that a kill cannot tear:
///  - Shapefiles: a new table is written beside the old one and renamed over it. Cells that were not set keep their
///  bytes.
///    A deleted row is first marked in the table (every reader skips it, no other object ID changes); when the last
///    cursor and feature are gone, .shp, .shx and .dbf are rewritten without such rows, and only then object IDs move
///    up.
///  - Formats with transactions (GeoPackage): one transaction.
///  - Any other format is read-only.
class OgrFeatureClass final : public platform::IFeatureClass {
public:
    /// Opens "PATH" or "PATH:LAYER"; without a layer name the file must hold exactly one layer. RuntimeError 53 when
    /// there is no such file, 5 when it holds no such layer or several, 57 when it is no vector data; IndirectSource
    /// for what `sources` rules out.
    static std::shared_ptr<OgrFeatureClass> Open(const std::string& input, Sources sources = Sources::kPlain);
    ~OgrFeatureClass() override;

    // IFeatureClass
    platform::ShapeType Shape() const override;
    platform::SpatialReference Reference() const override;
    platform::Extent Bounds() const override;
    std::int64_t FeatureCount() const override;
    platform::ITable& Table() override;
    std::unique_ptr<platform::IFeatureCursor> Find(const platform::Search& search) override;

    /// New rows are written at the cursor's Flush or destruction. RuntimeError 70 for a format that is only read, 5 for
    /// a shapefile with heights or measures.
    std::unique_ptr<platform::IInsertCursor> Insert() override;

    /// As Find, over these object IDs only (ascending).
    std::unique_ptr<platform::IFeatureCursor> FindAmong(std::vector<std::int64_t> oids, const platform::Search& search);

    /// Object IDs of all rows, or of those that meet an SQL condition ("ID = 3 AND FID > 10"), ascending. RuntimeError
    /// 5 with OGR's words for a condition that means nothing.
    std::vector<std::int64_t> OIDs() const;
    std::vector<std::int64_t> OIDsWhere(const std::string& condition) const;

    /// Why rows cannot be changed: the format, a read-only file or folder, another program at work. Empty: they can.
    std::string WhyReadOnly() const;

    /// The layer's name (a shapefile's name without its extension), and the file that it lies in.
    std::string Name() const;
    std::filesystem::path Path() const;

    /// Those of the object IDs (ascending) that there are rows for.
    std::vector<std::int64_t> Existing(std::span<const std::int64_t> oids) const;

    /// The object IDs that the rows with these object IDs (ascending), as they were in `generation`, have now; without
    /// rows deleted since.
    std::vector<std::int64_t> Follow(std::span<const std::int64_t> oids, std::size_t generation) const;

    /// Counts up whenever object IDs change.
    std::size_t Generation() const;

    struct State;
    explicit OgrFeatureClass(std::shared_ptr<State> state);

private:
    std::shared_ptr<State> m_state;
};

}  // namespace wxl::files
