#pragma once
#include "tests/support/scratch_folder.h"

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

namespace wxl::tests {

/// A scratch folder in memory where there is one: thousands of syncs would keep a disk busy for minutes.
class QuickFolder {
public:
    QuickFolder() {
        const char* before = std::getenv("TMPDIR");
        const std::string kept = before ? before : "";
        if (std::filesystem::is_directory("/dev/shm")) ::setenv("TMPDIR", "/dev/shm", 1);
        m_folder = std::make_unique<ScratchFolder>();
        if (before)
            ::setenv("TMPDIR", kept.c_str(), 1);
        else
            ::unsetenv("TMPDIR");
    }
    const std::filesystem::path& Path() const { return m_folder->Path(); }
    std::filesystem::path operator/(const std::string& name) const { return *m_folder / name; }
    void Clear() const {
        for (const auto& entry : std::filesystem::directory_iterator(Path())) std::filesystem::remove_all(entry);
    }

private:
    std::unique_ptr<ScratchFolder> m_folder;
};

}  // namespace wxl::tests
