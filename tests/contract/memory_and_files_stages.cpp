#include "tests/contract/memory_and_files_stages.h"

#include "adapters/disk/disk_file_system.h"
#include "adapters/memory/memory_rasters.h"
#include "adapters/raster/raster_workspace.h"
#include "tests/support/scratch_folder.h"

namespace wxl::tests {
namespace {

class MemoryStage final : public Stage {
public:
    MemoryStage() { m_disk->AddFolder("/stage"); }
    platform::IFileSystem& Files() override { return m_files; }
    platform::IFolders& Folders() override { return m_folders; }
    platform::IRasterWorkspace& Rasters() override { return m_rasters; }
    std::filesystem::path Folder() const override { return "/stage"; }

private:
    std::shared_ptr<memory::MemoryDisk> m_disk = std::make_shared<memory::MemoryDisk>();
    memory::MemoryFileSystem m_files{m_disk};
    memory::MemoryFolders m_folders{m_disk};
    memory::MemoryRasterWorkspace m_rasters{m_disk};
};

class FilesStage final : public Stage {
public:
    platform::IFileSystem& Files() override { return m_files; }
    platform::IFolders& Folders() override { return m_folders; }
    platform::IRasterWorkspace& Rasters() override { return m_rasters; }
    std::filesystem::path Folder() const override { return m_scratch.Path(); }

private:
    ScratchFolder m_scratch;
    files::DiskFileSystem m_files;
    files::DiskFolders m_folders;
    files::RasterWorkspace m_rasters{m_files, m_folders};
};

}  // namespace

StageChoice memory_stage(const std::string& rasterFormat) {
    return {"Memory" + rasterFormat, [] { return std::make_unique<MemoryStage>(); }, rasterFormat};
}

StageChoice files_stage(const std::string& rasterFormat) {
    return {"Files" + rasterFormat, [] { return std::make_unique<FilesStage>(); }, rasterFormat};
}

}  // namespace wxl::tests
