#pragma once
#include <filesystem>
#include <memory>
#include <string>

namespace wxl::platform {

/// A folder that one run has to itself, until this object goes or the process dies.
class IFolderLock {
public:
    virtual ~IFolderLock() = default;

    /// Deletes what runs that died have left in the folder, or in `subfolder` of it, under temporary names (see
    /// TemporaryName). What belongs to a process that still runs stays. Returns how many files and folders went. Only
    /// for the one that holds the folder alone.
    virtual std::size_t RemoveLeftovers(const std::filesystem::path& subfolder) = 0;
};

/// Sees to it that one run at a time writes into a folder, be it one process or several that share the work.
class IFolderLocks {
public:
    virtual ~IFolderLocks() = default;

    /// The lock of the folder, or null when another run holds it; `holder` then says which one, as far as known.
    /// RuntimeError when the folder cannot be written.
    virtual std::unique_ptr<IFolderLock> Take(const std::filesystem::path& folder, std::string& holder) = 0;

    /// The same, shared with others that share it: nobody can Take the folder meanwhile.
    virtual std::unique_ptr<IFolderLock> Share(const std::filesystem::path& folder, std::string& holder) = 0;
};

}  // namespace wxl::platform
