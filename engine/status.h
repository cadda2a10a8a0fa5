#pragma once
#include <cstdint>

namespace wxl::engine {

/// Status of the kernel calculator. 0 is good. 1 and above: the step of that number failed, and every later step is
/// refused until SetInputCoords.
namespace kernel_status {
inline constexpr std::int32_t kGood = 0;
inline constexpr std::int32_t kDimensions = 1000;          ///< geometry, search radius, allocation of the grid
inline constexpr std::int32_t kGridTooLarge = 1001;        ///< rows x columns > 50,000,000
inline constexpr std::int32_t kUnits = 1005;               ///< choice of the units of the sample
inline constexpr std::int32_t kRescaling = 1006;           ///< rescaling to unit variance for the kernel
inline constexpr std::int32_t kAccumulation = 1008;        ///< sum over the fixes, normalisation
inline constexpr std::int32_t kPointCell = 1010;           ///< cell and search square of a fix
inline constexpr std::int32_t kNoReferenceRaster = 1010;   ///< SetReferenceRaster without a raster
inline constexpr std::int32_t kPointKernel = 1015;         ///< kernel of one fix over its search square
inline constexpr std::int32_t kNextPoint = 1020;           ///< step to the next fix
inline constexpr std::int32_t kLscvUnits = 1060;           ///< units of the sample for LSCV
inline constexpr std::int32_t kHrefRescaling = 1061;       ///< rescaling to unit variance for HREF
inline constexpr std::int32_t kBcvUnits = 1160;            ///< units of the sample for BCV
inline constexpr std::int32_t kSearchFailed = 2900;        ///< the optimiser failed (always overwritten by 0)
inline constexpr std::int32_t kNothingToCompute = 5001;    ///< bandwidth 0, or no rows or columns
inline constexpr std::int32_t kBandwidthBelowCell = 5002;  ///< bandwidth smaller than the cell
inline constexpr std::int32_t kPilotDensity = 10081;       ///< pilot density of the adaptive kernel
inline constexpr std::int32_t kPilotMean = 10082;          ///< geometric mean of the pilot densities
inline constexpr std::int32_t kLocalFactors = 10083;       ///< local bandwidth factors
inline constexpr std::int32_t kLscvRescaling = 10601;      ///< rescaling to unit variance for LSCV
inline constexpr std::int32_t kLscvSearch = 10602;         ///< LSCV search
inline constexpr std::int32_t kLscvResult = 10603;         ///< taking over the result of the LSCV search
inline constexpr std::int32_t kBcvRescaling = 11601;       ///< rescaling to unit variance for BCV
inline constexpr std::int32_t kBcvSearch = 11602;          ///< BCV search
inline constexpr std::int32_t kBcvResult = 11603;          ///< taking over the result of the BCV search
}  // namespace kernel_status

/// Status of the bandwidth optimiser. 0 is good; 1 and above: the step of that number failed.
namespace lscv_status {
inline constexpr std::int32_t kGood = 0;
inline constexpr std::int32_t kHref = 950;         ///< reference bandwidth
inline constexpr std::int32_t kLscvRows = 961;     ///< LSCV search: size of the profile
inline constexpr std::int32_t kLscvLoop = 962;     ///< LSCV search: loop over the bandwidths
inline constexpr std::int32_t kLscvLastRow = 963;  ///< LSCV search: last bandwidth
inline constexpr std::int32_t kPairs = 970;        ///< distances of the point pairs
inline constexpr std::int32_t kLscvScore = 980;    ///< one LSCV score
inline constexpr std::int32_t kBcvScore = 990;     ///< one BCV score
inline constexpr std::int32_t kLscv = 990;         ///< range and step of the LSCV search
inline constexpr std::int32_t kBcv = 995;          ///< range and step of the BCV search
inline constexpr std::int32_t kBcvRows = 1961;     ///< BCV search: size of the profile
inline constexpr std::int32_t kBcvLoop = 1962;     ///< BCV search: loop over the bandwidths
inline constexpr std::int32_t kBcvLastRow = 1963;  ///< BCV search: last bandwidth
}  // namespace lscv_status

}  // namespace wxl::engine
