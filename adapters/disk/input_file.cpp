#include "adapters/disk/input_file.h"

#include "adapters/disk/posix_error.h"
#include "platform/runtime_error.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace wxl::files {

// A pipe would wait for a writer.
InputFile::InputFile(std::filesystem::path file)
    : m_file(std::move(file)), m_descriptor(::open(m_file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
    if (m_descriptor < 0) RaiseErrno(errno, m_file);
    struct stat status = {};
    const int code = ::fstat(m_descriptor, &status) == 0 ? 0 : errno;
    if (code != 0 || !S_ISREG(status.st_mode)) {
        ::close(m_descriptor);
        if (code != 0) RaiseErrno(code, m_file);
        RaiseNoFile(status.st_mode, m_file);
    }
    m_size = static_cast<std::uint64_t>(status.st_size);
}

InputFile::~InputFile() {
    ::close(m_descriptor);
}

void InputFile::Read(std::uint64_t offset, std::span<char> bytes) const {
    while (!bytes.empty()) {
        const ssize_t got = ::pread(m_descriptor, bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) RaiseErrno(errno, m_file);
        if (got == 0) raise_damaged(m_file, "it ends too early");
        bytes = bytes.subspan(static_cast<std::size_t>(got));
        offset += static_cast<std::uint64_t>(got);
    }
}

void raise_damaged(const std::filesystem::path& file, const std::string& why) {
    platform::Raise(platform::error_number::kDeviceIo,
                    file.string() + " is damaged: " + why + ". Copy it again from where it came from.");
}

}  // namespace wxl::files
