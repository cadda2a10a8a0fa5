#pragma once
#include "adapters/disk/disk_file_system.h"
#include "adapters/gdal/gdal_support.h"
#include "adapters/raster/raster_workspace.h"
#include "tests/support/scratch_folder.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace wxl::cli {

/// Writes a square raster with cells of 10 m in UTM zone 33N, rows from north to south, and returns its path. GRID
/// folders are called `name`, GeoTIFFs `name`.tif.
inline std::string make_raster(const tests::ScratchFolder& folder, const std::string& name,
                               const std::vector<std::vector<float>>& rows, const std::string& format = "GRID") {
    files::DiskFileSystem disk;
    files::DiskFolders folders;
    files::RasterWorkspace workspace(disk, folders);
    const auto side = static_cast<std::int32_t>(rows.size());
    const platform::RasterGeometry geometry{500000.0, 4649000.0, 10.0, side, side};
    const auto writer =
        workspace.Create(folder.Path(), {name, format, geometry, files::ReferenceFromText("EPSG:32633")});
    for (const std::vector<float>& row : rows) writer->WriteRow(row);
    writer->Publish();
    return (folder / (format == "GRID" ? name : name + ".tif")).string();
}

/// A square of rings: the first value fills the outermost ring of cells, the last one the cell in the middle.
inline std::vector<std::vector<float>> rings(const std::vector<float>& fromOutside) {
    const std::size_t side = 2 * fromOutside.size() - 1;
    std::vector<std::vector<float>> rows(side, std::vector<float>(side));
    for (std::size_t row = 0; row < side; ++row) {
        for (std::size_t column = 0; column < side; ++column) {
            const std::size_t ring = std::min({row, column, side - 1 - row, side - 1 - column});
            rows[row][column] = fromOutside[ring];
        }
    }
    return rows;
}

}  // namespace wxl::cli
