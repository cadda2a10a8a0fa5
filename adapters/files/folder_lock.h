#pragma once
#include "platform/file_system.h"
#include "platform/folder_lock.h"

#include <optional>
#include <string_view>

namespace wxl::files {

/// Name of the file that a run locks in its folder. The lock is the system's own and ends with the process, so that a
/// file left by a killed run stops nobody. The file holds "PROCESS HOST" and is deleted with the lock.
inline constexpr std::string_view kLockFileName = ".wxl_run.lock";

/// Locks on folders of this machine, and of network disks as far as they pass locks on. On a disk without locks every
/// run gets its lock.
class FolderLocks final : public platform::IFolderLocks {
public:
    /// Both outlive the locks.
    FolderLocks(platform::IFileSystem& files, platform::IFolders& folders) : m_files(files), m_folders(folders) {}
    std::unique_ptr<platform::IFolderLock> Take(const std::filesystem::path& folder, std::string& holder) override;
    std::unique_ptr<platform::IFolderLock> Share(const std::filesystem::path& folder, std::string& holder) override;

private:
    std::unique_ptr<platform::IFolderLock> TakeBy(int operation, const std::filesystem::path& folder,
                                                  std::string& holder);

    platform::IFileSystem& m_files;
    platform::IFolders& m_folders;
};

/// The process that made a temporary dataset (".NAME.PROCESS.part", with or without an extension behind it); nothing
/// for other names.
std::optional<long> TemporaryNameOwner(std::string_view name);

}  // namespace wxl::files
