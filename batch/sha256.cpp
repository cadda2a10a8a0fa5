#include "batch/sha256.h"

#include "platform/runtime_error.h"

#include <algorithm>
#include <fstream>
#include <vector>

namespace wxl::batch {
namespace {

constexpr std::size_t kBlock = kSha256Block;
constexpr std::size_t kLengthField = 8;
constexpr std::size_t kReadAtOnce = std::size_t{1} << 20U;

}  // namespace

void Sha256::Add(std::string_view bytes) {
    m_bytes += bytes.size();
    while (!bytes.empty()) {
        if (m_waitingCount == 0 && bytes.size() >= kBlock) {
            const std::size_t blocks = bytes.size() / kBlock;
            add_blocks(m_state, static_cast<const unsigned char*>(static_cast<const void*>(bytes.data())), blocks);
            bytes.remove_prefix(blocks * kBlock);
            continue;
        }
        const std::size_t taken = std::min(bytes.size(), kBlock - m_waitingCount);
        std::transform(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(taken),
                       m_waiting.begin() + static_cast<std::ptrdiff_t>(m_waitingCount),
                       [](char c) { return static_cast<unsigned char>(c); });
        m_waitingCount += taken;
        bytes.remove_prefix(taken);
        if (m_waitingCount < kBlock) return;
        add_blocks(m_state, m_waiting.data(), 1);
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
