#pragma once
#include "platform/workspaces.h"

namespace wxl::files {

/// Shapefiles in folders of this machine.
///
/// A new shapefile is built in a temporary folder beside its final place; Publish checks that every byte is on disk and
/// moves its files, .shp last. One that is never published is removed with the last reference to it.
///
/// Columns of a new shapefile: numbers are N(24,15) whose cells hold the shortest text that gives the same double again
/// (plain digits where they fit, else "1.5e-12"), so that every finite double comes back bit for bit; whole numbers are
/// N(18,0), RuntimeError 6 beyond 18 characters; texts are UTF-8 up to the length asked for (254 bytes when 0),
/// RuntimeError 6 beyond it. Names of fields have up to 10 bytes (RuntimeError 5).
class ShapefileWorkspace final : public platform::IShapefileWorkspace {
public:
    /// Null when there is no NAME.shp.
    std::shared_ptr<platform::IFeatureClass> Open(const std::filesystem::path& folder,
                                                  const std::string& name) override;

    /// RuntimeError 76 no such folder, 58 name taken (a lone side file takes it too), 70 folder not writable, 5 a name
    /// that cannot be.
    std::shared_ptr<platform::IFeatureClass> Create(const std::filesystem::path& folder,
                                                    const platform::FeatureClassDefinition& definition) override;

    /// RuntimeError 58 when the name was taken meanwhile, 61 disk full, 70 not allowed, 5 a class that Create did not
    /// make or that is published already.
    void Publish(const std::shared_ptr<platform::IFeatureClass>& created) override;

    /// Deletes .shp first and then its side files, also those that have lost their .shp; RuntimeError 53 when there is
    /// none.
    void Delete(const std::filesystem::path& folder, const std::string& name) override;
};

}  // namespace wxl::files
