// The bytes of the binary GRID format, and GDAL as an independent reader of them.

#include "adapters/raster/grid_layout.h"
#include "tests/contract/files_rasters.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <gmock/gmock.h>
#include <sys/resource.h>

using testing::ElementsAre;
using wxl::platform::RasterDefinition;
using wxl::platform::RasterGeometry;

namespace wxl::tests {
namespace {

double f64_at(const std::string& bytes, std::size_t offset) {
    std::uint64_t raw = 0;
    std::memcpy(&raw, bytes.data() + offset, sizeof raw);
    return std::bit_cast<double>(__builtin_bswap64(raw));
}

std::int32_t i32_at(const std::string& bytes, std::size_t offset) {
    std::uint32_t raw = 0;
    std::memcpy(&raw, bytes.data() + offset, sizeof raw);
    return static_cast<std::int32_t>(__builtin_bswap32(raw));
}

}  // namespace

TEST_F(FilesRasters, A_grid_is_a_folder_of_the_known_files) {
    RasterDefinition definition{"K3", "GRID", {500000.0, 4649000.0, 30.0, 3, 2}, files::ReferenceFromText(kUtm15)};
    Make(definition, std::vector<float>{1, 2, 3, 4, 5, 6});
    EXPECT_THAT(m_files.List(m_scratch / "K3"),
                ElementsAre("dblbnd.adf", "hdr.adf", "prj.adf", "sta.adf", "w001001.adf", "w001001x.adf"));
}

TEST_F(FilesRasters, The_bytes_of_a_grid_are_where_readers_look_for_them) {
    Make({"K3", "GRID", {500000.0, 4649000.0, 30.0, 3, 2}, {}}, std::vector<float>{1, 2, 3, 4, 5, 6});
    const std::string header = Read(m_scratch / "K3/hdr.adf");
    ASSERT_EQ(header.size(), 308U);
    EXPECT_EQ(header.substr(0, 8), std::string("GRID1.2\0", 8));
    EXPECT_EQ(header.substr(8, 8), std::string("\0\0\0\0\xFF\xFF\xFF\xFF", 8));
    EXPECT_EQ(i32_at(header, 16), 2);
    EXPECT_EQ(i32_at(header, 20), 1);
    EXPECT_EQ(f64_at(header, 256), 30.0);
    EXPECT_EQ(f64_at(header, 264), 30.0);
    EXPECT_EQ(f64_at(header, 272), 500000.0 - 8 * 256 * 30 / 2);
    EXPECT_EQ(f64_at(header, 280), 4649060.0 - 3 * 512 * 4 * 30 / 2);
    EXPECT_EQ(i32_at(header, 288), 8);
    EXPECT_EQ(i32_at(header, 292), 512);
    EXPECT_EQ(i32_at(header, 296), 256);
    EXPECT_EQ(i32_at(header, 300), 1);
    EXPECT_EQ(i32_at(header, 304), 4);

    const std::string bounds = Read(m_scratch / "K3/dblbnd.adf");
    ASSERT_EQ(bounds.size(), 32U);
    EXPECT_EQ(f64_at(bounds, 0), 500000.0);
    EXPECT_EQ(f64_at(bounds, 8), 4649000.0);
    EXPECT_EQ(f64_at(bounds, 16), 500090.0);
    EXPECT_EQ(f64_at(bounds, 24), 4649060.0);

    // 1 to 6: mean 3.5, variance (6^2 - 1) / 12.
    const std::string statistics = Read(m_scratch / "K3/sta.adf");
    ASSERT_EQ(statistics.size(), 32U);
    EXPECT_EQ(f64_at(statistics, 0), 1.0);
    EXPECT_EQ(f64_at(statistics, 8), 6.0);
    EXPECT_DOUBLE_EQ(f64_at(statistics, 16), 3.5);
    EXPECT_DOUBLE_EQ(f64_at(statistics, 24), std::sqrt(35.0 / 12.0));

    const std::string data = Read(m_scratch / "K3/w001001.adf");
    ASSERT_EQ(data.size(), 100U + 4098U + 7U * 2U);
    EXPECT_EQ(i32_at(data, 0), 0x270A);
    EXPECT_EQ(i32_at(data, 4), -1004);
    EXPECT_EQ(i32_at(data, 24), static_cast<std::int32_t>(data.size() / 2));
    EXPECT_EQ(data.substr(100, 2), std::string("\x08\x00", 2));
    EXPECT_EQ(data.substr(102, 12), std::string("\x3F\x80\0\0\x40\0\0\0\x40\x40\0\0", 12));
    EXPECT_EQ(data.substr(114, 4), "\xFF\x7F\xFF\xFF") << "a cell beyond the row's end is missing";
    EXPECT_EQ(data.substr(102 + 1024, 4), std::string("\x40\x80\0\0", 4)) << "the second row";
    EXPECT_EQ(data.substr(102 + 2048, 4), "\xFF\x7F\xFF\xFF") << "a row below the last is missing";

    const std::string index = Read(m_scratch / "K3/w001001x.adf");
    ASSERT_EQ(index.size(), 100U + 8U * 8U);
    EXPECT_EQ(i32_at(index, 24), static_cast<std::int32_t>(index.size() / 2));
    EXPECT_EQ(i32_at(index, 100), 50);
    EXPECT_EQ(i32_at(index, 104), 2048);
    EXPECT_EQ(i32_at(index, 108), 50 + 1 + 2048);
    EXPECT_EQ(i32_at(index, 112), 0);
    EXPECT_EQ(i32_at(index, 116), 50 + 1 + 2048 + 1);
}

TEST_F(FilesRasters, Tile_files_are_named_from_the_north_west) {
    EXPECT_EQ(files::grid::tile_name(0, 0), "w001001");
    EXPECT_EQ(files::grid::tile_name(1, 0), "w002001");
    EXPECT_EQ(files::grid::tile_name(0, 1), "w001000");
    EXPECT_EQ(files::grid::tile_name(2, 2), "z003001");
    EXPECT_EQ(files::grid::tile_name(0, 11), "z001010");
    EXPECT_EQ(files::grid::tile_name(1464, 0), "w1465001");
}

TEST_F(FilesRasters, Statistics_in_a_grid_survive_large_values_of_small_spread) {
    // 1000 and 1001 in turn, far from zero: deviation 1/2.
    std::vector<float> cells(2000);
    for (std::size_t i = 0; i < cells.size(); ++i) cells[i] = 1.0e6F + static_cast<float>(i % 2);
    Make({"K3", "GRID", {0.0, 0.0, 1.0, 40, 50}, {}}, cells);
    const std::string statistics = Read(m_scratch / "K3/sta.adf");
    EXPECT_DOUBLE_EQ(f64_at(statistics, 16), 1000000.5);
    EXPECT_DOUBLE_EQ(f64_at(statistics, 24), 0.5);
}

struct GridSize {
    std::int32_t Columns;
    std::int32_t Rows;
    std::size_t Tiles;
};

class GridSizes : public FilesRasters, public testing::WithParamInterface<GridSize> {};

// At, just below and just beyond the borders of blocks and tiles.
INSTANTIATE_TEST_SUITE_P(Borders, GridSizes,
                         testing::Values(GridSize{1, 1, 1}, GridSize{256, 4, 1}, GridSize{257, 5, 1},
                                         GridSize{2047, 3, 1}, GridSize{2048, 2048, 1}, GridSize{2049, 1, 2},
                                         GridSize{1, 2049, 2}, GridSize{2049, 2049, 4}, GridSize{4096, 4097, 6},
                                         GridSize{5000, 4100, 9}, GridSize{3, 9000, 5}, GridSize{300000, 9, 147}),
                         [](const auto& size) {
                             return std::to_string(size.param.Columns) + "x" + std::to_string(size.param.Rows);
                         });

TEST_P(GridSizes, Gdal_reads_every_cell_place_and_statistic_back) {
    const auto [columns, rows, tiles] = GetParam();
    const RasterGeometry geometry{500000.0, 4649000.0, 30.0, columns, rows};
    const auto cells = checked_cells(columns, rows);
    Make({"K3", "GRID", geometry, files::ReferenceFromText(kUtm15)}, cells);

    const auto names = m_files.List(m_scratch / "K3");
    EXPECT_EQ(names.size(), 4 + 2 * tiles);
    const auto dataset = open_by_gdal(m_scratch / "K3");
    ASSERT_TRUE(dataset);
    EXPECT_STREQ(dataset->GetDriverName(), "AIG");
    ASSERT_EQ(dataset->GetRasterXSize(), columns);
    ASSERT_EQ(dataset->GetRasterYSize(), rows);
    std::array<double, 6> transform{};
    ASSERT_EQ(dataset->GetGeoTransform(transform.data()), CE_None);
    EXPECT_THAT(transform, ElementsAre(500000.0, 30.0, 0.0, 4649000.0 + rows * 30.0, 0.0, -30.0));
    EXPECT_TRUE(cells_by_gdal(*dataset) == cells);
    const auto [lowest, highest] = std::minmax_element(cells.begin(), cells.end());
    EXPECT_EQ(dataset->GetRasterBand(1)->GetMinimum(), static_cast<double>(*lowest));
    EXPECT_EQ(dataset->GetRasterBand(1)->GetMaximum(), static_cast<double>(*highest));
}

TEST_F(FilesRasters, A_very_wide_grid_does_not_run_out_of_handles) {
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    const rlimit few{200, limit.rlim_max};
    setrlimit(RLIMIT_NOFILE, &few);
    const std::int32_t columns = 2048 * 300;
    const auto cells = checked_cells(columns, 1);
    const auto writer = m_rasters.Create(m_scratch.Path(), {"K3", "GRID", {0.0, 0.0, 1.0, columns, 1}, {}});
    EXPECT_EQ(error_of([&] { writer->WriteRow(cells); }), 0);
    setrlimit(RLIMIT_NOFILE, &limit);
    EXPECT_TRUE(cells_of(*writer->Publish()->Band()) == cells);
}

}  // namespace wxl::tests
