#include "batch/sha256_blocks.h"

#include <bit>

#if defined(__x86_64__)
#include <cpuid.h>
#include <immintrin.h>
#endif

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

void add_block(Sha256State& state, const unsigned char* block) {
    const auto w = schedule(block);
    auto [a, b, c, d, e, f, g, h] = state;
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
    for (std::size_t i = 0; i < added.size(); ++i) state[i] += added[i];
}

#if defined(__x86_64__)

bool has_instructions() {
    constexpr unsigned kSsse3 = 1U << 9U;   // of leaf 1, ecx
    constexpr unsigned kSse41 = 1U << 19U;  // of leaf 1, ecx
    constexpr unsigned kSha = 1U << 29U;    // of leaf 7, ebx
    unsigned a = 0;
    unsigned b = 0;
    unsigned c = 0;
    unsigned d = 0;
    if (__get_cpuid(1, &a, &b, &c, &d) == 0 || (c & kSsse3) == 0 || (c & kSse41) == 0) return false;
    return __get_cpuid_count(7, 0, &a, &b, &c, &d) != 0 && (b & kSha) != 0;
}

/// Four words of the message schedule.
struct Four {
    __m128i Words;
};

template <class T>
const __m128i* vectors(const T* values) {
    return static_cast<const __m128i*>(static_cast<const void*>(values));
}

/// The instructions keep the state as (f, e, b, a) and (h, g, d, c), lowest lane first, and go four words at a time.
__attribute__((target("sha,sse4.1,ssse3"))) void add_blocks_by_instructions(Sha256State& state,
                                                                            const unsigned char* blocks,
                                                                            std::size_t count) {
    const __m128i bigEndian = _mm_set_epi64x(0x0c0d0e0f08090a0b, 0x0405060700010203);
    const auto lane = [&](std::size_t i) { return std::bit_cast<std::int32_t>(state[i]); };
    __m128i abef = _mm_set_epi32(lane(0), lane(1), lane(4), lane(5));
    __m128i cdgh = _mm_set_epi32(lane(2), lane(3), lane(6), lane(7));
    for (; count > 0; --count, blocks += kSha256Block) {
        const __m128i abefBefore = abef;
        const __m128i cdghBefore = cdgh;
        std::array<Four, 16> w{};
        for (std::size_t i = 0; i < 4; ++i)
            w[i].Words = _mm_shuffle_epi8(_mm_loadu_si128(vectors(blocks) + i), bigEndian);
        for (std::size_t i = 4; i < 16; ++i) {
            const __m128i last = w[i - 1].Words;
            const __m128i sum = _mm_add_epi32(_mm_sha256msg1_epu32(w[i - 4].Words, w[i - 3].Words),
                                              _mm_alignr_epi8(last, w[i - 2].Words, 4));
            w[i].Words = _mm_sha256msg2_epu32(sum, last);
        }
        for (std::size_t i = 0; i < 16; ++i) {
            const __m128i added = _mm_add_epi32(w[i].Words, _mm_loadu_si128(vectors(kRounds.data()) + i));
            cdgh = _mm_sha256rnds2_epu32(cdgh, abef, added);
            abef = _mm_sha256rnds2_epu32(abef, cdgh, _mm_shuffle_epi32(added, 0x0e));
        }
        abef = _mm_add_epi32(abef, abefBefore);
        cdgh = _mm_add_epi32(cdgh, cdghBefore);
    }
    const auto feba = std::bit_cast<std::array<std::uint32_t, 4>>(abef);
    const auto hgdc = std::bit_cast<std::array<std::uint32_t, 4>>(cdgh);
    state = {feba[3], feba[2], hgdc[3], hgdc[2], feba[1], feba[0], hgdc[1], hgdc[0]};
}

#endif

}  // namespace

void add_blocks_anywhere(Sha256State& state, const unsigned char* blocks, std::size_t count) {
    for (; count > 0; --count, blocks += kSha256Block) add_block(state, blocks);
}

void add_blocks(Sha256State& state, const unsigned char* blocks, std::size_t count) {
#if defined(__x86_64__)
    static const bool byInstructions = has_instructions();
    if (byInstructions) return add_blocks_by_instructions(state, blocks, count);
#endif
    add_blocks_anywhere(state, blocks, count);
}

}  // namespace wxl::batch
