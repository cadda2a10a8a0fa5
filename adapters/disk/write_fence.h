#pragma once
// What this process may write, told to the kernel: from then on neither the program nor a library that it uses can
// write elsewhere, whatever a file that it reads makes of it.

#include <filesystem>
#include <vector>

namespace wxl::files {

/// The folders below which a process may write, and whether it may start programs.
class WritablePlaces {
public:
    /// All below the folder; where it is not there yet, below the nearest folder above it, in which it will be made.
    WritablePlaces& Folder(const std::filesystem::path& folder);

    /// What stands beside the file, as a new one is written beside the old one before it takes its place.
    WritablePlaces& FolderOf(const std::filesystem::path& file);

    WritablePlaces& Programs();

    const std::vector<std::filesystem::path>& Folders() const { return m_folders; }
    bool MayStartPrograms() const { return m_programs; }

private:
    std::vector<std::filesystem::path> m_folders;
    bool m_programs = false;
};

/// The version of Landlock that the kernel has; 0 where it has none.
int fence_version();

/// Binds this process and all that it starts to the places, to the temporary folder (TMPDIR, else /tmp) and to
/// /dev/null, until it ends. Files that are open already stay so. Returns false, and does nothing, where the kernel has
/// no Landlock, or one that could not move files between folders (version 1, before Linux 5.19).
bool raise_fence(const WritablePlaces& places);

}  // namespace wxl::files
