#include "batch/sha256.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace wxl::batch {
namespace {

constexpr std::uint64_t kReadAtOnce = std::uint64_t{1} << 20U;

}  // namespace

void Sha256::Add(std::string_view bytes) {
    sha256_update(&m_context, bytes.size(), static_cast<const std::uint8_t*>(static_cast<const void*>(bytes.data())));
}

std::string Sha256::Digest() {
    std::array<std::uint8_t, SHA256_DIGEST_SIZE> digest{};
    sha256_digest(&m_context, digest.size(), digest.data());
    std::string hex;
    for (const unsigned byte : digest)
        for (const unsigned digit : {byte >> 4U, byte & 15U}) hex += "0123456789abcdef"[digit];
    return hex;
}

std::string sha256_of(const platform::IInputFile& file) {
    std::vector<char> buffer(std::min(kReadAtOnce, file.Size()));
    Sha256 hash;
    for (std::uint64_t at = 0; at < file.Size(); at += buffer.size()) {
        const auto piece = std::span(buffer).first(std::min<std::uint64_t>(buffer.size(), file.Size() - at));
        file.Read(at, piece);
        hash.Add({piece.data(), piece.size()});
    }
    return hash.Digest();
}

}  // namespace wxl::batch
