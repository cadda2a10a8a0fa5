#pragma once
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace wxl::platform {

/// A file open for writing. A failed write or close throws RuntimeError (61 when the disk is full) that names the file.
class IOutputFile {
public:
    virtual ~IOutputFile() = default;  ///< closes without a check when Close was not called

    virtual void Write(std::string_view bytes) = 0;

    /// Continues at `offset` bytes from the start.
    virtual void Seek(std::uint64_t offset) = 0;

    /// Hands what was written to the system, so that another process sees it.
    virtual void Flush() = 0;

    /// Flushes to the disk and closes; an error that the system kept back is thrown here.
    virtual void Close() = 0;
};

/// A file open for reading at any offset.
class IInputFile {
public:
    virtual ~IInputFile() = default;

    /// Bytes of the file when it was opened.
    virtual std::uint64_t Size() const = 0;

    /// Fills `bytes` from `offset` on; RuntimeError 57 when the file ends before.
    virtual void Read(std::uint64_t offset, std::span<char> bytes) const = 0;
};

/// What is known of a file without reading it.
struct FileFacts {
    std::filesystem::path Place;  ///< from the root on, without "." and ".."
    std::uint64_t Bytes = 0;
    std::int64_t Modified = 0;  ///< seconds since 1970
};

enum class WriteMode {
    kReplace,  ///< a new empty file, replacing an old one
    kNew,      ///< RuntimeError 58 when the file exists
    kAppend    ///< at the end of an old file, or a new one
};

/// Files of the machine. Failures throw RuntimeError (53, 57, 58, 61, 70, 76) with the path in the description.
class IFileSystem {
public:
    virtual ~IFileSystem() = default;
    virtual bool FileExists(const std::filesystem::path& file) const = 0;
    virtual bool FolderExists(const std::filesystem::path& folder) const = 0;

    /// The whole file; RuntimeError 6 when it is larger than `limit` bytes.
    virtual std::string ReadFile(const std::filesystem::path& file, std::uint64_t limit) const = 0;

    /// The file for reading piece by piece.
    virtual std::unique_ptr<IInputFile> OpenForReading(const std::filesystem::path& file) const = 0;

    /// Nothing for what is no regular file, or a link to one.
    virtual std::optional<FileFacts> FactsOf(const std::filesystem::path& file) const = 0;
    virtual std::unique_ptr<IOutputFile> OpenForWriting(const std::filesystem::path& file, WriteMode mode) = 0;

    /// Gives a file or folder its final name in one step; a file replaces an older file.
    virtual void Rename(const std::filesystem::path& from, const std::filesystem::path& to) = 0;

    /// Deletes one file; a file that is not there is RuntimeError 53. `forced` deletes a read-only file too.
    virtual void DeleteFile(const std::filesystem::path& file, bool forced) = 0;

    /// Names in a folder, sorted; empty when there is no such folder.
    virtual std::vector<std::string> List(const std::filesystem::path& folder) const = 0;
};

/// Folders of the machine.
class IFolders {
public:
    virtual ~IFolders() = default;

    /// Makes one folder; RuntimeError 58 when the name is taken, 76 when its parent is missing.
    virtual void Create(const std::filesystem::path& folder) = 0;

    /// Whether a link stands under that name, wherever it leads.
    virtual bool IsLink(const std::filesystem::path& folder) const = 0;

    /// Deletes a folder and all in it; links in it are deleted, not followed.
    virtual void DeleteTree(const std::filesystem::path& folder) = 0;

    /// The folder of that name, or one whose name differs only in case (exact match first); empty when there is none.
    virtual std::filesystem::path FindIgnoringCase(const std::filesystem::path& folder) const = 0;
};

/// Asks the operating system for its temporary path in the manner of GetTempPathA: fills `buffer` (of `size` bytes)
/// when the path fits and returns its length; returns the needed length when it does not fit; 0 when there is none.
class ITempPath {
public:
    virtual ~ITempPath() = default;
    virtual std::size_t GetTempPathA(std::size_t size, char* buffer) const = 0;
};

/// Name under which a dataset `name` is written beside its final place until it is whole: ".NAME.SUFFIX.part".
/// The suffix is the process number, so that two runs never share one.
std::string TemporaryName(const std::string& name);

/// What TemporaryName was made of.
struct TemporaryDataset {
    std::string Name;
    long Process = 0;  ///< that made it
};

/// The dataset for which a temporary name stands, with or without an extension behind the name; nothing for other
/// names.
std::optional<TemporaryDataset> parse_temporary_name(std::string_view name);

/// Writes a whole file under a temporary name, closes it with the close checked, and renames it into place.
void PublishFile(IFileSystem& files, const std::filesystem::path& file, std::string_view bytes);

/// RuntimeError 70 when a link stands at `folder`: what is written below an output folder must not leave it.
void RefuseLink(const IFolders& folders, const std::filesystem::path& folder);

/// Makes the folder unless it is there, be it by another process at this moment; RuntimeError as RefuseLink.
void MakeOwnFolder(const IFileSystem& files, IFolders& folders, const std::filesystem::path& folder);

/// Refuses names of datasets that could leave their folder or mean several files: empty, separators, "..", wildcards,
/// control characters, reserved device names, more than 200 bytes, bytes that are no UTF-8. RuntimeError 5 with the
/// reason.
void CheckDatasetName(std::string_view name);

}  // namespace wxl::platform
