#pragma once
#include "apps/cli/read_files.h"
#include "platform/workspaces.h"

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace wxl::cli {

/// Shapefiles of one folder that a command is asked to write. Where one of them is to be replaced, all are written into
/// a new folder beside the old ones, which is deleted at the end, and take their place when they are whole.
class ShapefileStage {
public:
    /// RuntimeError 58 when a name is taken, be it by a lone side file, and `overwrite` is false. Names are without
    /// ".shp"; the folder exists.
    ShapefileStage(std::filesystem::path folder, std::vector<std::string> names, bool overwrite);
    ~ShapefileStage();
    ShapefileStage(const ShapefileStage&) = delete;
    ShapefileStage& operator=(const ShapefileStage&) = delete;

    /// Where to write them, under their names.
    const std::filesystem::path& Folder() const { return m_staging.empty() ? m_folder : m_staging; }

    /// Lets them take the place of the old ones; those that were not written leave the old ones alone.
    void Publish() const;

private:
    void Replace(const std::string& name) const;

    std::filesystem::path m_folder;
    std::vector<std::string> m_names;
    std::filesystem::path m_staging;  ///< empty when nothing is to be replaced
};

/// A shapefile that a command is asked to write, "FOLDER/NAME.shp". Nothing stands under that name until all is on
/// disk, and an old shapefile is replaced only by a whole new one.
class ShapefileOutput {
public:
    /// WrongCall when the name does not end in .shp; RuntimeError 76 when the folder is missing, 58 when any
    /// file of the shapefile exists and `overwrite` is false; first of all 70 when it is among the files that are
    /// `read`.
    ShapefileOutput(const std::string& path, bool overwrite, const ReadFiles& read = {});

    /// RuntimeError 70 when one of the shapefile's files is read by the command too.
    void Refuse(const ReadFiles& read) const { read.RefuseShapefile(m_folder, m_name); }

    /// Writes the features that `insert` hands to the cursor and publishes the shapefile.
    void Write(platform::ShapeType shape, const std::vector<platform::Field>& fields,
               const platform::SpatialReference& reference,
               const std::function<void(platform::IInsertCursor&)>& insert) const;

    /// The same for a shapefile that `write` makes as a whole, under the path that it is given. Nothing is replaced
    /// when it throws.
    void WriteBy(const std::function<void(const std::filesystem::path&)>& write) const;

private:
    std::filesystem::path m_folder;
    std::string m_name;
    bool m_overwrite;
};

}  // namespace wxl::cli
