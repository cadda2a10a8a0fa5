#pragma once
// Which method of finding a bandwidth an animal's fixes allow, and why: for people who do not know which to take.

#include "analysis/coincidence.h"
#include "analysis/position_error.h"
#include "analysis/record.h"
#include "analysis/settings.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace wxl::analysis {

/// How many pieces a range is in.
struct RangeInParts {
    double Percent = 95.0;   ///< of the volume
    std::int32_t Parts = 0;  ///< polygons
    friend bool operator==(const RangeInParts&, const RangeInParts&) = default;
};

/// A range in as many parts is told. The literature has no such number: Kie (2013) minds the second part already, and
/// one to four centres and seasons are common where nothing is wrong with the bandwidth.
inline constexpr std::int32_t kManyParts = 5;

/// The bandwidth that an animal has been given, and what became of it.
struct GivenBandwidth {
    BandwidthMethod Method = BandwidthMethod::kHref;
    bool Minimized = false;                  ///< LSCV and BCV: the search ended at a minimum inside its range
    double MapUnits = 0.0;                   ///< 0: not known
    std::optional<RangeInParts> Range = {};  ///< nothing where it is not known
};

/// What is known of an animal before a method is chosen.
struct AdviceFacts {
    std::int32_t Count = 0;                   ///< fixes
    std::optional<double> Schoener = {};      ///< as in the record; nothing where not defined
    std::optional<double> SwihartSlade = {};  ///< the same
    Coincidence Coincident = {};
    std::optional<GivenBandwidth> Given = {};
    std::optional<double> Href = {};      ///< map units
    std::optional<double> CellSize = {};  ///< map units; nothing where there is no raster
    std::optional<PositionError> Error = {};
    double MetresPerUnit = 0.0;  ///< of the map; 0: unknown or degrees, and the error is compared with nothing
};

/// The facts of a record.
AdviceFacts advice_facts(const AnimalRecord& record, const platform::SpatialReference& reference);

/// The parts of the range among isopleths: of the one of 95 %, else of the largest from 90 % up that is less than
/// 100 %; nothing where there is none, or it has no contour.
std::optional<RangeInParts> range_in_parts(std::span<const IsoplethRecord> isopleths);

/// Whether an index of independence tells significant autocorrelation: Schoener's ratio below 1.6 or above 2.4
/// (Schoener 1981), the index of Swihart and Slade (1985) above 0.6.
bool is_autocorrelated(const AdviceFacts& facts);

/// The method that suits independent fixes: LSCV, HREF, or the ad hoc one.
BandwidthMethod advised_method(const AdviceFacts& facts);

/// The method with what speaks for it and the literature, in one line without a full stop: "HREF, as ...". "" for fewer
/// than 2 fixes.
std::string advice_clause(const AdviceFacts& facts);

/// The same as a line of its own: "advised: HREF, as ...".
std::string advice_text(const AdviceFacts& facts);

}  // namespace wxl::analysis
