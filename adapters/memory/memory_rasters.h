#pragma once
#include "adapters/memory/memory_file_system.h"
#include "platform/workspaces.h"

#include <vector>

namespace wxl::memory {

/// A raster from its cells, row by row from the north (RuntimeError 9 when their number does not fit the geometry).
std::shared_ptr<platform::IRasterDataset> MakeRaster(std::string name, const platform::RasterGeometry& geometry,
                                                     std::vector<float> cells,
                                                     platform::SpatialReference reference = {});

/// Rasters on a memory disk. A "GRID" takes the name of a folder there, a "GTiff" that of a file NAME.tif, so that
/// names are taken as on a real disk.
class MemoryRasterWorkspace final : public platform::IRasterWorkspace {
public:
    explicit MemoryRasterWorkspace(std::shared_ptr<MemoryDisk> disk = std::make_shared<MemoryDisk>());

    bool Exists(const std::filesystem::path& folder, const std::string& name) const override;
    std::shared_ptr<platform::IRasterDataset> Open(const std::filesystem::path& folder,
                                                   const std::string& name) override;
    std::unique_ptr<platform::IRasterWriter> Create(const std::filesystem::path& folder,
                                                    const platform::RasterDefinition& definition) override;
    void Delete(const std::filesystem::path& folder, const std::string& name) override;

private:
    using Shelf = std::map<std::filesystem::path, std::shared_ptr<platform::IRasterDataset>>;

    std::shared_ptr<MemoryDisk> m_disk;
    std::shared_ptr<Shelf> m_rasters;
};

/// Triangulated networks on a memory disk: only names.
class MemoryTinWorkspace final : public platform::ITinWorkspace {
public:
    void Add(const std::filesystem::path& folder, const std::string& name);
    bool Exists(const std::filesystem::path& folder, const std::string& name) const override;
    void Delete(const std::filesystem::path& folder, const std::string& name) override;

private:
    std::set<std::filesystem::path> m_tins;
};

}  // namespace wxl::memory
