#pragma once
#include <filesystem>
#include <string>

namespace wxl::tests {

/// A file or folder of the source tree, by its path from the top.
std::filesystem::path SourceFile(const std::string& name);

/// A folder for what tests leave to be looked at, in the build tree.
std::filesystem::path ArtefactsFolder();

/// A file of the folder named by the environment variable WXL_DATA_DIR; an empty path where that is not set.
std::filesystem::path DataFile(const std::string& name);

}  // namespace wxl::tests
