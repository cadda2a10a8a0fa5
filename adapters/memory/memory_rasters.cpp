#include "adapters/memory/memory_rasters.h"

#include "platform/runtime_error.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace wxl::memory {

namespace error_number = platform::error_number;

namespace {

class MemoryRasterBand final : public platform::IRasterBand {
public:
    MemoryRasterBand(const platform::RasterGeometry& geometry, platform::SpatialReference reference,
                     std::vector<float> cells)
        : m_geometry(geometry), m_reference(std::move(reference)), m_cells(std::move(cells)) {}

    platform::RasterGeometry Geometry() const override { return m_geometry; }
    platform::SpatialReference Reference() const override { return m_reference; }

    void ReadRow(std::int32_t row, std::span<float> cells) override {
        const auto columns = static_cast<std::size_t>(m_geometry.Columns);
        if (row < 0 || row >= m_geometry.Rows || cells.size() != columns) platform::Raise(error_number::kSubscript);
        const auto first = m_cells.begin() + static_cast<std::ptrdiff_t>(columns) * row;
        std::copy_n(first, columns, cells.begin());
    }

    platform::RasterStatistics ComputeStatistics() override { return platform::StatisticsByRows(*this); }

private:
    platform::RasterGeometry m_geometry;
    platform::SpatialReference m_reference;
    std::vector<float> m_cells;
};

class MemoryRasterDataset final : public platform::IRasterDataset {
public:
    MemoryRasterDataset(std::string name, std::shared_ptr<platform::IRasterBand> band)
        : m_name(std::move(name)), m_band(std::move(band)) {}

    std::string Name() const override { return m_name; }
    platform::SpatialReference Reference() const override { return m_band->Reference(); }
    std::shared_ptr<platform::IRasterBand> Band() override { return m_band; }
    std::filesystem::path Path() const override { return {}; }

private:
    std::string m_name;
    std::shared_ptr<platform::IRasterBand> m_band;
};

/// Puts the finished raster where it belongs.
using Shelve = std::function<void(const std::shared_ptr<platform::IRasterDataset>&)>;

class MemoryRasterWriter final : public platform::IRasterWriter {
public:
    MemoryRasterWriter(platform::RasterDefinition definition, Shelve shelve)
        : m_definition(std::move(definition)), m_shelve(std::move(shelve)) {}

    void WriteRow(std::span<const float> cells) override {
        const auto columns = static_cast<std::size_t>(m_definition.Geometry.Columns);
        if (IsWhole() || cells.size() != columns) platform::Raise(error_number::kSubscript);
        platform::CheckCells(cells, m_definition.Name);
        m_cells.insert(m_cells.end(), cells.begin(), cells.end());
        ++m_rows;
    }

    std::shared_ptr<platform::IRasterDataset> Publish() override {
        if (!IsWhole() || m_published) platform::Raise(error_number::kInvalidCall);
        auto raster = MakeRaster(m_definition.Name, m_definition.Geometry, std::move(m_cells), m_definition.Reference);
        m_shelve(raster);
        m_published = true;
        return raster;
    }

private:
    bool IsWhole() const { return m_rows == m_definition.Geometry.Rows; }

    platform::RasterDefinition m_definition;
    Shelve m_shelve;
    std::vector<float> m_cells;
    std::int32_t m_rows = 0;
    bool m_published = false;
};

std::filesystem::path place_of(const std::filesystem::path& folder, const std::string& name,
                               const std::string& format) {
    if (format == "GRID") return folder / name;
    if (format == "GTiff") return folder / (name + ".tif");
    platform::Raise(error_number::kInvalidCall, "Unknown raster format: " + format);
}

}  // namespace

std::shared_ptr<platform::IRasterDataset> MakeRaster(std::string name, const platform::RasterGeometry& geometry,
                                                     std::vector<float> cells, platform::SpatialReference reference) {
    const auto wanted = static_cast<std::size_t>(geometry.Columns) * static_cast<std::size_t>(geometry.Rows);
    if (cells.size() != wanted) platform::Raise(error_number::kSubscript);
    auto band = std::make_shared<MemoryRasterBand>(geometry, std::move(reference), std::move(cells));
    return std::make_shared<MemoryRasterDataset>(std::move(name), std::move(band));
}

MemoryRasterWorkspace::MemoryRasterWorkspace(std::shared_ptr<MemoryDisk> disk)
    : m_disk(std::move(disk)), m_rasters(std::make_shared<Shelf>()) {}

bool MemoryRasterWorkspace::Exists(const std::filesystem::path& folder, const std::string& name) const {
    return m_rasters->count(folder / name) != 0 || m_rasters->count(folder / (name + ".tif")) != 0;
}

std::shared_ptr<platform::IRasterDataset> MemoryRasterWorkspace::Open(const std::filesystem::path& folder,
                                                                      const std::string& name) {
    for (const auto& path : {folder / name, folder / (name + ".tif")})
        if (const auto found = m_rasters->find(path); found != m_rasters->end()) return found->second;
    return nullptr;
}

std::unique_ptr<platform::IRasterWriter> MemoryRasterWorkspace::Create(const std::filesystem::path& folder,
                                                                       const platform::RasterDefinition& definition) {
    const MemoryFileSystem files(m_disk);
    if (!files.FolderExists(folder))
        platform::Raise(error_number::kPathNotFound, "The folder does not exist: " + folder.string());
    platform::CheckRasterDefinition(definition);
    const auto place = place_of(folder, definition.Name, definition.Format);
    const auto check_free = [disk = m_disk, place] {
        const MemoryFileSystem now(disk);
        if (now.FileExists(place) || now.FolderExists(place))
            platform::Raise(error_number::kFileExists, "The name is taken: " + place.string());
    };
    check_free();
    const bool isFolder = definition.Format == "GRID";
    return std::make_unique<MemoryRasterWriter>(
        definition, [disk = m_disk, rasters = m_rasters, place, isFolder, check_free](const auto& raster) {
            check_free();
            if (isFolder)
                disk->AddFolder(place);
            else
                disk->AddFile(place, {});
            (*rasters)[place] = raster;
        });
}

void MemoryRasterWorkspace::Delete(const std::filesystem::path& folder, const std::string& name) {
    for (const auto& path : {folder / name, folder / (name + ".tif")}) {
        if (m_rasters->erase(path) == 0) continue;
        MemoryFileSystem files(m_disk);
        if (files.FileExists(path))
            files.DeleteFile(path, true);
        else if (files.FolderExists(path))
            MemoryFolders(m_disk).DeleteTree(path);
        return;
    }
    platform::Raise(error_number::kFileNotFound, "There is no raster " + (folder / name).string());
}

void MemoryTinWorkspace::Add(const std::filesystem::path& folder, const std::string& name) {
    m_tins.insert(folder / name);
}

bool MemoryTinWorkspace::Exists(const std::filesystem::path& folder, const std::string& name) const {
    return m_tins.contains(folder / name);
}

void MemoryTinWorkspace::Delete(const std::filesystem::path& folder, const std::string& name) {
    if (m_tins.erase(folder / name) == 0)
        platform::Raise(error_number::kFileNotFound, "There is no TIN " + (folder / name).string());
}

}  // namespace wxl::memory
