#pragma once
#include "platform/file_system.h"

namespace wxl::files {

/// RuntimeError 70 when what stands at `file` is no regular file that a new one may replace: a link, a pipe, a device.
/// A folder is met by the replacing itself.
void CheckReplaceable(const std::filesystem::path& file);

/// Files of this machine. Numbers of failures: 53 no such file, 76 no such folder, 58 name taken, 61 disk or quota
/// full, 70 refused by the system, 57 anything else; the path stands in the description.
class DiskFileSystem final : public platform::IFileSystem {
public:
    bool FileExists(const std::filesystem::path& file) const override;
    bool FolderExists(const std::filesystem::path& folder) const override;
    std::string ReadFile(const std::filesystem::path& file, std::uint64_t limit) const override;
    std::unique_ptr<platform::IInputFile> OpenForReading(const std::filesystem::path& file) const override;
    std::optional<platform::FileFacts> FactsOf(const std::filesystem::path& file) const override;
    std::unique_ptr<platform::IOutputFile> OpenForWriting(const std::filesystem::path& file,
                                                          platform::WriteMode mode) override;

    /// RuntimeError 58 when a folder would replace anything, or a file a folder; 70 as CheckReplaceable.
    void Rename(const std::filesystem::path& from, const std::filesystem::path& to) override;

    /// RuntimeError 70 for a read-only file unless `forced`, and for a pipe or a device always; a link is deleted, not
    /// what it points to.
    void DeleteFile(const std::filesystem::path& file, bool forced) override;
    std::vector<std::string> List(const std::filesystem::path& folder) const override;
};

/// Folders of this machine.
class DiskFolders final : public platform::IFolders {
public:
    void Create(const std::filesystem::path& folder) override;
    bool IsLink(const std::filesystem::path& folder) const override;

    /// Read-only folders inside are made writable on the way; RuntimeError 76 when there is no such folder.
    void DeleteTree(const std::filesystem::path& folder) override;
    std::filesystem::path FindIgnoringCase(const std::filesystem::path& folder) const override;
};

/// The folder of the environment variable TMPDIR, else /tmp; ends with a separator.
class SystemTempPath final : public platform::ITempPath {
public:
    std::size_t GetTempPathA(std::size_t size, char* buffer) const override;
};

/// The same folder as a path.
std::filesystem::path temporary_folder();

/// Throws the run-time error of errno value `code` for a temporary file or folder that could not be made there.
[[noreturn]] void RaiseNoTemporary(int code);

}  // namespace wxl::files
