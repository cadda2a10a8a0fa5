#include "batch/sha256.h"

#include "platform/runtime_error.h"

#include <algorithm>
#include <bit>
#include <fstream>
#include <vector>

namespace wxl::batch {
namespace {

/// First 32 bits of the fractional parts of the cube roots of the first 64 primes.
constexpr std::array<std::uint32_t, 64> kRounds = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

constexpr std::size_t kBlock = 64;
constexpr std::size_t kLengthField = 8;
constexpr std::size_t kReadAtOnce = std::size_t{1} << 20U;

std::array<std::uint32_t, 64> schedule(const unsigned char* block) {
    std::array<std::uint32_t, 64> w{};
    for (std::size_t i = 0; i < 16; ++i)
        for (std::size_t byte = 0; byte < 4; ++byte) w[i] = w[i] << 8U | block[4 * i + byte];
    for (std::size_t i = 16; i < 64; ++i) {
        const std::uint32_t s0 = std::rotr(w[i - 15], 7) ^ std::rotr(w[i - 15], 18) ^ w[i - 15] >> 3U;
        const std::uint32_t s1 = std::rotr(w[i - 2], 17) ^ std::rotr(w[i - 2], 19) ^ w[i - 2] >> 10U;
        w[i] = w[i - 16] + s0 + w[i - 7] + s1;
    }
    return w;
}

}  // namespace

void Sha256::Block(const unsigned char* block) {
    const auto w = schedule(block);
    auto [a, b, c, d, e, f, g, h] = m_state;
    for (std::size_t i = 0; i < 64; ++i) {
        const std::uint32_t s1 = std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25);
        const std::uint32_t t1 = h + s1 + ((e & f) ^ (~e & g)) + kRounds[i] + w[i];
        const std::uint32_t s0 = std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22);
        const std::uint32_t t2 = s0 + ((a & b) ^ (a & c) ^ (b & c));
        h = g;
        g = f;
        f = e;
        e = d + t1;
        d = c;
        c = b;
        b = a;
        a = t1 + t2;
    }
    const std::array<std::uint32_t, 8> added = {a, b, c, d, e, f, g, h};
    for (std::size_t i = 0; i < added.size(); ++i) m_state[i] += added[i];
}

void Sha256::Add(std::string_view bytes) {
    m_bytes += bytes.size();
    while (!bytes.empty()) {
        if (m_waitingCount == 0 && bytes.size() >= kBlock) {
            Block(static_cast<const unsigned char*>(static_cast<const void*>(bytes.data())));
            bytes.remove_prefix(kBlock);
            continue;
        }
        const std::size_t taken = std::min(bytes.size(), kBlock - m_waitingCount);
        std::transform(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(taken),
                       m_waiting.begin() + static_cast<std::ptrdiff_t>(m_waitingCount),
                       [](char c) { return static_cast<unsigned char>(c); });
        m_waitingCount += taken;
        bytes.remove_prefix(taken);
        if (m_waitingCount < kBlock) return;
        Block(m_waiting.data());
        m_waitingCount = 0;
    }
}

std::string Sha256::Digest() {
    const std::uint64_t bits = m_bytes * 8;
    Add("\x80");
    while (m_waitingCount != kBlock - kLengthField) Add(std::string_view("\0", 1));
    std::string length;
    for (unsigned shift = 64; shift > 0; shift -= 8) length += static_cast<char>(bits >> (shift - 8) & 0xFFU);
    Add(length);
    std::string hex;
    for (const std::uint32_t word : m_state)
        for (unsigned shift = 32; shift > 0; shift -= 4) hex += "0123456789abcdef"[word >> (shift - 4) & 15U];
    return hex;
}

std::string sha256_of_file(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::vector<char> buffer(kReadAtOnce);
    Sha256 hash;
    while (in) {
        in.read(buffer.data(), static_cast<std::streamsize>(buffer.size()));
        hash.Add(std::string_view(buffer.data(), static_cast<std::size_t>(in.gcount())));
    }
    if (!in.eof()) platform::Raise(platform::error_number::kDeviceIo, file.string() + " cannot be read.");
    return hash.Digest();
}

}  // namespace wxl::batch
