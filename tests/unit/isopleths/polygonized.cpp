#include "tests/unit/isopleths/polygonized.h"

#include "isopleths/rings.h"

#include <algorithm>
#include <array>
#include <cpl_string.h>
#include <gdal_alg.h>
#include <gdal_priv.h>
#include <memory>
#include <ogrsf_frmts.h>
#include <stdexcept>
#include <string>

namespace wxl::tests {

using platform::Geometry;
using platform::Point;

namespace {

std::unique_ptr<GDALDataset> new_dataset(const char* driver, int columns, int rows, int bands) {
    GDALAllRegister();
    GDALDriver* found = GetGDALDriverManager()->GetDriverByName(driver);
    GDALDataset* made =
        found ? found->Create("", columns, rows, bands, bands > 0 ? GDT_Float64 : GDT_Unknown, nullptr) : nullptr;
    if (made == nullptr) throw std::runtime_error(std::string("no dataset by driver ") + driver);
    return std::unique_ptr<GDALDataset>(made);
}

std::vector<Point> points_of(const OGRLinearRing& ring) {
    std::vector<Point> points;
    for (int i = 0; i < ring.getNumPoints(); ++i) points.push_back({ring.getX(i), ring.getY(i)});
    return points;
}

void append_polygon(const OGRPolygon& polygon, Geometry& shape) {
    const auto append = [&](const OGRLinearRing& ring, bool clockwise) {
        std::vector<Point> points = points_of(ring);
        if ((isopleths::clockwise_area(points) > 0.0) != clockwise) std::reverse(points.begin(), points.end());
        shape.Parts.push_back(std::move(points));
    };
    append(*polygon.getExteriorRing(), true);
    for (int i = 0; i < polygon.getNumInteriorRings(); ++i) append(*polygon.getInteriorRing(i), false);
}

}  // namespace

Geometry polygonized_above(const Surface& surface, double level) {
    const auto& place = surface.Geometry;
    // Cells are multiplied by a power of two, as the levels are too: the contourer moves cells by an absolute 1e-6.
    constexpr double kScale = 1048576.0 * 512.0;
    const auto raster = new_dataset("MEM", place.Columns, place.Rows, 1);
    std::array<double, 6> columnsAndRows = {0.0, 1.0, 0.0, 0.0, 0.0, 1.0};
    raster->SetGeoTransform(columnsAndRows.data());
    std::vector<double> cells(surface.Cells.begin(), surface.Cells.end());
    for (double& cell : cells) cell *= kScale;
    if (raster->GetRasterBand(1)->RasterIO(GF_Write, 0, 0, place.Columns, place.Rows, cells.data(), place.Columns,
                                           place.Rows, GDT_Float64, 0, 0, nullptr) != CE_None)
        throw std::runtime_error("cells were not taken");

    const auto vectors = new_dataset("Memory", 0, 0, 0);
    OGRLayer* layer = vectors->CreateLayer("polygons", nullptr, wkbMultiPolygon, nullptr);
    OGRFieldDefn low("low", OFTReal);
    OGRFieldDefn high("high", OFTReal);
    layer->CreateField(&low);
    layer->CreateField(&high);
    CPLStringList options;
    options.SetNameValue("FIXED_LEVELS", CPLSPrintf("%.17g", level * kScale));
    options.SetNameValue("POLYGONIZE", "YES");
    options.SetNameValue("ELEV_FIELD_MIN", "0");
    options.SetNameValue("ELEV_FIELD_MAX", "1");
    if (GDALContourGenerateEx(GDALRasterBand::ToHandle(raster->GetRasterBand(1)), OGRLayer::ToHandle(layer),
                              options.List(), nullptr, nullptr) != CE_None)
        throw std::runtime_error("no contours");

    Geometry above{platform::ShapeType::kPolygon, {}, {}};
    for (const auto& feature : *layer) {
        if (feature->GetFieldAsDouble(1) <= level * kScale) continue;
        const OGRMultiPolygon* polygons = feature->GetGeometryRef()->toMultiPolygon();
        for (const OGRPolygon* polygon : *polygons) append_polygon(*polygon, above);
    }
    if (above.Parts.empty()) return {};
    // Columns and rows to map units.
    for (auto& ring : above.Parts) {
        for (Point& point : ring) {
            point.X = place.OriginX + point.X * place.CellSize;
            point.Y = place.OriginY + (place.Rows - point.Y) * place.CellSize;
        }
    }
    for (auto& ring : above.Parts) std::reverse(ring.begin(), ring.end());
    return above;
}

bool is_valid(const Geometry& polygon) {
    if (polygon.IsNull()) return true;
    OGRMultiPolygon whole;
    std::unique_ptr<OGRPolygon> current;
    const auto finish = [&] {
        if (current) whole.addGeometryDirectly(current.release());
    };
    for (const auto& part : polygon.Parts) {
        auto ring = std::make_unique<OGRLinearRing>();
        for (const Point& point : part) ring->addPoint(point.X, point.Y);
        if (isopleths::clockwise_area(part) > 0.0) {
            finish();
            current = std::make_unique<OGRPolygon>();
        }
        if (!current) return false;
        current->addRingDirectly(ring.release());
    }
    finish();
    return whole.IsValid() != FALSE;
}

}  // namespace wxl::tests
