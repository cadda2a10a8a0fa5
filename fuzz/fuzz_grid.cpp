// GRID folders: cells that are written read back the same; folders of any bytes are read or refused.

#include "adapters/disk/disk_file_system.h"
#include "adapters/gdal/gdal_support.h"
#include "adapters/raster/raster_dataset.h"
#include "adapters/raster/raster_workspace.h"
#include "fuzz/patched_files.h"
#include "fuzz/scratch_files.h"

#include <cmath>

namespace {

using namespace wxl;
using fuzz::require;
namespace fs = std::filesystem;

struct Disk {
    Disk() { files::LimitGdal(); }

    fuzz::FuzzFolder Folder;
    files::DiskFileSystem Files;
    files::DiskFolders Folders;
    files::RasterWorkspace Rasters{Files, Folders};
};

std::shared_ptr<platform::IRasterDataset> write_grid(Disk& disk, const platform::RasterGeometry& geometry,
                                                     const std::vector<float>& cells) {
    const auto writer = disk.Rasters.Create(disk.Folder.Path(), {"g", "GRID", geometry, {}});
    const auto columns = static_cast<std::size_t>(geometry.Columns);
    for (std::size_t row = 0; row < static_cast<std::size_t>(geometry.Rows); ++row)
        writer->WriteRow(std::span(cells).subspan(row * columns, columns));
    return writer->Publish();
}

void check_read_back(Disk& disk, fuzz::FuzzInput& input) {
    platform::RasterGeometry geometry{input.Within(-1e6, 1e6), input.Within(-1e6, 1e6), input.Within(0.5, 500.0),
                                      input.Between(1, 300), input.Between(1, 20)};
    std::vector<float> cells(static_cast<std::size_t>(geometry.Columns) * static_cast<std::size_t>(geometry.Rows));
    for (float& cell : cells) {
        cell = input.IsEmpty() ? 0.0F : input.Take<float>();
        if (!std::isfinite(cell) || cell == std::numeric_limits<float>::lowest()) cell = 1.0F;
    }
    const auto grid = write_grid(disk, geometry, cells);
    const auto band = grid->Band();
    require(band->Geometry().Columns == geometry.Columns && band->Geometry().Rows == geometry.Rows, "the same size");
    std::vector<float> row(static_cast<std::size_t>(geometry.Columns));
    for (std::int32_t r = 0; r < geometry.Rows; ++r) {
        band->ReadRow(r, row);
        require(std::equal(row.begin(), row.end(), cells.begin() + r * geometry.Columns), "the same cells");
    }
    disk.Rasters.Delete(disk.Folder.Path(), "g");
}

fuzz::Files good_files(Disk& disk) {
    std::vector<float> cells(40 * 12);
    for (std::size_t i = 0; i < cells.size(); ++i) cells[i] = static_cast<float>(i % 37);
    write_grid(disk, {500000, 6000000, 20, 40, 12}, cells);
    fuzz::Files good;
    for (const auto& entry : fs::directory_iterator(disk.Folder.Path() / "g"))
        good[entry.path().filename().string()] = fuzz::read_bytes(entry.path());
    disk.Rasters.Delete(disk.Folder.Path(), "g");
    good["prj.adf"] =
        "Projection    UTM\nZone          33\nDatum         WGS84\nUnits         METERS\nParameters    \n";
    return good;
}

void check_any(Disk& disk, fuzz::FuzzInput& input) {
    static const fuzz::Files good = good_files(disk);
    const fs::path folder = disk.Folder.Path() / "h";
    fs::create_directory(folder);
    for (const auto& [name, bytes] : fuzz::files_of(input, good)) fuzz::write_bytes(folder / name, bytes);
    fuzz::fault_of([&] {
        const auto grid = files::OpenRaster(folder);
        grid->Reference();
        const auto band = grid->Band();
        const platform::RasterGeometry geometry = band->Geometry();
        require(geometry.Columns > 0 && geometry.Rows > 0 && geometry.CellSize > 0.0, "a size");
        std::vector<float> row(static_cast<std::size_t>(geometry.Columns));
        constexpr std::int32_t kMostRows = 200;
        for (std::int32_t r = 0; r < std::min(geometry.Rows, kMostRows); ++r) band->ReadRow(r, row);
    });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Disk disk;
    fuzz::FuzzInput input(data, size);
    input.Flag() ? check_read_back(disk, input) : check_any(disk, input);
    return 0;
}
