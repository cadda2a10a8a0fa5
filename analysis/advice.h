#pragma once
// Which method of finding a bandwidth an animal's fixes allow, and why: for people who do not know which to take.

#include "analysis/coincidence.h"
#include "analysis/settings.h"

#include <cstdint>
#include <optional>
#include <string>

namespace wxl::analysis {

/// What is known of an animal before a method is chosen.
struct AdviceFacts {
    std::int32_t Count = 0;                   ///< fixes
    std::optional<double> Schoener = {};      ///< as in the record; nothing where not defined
    std::optional<double> SwihartSlade = {};  ///< the same
    Coincidence Coincident = {};
    std::optional<bool> LscvMinimized = {};  ///< nothing where LSCV was not tried
    std::optional<double> LscvBandwidth = {};
    std::optional<double> CellSize = {};  ///< in the unit of the bandwidth; nothing where there is no raster
};

/// Whether an index of independence tells significant autocorrelation: Schoener's ratio below 1.6 or above 2.4
/// (Schoener 1981), the index of Swihart and Slade (1985) above 0.6.
bool is_autocorrelated(const AdviceFacts& facts);

/// The method that suits independent fixes: LSCV, HREF, or the ad hoc one.
BandwidthMethod advised_method(const AdviceFacts& facts);

/// Both in one line, with what speaks for them and the literature; without a full stop. "" for fewer than 2 fixes.
std::string advice_text(const AdviceFacts& facts);

}  // namespace wxl::analysis
