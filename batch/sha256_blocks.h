#pragma once
#include <array>
#include <cstddef>
#include <cstdint>

namespace wxl::batch {

inline constexpr std::size_t kSha256Block = 64;  ///< bytes

using Sha256State = std::array<std::uint32_t, 8>;  ///< a to h

/// Takes `count` blocks of 64 bytes into the state of a SHA-256 digest (FIPS 180-4), with the processor's own
/// instructions where it has them.
void add_blocks(Sha256State& state, const unsigned char* blocks, std::size_t count);

/// As add_blocks, on any processor.
void add_blocks_anywhere(Sha256State& state, const unsigned char* blocks, std::size_t count);

}  // namespace wxl::batch
