#include "engine/vector_math.h"

#include <bit>
#include <cstdint>

namespace wxl::engine {
namespace {

constexpr double kLowestExponent = -708.0;

/// exp for x in [-708, 700] by reduction to |r| <= ln 2 / 2 (ln 2 in two parts, Cody and Waite 1980) and the series to
/// degree 13, whose rest is below 1E-17.
[[gnu::always_inline]] inline double exponential(double x) {
    constexpr double kRounder = 0x1.8p52;
    const double shifted = x * 1.4426950408889634 + kRounder;
    const double whole = shifted - kRounder;
    const double r = (x - whole * 0x1.62e42fee00000p-1) - whole * 0x1.a39ef35793c76p-33;
    double series = 1.0 / 6227020800.0;
    series = series * r + 1.0 / 479001600.0;
    series = series * r + 1.0 / 39916800.0;
    series = series * r + 1.0 / 3628800.0;
    series = series * r + 1.0 / 362880.0;
    series = series * r + 1.0 / 40320.0;
    series = series * r + 1.0 / 5040.0;
    series = series * r + 1.0 / 720.0;
    series = series * r + 1.0 / 120.0;
    series = series * r + 1.0 / 24.0;
    series = series * r + 1.0 / 6.0;
    series = series * r + 0.5;
    series = series * r + 1.0;
    series = series * r + 1.0;
    // The low bits of `shifted` hold the whole number; moved to the exponent field they multiply by its power of two.
    const std::uint64_t power = std::bit_cast<std::uint64_t>(shifted) << 52;
    return std::bit_cast<double>(std::bit_cast<std::uint64_t>(series) + power);
}

/// Three loops over a block that stays in cache: as one, the lower bound would become a branch and nothing would be
/// vectorised.
[[gnu::always_inline]] inline void exponentials(double* __restrict values, std::size_t count) {
    constexpr std::size_t kBlock = 512;
    constexpr double kVanished = 3.3076e-308;  // exp(kLowestExponent) and a little
    for (std::size_t first = 0; first < count; first += kBlock) {
        double* __restrict block = values + first;
        const std::size_t size = count - first < kBlock ? count - first : kBlock;
        for (std::size_t i = 0; i < size; ++i) block[i] = block[i] < kLowestExponent ? kLowestExponent : block[i];
        for (std::size_t i = 0; i < size; ++i) block[i] = exponential(block[i]);
        for (std::size_t i = 0; i < size; ++i) block[i] = block[i] < kVanished ? 0.0 : block[i];
    }
}

[[gnu::always_inline]] inline void add_ranks(double* __restrict row, const double* __restrict columns,
                                             std::size_t stride, const double* __restrict weights, std::size_t count) {
    static_assert(kRankOfUpdate == 8);
    const double w0 = weights[0], w1 = weights[1], w2 = weights[2], w3 = weights[3];
    const double w4 = weights[4], w5 = weights[5], w6 = weights[6], w7 = weights[7];
    const double* __restrict c1 = columns + stride;
    const double* __restrict c2 = c1 + stride;
    const double* __restrict c3 = c2 + stride;
    const double* __restrict c4 = c3 + stride;
    const double* __restrict c5 = c4 + stride;
    const double* __restrict c6 = c5 + stride;
    const double* __restrict c7 = c6 + stride;
    for (std::size_t i = 0; i < count; ++i) {
        double sum = row[i];
        sum += w0 * columns[i];
        sum += w1 * c1[i];
        sum += w2 * c2[i];
        sum += w3 * c3[i];
        sum += w4 * c4[i];
        sum += w5 * c5[i];
        sum += w6 * c6[i];
        sum += w7 * c7[i];
        row[i] = sum;
    }
}

[[gnu::always_inline]] inline void add_rank(double* __restrict row, const double* __restrict column, double weight,
                                            std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) row[i] += weight * column[i];
}

[[gnu::always_inline]] inline void squared_distances(double x, double y, const double* __restrict xs,
                                                     const double* __restrict ys, double* __restrict squares,
                                                     std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const double dx = x - xs[i];
        const double dy = y - ys[i];
        squares[i] = dy * dy + dx * dx;
    }
}

[[gnu::always_inline]] inline void find_bins(const double* __restrict values, double shift, std::int64_t lastBin,
                                             std::int64_t* __restrict bins, double* __restrict offsets,
                                             std::size_t count) {
    constexpr std::uint64_t kFraction = 0x000FFFFFFFFFFFFFU;
    constexpr std::uint64_t kOne = 0x3FF0000000000000U;
    for (std::size_t i = 0; i < count; ++i) {
        const auto bits = std::bit_cast<std::uint64_t>(values[i] + shift);
        const auto bin = static_cast<std::int64_t>(bits >> (52 - kBinBits));
        bins[i] = bin < lastBin ? bin : lastBin;
        // What the leading bits leave over, as a number in [1, 2).
        const auto rest = std::bit_cast<double>(((bits << kBinBits) & kFraction) | kOne);
        offsets[i] = 2.0 * rest - 3.0;
    }
}

