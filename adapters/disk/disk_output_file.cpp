#include "adapters/disk/disk_output_file.h"

#include "adapters/disk/posix_error.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace wxl::files {
namespace {

constexpr std::size_t kGather = 16384;  // bytes

int open_flags(platform::WriteMode mode) {
    switch (mode) {
        case platform::WriteMode::kNew:
            return O_EXCL;
        case platform::WriteMode::kAppend:
            return O_APPEND;
        case platform::WriteMode::kReplace:
            break;
    }
    return O_TRUNC;
}

}  // namespace

DiskOutputFile::DiskOutputFile(std::filesystem::path file, platform::WriteMode mode) : m_file(std::move(file)) {
    // A pipe would wait for a reader.
    constexpr int kAlways = O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
    m_descriptor = ::open(m_file.c_str(), kAlways | open_flags(mode), 0666);
    const int code = errno;
    if (m_descriptor >= 0) {
        RefusePipe();
        return;
    }
    if (code == ENXIO) RaiseNoFile(S_IFIFO, m_file);
    std::error_code ignored;
    // Whoever may plant a link in a folder must not choose what is written through it.
    if (code == ELOOP && std::filesystem::is_symlink(m_file, ignored))
        platform::Raise(platform::error_number::kPermissionDenied,
                        m_file.string() + " is a link, and nothing is written through links: delete it");
    RaiseErrno(code, m_file);
}

void DiskOutputFile::RefusePipe() {
    struct stat status = {};
    if (::fstat(m_descriptor, &status) != 0 || !S_ISFIFO(status.st_mode)) {
        // Devices are waited for as usual.
        ::fcntl(m_descriptor, F_SETFL, ::fcntl(m_descriptor, F_GETFL) & ~O_NONBLOCK);
        return;
    }
    ::close(std::exchange(m_descriptor, -1));
    RaiseNoFile(status.st_mode, m_file);
}

DiskOutputFile::~DiskOutputFile() {
    if (m_descriptor < 0) return;
    try {
        if (!m_failure) PutGathered();
    } catch (const platform::RuntimeError&) {
        // Whoever wants to know calls Close.
    }
    ::close(m_descriptor);
}

void DiskOutputFile::Write(std::string_view bytes) {
    CheckOpen();
    if (m_gathered.size() + bytes.size() > kGather) PutGathered();
    if (bytes.size() >= kGather)
        Put(bytes);
    else
        m_gathered += bytes;
}

void DiskOutputFile::Seek(std::uint64_t offset) {
    CheckOpen();
    PutGathered();
    // A file opened for appending would go on writing at its end.
    const int flags = ::fcntl(m_descriptor, F_GETFL);
    if ((flags & O_APPEND) != 0 && ::fcntl(m_descriptor, F_SETFL, flags & ~O_APPEND) != 0) Fail(errno);
    if (::lseek(m_descriptor, static_cast<off_t>(offset), SEEK_SET) < 0) Fail(errno);
}

void DiskOutputFile::Flush() {
    CheckOpen();
    PutGathered();
}

void DiskOutputFile::Close() {
    CheckOpen();
    if (!m_failure) {
        try {
            PutGathered();
        } catch (const platform::RuntimeError&) {
            // Kept in m_failure; thrown below, after the descriptor is free.
        }
    }
    int code = 0;
    // Pipes and devices cannot be flushed to a disk.
    if (::fsync(m_descriptor) != 0 && errno != EINVAL && errno != ENOTSUP && errno != EROFS) code = errno;
    if (::close(std::exchange(m_descriptor, -1)) != 0 && errno != EINTR && code == 0) code = errno;
    if (m_failure) throw platform::RuntimeError(*m_failure);
    if (code != 0) RaiseErrno(code, m_file);
}

void DiskOutputFile::Put(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(m_descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) Fail(errno);
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

void DiskOutputFile::PutGathered() {
    const std::string gathered = std::exchange(m_gathered, {});
    Put(gathered);
}

void DiskOutputFile::CheckOpen() const {
    if (m_descriptor < 0)
        platform::Raise(platform::error_number::kInvalidCall, "The file is closed: " + m_file.string());
}

void DiskOutputFile::Fail(int code) {
    try {
        RaiseErrno(code, m_file);
    } catch (const platform::RuntimeError& error) {
        if (!m_failure) m_failure = error;
        throw;
    }
}

}  // namespace wxl::files
