#include "tests/support/places.h"

#include <cstdlib>

namespace wxl::tests {

std::filesystem::path SourceFile(const std::string& name) {
    return std::filesystem::path(WXL_SOURCE_DIR) / name;
}

std::filesystem::path ArtefactsFolder() {
    return std::filesystem::path(WXL_BINARY_DIR) / "artefacts";
}

std::filesystem::path DataFile(const std::string& name) {
    const char* const folder = std::getenv("WXL_DATA_DIR");
    return folder == nullptr || *folder == '\0' ? std::filesystem::path() : std::filesystem::path(folder) / name;
}

}  // namespace wxl::tests
