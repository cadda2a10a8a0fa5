#include "comparison/tile_sums.h"

#include <array>
#include <cstring>

namespace wxl::comparison {
namespace {

using Lanes = std::array<float, kLanes>;

/// As many lanes as one register takes. A lane's own order of cells is the same whatever the width.
template <std::size_t Width>
struct Register {
    using Type [[gnu::vector_size(Width * sizeof(float))]] = float;
};

template <class Pack>
[[gnu::always_inline]] inline void load(Pack& pack, const float* from) {
    std::memcpy(&pack, from, sizeof(Pack));
}

[[gnu::always_inline]] inline double in_order(const Lanes& lanes) {
    double sum = 0.0;
    for (const float lane : lanes) sum += static_cast<double>(lane);
    return sum;
}

template <std::size_t Width>
[[gnu::always_inline]] inline AgreementSums agreement(const float* s, const float* t) {
    using Pack = typename Register<Width>::Type;
    Lanes affinity;
    Lanes shared;
    Lanes product;
    Lanes distance;
    for (std::size_t lane = 0; lane < kLanes; lane += Width) {
        Pack a{};
        Pack m{};
        Pack p{};
        Pack d{};
        for (std::size_t cell = lane; cell < kTileCells; cell += kLanes) {
            Pack x;
            Pack y;
            load(x, s + cell);
            load(y, t + cell);
            const Pack both = x * y;
            const Pack smaller = x < y ? x : y;
            const Pack apart = x - y;
            a += both;
            m += smaller * smaller;
            p += both * both;
            d += apart * apart;
        }
        std::memcpy(&affinity[lane], &a, sizeof(Pack));
        std::memcpy(&shared[lane], &m, sizeof(Pack));
        std::memcpy(&product[lane], &p, sizeof(Pack));
        std::memcpy(&distance[lane], &d, sizeof(Pack));
    }
    return {in_order(affinity), in_order(shared), in_order(product), in_order(distance)};
}

template <std::size_t Width>
[[gnu::always_inline]] inline double squares(const float* mask, const float* s) {
    using Pack = typename Register<Width>::Type;
    Lanes sums;
    for (std::size_t lane = 0; lane < kLanes; lane += Width) {
        Pack sum{};
        for (std::size_t cell = lane; cell < kTileCells; cell += kLanes) {
            Pack x;
            Pack weight;
            load(x, s + cell);
            load(weight, mask + cell);
            sum += weight * (x * x);
        }
        std::memcpy(&sums[lane], &sum, sizeof(Pack));
    }
    return in_order(sums);
}

AgreementSums agreement_portable(const float* s, const float* t) {
    return agreement<4>(s, t);
}

double squares_portable(const float* mask, const float* s) {
    return squares<4>(mask, s);
}

constexpr TileMath kPortable = {.Agreement = agreement_portable, .Squares = squares_portable};

#if defined(__x86_64__) && defined(__GNUC__)

// Fused multiply-add is left out of the target on purpose: it would round otherwise than the portable form.
__attribute__((target("avx2"))) AgreementSums agreement_avx2(const float* s, const float* t) {
    return agreement<8>(s, t);
}

__attribute__((target("avx2"))) double squares_avx2(const float* mask, const float* s) {
    return squares<8>(mask, s);
}

constexpr TileMath kAvx2 = {.Agreement = agreement_avx2, .Squares = squares_avx2};

const TileMath& fastest() {
    static const bool kWide = static_cast<int>(__builtin_cpu_supports("avx2")) != 0;
    return kWide ? kAvx2 : kPortable;
}

#else

const TileMath& fastest() {
    return kPortable;
}

#endif

}  // namespace

const TileMath& tile_math() {
    return fastest();
}

const TileMath& portable_tile_math() {
    return kPortable;
}

}  // namespace wxl::comparison
