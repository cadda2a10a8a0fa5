#pragma once
// The files that one shapefile consists of.

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace wxl::files {

/// Whether a path is named as a shapefile's main file.
bool is_shapefile(const std::filesystem::path& path);

/// The .shp that is read when a shapefile is named by its .dbf or .shx, or by its folder and, where that holds several,
/// its name. `path` itself when it names something else.
std::filesystem::path main_file_of(const std::filesystem::path& path, const std::string& layer);

/// The file of that extension ("dbf") beside `shapefile` (path of the .shp): in lower, upper or the .shp's own case;
/// NAME.dbf when there is none.
std::filesystem::path part_of(const std::filesystem::path& shapefile, std::string_view extension);

/// All files in the folder that share the shapefile's name and are known parts of one, the .shp last if it is
/// there.
std::vector<std::filesystem::path> parts_of(const std::filesystem::path& shapefile);

/// Removes indexes that other programs made and that are wrong once cells changed, and spatial ones too once rows did.
void remove_indexes(const std::filesystem::path& shapefile, bool rowsChange);

/// A folder of a temporary name beside a file, removed at the end with all in it.
class TemporaryFolder {
public:
    /// RuntimeError 76 or 70 when it cannot be made.
    explicit TemporaryFolder(const std::filesystem::path& beside);
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& Path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

/// Makes renames in a folder last through a power failure.
void sync_folder(const std::filesystem::path& folder);

/// A file or folder that is not writable for this user, or protected by its owner against writing (renaming over it
/// would get round that, and root may do anything).
bool is_protected(const std::filesystem::path& path);

/// rename(2); RuntimeError with the number of its failure.
void rename_file(const std::filesystem::path& from, const std::filesystem::path& to);

/// The same, RuntimeError 58 when anything stands under the new name.
void rename_new(const std::filesystem::path& from, const std::filesystem::path& to);

}  // namespace wxl::files
