#pragma once
#include "platform/workspaces.h"

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace wxl::cli {

/// A shapefile that a command is asked to write, "FOLDER/NAME.shp". Nothing stands under that name until all is on
/// disk, and an old shapefile is replaced only by a whole new one.
class ShapefileOutput {
public:
    /// WrongCall when the name does not end in .shp; RuntimeError 76 when the folder is missing, 58 when the shapefile
    /// exists and `overwrite` is false.
    ShapefileOutput(const std::string& path, bool overwrite);

    /// Writes the features that `insert` hands to the cursor and publishes the shapefile.
    void Write(platform::ShapeType shape, const std::vector<platform::Field>& fields,
               const platform::SpatialReference& reference,
               const std::function<void(platform::IInsertCursor&)>& insert) const;

private:
    void WriteInto(const std::filesystem::path& folder, const platform::FeatureClassDefinition& definition,
                   const std::function<void(platform::IInsertCursor&)>& insert) const;
    bool IsTaken() const;
    void Replace(const std::filesystem::path& staging) const;

    std::filesystem::path m_folder;
    std::string m_name;
    bool m_overwrite;
};

}  // namespace wxl::cli
