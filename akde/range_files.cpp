#include "akde/range_files.h"

#include "isopleths/edge_closing.h"
#include "isopleths/level_polygons.h"
#include "platform/contour_step.h"
#include "platform/dataset_files.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>

namespace wxl::akde {

namespace {

using Path = std::filesystem::path;
using isopleths::Ring;

std::vector<float> row_of(const AnimalRange& range, std::int32_t row, double scaling) {
    std::vector<float> cells;
    for (const double cell : range.Density.Row(row)) cells.push_back(static_cast<float>(cell * scaling));
    return cells;
}

/// What has the raster's name and is none of ours, by whatever program it was made, stays.
void refuse_foreign(const RangePlace& place, const platform::Services& services) {
    const Path plain = place.Folder / place.Name;
    const bool stands = services.Files->FolderExists(plain) || services.Files->FileExists(plain);
    if (stands && !services.Rasters->Exists(place.Folder, place.Name))
        platform::Raise(platform::error_number::kPermissionDenied,
                        plain.string() + " is no raster and is not replaced: choose another folder or prefix");
}

/// Apart from the temporary name by which an old raster of the same name is deleted.
constexpr const char* kStage = "_akde";

/// A folder for files that are not complete; it goes with this object.
class Stage {
public:
    Stage(const RangePlace& place, const platform::Services& services)
        : m_services(services), m_folder(place.Folder / platform::TemporaryName(place.Name + kStage)) {
        if (m_services.Files->FolderExists(m_folder)) m_services.Folders->DeleteTree(m_folder);
        m_services.Folders->Create(m_folder);
    }
    ~Stage() {
        try {
            m_services.Folders->DeleteTree(m_folder);
        } catch (const std::exception&) {
            return;  // the next run sweeps it away
        }
    }
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    const Path& Folder() const { return m_folder; }

