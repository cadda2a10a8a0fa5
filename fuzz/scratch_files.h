#pragma once
// Files of a fuzz input, in memory where the system has a place for it.

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <unistd.h>

namespace wxl::fuzz {

/// A folder of this process, deleted at its end.
class FuzzFolder {
public:
    FuzzFolder() {
        std::error_code ignored;
        const std::filesystem::path memory = "/dev/shm";
        const auto parent =
            std::filesystem::is_directory(memory, ignored) ? memory : std::filesystem::temp_directory_path();
        std::string name = (parent / "wxl-fuzz-XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no folder for fuzzing");
        m_path = name;
    }
    ~FuzzFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    FuzzFolder(const FuzzFolder&) = delete;
    FuzzFolder& operator=(const FuzzFolder&) = delete;

    const std::filesystem::path& Path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

inline std::string read_bytes(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

inline void write_bytes(const std::filesystem::path& file, const std::string& bytes) {
    std::ofstream(file, std::ios::binary | std::ios::trunc) << bytes;
}

}  // namespace wxl::fuzz
