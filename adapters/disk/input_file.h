#pragma once
#include "platform/file_system.h"

#include <cstdint>
#include <filesystem>
#include <span>

namespace wxl::files {

/// A file of this machine open for reading at any offset.
class InputFile final : public platform::IInputFile {
public:
    /// RuntimeError 53, 76 or 70 when it cannot be opened.
    explicit InputFile(std::filesystem::path file);
    ~InputFile() override;
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    std::uint64_t Size() const override { return m_size; }
    const std::filesystem::path& Path() const { return m_file; }

    void Read(std::uint64_t offset, std::span<char> bytes) const override;

private:
    std::filesystem::path m_file;
    int m_descriptor = -1;
    std::uint64_t m_size = 0;
};

/// RuntimeError 57: the file is not what its kind should be.
[[noreturn]] void raise_damaged(const std::filesystem::path& file, const std::string& why);

}  // namespace wxl::files