    /// Lets all that stands in it take the place of the old files; a shapefile's .shp comes last.
    void Publish(const RangePlace& place) const {
        refuse_foreign(place, m_services);
        while (m_services.Rasters->Exists(place.Folder, place.Name))
            m_services.Rasters->Delete(place.Folder, place.Name);
        for (const Path& old : standing_files(place, m_services)) m_services.Files->DeleteFile(old, true);
        std::vector<std::string> names = m_services.Files->List(m_folder);
        std::stable_partition(names.begin(), names.end(),
                              [](const std::string& name) { return !name.ends_with(".shp"); });
        for (const std::string& name : names) m_services.Files->Rename(m_folder / name, place.Folder / name);
    }

private:
    const platform::Services& m_services;
    Path m_folder;
};

std::string polygons_name(const RangePlace& place) {
    return place.Name + "_poly";
}

std::string lines_name(const RangePlace& place) {
    return place.Name + "_line";
}

std::shared_ptr<platform::IRasterDataset> write_raster(const AnimalRange& range, const RangePlace& place,
                                                       const Path& folder, platform::IRasterWorkspace& rasters) {
    const auto writer = rasters.Create(folder, {place.Name, place.Format, range.Geometry, place.Reference});
    for (std::int32_t row = 0; row < range.Geometry.Rows; ++row) writer->WriteRow(row_of(range, row, place.Scaling));
    return writer->Publish();
}

/// The outer cells as the raster holds them.
isopleths::SurfaceEdge edge_of(const AnimalRange& range, double scaling) {
    isopleths::SurfaceEdge edge;
    for (std::int32_t row = 0; row < range.Geometry.Rows; ++row) {
        const std::vector<float> cells = row_of(range, row, scaling);
        edge.West.push_back(static_cast<double>(cells.front()));
        edge.East.push_back(static_cast<double>(cells.back()));
        if (row == 0) edge.North.assign(cells.begin(), cells.end());
        if (row == range.Geometry.Rows - 1) edge.South.assign(cells.begin(), cells.end());
    }
    for (const auto* side : {&edge.North, &edge.South, &edge.West, &edge.East})
        for (const double cell : *side) edge.MaxValue = std::max(edge.MaxValue, cell);
    return edge;
}

/// An isopleth with its contours, closed.
struct Outline {
    const RangeIsopleth* Isopleth;
    double Level;
    std::vector<Ring> Rings;
    platform::Geometry Shape;  ///< what the rings surround; may be null
};

std::vector<Outline> outlines_of(const AnimalRange& range, const RangePlace& place, platform::IRasterDataset& raster,
                                 const platform::Services& services) {
    std::vector<Outline> outlines;
    std::vector<double> levels;
    for (const RangeIsopleth& isopleth : range.Isopleths) {
        if (!isopleth.Level) continue;
        outlines.push_back({&isopleth, *isopleth.Level * place.Scaling, {}, {}});
        levels.push_back(outlines.back().Level);
    }
    std::sort(levels.begin(), levels.end());
    levels.erase(std::unique(levels.begin(), levels.end()), levels.end());
    const isopleths::OuterEdge edge(range.Geometry, edge_of(range, place.Scaling));
    const std::vector<platform::ContourLine> lines = services.Contours->Contours(raster, levels);
    const double step = platform::ContourStep(levels);
    for (Outline& outline : outlines) {
        std::vector<platform::ContourLine> own;
        for (const platform::ContourLine& line : lines) {
            const auto nearest = std::min_element(levels.begin(), levels.end(), [&](double a, double b) {
                return std::abs(line.Value - a) < std::abs(line.Value - b);
            });
            if (*nearest == outline.Level) own.push_back(line);
        }
        outline.Rings = isopleths::closed_contours(std::move(own), outline.Level - step, edge);
        outline.Shape = isopleths::level_polygon(outline.Rings, *services.Geometry);
    }
    return outlines;
}

std::vector<platform::FieldValue> cells_of(const Outline& outline) {
    return {outline.Isopleth->Percent, outline.Isopleth->Bound, outline.Level, outline.Isopleth->Area};
}

const std::vector<platform::Field> kFields = {{"PERCENT", platform::FieldType::kDouble, 0, 0},
                                              {"BOUND", platform::FieldType::kText, 4, 0},
                                              {"LEVEL", platform::FieldType::kDouble, 0, 0},
                                              {"AREA", platform::FieldType::kDouble, 0, 0}};

void write_shapefile(const std::string& name, platform::ShapeType shape, const RangePlace& place, const Path& folder,
                     const platform::Services& services, const std::function<void(platform::IInsertCursor&)>& insert) {
    const auto made = services.Shapefiles->Create(folder, {name, shape, kFields, place.Reference});
    {
        const auto cursor = made->Insert();
        insert(*cursor);
        cursor->Flush();
    }
    services.Shapefiles->Publish(made);
}

/// The largest first, so that a map shows the smaller ones above.
void write_polygons(const std::vector<Outline>& outlines, const RangePlace& place, const Path& folder,
                    const platform::Services& services) {
    std::vector<const Outline*> order;
    for (const Outline& outline : outlines) order.push_back(&outline);
    std::stable_sort(order.begin(), order.end(),
                     [](const Outline* a, const Outline* b) { return a->Isopleth->Area > b->Isopleth->Area; });
    write_shapefile(polygons_name(place), platform::ShapeType::kPolygon, place, folder, services,
                    [&](platform::IInsertCursor& cursor) {
                        for (const Outline* outline : order)
                            if (!outline->Shape.IsNull()) cursor.Insert(outline->Shape, cells_of(*outline));
                    });
}

void write_lines(const std::vector<Outline>& outlines, const RangePlace& place, const Path& folder,
                 const platform::Services& services) {
    write_shapefile(lines_name(place), platform::ShapeType::kPolyline, place, folder, services,
                    [&](platform::IInsertCursor& cursor) {
                        for (const Outline& outline : outlines)
                            for (const Ring& ring : outline.Rings)
                                cursor.Insert({platform::ShapeType::kPolyline, {}, {ring}}, cells_of(outline));
                    });
}

std::vector<platform::Geometry> shapes_of(const AnimalRange& range, std::vector<Outline>& outlines) {
    std::vector<platform::Geometry> shapes(range.Isopleths.size());
    for (Outline& outline : outlines)
        shapes[static_cast<std::size_t>(outline.Isopleth - range.Isopleths.data())] = std::move(outline.Shape);
    return shapes;
}

}  // namespace

std::vector<Path> standing_files(const RangePlace& place, const platform::Services& services) {
    const platform::FolderContents contents(*services.Files, place.Folder);
    std::vector<Path> standing;
    const auto add = [&](const std::vector<Path>& files) {
        for (const Path& file : files)
            if (std::find(standing.begin(), standing.end(), file) == standing.end()) standing.push_back(file);
    };
    for (const char* format : {"GRID", "GTiff"}) add(contents.Raster(place.Name, format));
    add(contents.Shapefile(polygons_name(place)));
    add(contents.Shapefile(lines_name(place)));
    return standing;
}

WrittenRange write_range(const AnimalRange& range, const RangePlace& place, const platform::Services& services) {
    const Stage stage(place, services);
    std::vector<Path> files{platform::RasterPlace(place.Folder, place.Name, place.Format)};
    WrittenRange written;
    {
        const auto raster = write_raster(range, place, stage.Folder(), *services.Rasters);
        std::vector<Outline> outlines = outlines_of(range, place, *raster, services);
        files.push_back(place.Folder / (polygons_name(place) + ".shp"));
        write_polygons(outlines, place, stage.Folder(), services);
        if (place.Lines) {
            files.push_back(place.Folder / (lines_name(place) + ".shp"));
            write_lines(outlines, place, stage.Folder(), services);
        }
        written.Outlines = shapes_of(range, outlines);
    }
    stage.Publish(place);
    for (const Path& file : files) written.Files.push_back(file.string());
    return written;
}

}  // namespace wxl::akde
