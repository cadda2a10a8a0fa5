#pragma once
#include "batch/sha256_blocks.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace wxl::batch {

/// The SHA-256 digest (FIPS 180-4) of the bytes added so far, as sha256sum prints it.
class Sha256 {
public:
    void Add(std::string_view bytes);

    /// 64 hexadecimal digits. Nothing may be added afterwards.
    std::string Digest();

private:
    Sha256State m_state = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                           0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
    std::array<unsigned char, 64> m_waiting{};
    std::size_t m_waitingCount = 0;
    std::uint64_t m_bytes = 0;
};

/// The digest of a file; RuntimeError 57 when it cannot be read.
std::string sha256_of_file(const std::filesystem::path& file);

}  // namespace wxl::batch
