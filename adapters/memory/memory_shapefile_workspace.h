#pragma once
#include "adapters/memory/memory_feature_class.h"
#include "platform/file_system.h"
#include "platform/workspaces.h"

namespace wxl::memory {

/// Shapefiles that live in memory, by folder and name. Given a file system, each published shapefile also stands there
/// as (empty) .shp, .shx, .dbf and .prj files, exists only as long as its .shp does, and folders must exist.
class MemoryShapefileWorkspace final : public platform::IShapefileWorkspace {
public:
    explicit MemoryShapefileWorkspace(platform::IFileSystem* files = nullptr) : m_files(files) {}

    // IShapefileWorkspace
    std::shared_ptr<platform::IFeatureClass> Open(const std::filesystem::path& folder,
                                                  const std::string& name) override;
    std::shared_ptr<platform::IFeatureClass> Create(const std::filesystem::path& folder,
                                                    const platform::FeatureClassDefinition& definition) override;
    void Publish(const std::shared_ptr<platform::IFeatureClass>& created) override;
    void Delete(const std::filesystem::path& folder, const std::string& name) override;

    /// Puts a class under a name at once, as if it had been published.
    void Put(const std::filesystem::path& folder, const std::string& name,
             std::shared_ptr<MemoryFeatureClass> features);

    /// The published class of that name as what it is, or null.
    std::shared_ptr<MemoryFeatureClass> Find(const std::filesystem::path& folder, const std::string& name) const;

    /// Names of the published classes, as paths without extension, sorted.
    std::vector<std::filesystem::path> Published() const;

    /// How many created classes still stand that were never published.
    std::size_t Unpublished() const;

private:
    struct Waiting {
        std::filesystem::path Path;
        std::weak_ptr<MemoryFeatureClass> Features;
    };

    bool Stands(const std::filesystem::path& path) const;

    platform::IFileSystem* m_files;
    std::map<std::filesystem::path, std::shared_ptr<MemoryFeatureClass>> m_published;
    std::vector<Waiting> m_waiting;
};

}  // namespace wxl::memory
