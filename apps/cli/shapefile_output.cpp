#include "apps/cli/shapefile_output.h"

#include "adapters/files/disk_file_system.h"
#include "adapters/files/shapefile_workspace.h"
#include "apps/cli/console.h"
#include "platform/file_system.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <fmt/format.h>

namespace wxl::cli {

namespace {

namespace fs = std::filesystem;
namespace error_number = platform::error_number;

/// A new folder beside the output, deleted at the end with what is still in it.
class StagingFolder {
public:
    StagingFolder(const fs::path& folder, const std::string& name) : m_path(folder / platform::TemporaryName(name)) {
        files::DiskFolders().Create(m_path);
    }
    ~StagingFolder() {
        std::error_code ignored;
        fs::remove_all(m_path, ignored);
    }
    StagingFolder(const StagingFolder&) = delete;
    StagingFolder& operator=(const StagingFolder&) = delete;
    const fs::path& Path() const { return m_path; }

private:
    fs::path m_path;
};

}  // namespace

ShapefileOutput::ShapefileOutput(const std::string& path, bool overwrite)
    : m_folder(fs::path(path).parent_path()), m_name(fs::path(path).stem().string()), m_overwrite(overwrite) {
    if (m_folder.empty()) m_folder = ".";
    if (!platform::EqualNoCase(fs::path(path).extension().string(), ".shp"))
        throw WrongCall(path + ": the output is a shapefile, its name must end in .shp");
    if (!files::DiskFileSystem().FolderExists(m_folder))
        platform::Raise(error_number::kPathNotFound,
                        fmt::format("{}: there is no such folder; make it first", m_folder.string()));
    if (IsTaken() && !overwrite)
        platform::Raise(error_number::kFileExists, path + " exists: choose another name, or give --overwrite");
}

void ShapefileOutput::Write(platform::ShapeType shape, const std::vector<platform::Field>& fields,
                            const platform::SpatialReference& reference,
                            const std::function<void(platform::IInsertCursor&)>& insert) const {
    const platform::FeatureClassDefinition definition{m_name, shape, fields, reference};
    if (!m_overwrite || !IsTaken()) return WriteInto(m_folder, definition, insert);
    const StagingFolder staging(m_folder, m_name);
    WriteInto(staging.Path(), definition, insert);
    Replace(staging.Path());
}

void ShapefileOutput::WriteInto(const fs::path& folder, const platform::FeatureClassDefinition& definition,
                                const std::function<void(platform::IInsertCursor&)>& insert) const {
    files::ShapefileWorkspace workspace;
    const auto created = workspace.Create(folder, definition);
    insert(*created->Insert());
    workspace.Publish(created);
}

bool ShapefileOutput::IsTaken() const {
    return files::DiskFileSystem().FileExists(m_folder / (m_name + ".shp"));
}

/// Moves a whole shapefile over the old one: the old one goes first, so that its side files never stand beside the new
/// one's.
void ShapefileOutput::Replace(const fs::path& staging) const {
    files::ShapefileWorkspace().Delete(m_folder, m_name);
    files::DiskFileSystem disk;
    const std::string last = m_name + ".shp";
    for (const std::string& file : disk.List(staging))
        if (file != last) disk.Rename(staging / file, m_folder / file);
    disk.Rename(staging / last, m_folder / last);
}

}  // namespace wxl::cli
