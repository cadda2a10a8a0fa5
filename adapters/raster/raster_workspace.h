#pragma once
#include "platform/file_system.h"
#include "platform/workspaces.h"

namespace wxl::files {

/// Rasters in folders of this machine, in two formats: "GRID" (binary GRID, a folder NAME) and "GTiff" (a file
/// NAME.tif). Anything else that GDAL reads is found under its file name.
class RasterWorkspace final : public platform::IRasterWorkspace {
public:
    /// Both outlive the workspace and its writers.
    RasterWorkspace(platform::IFileSystem& files, platform::IFolders& folders);

    bool Exists(const std::filesystem::path& folder, const std::string& name) const override;

    /// Null when there is none; RuntimeError when there is one that cannot be read.
    std::shared_ptr<platform::IRasterDataset> Open(const std::filesystem::path& folder,
                                                   const std::string& name) override;

    /// RuntimeError 5 also for an unknown format and a geometry that no raster can have. The writer takes finite cells
    /// (RuntimeError 6 otherwise).
    std::unique_ptr<platform::IRasterWriter> Create(const std::filesystem::path& folder,
                                                    const platform::RasterDefinition& definition) override;

    /// Deletes the raster with its side files; RuntimeError 53 when there is none, 70 when a GRID folder holds files
    /// that are not part of a grid.
    void Delete(const std::filesystem::path& folder, const std::string& name) override;

private:
    platform::IFileSystem& m_files;
    platform::IFolders& m_folders;
};

/// Triangulated networks: folders that hold tnxy.adf, tdenv.adf or tdenv9.adf.
class TinWorkspace final : public platform::ITinWorkspace {
public:
    /// Both outlive the workspace.
    TinWorkspace(platform::IFileSystem& files, platform::IFolders& folders);

    bool Exists(const std::filesystem::path& folder, const std::string& name) const override;

    /// RuntimeError 53 when there is none, 70 when its folder holds files that are not part of it.
    void Delete(const std::filesystem::path& folder, const std::string& name) override;

private:
    platform::IFileSystem& m_files;
    platform::IFolders& m_folders;
};

}  // namespace wxl::files
