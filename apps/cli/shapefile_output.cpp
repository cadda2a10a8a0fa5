#include "apps/cli/shapefile_output.h"

#include "adapters/files/disk_file_system.h"
#include "adapters/files/shapefile_workspace.h"
#include "apps/cli/console.h"
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

bool is_taken(const fs::path& folder, const std::string& name) {
    return files::DiskFileSystem().FileExists(folder / (name + ".shp"));
}

void refuse_taken(const fs::path& shapefile) {
    platform::Raise(error_number::kFileExists,
                    shapefile.string() + " exists: choose another name, or give --overwrite");
}

}  // namespace

ShapefileStage::ShapefileStage(fs::path folder, std::vector<std::string> names, bool overwrite)
    : m_folder(std::move(folder)), m_names(std::move(names)) {
    const auto taken =
        std::find_if(m_names.begin(), m_names.end(), [&](const auto& name) { return is_taken(m_folder, name); });
    if (taken == m_names.end()) return;
    if (!overwrite) refuse_taken(m_folder / (*taken + ".shp"));
    m_staging = m_folder / platform::TemporaryName(*taken);
    files::DiskFolders().Create(m_staging);
}

ShapefileStage::~ShapefileStage() {
    std::error_code ignored;
    if (!m_staging.empty()) fs::remove_all(m_staging, ignored);
}

void ShapefileStage::Publish() const {
    if (m_staging.empty()) return;
    for (const std::string& name : m_names)
        if (is_taken(m_staging, name)) Replace(name);
}

/// Moves a whole shapefile over the old one: the old one goes first, so that its side files never stand beside the new
/// one's.
void ShapefileStage::Replace(const std::string& name) const {
    if (is_taken(m_folder, name)) files::ShapefileWorkspace().Delete(m_folder, name);
    files::DiskFileSystem disk;
    const std::string last = name + ".shp";
    for (const std::string& file : disk.List(m_staging))
        if (file != last && file.starts_with(name + ".")) disk.Rename(m_staging / file, m_folder / file);
    disk.Rename(m_staging / last, m_folder / last);
}

ShapefileOutput::ShapefileOutput(const std::string& path, bool overwrite)
    : m_folder(fs::path(path).parent_path()), m_name(fs::path(path).stem().string()), m_overwrite(overwrite) {
    if (m_folder.empty()) m_folder = ".";
    if (!platform::EqualNoCase(fs::path(path).extension().string(), ".shp"))
        throw WrongCall(path + ": the output is a shapefile, its name must end in .shp");
    if (!files::DiskFileSystem().FolderExists(m_folder))
        platform::Raise(error_number::kPathNotFound,
                        fmt::format("{}: there is no such folder; make it first", m_folder.string()));
    if (is_taken(m_folder, m_name) && !overwrite) refuse_taken(path);
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
