#pragma once
// The inner loops of the comparison of two densities: sums over one tile. Sixteen sums run side by side, sum l taking
// the cells l, l + 16, l + 32 ..., and are added in their order: the same on every machine and from every compiler.

#include <cstddef>

namespace wxl::comparison {

inline constexpr std::size_t kTileRows = 16;
inline constexpr std::size_t kTileColumns = 32;
inline constexpr std::size_t kTileCells = kTileRows * kTileColumns;
inline constexpr std::size_t kLanes = 16;

/// Sums over the cells of a tile for square roots of densities s and t.
struct AgreementSums {
    double Affinity = 0.0;  ///< s t
    double Shared = 0.0;    ///< the smaller of s^2 and t^2
    double Product = 0.0;   ///< s^2 t^2
    double Distance = 0.0;  ///< (s - t)^2
    friend bool operator==(const AgreementSums&, const AgreementSums&) = default;
};

struct TileMath {
    /// All four sums over kTileCells cells.
    AgreementSums (*Agreement)(const float* s, const float* t);

    /// Sum of mask x s^2 over kTileCells cells.
    double (*Squares)(const float* mask, const float* s);
};

/// The fastest form that this machine can run.
const TileMath& tile_math();

/// The form that every machine can run.
const TileMath& portable_tile_math();

}  // namespace wxl::comparison
