#pragma once
#include "platform/clock.h"
#include "platform/file_system.h"
#include "platform/folder_lock.h"

#include <string_view>

namespace wxl::files {

/// Name of the file that a run locks in its folder. The lock is the system's own and ends with the process, so that a
/// file left by a killed run stops nobody. The file holds "PROCESS HOST" and is deleted with the lock.
inline constexpr std::string_view kLockFileName = ".wxl_run.lock";

/// Locks on folders of this machine, and of network disks as far as they pass locks on. On a disk without locks every
/// run gets its lock.
class FolderLocks final : public platform::IFolderLocks {
public:
    /// All outlive the locks.
    FolderLocks(platform::IFileSystem& files, platform::IFolders& folders, const platform::IClock& clock)
        : m_files(files), m_folders(folders), m_clock(clock) {}
    std::unique_ptr<platform::IFolderLock> Take(const std::filesystem::path& folder, std::string& holder) override;
    std::unique_ptr<platform::IFolderLock> Share(const std::filesystem::path& folder, std::string& holder) override;

private:
    std::unique_ptr<platform::IFolderLock> TakeBy(int operation, const std::filesystem::path& folder,
                                                  std::string& holder);

    platform::IFileSystem& m_files;
    platform::IFolders& m_folders;
    const platform::IClock& m_clock;
};

}  // namespace wxl::files
