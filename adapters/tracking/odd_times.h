#pragma once
#include "adapters/tracking/tracking_file.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace wxl::tracking {

/// Why the time of a fix may be none.
enum class OddTime {
    kClockStart,  ///< where clocks start that were not set
    kRollover,    ///< 1024 weeks off: a receiver's count of weeks started anew
    kFarOff       ///< farther than 20 years from the other times of the animal
};
inline constexpr std::size_t kOddTimes = 3;

/// Fixes of one kind of odd times.
struct OddFixes {
    std::int64_t Count = 0;
    std::size_t First = 0;  ///< index of the one that stands first in the files

    friend bool operator==(const OddFixes&, const OddFixes&) = default;
};

/// Fixes whose times may be none, by OddTime. `fixes` are in the order of Tracking::Sort. `haveClock`: most times tell
/// a time of day, too.
///
/// The fixes of an animal are parted into runs where its times have a gap of over 365 days; its main run has the most
/// fixes, three at least. Another run is odd where
/// - it starts within 14 hours before and 38 hours behind the start of a clock (1601-01-01, 1899-12-30, 1900-01-01,
///   1904-01-01, 1970-01-01, 1980-01-01, 1980-01-06, 1999-08-22, 2000-01-01, 2001-01-01, 2019-04-07) and has at most a
///   fifth of the main run's fixes (one is always few enough);
/// - moved by 1024 weeks it lies within a main run of five years at most, or up to 7 days beside it, and has at most a
///   twentieth of its fixes;
/// - a gap of more than 20 years parts it, and what lies beyond, from the main run, and all that has at most a
///   twentieth of its fixes;
/// and in each case only where it is more than twice as far from the runs that are not odd as these are from one
/// another: data with gaps, as of specimens, stay in peace. The last two need clocks. Animals all of whose runs start
/// where a clock does are odd where all fixes of the others are over 365 days away, and they have at most a fifth of
/// them.
std::array<OddFixes, kOddTimes> find_odd_times(std::span<const TrackingFix> fixes, bool haveClock);

}  // namespace wxl::tracking
