#pragma once
#include "platform/folder_lock.h"

namespace wxl::qgis {

/// Locks that a signal which ends the desktop (SIGTERM, SIGHUP, SIGINT) lets go of too: the lock's file is deleted, and
/// the signal then does what it did before. Handlers stand only while a lock is held.
class DesktopLocks final : public platform::IFolderLocks {
public:
    /// `locks` outlives the object and its locks.
    explicit DesktopLocks(platform::IFolderLocks& locks) : m_locks(locks) {}
    std::unique_ptr<platform::IFolderLock> Take(const std::filesystem::path& folder, std::string& holder) override;
    std::unique_ptr<platform::IFolderLock> Share(const std::filesystem::path& folder, std::string& holder) override;

private:
    platform::IFolderLocks& m_locks;
};

}  // namespace wxl::qgis
