#include "adapters/disk/write_fence.h"

#include "adapters/disk/disk_file_system.h"

#include <cstdint>
#include <cstdlib>
#include <fcntl.h>
#include <linux/landlock.h>
#include <string>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace wxl::files {

namespace fs = std::filesystem;

namespace {

constexpr int kWithMoves = 2;     // version that can allow files to be moved between folders
constexpr int kWithTruncate = 3;  // version that knows cutting a file as a right of its own
constexpr std::uint64_t kTruncate = std::uint64_t{1} << 14U;  // not in the headers of older systems

constexpr std::uint64_t kInFile = LANDLOCK_ACCESS_FS_WRITE_FILE;
constexpr std::uint64_t kInFolder = kInFile | LANDLOCK_ACCESS_FS_REMOVE_DIR | LANDLOCK_ACCESS_FS_REMOVE_FILE |
                                    LANDLOCK_ACCESS_FS_MAKE_DIR | LANDLOCK_ACCESS_FS_MAKE_REG |
                                    LANDLOCK_ACCESS_FS_REFER;
constexpr std::uint64_t kNowhere = LANDLOCK_ACCESS_FS_MAKE_CHAR | LANDLOCK_ACCESS_FS_MAKE_BLOCK |
                                   LANDLOCK_ACCESS_FS_MAKE_SOCK | LANDLOCK_ACCESS_FS_MAKE_FIFO |
                                   LANDLOCK_ACCESS_FS_MAKE_SYM;

/// The rules being made; the C library has no functions for them.
class Rules {
public:
    explicit Rules(std::uint64_t handled) {
        landlock_ruleset_attr attributes = {};
        attributes.handled_access_fs = handled;
        m_descriptor = static_cast<int>(::syscall(SYS_landlock_create_ruleset, &attributes, sizeof attributes, 0));
    }
    ~Rules() {
        if (m_descriptor >= 0) ::close(m_descriptor);
    }
    Rules(const Rules&) = delete;
    Rules& operator=(const Rules&) = delete;

    /// A place that is not there is passed over: nothing can be written in it.
    void Allow(const fs::path& place, std::uint64_t rights) const {
        const int descriptor = ::open(place.c_str(), O_PATH | O_CLOEXEC);
        if (descriptor < 0) return;
        landlock_path_beneath_attr attributes = {};
        attributes.allowed_access = rights;
        attributes.parent_fd = descriptor;
        ::syscall(SYS_landlock_add_rule, m_descriptor, LANDLOCK_RULE_PATH_BENEATH, &attributes, 0);
        ::close(descriptor);
    }

    bool Enforce() const {
        return m_descriptor >= 0 && ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
               ::syscall(SYS_landlock_restrict_self, m_descriptor, 0) == 0;
    }

private:
    int m_descriptor = -1;
};

fs::path nearest_folder(const fs::path& wanted) {
    fs::path folder = fs::absolute(wanted).lexically_normal();
    std::error_code ignored;
    while (!fs::is_directory(folder, ignored) && folder.has_relative_path()) folder = folder.parent_path();
    return folder;
}

/// Libraries have favourites of their own (/var/tmp, the present folder), which would be closed to them.
void share_temporary_folder(const fs::path& folder) {
    for (const char* variable : {"SQLITE_TMPDIR", "CPL_TMPDIR"}) ::setenv(variable, folder.c_str(), 1);
}

}  // namespace

WritablePlaces& WritablePlaces::Folder(const fs::path& folder) {
    m_folders.push_back(nearest_folder(folder));
    return *this;
}

WritablePlaces& WritablePlaces::FolderOf(const fs::path& file) {
    return Folder(file.has_parent_path() ? file.parent_path() : fs::path("."));
}

WritablePlaces& WritablePlaces::Programs() {
    m_programs = true;
    return *this;
}

int fence_version() {
    const long version = ::syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    return version > 0 ? static_cast<int>(version) : 0;
}

bool raise_fence(const WritablePlaces& places) {
    const int version = fence_version();
    if (version < kWithMoves) return false;
    const std::uint64_t cutting = version >= kWithTruncate ? kTruncate : 0;
    const std::uint64_t starting = places.MayStartPrograms() ? 0 : LANDLOCK_ACCESS_FS_EXECUTE;
    const Rules rules(kInFolder | kNowhere | cutting | starting);
    const fs::path temporary = temporary_folder();
    share_temporary_folder(temporary);
    // Readers of a shapefile whose change was cut short gather its files there as links; writing follows a link only to
    // places that are open themselves.
    for (const fs::path& folder : places.Folders()) rules.Allow(folder, kInFolder | cutting);
    rules.Allow(temporary, kInFolder | LANDLOCK_ACCESS_FS_MAKE_SYM | cutting);
    rules.Allow("/dev/null", kInFile | cutting);
    return rules.Enforce();
}

}  // namespace wxl::files
