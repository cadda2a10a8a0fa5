#pragma once
#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

namespace wxl::comparison {

/// A whole number from 0 to bound - 1, all equally likely: outputs beyond the largest multiple of `bound` are drawn
/// again. The standard library's distributions differ between its makers, this one does not.
/// @param bound at least 1
std::uint64_t draw_below(std::mt19937_64& generator, std::uint64_t bound);

/// A random order of 0 to count - 1 from a generator seeded with `seed`: place i, from the first on, is swapped with
/// one of those from i on (Fisher and Yates).
std::vector<std::size_t> permutation(std::size_t count, std::uint64_t seed);

}  // namespace wxl::comparison
