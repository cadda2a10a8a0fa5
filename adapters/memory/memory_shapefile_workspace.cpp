#include "adapters/memory/memory_shapefile_workspace.h"

#include "platform/runtime_error.h"

#include <algorithm>
#include <array>

namespace wxl::memory {

using namespace wxl::platform;

namespace {

constexpr std::array<const char*, 4> kParts = {".shx", ".dbf", ".prj", ".shp"};

std::filesystem::path part_of(std::filesystem::path path, const char* extension) {
    return path += extension;
}

}  // namespace

bool MemoryShapefileWorkspace::Stands(const std::filesystem::path& path) const {
    return m_published.contains(path) && (m_files == nullptr || m_files->FileExists(part_of(path, ".shp")));
}

std::shared_ptr<MemoryFeatureClass> MemoryShapefileWorkspace::Find(const std::filesystem::path& folder,
                                                                   const std::string& name) const {
    return Stands(folder / name) ? m_published.at(folder / name) : nullptr;
}

std::shared_ptr<IFeatureClass> MemoryShapefileWorkspace::Open(const std::filesystem::path& folder,
                                                              const std::string& name) {
    return Find(folder, name);
}

std::shared_ptr<IFeatureClass> MemoryShapefileWorkspace::Create(const std::filesystem::path& folder,
                                                                const FeatureClassDefinition& definition) {
    CheckDatasetName(definition.Name);
    const auto path = folder / definition.Name;
    if (m_files != nullptr && !m_files->FolderExists(folder)) Raise(error_number::kPathNotFound, folder.string());
    if (Stands(path) || (m_files != nullptr && m_files->FileExists(part_of(path, ".shp"))))
        Raise(error_number::kFileExists, path.string() + ".shp already exists.");
    auto created = std::make_shared<MemoryFeatureClass>(definition.Shape, definition.Fields, definition.Reference);
    m_waiting.push_back({path, created});
    return created;
}

void MemoryShapefileWorkspace::Publish(const std::shared_ptr<IFeatureClass>& created) {
    const auto waiting = std::find_if(m_waiting.begin(), m_waiting.end(),
                                      [&](const Waiting& w) { return w.Features.lock() == created; });
    if (!created || waiting == m_waiting.end())
        Raise(error_number::kInvalidCall, "This feature class is not waiting to be published.");
    if (Stands(waiting->Path)) Raise(error_number::kFileExists, waiting->Path.string() + ".shp already exists.");
    Put(waiting->Path.parent_path(), waiting->Path.filename().string(), waiting->Features.lock());
    m_waiting.erase(waiting);
}

void MemoryShapefileWorkspace::Put(const std::filesystem::path& folder, const std::string& name,
                                   std::shared_ptr<MemoryFeatureClass> features) {
    if (m_files)
        for (const char* extension : kParts) PublishFile(*m_files, part_of(folder / name, extension), "");
    m_published[folder / name] = std::move(features);
}

void MemoryShapefileWorkspace::Delete(const std::filesystem::path& folder, const std::string& name) {
    const auto path = folder / name;
    if (!Stands(path)) Raise(error_number::kFileNotFound, path.string() + ".shp does not exist.");
    m_published.erase(path);
    if (!m_files) return;
    for (const char* extension : kParts)
        if (m_files->FileExists(part_of(path, extension))) m_files->DeleteFile(part_of(path, extension), false);
}

std::vector<std::filesystem::path> MemoryShapefileWorkspace::Published() const {
    std::vector<std::filesystem::path> paths;
    for (const auto& [path, features] : m_published)
        if (Stands(path)) paths.push_back(path);
    return paths;
}

std::size_t MemoryShapefileWorkspace::Unpublished() const {
    return static_cast<std::size_t>(
        std::count_if(m_waiting.begin(), m_waiting.end(), [](const Waiting& w) { return !w.Features.expired(); }));
}

}  // namespace wxl::memory
