#pragma once
#include <filesystem>
#include <memory>
#include <string>

namespace wxl::platform {

/// A folder that one run has to itself, until this object goes or the process dies.
class IFolderLock {
public:
    virtual ~IFolderLock() = default;

    /// Deletes what runs that died have left in the folder under temporary names (see TemporaryName). What belongs to
    /// a process that still runs stays. Returns how many files and folders went.
    virtual std::size_t RemoveLeftovers() = 0;
};

/// Sees to it that one run at a time writes into a folder.
class IFolderLocks {
public:
    virtual ~IFolderLocks() = default;

    /// The lock of the folder, or null when another run holds it; `holder` then says which one, as far as known.
    /// RuntimeError when the folder cannot be written.
    virtual std::unique_ptr<IFolderLock> Take(const std::filesystem::path& folder, std::string& holder) = 0;
};

}  // namespace wxl::platform
