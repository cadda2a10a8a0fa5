#include "apps/cli/akde_files.h"

#include "apps/cli/shapefile_output.h"
#include "isopleths/edge_closing.h"
#include "isopleths/level_polygons.h"
#include "platform/contour_step.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>

namespace wxl::cli {

namespace {

namespace fs = std::filesystem;
using isopleths::Ring;

std::vector<float> row_of(const AkdeAnimal& akde, std::int32_t row, double scaling) {
    std::vector<float> cells;
    for (const double cell : akde.Density.Row(row)) cells.push_back(static_cast<float>(cell * scaling));
    return cells;
}

std::shared_ptr<platform::IRasterDataset> write_raster(const AkdeAnimal& akde, const AkdePlace& place,
                                                       platform::IRasterWorkspace& rasters) {
    if (rasters.Exists(place.Folder, place.Name)) {
        if (!place.Overwrite)
            platform::Raise(platform::error_number::kFileExists,
                            (place.Folder / place.Name).string() +
                                " exists: choose another folder or prefix, or give "
                                "--overwrite");
        rasters.Delete(place.Folder, place.Name);
    }
    const auto writer = rasters.Create(place.Folder, {place.Name, place.Format, akde.Geometry, place.Reference});
    for (std::int32_t row = 0; row < akde.Geometry.Rows; ++row) writer->WriteRow(row_of(akde, row, place.Scaling));
    return writer->Publish();
}

/// The outer cells as the raster holds them.
isopleths::SurfaceEdge edge_of(const AkdeAnimal& akde, double scaling) {
    isopleths::SurfaceEdge edge;
    for (std::int32_t row = 0; row < akde.Geometry.Rows; ++row) {
        const std::vector<float> cells = row_of(akde, row, scaling);
        edge.West.push_back(static_cast<double>(cells.front()));
        edge.East.push_back(static_cast<double>(cells.back()));
        if (row == 0) edge.North.assign(cells.begin(), cells.end());
        if (row == akde.Geometry.Rows - 1) edge.South.assign(cells.begin(), cells.end());
    }
    for (const auto* side : {&edge.North, &edge.South, &edge.West, &edge.East})
        for (const double cell : *side) edge.MaxValue = std::max(edge.MaxValue, cell);
    return edge;
}

/// An isopleth with its contours, closed.
struct Outline {
    const AkdeIsopleth* Isopleth;
    double Level;
    std::vector<Ring> Rings;
};

std::vector<Outline> outlines_of(const AkdeAnimal& akde, const AkdePlace& place, platform::IRasterDataset& raster,
                                 platform::IContourOperation& contours) {
    std::vector<Outline> outlines;
    std::vector<double> levels;
    for (const AkdeIsopleth& isopleth : akde.Isopleths) {
        if (!isopleth.Level) continue;
        outlines.push_back({&isopleth, *isopleth.Level * place.Scaling, {}});
        levels.push_back(outlines.back().Level);
    }
    std::sort(levels.begin(), levels.end());
    levels.erase(std::unique(levels.begin(), levels.end()), levels.end());
    const isopleths::OuterEdge edge(akde.Geometry, edge_of(akde, place.Scaling));
    const std::vector<platform::ContourLine> lines = contours.Contours(raster, levels);
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

}  // namespace

std::vector<std::string> write_akde(const AkdeAnimal& akde, const AkdePlace& place,
                                    const platform::Services& services) {
    const ShapefileOutput polygons((place.Folder / (place.Name + "_poly.shp")).string(), place.Overwrite);
    std::unique_ptr<ShapefileOutput> lines;
    if (place.Lines)
        lines =
            std::make_unique<ShapefileOutput>((place.Folder / (place.Name + "_line.shp")).string(), place.Overwrite);
    const auto raster = write_raster(akde, place, *services.Rasters);
    std::vector<std::string> files{raster->Path().string()};
    const std::vector<Outline> outlines = outlines_of(akde, place, *raster, *services.Contours);
    // The largest first, so that a map shows the smaller ones above.
    polygons.Write(platform::ShapeType::kPolygon, kFields, place.Reference, [&](platform::IInsertCursor& cursor) {
        std::vector<const Outline*> order;
        for (const Outline& outline : outlines) order.push_back(&outline);
        std::stable_sort(order.begin(), order.end(),
                         [](const Outline* a, const Outline* b) { return a->Isopleth->Area > b->Isopleth->Area; });
        for (const Outline* outline : order) {
            const platform::Geometry shape = isopleths::level_polygon(outline->Rings, *services.Geometry);
            if (!shape.IsNull()) cursor.Insert(shape, cells_of(*outline));
        }
        cursor.Flush();
    });
    files.push_back((place.Folder / (place.Name + "_poly.shp")).string());
    if (!lines) return files;
    lines->Write(platform::ShapeType::kPolyline, kFields, place.Reference, [&](platform::IInsertCursor& cursor) {
        for (const Outline& outline : outlines)
            for (const Ring& ring : outline.Rings)
                cursor.Insert({platform::ShapeType::kPolyline, {}, {ring}}, cells_of(outline));
        cursor.Flush();
    });
    files.push_back((place.Folder / (place.Name + "_line.shp")).string());
    return files;
}

}  // namespace wxl::cli
