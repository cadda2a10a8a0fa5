#pragma once
// The files that one shapefile consists of, and how new ones take the place of old ones.
//
// One file is replaced by renaming a new one over it: at any moment the old or the new one stands there.
// Several files cannot be renamed in one step. They are written into a temporary folder beside the shapefile and synced
// to the disk; then that folder is renamed to ".NAME.swap". This is the moment at which the change counts. The files
// are moved out of it over the old ones, and the folder is removed. A run killed before the renaming leaves the old
// shapefile (and a temporary folder that nobody reads). One killed after it leaves the folder, and whoever opens the
// shapefile next through finish_interrupted_swap moves the rest.

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace wxl::files {

/// The file of that extension ("dbf") beside `shapefile` (path of the .shp): in lower, upper or the .shp's own case;
/// NAME.dbf when there is none.
std::filesystem::path part_of(const std::filesystem::path& shapefile, std::string_view extension);

/// All files in the folder that share the shapefile's name and are known parts of one, the .shp last if it is
/// there.
std::vector<std::filesystem::path> parts_of(const std::filesystem::path& shapefile);

/// Removes indexes that other programs made and that are wrong once cells changed, and spatial ones too once rows did.
void remove_indexes(const std::filesystem::path& shapefile, bool rowsChange);

/// Completes a change of several files that was cut short; does nothing when there is none. RuntimeError when it
/// cannot.
void finish_interrupted_swap(const std::filesystem::path& shapefile);

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

/// New files of a shapefile on their way to their places.
class PartsSwap {
public:
    explicit PartsSwap(std::filesystem::path shapefile);

    /// Where to write the new file that is to replace this one. Close it (synced) before Commit.
    std::filesystem::path Replacement(const std::filesystem::path& old);

    /// Puts all replacements into their places, with the rights of the old files.
    void Commit();

private:
    std::filesystem::path m_shapefile;
    TemporaryFolder m_folder;
    std::vector<std::filesystem::path> m_replaced;
};

/// Makes renames in a folder last through a power failure.
void sync_folder(const std::filesystem::path& folder);

/// Not writable for this user, or protected by its owner against writing (renaming over it would get round that, and
/// root may do anything).
bool is_protected(const std::filesystem::path& fileOrFolder);

/// rename(2); RuntimeError with the number of its failure.
void rename_file(const std::filesystem::path& from, const std::filesystem::path& to);

/// The same, RuntimeError 58 when anything stands under the new name.
void rename_new(const std::filesystem::path& from, const std::filesystem::path& to);

}  // namespace wxl::files
