#pragma once
// Rasters of the files adapter in a scratch folder, and what GDAL alone reads of them.

#include "adapters/disk/disk_file_system.h"
#include "adapters/gdal/gdal_support.h"
#include "adapters/raster/raster_workspace.h"
#include "tests/contract/raster_contract.h"
#include "tests/support/scratch_folder.h"

#include <string>
#include <vector>

namespace wxl::tests {

inline const std::string kUtm15 = "EPSG:26915";

class FilesRasters : public testing::Test {
protected:
    std::shared_ptr<platform::IRasterDataset> Make(const platform::RasterDefinition& definition,
                                                   std::span<const float> cells) {
        const auto writer = m_rasters.Create(m_scratch.Path(), definition);
        write_rows(*writer, definition, cells);
        return writer->Publish();
    }
    std::string Read(const std::filesystem::path& file) const { return m_files.ReadFile(file, 1 << 30); }
    void Put(const std::filesystem::path& file, std::string_view bytes) {
        const auto out = m_files.OpenForWriting(file, platform::WriteMode::kReplace);
        out->Write(bytes);
        out->Close();
    }

    ScratchFolder m_scratch;
    files::DiskFileSystem m_files;
    files::DiskFolders m_folders;
    files::RasterWorkspace m_rasters{m_files, m_folders};
};

/// All cells of a raster as GDAL alone reads them.
inline std::vector<float> cells_by_gdal(GDALDataset& dataset) {
    const int columns = dataset.GetRasterXSize();
    const int rows = dataset.GetRasterYSize();
    std::vector<float> cells(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows));
    const CPLErr result = dataset.GetRasterBand(1)->RasterIO(GF_Read, 0, 0, columns, rows, cells.data(), columns, rows,
                                                             GDT_Float32, 0, 0, nullptr);
    EXPECT_EQ(result, CE_None);
    return cells;
}

/// A raster opened by GDAL alone; null when it cannot.
inline files::GdalDatasetPtr open_by_gdal(const std::filesystem::path& path) {
    files::RegisterGdal();
    return files::GdalDatasetPtr(GDALDataset::Open(path.c_str(), GDAL_OF_RASTER));
}

}  // namespace wxl::tests
