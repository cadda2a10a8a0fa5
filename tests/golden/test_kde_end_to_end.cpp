// From a tracking CSV to rasters and isopleths through the program's own commands, checked cell by cell.

#include "adapters/ogr/shapefile_workspace.h"
#include "adapters/raster/raster_dataset.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/telemetry.h"
#include "tests/unit/cli/captured_console.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <nlohmann/json.hpp>
#include <vector>

namespace wxl {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

/// Where the horizontal line at y crosses the polygon's rings, west to east.
std::vector<double> crossings(const platform::Geometry& polygon, double y) {
    std::vector<double> xs;
    for (const auto& ring : polygon.Parts)
        for (std::size_t i = 0; i + 1 < ring.size(); ++i) {
            const platform::Point& a = ring[i];
            const platform::Point& b = ring[i + 1];
            if ((a.Y > y) != (b.Y > y)) xs.push_back(a.X + (b.X - a.X) * (y - a.Y) / (b.Y - a.Y));
        }
    std::sort(xs.begin(), xs.end());
    return xs;
}

std::map<double, platform::Geometry> polygons_by_percent(const fs::path& folder, const std::string& name) {
    files::ShapefileWorkspace shapefiles;
    const auto features = shapefiles.Open(folder, name);
    std::map<double, platform::Geometry> polygons;
    if (!features) return polygons;
    const int percent = features->Table().FindField("PERCENT");
    const auto cursor = features->Find({});
    while (const auto feature = cursor->NextFeature())
        polygons[platform::ValueNumber(feature->Value(percent))] = feature->Shape();
    return polygons;
}

/// Share of the raster's sum in the cells whose centre lies in the polygon.
double share_within(platform::IRasterBand& band, const platform::Geometry& polygon) {
    const platform::RasterGeometry grid = band.Geometry();
    std::vector<float> cells(static_cast<std::size_t>(grid.Columns));
    double total = 0.0;
    double within = 0.0;
    for (std::int32_t row = 0; row < grid.Rows; ++row) {
        band.ReadRow(row, cells);
        const auto xs = crossings(polygon, grid.OriginY + (grid.Rows - row - 0.5) * grid.CellSize);
        std::size_t crossed = 0;
        for (std::int32_t column = 0; column < grid.Columns; ++column) {
            const double x = grid.OriginX + (column + 0.5) * grid.CellSize;
            while (crossed < xs.size() && xs[crossed] <= x) ++crossed;
            const double value = static_cast<double>(cells[static_cast<std::size_t>(column)]);
            total += value;
            if (crossed % 2 == 1) within += value;
        }
    }
    return within / total;
}

/// Imports a CSV, runs the analysis and compares the volume in each isopleth with its percentage.
void expect_isopleths_hold_their_volume(const fs::path& csv, const std::vector<std::string>& kernel,
                                        std::size_t animals) {
    const tests::ScratchFolder folder;
    const cli::Ran imported = cli::run_wxl({"import", csv, folder / "fixes.shp"});
    ASSERT_EQ(imported.Code, 0) << imported.Err;
    std::vector<std::string> call = {"kde",    folder / "fixes.shp", "--id-field", "animal",    "--out", folder / "out",
                                     "--json", "--isopleths",        "95,50",      "--polygons"};
    call.insert(call.end(), kernel.begin(), kernel.end());
    const cli::Ran ran = cli::run_wxl(call);
    ASSERT_EQ(ran.Code, 0) << ran.Err;
    const json result = json::parse(ran.Out);
    ASSERT_EQ(result["animals"].size(), animals);
    for (const json& animal : result["animals"]) {
        ASSERT_EQ(animal["status"], 0) << animal.dump();
        const std::string raster = animal["raster"];
        const auto band = files::OpenRaster(folder.Path() / "out" / raster)->Band();
        const auto polygons = polygons_by_percent(folder.Path() / "out", raster + "_iso_poly");
        ASSERT_EQ(polygons.size(), 2U) << raster;
        for (const auto& [percent, polygon] : polygons)
            EXPECT_NEAR(share_within(*band, polygon), percent / 100.0, 0.01) << raster;
    }
}

TEST(KdeEndToEnd, Isopleths_of_the_sample_hold_their_share_of_the_volume) {
    const fs::path sample = tests::SourceFile("samples/wolves.csv");
    expect_isopleths_hold_their_volume(sample, {"--cell-size", "100", "--extent", "min"}, 4);
    expect_isopleths_hold_their_volume(sample, {"--cell-size", "100", "--bandwidth", "lscv", "--adaptive"}, 4);
    expect_isopleths_hold_their_volume(sample, {"--cell-size", "60", "--bandwidth", "bcv", "--rescale"}, 4);
}

// Three birds whose ranges differ by three orders of magnitude: HREF is 68, 4020 and 14 metres.
TEST(KdeEndToEnd, Isopleths_of_real_birds_hold_their_share_of_the_volume) {
    const fs::path csv = tests::DataFile("O_ASSEN-gps-2018.csv");
    WXL_NEEDS_TELEMETRY(csv);
    for (const auto& [bird, cell] : {std::pair("5515851", "10"), {"5515867", "200"}, {"5515868", "2"}})
        expect_isopleths_hold_their_volume(csv,
                                           {"--cell-size", cell, "--extent", "min", "--bandwidth", "href", "--where",
                                            "animal = '" + std::string(bird) + "'"},
                                           1);
}

TEST(KdeEndToEnd, Text_ids_and_every_method_work_on_real_birds) {
    const fs::path csv = tests::DataFile("O_ASSEN-gps-2018.csv");
    WXL_NEEDS_TELEMETRY(csv);
    const tests::ScratchFolder folder;
    ASSERT_EQ(cli::run_wxl({"import", csv, folder / "fixes.shp"}).Code, 0);
    for (const char* method : {"href", "lscv", "bcv", "200", "prop:0.6,1"})
        for (const char* kernel : {"--adaptive", "--rescale"}) {
            const cli::Ran ran =
                cli::run_wxl({"kde", folder / "fixes.shp", "--id-field", "animal", "--out", folder / "out",
                              "--cell-size", "100", "--extent", "min", "--bandwidth", method, kernel, "--json",
                              "--overwrite", "--answer", "overlap=yes", "--where", "animal = '5515867'"});
            ASSERT_EQ(ran.Code, 0) << method << kernel << ran.Err;
            const json result = json::parse(ran.Out);
            ASSERT_FALSE(result["animals"].empty());
            for (const json& animal : result["animals"]) {
                EXPECT_EQ(animal["n"], 8163);
                EXPECT_EQ(animal["naming_id"], "1");
            }
        }
}

}  // namespace
}  // namespace wxl
