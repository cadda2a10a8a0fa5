#pragma once
#include "adapters/gdal/source_rules.h"
#include "platform/features.h"

#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace wxl::files {

/// Rows of a class that were chosen once; see OgrFeatureClass::Choose. The choice stays with its rows, whatever object
/// IDs they have.
struct ChosenRows {
    std::vector<std::int64_t> Rows;  ///< ascending object IDs; where these do not rise, places in the order of the rows
    bool ArePlaces = false;
    std::size_t Generation = 0;  ///< of the object IDs, or of the file that was read
};

/// One vector layer of any format that OGR opens. Rows come in the layer's own order: ascending object ID (OGR's FID)
/// but for formats that take row numbers from the data, and for views. Extent and count are those of the rows, not what
/// the file records of them. Whole numbers arrive as std::int64_t, dates as text; texts are decoded to UTF-8. Points,
/// lines and polygons only; a multipoint of several points is RuntimeError 5 when it is read.
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
    ///
    /// Nothing on disk is touched. A shapefile whose change was cut short is read as the change leaves it; a database
    /// in that state is RuntimeError 70.
    static std::shared_ptr<OgrFeatureClass> Open(const std::string& input, Sources sources = Sources::kPlain);

    /// For a layer that is about to be changed, before it is opened: completes or takes back a change that was cut
    /// short; does nothing when there is none. RuntimeError 70 for what fits no change of this layer.
    static void FinishInterrupted(const std::string& input, Sources sources = Sources::kPlain);

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

    /// The rows with these object IDs, and those that meet an SQL condition ("ID = 3 AND FID > 10"). RuntimeError 5
    /// with OGR's words for a condition that means nothing.
    ChosenRows Choose(std::vector<std::int64_t> oids) const;
    ChosenRows ChooseWhere(const std::string& condition) const;

    /// As Find, over chosen rows only, in the layer's order. The choice is brought up to the rows as they are now:
    /// without deleted ones, and under their new object IDs. RuntimeError 70 when another program changed a file whose
    /// rows cannot be found again.
    std::unique_ptr<platform::IFeatureCursor> FindAmong(ChosenRows& rows, const platform::Search& search);
    std::int64_t Count(ChosenRows& rows) const;

    /// Object IDs of all rows, ascending.
    std::vector<std::int64_t> OIDs() const;

    /// Whether several rows have one object ID, so that a row is not known by it.
    bool NumbersRepeat() const;

    /// Why rows cannot be changed: the format, a read-only file or folder, another program at work. Empty: they can.
    std::string WhyReadOnly() const;

    /// The layer's name (a shapefile's name without its extension), and the file that it lies in.
    std::string Name() const;
    std::filesystem::path Path() const;

    /// The files that the layer is read from.
    std::vector<std::filesystem::path> Files() const;

    struct State;
    explicit OgrFeatureClass(std::shared_ptr<State> state);

private:
    std::shared_ptr<State> m_state;
};

}  // namespace wxl::files
