#include "apps/cli/shapefile_output.h"

#include "adapters/disk/disk_file_system.h"
#include "adapters/ogr/shapefile_workspace.h"
#include "apps/cli/console.h"
#include "platform/dataset_files.h"
#include "platform/file_system.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <fmt/format.h>
#include <utility>

namespace wxl::cli {

namespace {

namespace fs = std::filesystem;
namespace error_number = platform::error_number;

/// The files of a shapefile, whether its .shp is among them or not.
std::vector<fs::path> standing(const fs::path& folder, const std::string& name) {
    return platform::FolderContents(files::DiskFileSystem(), folder).Shapefile(name);
}

void refuse_taken(const fs::path& file) {
    platform::Raise(error_number::kFileExists, file.string() + " exists: choose another name, or give --overwrite");
}

}  // namespace

ShapefileStage::ShapefileStage(fs::path folder, std::vector<std::string> names, bool overwrite)
    : m_folder(std::move(folder)), m_names(std::move(names)) {
    for (const std::string& name : m_names) {
        const auto taken = standing(m_folder, name);
        if (taken.empty()) continue;
        if (!overwrite) refuse_taken(taken.front());
        m_staging = m_folder / platform::TemporaryName(name);
    }
    if (!m_staging.empty()) files::DiskFolders().Create(m_staging);
}

ShapefileStage::~ShapefileStage() {
    std::error_code ignored;
    if (!m_staging.empty()) fs::remove_all(m_staging, ignored);
}

void ShapefileStage::Publish() const {
    if (m_staging.empty()) return;
    for (const std::string& name : m_names)
        if (!standing(m_staging, name).empty()) Replace(name);
}

/// Moves a whole shapefile over the old one: the old one goes first, so that its side files never stand beside the new
/// one's.
void ShapefileStage::Replace(const std::string& name) const {
    files::DiskFileSystem disk;
    for (const fs::path& old : standing(m_folder, name)) disk.DeleteFile(old, true);
    const std::string last = name + ".shp";
    for (const std::string& file : disk.List(m_staging))
        if (file != last && file.starts_with(name + ".")) disk.Rename(m_staging / file, m_folder / file);
    disk.Rename(m_staging / last, m_folder / last);
}

ShapefileOutput::ShapefileOutput(const std::string& path, bool overwrite, const ReadFiles& read)
    : m_folder(fs::path(path).parent_path()), m_name(fs::path(path).stem().string()), m_overwrite(overwrite) {
    if (m_folder.empty()) m_folder = ".";
    if (!platform::EqualNoCase(fs::path(path).extension().string(), ".shp"))
        throw WrongCall(path + ": the output is a shapefile, its name must end in .shp");
    if (!files::DiskFileSystem().FolderExists(m_folder))
        platform::Raise(error_number::kPathNotFound,
                        fmt::format("{}: there is no such folder; make it first", m_folder.string()));
    Refuse(read);
    const auto taken = standing(fs::path(path).parent_path(), m_name);
    if (!taken.empty() && !overwrite) refuse_taken(taken.front());
}

void ShapefileOutput::Write(platform::ShapeType shape, const std::vector<platform::Field>& fields,
                            const platform::SpatialReference& reference,
                            const std::function<void(platform::IInsertCursor&)>& insert) const {
    WriteBy([&](const fs::path& shapefile) {
        files::ShapefileWorkspace workspace;
        const auto created = workspace.Create(shapefile.parent_path(), {m_name, shape, fields, reference});
        insert(*created->Insert());
        workspace.Publish(created);
    });
}

void ShapefileOutput::WriteBy(const std::function<void(const fs::path&)>& write) const {
    const ShapefileStage stage(m_folder, {m_name}, m_overwrite);
    write(stage.Folder() / (m_name + ".shp"));
    stage.Publish();
}

}  // namespace wxl::cli
