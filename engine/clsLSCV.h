#pragma once
#include "engine/point_sample.h"
#include "engine/search_profile.h"
#include "engine/status.h"
#include "engine/work_clock.h"
#include "platform/messages.h"

#include <cstdint>
#include <optional>
#include <span>
#include <utility>

namespace wxl::engine {

/// Chooses a fixed bandwidth for the bivariate normal kernel by a search over a range of bandwidths: least squares
/// cross-validation (Silverman 1986, ch. 3) or biased cross-validation (Sain, Baggerly and Scott 1994), and computes
/// the reference bandwidth. One object serves one sample. All bandwidths are in the units of the sample.
///
/// Nothing throws: read lErrorStatus after each step; while it is 1 or more the calculations do nothing.
class clsLSCV {
public:
    /// Message boxes about faults go to `messages`, which must outlive the object.
    explicit clsLSCV(platform::IMessages& messages) : m_messages(&messages) {}

    bool bMinimized = false;        ///< the last search ended at an interior minimum
    std::int32_t lErrorStatus = 0;  ///< lscv_status

    /// The turns that a long search gives to the host; none by default.
    void SetTurns(Turns turns) { m_turns = std::move(turns); }

    /// Range of the search, as absolute values in any order. (0, 0), the default, means 0.05 to 2 HREF for LSCV and
    /// 0.05 to 3 HREF for BCV. The range of the first search stays set.
    void SetSearchRange(double dMin, double dMax);

    /// Step between bandwidths; 0, the default, means 1/200 of the range. The step of the first search stays set.
    void SetStepValue(double step) { m_step = step; }

    /// Copies the fixes. Fewer than two fixes, coordinates that are no finite numbers and distances beyond the range
    /// of numbers set status 970.
    void SetInputCoords(std::span<const platform::Point> coordinates);

    /// Reference bandwidth n^(-1/6) x sqrt((variance x + variance y) / 2) (Silverman 1986). A fault sets status 950.
    void CalculateHREF();

    /// Search for the smallest LSCV score.
    void CalculateLSCV();

    /// Search for the smallest BCV score.
    void CalculateBCV2();

    /// The scores of the last search, K + 1 rows; nothing before a search.
    std::optional<SearchProfile> GetLSCVProfile() const;

    /// Bandwidth of the smallest score, -1 before a search.
    double GetBandwidth() const;

    /// Reference bandwidth, -1 before it was computed.
    double GetHREF() const;

private:
    struct Method;

    void Search(const Method& method);
    void CompleteRange(double hrefMultiple);
    void RunSearch(const Method& method);

    platform::IMessages* m_messages;
    Turns m_turns;
    PointSample m_points;
    SearchProfile m_profile;
    double m_bandwidth = 0.0;
    double m_searchMin = 0.0;
    double m_searchMax = 0.0;
    double m_step = 0.0;
    double m_href = 0.0;
    bool m_lscvDone = false;
    bool m_hrefDone = false;
    bool m_bcvDone = false;
};

}  // namespace wxl::engine
