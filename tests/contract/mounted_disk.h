#pragma once
#include "tests/support/scratch_folder.h"

#include <cerrno>
#include <cstring>
#include <string>
#include <sys/mount.h>

namespace wxl::tests {

/// A small disk of its own in memory, where the system lets the test mount one (as root, mostly).
class MountedDisk {
public:
    /// `options` as "size=64k".
    explicit MountedDisk(const std::string& options) {
        m_mounted = ::mount("tmpfs", m_folder.Path().c_str(), "tmpfs", 0, options.c_str()) == 0;
        if (!m_mounted) m_whyNot = std::strerror(errno);
    }
    ~MountedDisk() {
        if (m_mounted) ::umount2(m_folder.Path().c_str(), MNT_DETACH);
    }
    MountedDisk(const MountedDisk&) = delete;
    MountedDisk& operator=(const MountedDisk&) = delete;

    bool IsMounted() const { return m_mounted; }
    const std::string& WhyNot() const { return m_whyNot; }
    const std::filesystem::path& Path() const { return m_folder.Path(); }

    bool MakeReadOnly() {
        return ::mount("tmpfs", m_folder.Path().c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) == 0;
    }

private:
    ScratchFolder m_folder;
    bool m_mounted = false;
    std::string m_whyNot;
};

}  // namespace wxl::tests
