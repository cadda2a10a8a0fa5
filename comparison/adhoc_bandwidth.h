#pragma once
// The smallest proportion of the reference bandwidth that leaves a home range whole (Kie 2013).

#include "comparison/range_parts.h"
#include "platform/values.h"

#include <functional>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace wxl::comparison {

enum class AdHocStatus {
    kFound,
    kInPartsAtReference,  ///< already at HREF: P = 1
    kWholeToCellSize,     ///< never in parts while the bandwidth is not below the cell
    kNoBandwidth,         ///< no HREF, or one below the cell size
};

/// "ok", "in parts at the reference bandwidth", "whole down to the cell size", "no bandwidth"
std::string_view status_name(AdHocStatus status);

/// How many parts the range had at a proportion of HREF.
struct AdHocStep {
    double Proportion = 0.0;
    RangeParts Range;
    friend bool operator==(const AdHocStep&, const AdHocStep&) = default;
};

struct AdHocSettings {
    double Percent = 95.0;    ///< of the range
    std::int32_t Parts = 1;   ///< as many parts still count as whole
    std::int32_t Steps = 20;  ///< of the search from 1 down to 0
    double CellSize = 0.0;    ///< map units; 0: usual_cell_size of the smallest proportion on the steps
};

struct AdHocBandwidth {
    AdHocStatus Status = AdHocStatus::kNoBandwidth;
    double Href = 0.0;        ///< map units; 0: none
    double Proportion = 0.0;  ///< of HREF; 0: none
    double Bandwidth = 0.0;   ///< Proportion x Href
    double CellSize = 0.0;
    std::vector<AdHocStep> Trace;  ///< in the order of the search
    friend bool operator==(const AdHocBandwidth&, const AdHocBandwidth&) = default;
};

/// Steps down from HREF until the range breaks, then halves the step to 0.001; the result is the whole end. The number
/// of parts need not fall and rise evenly: the rule is the first break from above.
/// @param fixes map units, finite
/// @param progress told now and then how much is done, 0 to 1; may be null
AdHocBandwidth adhoc_bandwidth(std::span<const platform::Point> fixes, const AdHocSettings& settings,
                               const std::function<void(double)>& progress = nullptr);

/// The search alone: `range_at` tells the parts at a proportion, which is never below `smallest`.
AdHocBandwidth search_proportion(const AdHocSettings& settings, double smallest,
                                 const std::function<RangeParts(double)>& range_at);

}  // namespace wxl::comparison
