#include "adapters/disk/folder_lock.h"

#include "adapters/disk/posix_error.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace wxl::files {
namespace {

constexpr int kAttempts = 100;
constexpr int kSharers = 20;
constexpr std::chrono::milliseconds kSharerPause{25};

class Descriptor {
public:
    explicit Descriptor(int value) : m_value(value) {}
    ~Descriptor() {
        if (m_value >= 0) ::close(m_value);
    }
    Descriptor(Descriptor&& other) noexcept : m_value(std::exchange(other.m_value, -1)) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int Value() const { return m_value; }

private:
    int m_value;
};

/// Whether the locked file is the one that stands under the name now: its last owner may have deleted it in between.
bool is_named(int descriptor, const std::filesystem::path& file) {
    struct stat held {};
    struct stat named {};
    return ::fstat(descriptor, &held) == 0 && ::stat(file.c_str(), &named) == 0 && held.st_ino == named.st_ino &&
           held.st_dev == named.st_dev;
}

std::string text_of(int descriptor) {
    std::array<char, 256> text{};
    const ssize_t length = ::pread(descriptor, text.data(), text.size(), 0);
    return length > 0 ? std::string(text.data(), static_cast<std::size_t>(length)) : std::string();
}

/// "process 4711 on HOST" from the lock file's text.
std::string holder_of(const std::string& text) {
    const std::size_t blank = text.find(' ');
    if (blank == std::string::npos || blank == 0) return {};
    return "process " + text.substr(0, blank) + " on " + text.substr(blank + 1);
}

void sign(int descriptor) {
    std::array<char, 256> host{};
    if (::gethostname(host.data(), host.size() - 1) != 0) host = {'?'};
    const std::string text = std::to_string(::getpid()) + " " + host.data();
    // The text only helps the message of whoever meets the lock: a full disk must not stop the run here.
    if (::ftruncate(descriptor, 0) != 0 || ::pwrite(descriptor, text.data(), text.size(), 0) < 0) return;
}

bool runs(long process) {
    if (process <= 0) return false;
    return ::kill(static_cast<pid_t>(process), 0) == 0 || errno == EPERM;
}

class FolderLock final : public platform::IFolderLock {
public:
    FolderLock(platform::IFileSystem& files, platform::IFolders& folders, std::filesystem::path folder,
               Descriptor descriptor)
        : m_files(files), m_folders(folders), m_folder(std::move(folder)), m_descriptor(std::move(descriptor)) {}
    /// The file goes with its last holder: with one that can have it alone.
    ~FolderLock() override {
        if (::flock(m_descriptor.Value(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK)
            ::unlink((m_folder / kLockFileName).c_str());
    }

    std::size_t RemoveLeftovers(const std::filesystem::path& subfolder) override {
        const std::filesystem::path folder = subfolder.empty() ? m_folder : m_folder / subfolder;
        if (LeadsElsewhere(subfolder)) return 0;
        std::size_t removed = 0;
        for (const std::string& name : m_files.List(folder)) {
            const auto dataset = platform::parse_temporary_name(name);
            // Process numbers come round: what bears our own was left by an earlier process.
            if (!dataset || (dataset->Process != ::getpid() && runs(dataset->Process))) continue;
            if (m_files.FolderExists(folder / name))
                m_folders.DeleteTree(folder / name);
            else
                m_files.DeleteFile(folder / name, true);
            ++removed;
        }
        return removed;
    }

private:
    /// Whether a link stands on the way into the sub-folder.
    bool LeadsElsewhere(const std::filesystem::path& subfolder) const {
        std::filesystem::path way = m_folder;
        return std::any_of(subfolder.begin(), subfolder.end(),
                           [&](const auto& step) { return m_folders.IsLink(way /= step); });
    }

    platform::IFileSystem& m_files;
    platform::IFolders& m_folders;
    std::filesystem::path m_folder;
    Descriptor m_descriptor;
};

}  // namespace

std::unique_ptr<platform::IFolderLock> FolderLocks::Take(const std::filesystem::path& folder, std::string& holder) {
    return TakeBy(LOCK_EX, folder, holder);
}

/// Another sharer that just lets go of the folder holds it alone for a moment.
std::unique_ptr<platform::IFolderLock> FolderLocks::Share(const std::filesystem::path& folder, std::string& holder) {
    for (int attempt = 1;; ++attempt) {
        auto lock = TakeBy(LOCK_SH, folder, holder);
        if (lock || attempt == kSharers) return lock;
        m_clock.Wait(kSharerPause);
    }
}

std::unique_ptr<platform::IFolderLock> FolderLocks::TakeBy(int operation, const std::filesystem::path& folder,
                                                           std::string& holder) {
    const std::filesystem::path file = folder / kLockFileName;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        Descriptor descriptor(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0666));
        if (descriptor.Value() < 0) RaiseErrno(errno, file);
        if (::flock(descriptor.Value(), operation | LOCK_NB) != 0 && (errno == EWOULDBLOCK || errno == EINTR)) {
            holder = holder_of(text_of(descriptor.Value()));
            return nullptr;
        }
        if (!is_named(descriptor.Value(), file)) continue;
        sign(descriptor.Value());
        return std::make_unique<FolderLock>(m_files, m_folders, folder, std::move(descriptor));
    }
    return nullptr;
}

}  // namespace wxl::files
