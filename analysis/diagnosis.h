#pragma once
// Why a bandwidth search found no minimum, a distribution could not be computed, or a raster cuts its density: one
// line each, for people who did not choose the formula.

#include "analysis/coincidence.h"
#include "analysis/record.h"
#include "engine/search_profile.h"

#include <cstdint>
#include <string>

namespace wxl::analysis {

/// What keeps a search from a minimum inside its range. The first of these that holds is the one told, except that a
/// few fixes are told only where nothing before them holds:
enum class SearchFault {
    kNone,        ///< the search is minimised, or there was none
    kTooFew,      ///< fewer than 2 fixes
    kOnePlace,    ///< all fixes lie at one place
    kCoincident,  ///< LSCV: the smallest score is the first, and p > n / 6 for p pairs of fixes at one place: toward
                  ///< bandwidth 0 the score of n fixes goes as (1 - 6 p / n) / (4 pi n h^2), to minus infinity
    kFlat,        ///< the largest and smallest score differ by at most kFlatShare of the largest absolute score
    kFewFixes,    ///< fewer than kFixesForSearch fixes
    kLowerEnd,    ///< the smallest score is the first of the profile
    kUpperEnd     ///< the smallest score is the last of the profile
};

/// Scores that differ by less than this share of their size are told apart by rounding only.
inline constexpr double kFlatShare = 1e-6;

/// Samples below this size are too small for a home range (Seaman et al. 1999).
inline constexpr std::int32_t kFixesForSearch = 30;

/// A search as it is looked at here. `Profile` may end in rows that were not reached (0, 0).
struct SearchFacts {
    BandwidthMethod Method = BandwidthMethod::kLscv;
    std::int32_t Count = 0;  ///< fixes
    Coincidence Coincident;
    engine::SearchProfile Profile;
    bool Minimized = false;
};

/// What is left of 1, in per cent with two decimals: "only 1.67 %", "less than 0.01 %", "0 %".
std::string share_left_text(double share);

/// "1 fix", "2 fixes".
std::string fixes_text(std::int64_t count);

/// "1 point has no value in the field ID", "2 points have ...".
std::string without_id_text(std::int64_t count, const std::string& idField);

/// A number in four digits, which is what a reader compares.
std::string short_number(double value);

/// "1 part", "3 parts"
std::string parts_text(std::int32_t count);

SearchFault search_fault(const SearchFacts& facts);

/// The fault in one line, without a full stop; "" for kNone. Bandwidths are told in the units of the profile.
std::string search_reason(const SearchFacts& facts);

/// What kept a distribution from being computed.
enum class Failure {
    kNone,
    kTooFew,        ///< fewer than 2 fixes
    kOnePlace,      ///< all fixes lie at one place
    kGridTooLarge,  ///< more cells than a raster may have
    kNoBandwidth,   ///< the bandwidth is 0
    kNoCells,       ///< the extent is smaller than one cell
    kBelowCell,     ///< the bandwidth is smaller than the cell
    kMemory,        ///< there is no memory for the raster
    kRescaling,     ///< x or y has no spread that rescaling to unit variance could divide by
    kOther
};
Failure failure_of(const AnimalRecord& record);

/// Why the calculator ended with the record's status, in one line; "" for status 0.
std::string failure_reason(const AnimalRecord& record);

/// What to do about that, as a sentence; "" for status 0.
std::string failure_remedy(const AnimalRecord& record);

/// All that is to be said of a record, joined by "; ": search, failure, edge; "" when all is well.
std::string diagnosis(const AnimalRecord& record);

/// Whether the calculator ended because there was no memory for the raster.
bool lacks_memory(const AnimalRecord& record);

/// Edge values above this mean that the distribution may be cut by its raster.
double edge_threshold(BandwidthMethod method, double scalingFactor);

/// Below this share of a distribution (0.1 %) a loss is not told: four bandwidths leave 0.013 % of a kernel out.
inline constexpr double kToldShare = 0.001;

/// What becomes of a distribution where its kernels or its raster end.
enum class EdgeVerdict {
    kClear,        ///< less than kToldShare is lost
    kBeyondReach,  ///< kernels end before they are whole, and the raster holds them as far as they go
    kCut           ///< the raster's edge takes kToldShare or more
};
EdgeVerdict edge_verdict(const AnimalRecord& record);

/// A share of 1 in per cent with two decimals: "1.67 %".
std::string share_text(double share);

/// The facts of a record's search.
SearchFacts search_facts(const AnimalRecord& record);

}  // namespace wxl::analysis
