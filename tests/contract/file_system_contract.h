#pragma once
#include "tests/contract/stage.h"

#include <gtest/gtest.h>

namespace wxl::tests {

/// What every IFileSystem and IFolders does. Instantiate with the adapters to try.
class FileSystemContract : public testing::TestWithParam<StageChoice> {
protected:
    void SetUp() override { m_stage = GetParam().Make(); }

    platform::IFileSystem& Files() { return m_stage->Files(); }
    platform::IFolders& Folders() { return m_stage->Folders(); }
    std::filesystem::path At(const std::string& name) const { return m_stage->Folder() / name; }

    /// Writes a whole file in the given mode.
    void Write(const std::string& name, std::string_view bytes,
               platform::WriteMode mode = platform::WriteMode::kReplace) {
        const auto file = Files().OpenForWriting(At(name), mode);
        file->Write(bytes);
        file->Close();
    }
    std::string Read(const std::string& name) { return Files().ReadFile(At(name), 1 << 30); }

private:
    std::unique_ptr<Stage> m_stage;
};

}  // namespace wxl::tests
