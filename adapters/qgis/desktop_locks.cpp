#include "adapters/qgis/desktop_locks.h"

#include "adapters/disk/folder_lock.h"

#include <array>
#include <atomic>
#include <csignal>
#include <cstring>
#include <unistd.h>

namespace wxl::qgis {
namespace {

/// What a handler may look at: places of fixed size, each valid while it is taken.
struct HeldFile {
    std::atomic<bool> Taken{false};
    std::array<char, 4096> Path{};
};
std::array<HeldFile, 8> held;

constexpr std::array kSignals = {SIGTERM, SIGHUP, SIGINT};
std::array<struct sigaction, kSignals.size()> before;
int holders = 0;  // of the main thread, which alone runs analyses

void restore_signals() {
    for (std::size_t i = 0; i < kSignals.size(); ++i) ::sigaction(kSignals[i], &before[i], nullptr);
}

/// Only what a handler may call.
extern "C" void let_go(int signal) {
    for (const HeldFile& file : held)
        if (file.Taken) ::unlink(file.Path.data());
    restore_signals();
    ::raise(signal);
}

void watch_signals() {
    struct sigaction action {};
    action.sa_handler = &let_go;
    sigemptyset(&action.sa_mask);
    for (std::size_t i = 0; i < kSignals.size(); ++i) ::sigaction(kSignals[i], &action, &before[i]);
}

class WatchedLock final : public platform::IFolderLock {
public:
    WatchedLock(std::unique_ptr<platform::IFolderLock> lock, const std::filesystem::path& folder)
        : m_lock(std::move(lock)) {
        const std::string path = (folder / files::kLockFileName).string();
        for (HeldFile& file : held) {
            if (file.Taken || path.size() >= file.Path.size()) continue;
            std::memcpy(file.Path.data(), path.c_str(), path.size() + 1);
            file.Taken = true;
            m_file = &file;
            break;
        }
        if (holders++ == 0) watch_signals();
    }
    ~WatchedLock() override {
        if (--holders == 0) restore_signals();
        if (m_file) m_file->Taken = false;
    }
    WatchedLock(const WatchedLock&) = delete;
    WatchedLock& operator=(const WatchedLock&) = delete;

    std::size_t RemoveLeftovers(const std::filesystem::path& subfolder) override {
        return m_lock->RemoveLeftovers(subfolder);
    }

private:
    std::unique_ptr<platform::IFolderLock> m_lock;
    HeldFile* m_file = nullptr;
};

std::unique_ptr<platform::IFolderLock> watched(std::unique_ptr<platform::IFolderLock> lock,
                                               const std::filesystem::path& folder) {
    if (!lock) return nullptr;
    return std::make_unique<WatchedLock>(std::move(lock), folder);
}

}  // namespace

std::unique_ptr<platform::IFolderLock> DesktopLocks::Take(const std::filesystem::path& folder, std::string& holder) {
    return watched(m_locks.Take(folder, holder), folder);
}

std::unique_ptr<platform::IFolderLock> DesktopLocks::Share(const std::filesystem::path& folder, std::string& holder) {
    return watched(m_locks.Share(folder, holder), folder);
}

}  // namespace wxl::qgis
