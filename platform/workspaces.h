#pragma once
// Datasets in folders: opened, created, published, deleted by name.

#include "platform/features.h"
#include "platform/rasters.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace wxl::platform {

/// Rasters in a folder.
class IRasterWorkspace {
public:
    virtual ~IRasterWorkspace() = default;
    virtual bool Exists(const std::filesystem::path& folder, const std::string& name) const = 0;

    /// The raster of that name, or null.
    virtual std::shared_ptr<IRasterDataset> Open(const std::filesystem::path& folder, const std::string& name) = 0;

    /// RuntimeError: 76 no such folder, 58 name taken, 5 a name that the format refuses.
    virtual std::unique_ptr<IRasterWriter> Create(const std::filesystem::path& folder,
                                                  const RasterDefinition& definition) = 0;
    virtual void Delete(const std::filesystem::path& folder, const std::string& name) = 0;
};

/// What a new feature class is to be.
struct FeatureClassDefinition {
    std::string Name;
    ShapeType Shape = ShapeType::kPolygon;
    std::vector<Field> Fields;  ///< the object ID and geometry fields are implied and not listed
    SpatialReference Reference;
};

/// Shapefiles in a folder.
class IShapefileWorkspace {
public:
    virtual ~IShapefileWorkspace() = default;

    /// The shapefile of that name, or null.
    virtual std::shared_ptr<IFeatureClass> Open(const std::filesystem::path& folder, const std::string& name) = 0;

    /// A new class, written under a temporary name until Publish; one that is never published leaves nothing behind.
    virtual std::shared_ptr<IFeatureClass> Create(const std::filesystem::path& folder,
                                                  const FeatureClassDefinition& definition) = 0;

    /// Flushes and closes a class made by Create and gives it its final name (side files first, .shp last). The class
    /// stays usable. RuntimeError when any byte could not be written.
    virtual void Publish(const std::shared_ptr<IFeatureClass>& created) = 0;
    virtual void Delete(const std::filesystem::path& folder, const std::string& name) = 0;
};

/// Triangulated networks in a folder: only found and deleted.
class ITinWorkspace {
public:
    virtual ~ITinWorkspace() = default;
    virtual bool Exists(const std::filesystem::path& folder, const std::string& name) const = 0;
    virtual void Delete(const std::filesystem::path& folder, const std::string& name) = 0;
};

}  // namespace wxl::platform
