#pragma once
#include "platform/file_system.h"
#include "platform/runtime_error.h"

#include <optional>
#include <string>

namespace wxl::files {

/// A file of this machine open for writing. Small writes are gathered; an error met once is thrown again by Close, so
/// that a file with a hole never passes as whole. A name that is a link is refused with RuntimeError 70, a pipe with 5.
class DiskOutputFile final : public platform::IOutputFile {
public:
    DiskOutputFile(std::filesystem::path file, platform::WriteMode mode);
    ~DiskOutputFile() override;
    DiskOutputFile(const DiskOutputFile&) = delete;
    DiskOutputFile& operator=(const DiskOutputFile&) = delete;

    void Write(std::string_view bytes) override;
    void Seek(std::uint64_t offset) override;
    void Flush() override;
    void Close() override;

private:
    void RefusePipe();
    void Put(std::string_view bytes);
    void PutGathered();
    void CheckOpen() const;
    [[noreturn]] void Fail(int code);

    std::filesystem::path m_file;
    int m_descriptor = -1;
    std::string m_gathered;
    std::optional<platform::RuntimeError> m_failure;
};

}  // namespace wxl::files
