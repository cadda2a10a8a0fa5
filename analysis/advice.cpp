#include "analysis/advice.h"

#include "analysis/diagnosis.h"
#include "platform/text.h"

#include <cmath>

namespace wxl::analysis {
namespace {

constexpr double kManySharing = 0.01;

bool is_many_sharing(const AdviceFacts& facts) {
    return static_cast<double>(facts.Coincident.Fixes) >= kManySharing * static_cast<double>(facts.Count);
}

bool is_below_cell(const AdviceFacts& facts) {
    return facts.LscvBandwidth && facts.CellSize && *facts.LscvBandwidth < *facts.CellSize;
}

std::string two_decimals(double value) {
    return platform::NumberText(std::round(value * 100.0) / 100.0);
}

std::string indices_text(const AdviceFacts& facts) {
    std::string text;
    if (facts.Schoener) text += "Schoener " + two_decimals(*facts.Schoener);
    if (facts.SwihartSlade)
        text += (text.empty() ? "" : ", ") + ("Swihart and Slade " + two_decimals(*facts.SwihartSlade));
    return text;
}

std::string method_advice(const AdviceFacts& facts) {
    if (facts.Count < kFixesForSearch)
        return "HREF, as " + fixes_text(facts.Count) +
               " are too few for a search (30 or more: Seaman et al. 1999); an area of so few is a first look";
    if (is_many_sharing(facts))
        return "HREF, as " + std::to_string(facts.Coincident.Fixes) + " of its " + std::to_string(facts.Count) +
               " fixes share a place, by rounding or by rest, and LSCV then goes to the smallest bandwidth (Silverman "
               "1986)";
    if (facts.LscvMinimized == false)
        return "adhoc, as LSCV has no minimum inside its range: the smallest proportion of HREF that leaves the range "
               "whole (Kie 2013)";
    if (is_below_cell(facts))
        return "adhoc, as the bandwidth of LSCV is smaller than a cell: the smallest proportion of HREF that leaves "
               "the "
               "range whole (Kie 2013)";
    if (facts.LscvMinimized == true)
        return "LSCV, as its search has a minimum (Seaman and Powell 1996); HREF is wider where there are several "
               "centres (Worton 1989)";
    return "LSCV, if its search has a minimum (Seaman and Powell 1996); HREF suits one centre of activity (Worton "
           "1989)";
}

}  // namespace

bool is_autocorrelated(const AdviceFacts& facts) {
    return (facts.Schoener && (*facts.Schoener < 1.6 || *facts.Schoener > 2.4)) ||
           (facts.SwihartSlade && *facts.SwihartSlade > 0.6);
}

BandwidthMethod advised_method(const AdviceFacts& facts) {
    if (facts.Count < kFixesForSearch || is_many_sharing(facts)) return BandwidthMethod::kHref;
    if (facts.LscvMinimized == false || is_below_cell(facts)) return BandwidthMethod::kAdHoc;
    return BandwidthMethod::kLscv;
}

std::string advice_text(const AdviceFacts& facts) {
    if (facts.Count < 2) return {};
    if (!is_autocorrelated(facts)) return "advised: " + method_advice(facts);
    return "advised: wxl akde, as fixes depend on each other (" + indices_text(facts) +
           ") and ranges of independent fixes come out too small then (Fleming et al. 2015); of the other methods " +
           method_advice(facts);
}

}  // namespace wxl::analysis
