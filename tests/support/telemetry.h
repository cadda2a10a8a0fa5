#pragma once
#include <filesystem>
#include <gtest/gtest.h>

namespace wxl::tests {

/// A file of the real telemetry that tests may use; it is no part of the repository.
inline std::filesystem::path TelemetryFile(const std::string& name) {
    return std::filesystem::path(WXL_DATA_DIR) / name;
}

}  // namespace wxl::tests

/// Skips the test, with a message, where the file of real telemetry is absent.
#define WXL_NEEDS_TELEMETRY(file)                                                                            \
    do {                                                                                                     \
        if (!std::filesystem::exists(file)) GTEST_SKIP() << "real telemetry is absent: " << (file).string(); \
    } while (false)
