#pragma once
// Broken files made from good ones.

#include "tests/robustness/limited_run.h"
#include "tests/support/scratch_folder.h"

#include <bit>
#include <cstring>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <vector>

namespace wxl::tests {

inline std::string bytes_of(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

inline void write_bytes(const std::filesystem::path& file, const std::string& bytes) {
    std::ofstream(file, std::ios::binary | std::ios::trunc) << bytes;
}

/// A number in the bytes of a file, in the machine's order.
template <class Number>
void put(std::string& bytes, std::size_t offset, Number value) {
    ASSERT_LE(offset + sizeof value, bytes.size());
    std::memcpy(bytes.data() + offset, &value, sizeof value);
}

inline void put_big(std::string& bytes, std::size_t offset, std::uint32_t value) {
    put(bytes, offset, __builtin_bswap32(value));
}

/// What a command does with a file.
enum class Expected {
    kRefused,  ///< a message that names the file, exit code 1 or 2, nothing on standard output
    kEither    ///< the damage may be harmless: refused as above, by a box of the analysis, or read
};

/// The run must end with a message that names a file whose path holds `stem`, in little time and memory, and never by a
/// signal.
inline void expect_defined(const LimitedRun& run, Expected expected, const std::string& stem) {
    EXPECT_EQ(run.Signal, 0) << run.Err;
    EXPECT_LT(run.CpuSeconds, 2.0 * (is_sanitized() ? 30.0 : 1.0)) << run.Err;
    EXPECT_LT(run.Megabytes, 256.0 * (is_sanitized() ? 4.0 : 1.0)) << run.Err;
    EXPECT_EQ(run.Err.find("runtime error:"), std::string::npos) << run.Err;
    EXPECT_EQ(run.Err.find("AddressSanitizer"), std::string::npos) << run.Err;
    if (expected == Expected::kEither && run.Code == 0) return;
    EXPECT_TRUE(run.Code == 1 || run.Code == 2) << "exit code " << run.Code << "\n" << run.Out << run.Err;
    const bool isBox = expected == Expected::kEither &&
                       (run.Err.starts_with("Error: ") || run.Err.find("\nError: ") != std::string::npos);
    EXPECT_TRUE(isBox || run.Err.find("wxl: ") != std::string::npos) << run.Err;
    EXPECT_TRUE(isBox || run.Err.find(stem) != std::string::npos) << run.Err;
    EXPECT_EQ(run.Err.find("emory"), std::string::npos) << run.Err;
    EXPECT_EQ(run.Err.find("Unexpected"), std::string::npos) << run.Err;
}

}  // namespace wxl::tests
