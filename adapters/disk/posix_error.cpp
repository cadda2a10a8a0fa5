#include "adapters/disk/posix_error.h"

#include "platform/runtime_error.h"

#include <cerrno>
#include <sys/stat.h>
#include <system_error>

namespace wxl::files {

namespace error_number = platform::error_number;

std::int32_t ErrorNumberOf(int code, const std::filesystem::path& path) {
    switch (code) {
        case ENOSPC:
        case EDQUOT:
            return error_number::kDiskFull;
        case EACCES:
        case EPERM:
        case EROFS:
        case EBUSY:
        case ETXTBSY:
        case EISDIR:
            return error_number::kPermissionDenied;
        case EEXIST:
        case ENOTEMPTY:
            return error_number::kFileExists;
        case ENOENT: {
            const auto folder = path.parent_path();
            std::error_code ignored;
            const bool folderThere = folder.empty() || std::filesystem::is_directory(folder, ignored);
            return folderThere ? error_number::kFileNotFound : error_number::kPathNotFound;
        }
        case ENOTDIR:
        case ENAMETOOLONG:
        case ELOOP:
            return error_number::kPathNotFound;
        case ENOMEM:
            return error_number::kOutOfMemory;
        default:
            return error_number::kDeviceIo;
    }
}

void RaiseErrno(int code, const std::filesystem::path& path) {
    const std::int32_t number = ErrorNumberOf(code, path);
    std::string text = platform::DescriptionOf(number) + ": " + path.string();
    if (code == EFBIG)
        platform::Raise(number, "The file became larger than this user's limit (ulimit -f) allows: " + path.string());
    const bool plain = code == ENOSPC || code == EACCES || code == EEXIST || code == ENOENT;
    if (!plain) text += " (" + std::generic_category().message(code) + ")";
    platform::Raise(number, text);
}

void RaiseNoFile(std::uint32_t mode, const std::filesystem::path& path) {
    if (S_ISDIR(mode)) RaiseErrno(EISDIR, path);
    platform::Raise(error_number::kInvalidCall,
                    path.string() + " is a pipe or a device and no file: give a file, or take it out of the way");
}

}  // namespace wxl::files
