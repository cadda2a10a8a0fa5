#pragma once
// The area of a home range against the number of fixes that it is computed from (Odum and Kuenzler 1955).

#include "platform/values.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace wxl::comparison {

enum class CurveOf { kMinimumConvexPolygon, kKernel };
enum class CurveOrder { kTime, kRandom };

struct CurveSettings {
    CurveOf Of = CurveOf::kMinimumConvexPolygon;
    double Percent = 100.0;  ///< of the polygon, or of the kernel's volume
    CurveOrder Order = CurveOrder::kTime;
    std::size_t Replicates = 100;  ///< of the random order
    std::uint64_t Seed = 1;        ///< replicate r is seeded with Seed + r
    std::size_t First = 5;         ///< smallest number of fixes
    std::size_t Step = 0;          ///< between numbers of fixes; 0: such that there are at most 200
    double Bandwidth = 0.0;        ///< of the kernel in map units; 0: HREF of the fixes at hand
    double CellSize = 0.0;         ///< of the kernel's grid in map units; 0: usual_cell_size
    double Tolerance = 0.05;       ///< of the asymptote, as a share of the last area
};

/// The area of the first N fixes; in random order the median over the replicates, with their 2.5 and 97.5 % quantiles
/// (type 7). None where there is no distribution.
struct CurveSize {
    std::size_t N = 0;
    std::optional<double> Area;  ///< square map units
    std::optional<double> Low;   ///< random order only
    std::optional<double> High;
    friend bool operator==(const CurveSize&, const CurveSize&) = default;
};

/// The first number of fixes from which every later area lies within the tolerance of the last, and whether enough
/// fixes follow to call that an asymptote: a tenth of all, and 5 at least.
struct Asymptote {
    std::size_t N = 0;
    bool Reached = false;
    friend bool operator==(const Asymptote&, const Asymptote&) = default;
};

struct AreaCurve {
    std::vector<CurveSize> Sizes;        ///< ascending, the last of all fixes; empty without fixes
    std::optional<Asymptote> Levelling;  ///< none where the last area is 0 or missing
    double CellSize = 0.0;               ///< of the kernel's grid; 0 for polygons
    friend bool operator==(const AreaCurve&, const AreaCurve&) = default;
};

/// @param fixes with finite coordinates, in the order of time
/// @param progress told now and then how much is done, 0 to 1; may be null
/// RuntimeError 7 when the kernel's grid is larger than a raster may be.
AreaCurve area_curve(std::span<const platform::Point> fixes, const CurveSettings& settings,
                     const std::function<void(double)>& progress = nullptr);

/// The numbers of fixes of a curve: first, first + step, ..., and all.
std::vector<std::size_t> curve_sizes(std::size_t all, const CurveSettings& settings);

std::optional<Asymptote> asymptote(std::span<const CurveSize> sizes, double tolerance);

}  // namespace wxl::comparison