[[gnu::always_inline]] inline void add_moments(const std::int64_t* __restrict bins, const double* __restrict offsets,
                                               const double* __restrict weights, std::int64_t firstBin,
                                               double* __restrict moments, std::size_t count) {
    static_assert(kMomentOrders == 8);
    for (std::size_t i = 0; i < count; ++i) {
        double* sums = moments + static_cast<std::size_t>(bins[i] - firstBin) * kMomentOrders;
        const double z = offsets[i];
        const double square = z * z;
        const double fourth = square * square;
        const double w = weights[i];
        const double powers[4] = {w, w * z, w * square, w * (z * square)};
        for (std::size_t k = 0; k < 4; ++k) sums[k] += powers[k];
        for (std::size_t k = 0; k < 4; ++k) sums[k + 4] += powers[k] * fourth;
    }
}

[[gnu::always_inline]] inline void spread(double* __restrict cells, std::size_t stride, const double* __restrict rows,
                                          const double* __restrict columns) {
    for (std::size_t r = 0; r < kSpreadWidth; ++r) {
        double* __restrict row = cells + r * stride;
        for (std::size_t c = 0; c < kSpreadWidth; ++c) row[c] += rows[r] * columns[c];
    }
}

void exponentials_portable(double* values, std::size_t count) {
    exponentials(values, count);
}

void add_ranks_portable(double* row, const double* columns, std::size_t stride, const double* weights,
                        std::size_t count) {
    add_ranks(row, columns, stride, weights, count);
}

void add_rank_portable(double* row, const double* column, double weight, std::size_t count) {
    add_rank(row, column, weight, count);
}

void squared_distances_portable(double x, double y, const double* xs, const double* ys, double* squares,
                                std::size_t count) {
    squared_distances(x, y, xs, ys, squares, count);
}

void find_bins_portable(const double* values, double shift, std::int64_t lastBin, std::int64_t* bins, double* offsets,
                        std::size_t count) {
    find_bins(values, shift, lastBin, bins, offsets, count);
}

void add_moments_portable(const std::int64_t* bins, const double* offsets, const double* weights, std::int64_t firstBin,
                          double* moments, std::size_t count) {
    add_moments(bins, offsets, weights, firstBin, moments, count);
}

void spread_portable(double* cells, std::size_t stride, const double* rows, const double* columns) {
    spread(cells, stride, rows, columns);
}

constexpr VectorMath kPortable = {.Exponentials = exponentials_portable,
                                  .AddRanks = add_ranks_portable,
                                  .AddRank = add_rank_portable,
                                  .SquaredDistances = squared_distances_portable,
                                  .FindBins = find_bins_portable,
                                  .AddMoments = add_moments_portable,
                                  .Spread = spread_portable};

#if defined(__x86_64__)

// Fused multiply-add is left out of the target on purpose: it would round otherwise than the portable form.
__attribute__((target("avx2"))) void exponentials_avx2(double* values, std::size_t count) {
    exponentials(values, count);
}

__attribute__((target("avx2"))) void add_ranks_avx2(double* row, const double* columns, std::size_t stride,
                                                    const double* weights, std::size_t count) {
    add_ranks(row, columns, stride, weights, count);
}

__attribute__((target("avx2"))) void add_rank_avx2(double* row, const double* column, double weight,
                                                   std::size_t count) {
    add_rank(row, column, weight, count);
}

__attribute__((target("avx2"))) void squared_distances_avx2(double x, double y, const double* xs, const double* ys,
                                                            double* squares, std::size_t count) {
    squared_distances(x, y, xs, ys, squares, count);
}

__attribute__((target("avx2"))) void find_bins_avx2(const double* values, double shift, std::int64_t lastBin,
                                                    std::int64_t* bins, double* offsets, std::size_t count) {
    find_bins(values, shift, lastBin, bins, offsets, count);
}

__attribute__((target("avx2"))) void add_moments_avx2(const std::int64_t* bins, const double* offsets,
                                                      const double* weights, std::int64_t firstBin, double* moments,
                                                      std::size_t count) {
    add_moments(bins, offsets, weights, firstBin, moments, count);
}

__attribute__((target("avx2"))) void spread_avx2(double* cells, std::size_t stride, const double* rows,
                                                 const double* columns) {
    spread(cells, stride, rows, columns);
}

constexpr VectorMath kAvx2 = {.Exponentials = exponentials_avx2,
                              .AddRanks = add_ranks_avx2,
                              .AddRank = add_rank_avx2,
                              .SquaredDistances = squared_distances_avx2,
                              .FindBins = find_bins_avx2,
                              .AddMoments = add_moments_avx2,
                              .Spread = spread_avx2};

bool has_avx2() {
    return static_cast<int>(__builtin_cpu_supports("avx2")) != 0;
}

#endif

}  // namespace

const VectorMath& portable_vector_math() {
    return kPortable;
}

const VectorMath& vector_math() {
#if defined(__x86_64__)
    static const bool kWide = has_avx2();
    return kWide ? kAvx2 : kPortable;
#else
    return kPortable;
#endif
}

}  // namespace wxl::engine
