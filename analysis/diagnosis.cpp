#include "analysis/diagnosis.h"

#include "engine/status.h"
#include "isopleths/clsHISO.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <set>
#include <span>
#include <vector>

namespace wxl::analysis {
namespace {

using platform::NumberText;

bool all_at_one_place(std::int64_t count, const Coincidence& coincident) {
    return count > 1 && coincident.Pairs == count * (count - 1) / 2;
}

std::string too_few_text(std::int64_t count) {
    return fixes_text(count) + (count == 1 ? " is" : " are") + " too few for a bandwidth";
}

std::string one_place_text(std::int64_t count) {
    return "all " + std::to_string(count) + " fixes lie at one place";
}

bool less_score(const engine::ProfileRow& a, const engine::ProfileRow& b) {
    return a.Score < b.Score;
}

/// Where the first of the smallest scores lies in a profile that is not empty.
std::size_t lowest(std::span<const engine::ProfileRow> rows) {
    return static_cast<std::size_t>(std::min_element(rows.begin(), rows.end(), less_score) - rows.begin());
}

bool is_flat(std::span<const engine::ProfileRow> rows) {
    const auto [low, high] = std::minmax_element(rows.begin(), rows.end(), less_score);
    const double size = std::max(std::abs(low->Score), std::abs(high->Score));
    return high->Score - low->Score <= kFlatShare * size;
}

bool at_lower_end(std::span<const engine::ProfileRow> rows) {
    return lowest(rows) < rows.size() / 2;
}

/// The local minima inside the range, which a search that ends at an end of it passes over.
std::string minima_text(const engine::SearchProfile& rows) {
    const engine::SearchProfile minima = engine::LocalMinima(rows);
    if (minima.empty()) return {};
    std::string text = minima.size() == 1 ? "; inside it the score has a local minimum at "
                                          : "; inside it the score has local minima at ";
    for (std::size_t i = 0; i < minima.size(); ++i) text += (i == 0 ? "" : ", ") + short_number(minima[i].Bandwidth);
    return text;
}

std::string end_text(const SearchFacts& facts) {
    const auto rows = engine::ReachedRows(facts.Profile);
    if (rows.empty()) return "the search has no scores";
    const engine::ProfileRow& best = rows[lowest(rows)];
    const bool isLower = at_lower_end(rows);
    const char* multiple = isLower ? ", 0.05 HREF" : facts.Method == BandwidthMethod::kLscv ? ", 2 HREF" : ", 3 HREF";
    return std::string("the smallest score is at the ") + (isLower ? "lower" : "upper") +
           " end of the range (bandwidth " + short_number(best.Bandwidth) + multiple + ")" + minima_text(rows);
}

std::string coincident_text(const SearchFacts& facts) {
    return std::to_string(facts.Coincident.Fixes) + " of " + fixes_text(facts.Count) +
           " share their place with another fix";
}

/// Coincident fixes that do not decide the search are told beside the end that they push it to.
std::string lower_end_text(const SearchFacts& facts) {
    std::string text = end_text(facts) + ": fixes are clustered closely";
    if (facts.Coincident.Fixes > 0) text += ", and " + coincident_text(facts);
    return text;
}

std::string memory_text(const AnimalRecord& record) {
    const double cells = static_cast<double>(record.Grid.Columns) * static_cast<double>(record.Grid.Rows);
    return "there is not enough memory for its raster of " + std::to_string(record.Grid.Columns) + " x " +
           std::to_string(record.Grid.Rows) + " cells (" + NumberText(std::ceil(cells * 8.0 / 1e6)) + " MB)";
}

/// Percentages so small that their level is that of single highest cells, around which there is nothing to draw.
std::string isopleth_reason(const AnimalRecord& record) {
    if (record.IsoplethStatus == isopleths::isopleth_status::kFailed || record.CutTo == 0.0) return {};
    std::string percentages;
    std::set<double> told;
    for (const IsoplethRecord& isopleth : record.Isopleths)
        if (!isopleth.Area && told.insert(isopleth.Percent).second)
            percentages += (percentages.empty() ? "" : ", ") + NumberText(isopleth.Percent) + " %";
    return percentages.empty()
               ? std::string()
               : "no isopleth at " + percentages + ": the percentage is too small, no area lies above its level";
}

std::string upper_end_text(const SearchFacts& facts) {
    const bool fallsAllTheWay = engine::LocalMinima(engine::ReachedRows(facts.Profile)).empty();
    return end_text(facts) + (fallsAllTheWay ? ": the score falls all the way to wide bandwidths" : "");
}

std::string edge_reason(const AnimalRecord& record) {
    if (!record.EdgeWarning || !record.MaxEdgeValue || edge_verdict(record) != EdgeVerdict::kCut) return {};
    return "the raster may cut the distribution: its edge reaches " + short_number(*record.MaxEdgeValue);
}

/// What the raster leaves of the distribution; with isopleths that cells of 0 prevented, why there are none.
std::string cut_reason(const AnimalRecord& record) {
    if (!record.CutTo) return {};
    if (*record.CutTo > 0.0)
        return share_left_text(*record.CutTo) + " of the distribution lies on its raster: choose a larger extent";
    const bool without = record.IsoplethStatus == isopleths::isopleth_status::kFailed;
    return std::string(without ? "no isopleths, because " : "") +
           "all cells of its raster are 0 (its fixes lie outside the extent)";
}

/// Why an ad hoc search ended otherwise than at a break of the range.
std::string adhoc_reason(const AnimalRecord& record) {
    if (record.Method != BandwidthMethod::kAdHoc || record.Status != 0) return {};
    switch (record.AdHoc.Status) {
        case comparison::AdHocStatus::kFound:
            break;
        case comparison::AdHocStatus::kInPartsAtReference:
            return "the 95 % range is in " + parts_text(record.AdHoc.Trace.front().Range.Parts) +
                   " at HREF already, which is kept: it is for you to decide";
        case comparison::AdHocStatus::kWholeToCellSize:
            return "the 95 % range stays whole down to the cell size: a smaller one lets the bandwidth shrink further";
        case comparison::AdHocStatus::kNoBandwidth:
            return "the grid of the ad hoc search would be too large: HREF was used; choose a larger cell size";
    }
    return {};
}

const char* reach_cause(const AnimalRecord& record) {
    if (record.Adaptive) return ", because an adaptive kernel is wider where fixes are sparse";
    if (record.Method == BandwidthMethod::kProportion && record.Value > 1.0)
        return ", because the reach is that of HREF whatever the proportion";
    return record.Bandwidth == record.BandwidthMapUnits ? "" : ", because x and y are spread unequally";
}

std::string reach_reason(const AnimalRecord& record) {
    if (record.BeyondReach < kToldShare) return {};
    return share_text(record.BeyondReach) + " of the distribution lies beyond the kernels' reach of " +
           short_number(record.Reach) + " bandwidths" + reach_cause(record) +
           ": outer isopleths are too small; --reach whole computes the full kernels";
}

bool is_rescaling(std::int32_t status) {
    namespace kernel_status = engine::kernel_status;
    constexpr std::array kSteps = {kernel_status::kRescaling, kernel_status::kHrefRescaling,
                                   kernel_status::kLscvUnits, kernel_status::kLscvRescaling,
                                   kernel_status::kBcvUnits,  kernel_status::kBcvRescaling};
    return std::find(kSteps.begin(), kSteps.end(), status) != kSteps.end();
}

std::string cell_text(const AnimalRecord& record) {
    return "the bandwidth " + short_number(record.BandwidthMapUnits) + " is smaller than the cell size " +
           NumberText(record.Grid.CellSize);
}

}  // namespace

std::string fixes_text(std::int64_t count) {
    return std::to_string(count) + (count == 1 ? " fix" : " fixes");
}

std::string without_id_text(std::int64_t count, const std::string& idField) {
    return (count == 1 ? "1 point has" : std::to_string(count) + " points have") + " no value in the field " + idField;
}

std::string short_number(double value) {
    if (value == 0.0 || !std::isfinite(value)) return NumberText(value);
    const double unit = std::pow(10.0, std::floor(std::log10(std::abs(value))) - 3.0);
    return NumberText(std::round(value / unit) * unit);
}

std::string parts_text(std::int32_t count) {
    return std::to_string(count) + (count == 1 ? " part" : " parts");
}

std::string share_left_text(double share) {
    if (share == 0.0) return "0 %";
    const double percent = std::round(share * 10000.0) / 100.0;
    return percent == 0.0 ? "less than 0.01 %" : "only " + NumberText(percent) + " %";
}

/// The step of that number allocates the grid; all else in it fails on numbers that are looked at here.
bool lacks_memory(const AnimalRecord& record) {
    const double side =
        record.Grid.CellSize > 0.0 ? record.Reach * record.BandwidthMapUnits / record.Grid.CellSize : 0.0;
    return record.Status == engine::kernel_status::kDimensions && record.Grid.CellSize > 0.0 && side < 2147483646.0 &&
           std::isfinite(record.Grid.OriginX) &&
           std::isfinite(record.Grid.OriginY + record.Grid.Rows * record.Grid.CellSize);
}

std::string share_text(double share) {
    return NumberText(std::round(share * 10000.0) / 100.0) + " %";
}

EdgeVerdict edge_verdict(const AnimalRecord& record) {
    if (record.CutTo || record.LostAtEdge >= kToldShare) return EdgeVerdict::kCut;
    return record.BeyondReach >= kToldShare ? EdgeVerdict::kBeyondReach : EdgeVerdict::kClear;
}

double edge_threshold(BandwidthMethod method, double scalingFactor) {
    return scalingFactor * (is_list(method) ? 5e-10 : 1e-08);
}

SearchFault search_fault(const SearchFacts& facts) {
    if (!is_search(facts.Method) || facts.Minimized) return SearchFault::kNone;
    if (facts.Count < 2) return SearchFault::kTooFew;
    if (all_at_one_place(facts.Count, facts.Coincident)) return SearchFault::kOnePlace;
    const auto rows = engine::ReachedRows(facts.Profile);
    const bool boundless = facts.Method == BandwidthMethod::kLscv && 6 * facts.Coincident.Pairs > facts.Count;
    if (boundless && !rows.empty() && lowest(rows) == 0) return SearchFault::kCoincident;
    if (!rows.empty() && is_flat(rows)) return SearchFault::kFlat;
    if (facts.Count < kFixesForSearch || rows.empty()) return SearchFault::kFewFixes;
    return at_lower_end(rows) ? SearchFault::kLowerEnd : SearchFault::kUpperEnd;
}

std::string search_reason(const SearchFacts& facts) {
    switch (search_fault(facts)) {
        case SearchFault::kNone:
            break;
        case SearchFault::kTooFew:
            return too_few_text(facts.Count);
        case SearchFault::kOnePlace:
            return one_place_text(facts.Count);
        case SearchFault::kCoincident:
            return coincident_text(facts) + ", so that the score falls without limit toward bandwidth 0";
        case SearchFault::kFlat:
            return "the score is flat: it is the same at every bandwidth of the range";
        case SearchFault::kFewFixes:
            return fixes_text(facts.Count) + " are too few for a search (" + std::to_string(kFixesForSearch) +
                   " or more are advised); " + end_text(facts);
        case SearchFault::kLowerEnd:
            return lower_end_text(facts);
        case SearchFault::kUpperEnd:
            return upper_end_text(facts);
    }
    return {};
}

Failure failure_of(const AnimalRecord& record) {
    namespace kernel_status = engine::kernel_status;
    if (record.Status == kernel_status::kGood) return Failure::kNone;
    if (record.SampleSize < 2) return Failure::kTooFew;
    if (all_at_one_place(record.SampleSize, record.Coincident)) return Failure::kOnePlace;
    if (record.Status == kernel_status::kGridTooLarge) return Failure::kGridTooLarge;
    if (record.Status == kernel_status::kNothingToCompute)
        return record.Grid.Columns > 0 && record.Grid.Rows > 0 ? Failure::kNoBandwidth : Failure::kNoCells;
    if (record.Status == kernel_status::kBandwidthBelowCell) return Failure::kBelowCell;
    if (is_rescaling(record.Status)) return Failure::kRescaling;
    return lacks_memory(record) ? Failure::kMemory : Failure::kOther;
}

std::string failure_reason(const AnimalRecord& record) {
    switch (failure_of(record)) {
        case Failure::kNone:
            return {};
        case Failure::kTooFew:
            return too_few_text(record.SampleSize);
        case Failure::kOnePlace:
            return one_place_text(record.SampleSize);
        case Failure::kGridTooLarge:
            return "the raster would have more than 50 million cells";
        case Failure::kNoBandwidth:
            return "the bandwidth is 0";
        case Failure::kNoCells:
            return "the raster has no cells: the cell size " + NumberText(record.Grid.CellSize) +
                   " is larger than the extent";
        case Failure::kBelowCell:
            return cell_text(record);
        case Failure::kMemory:
            return memory_text(record);
        case Failure::kRescaling:
            return "x or y of its fixes has no spread, so that they cannot be rescaled to unit variance";
        case Failure::kOther:
            break;
    }
    return "the calculation failed (code " + std::to_string(record.Status) + ")";
}

std::string failure_remedy(const AnimalRecord& record) {
    switch (failure_of(record)) {
        case Failure::kNone:
            return {};
        case Failure::kTooFew:
            return "Leave this animal out, or add its other fixes.";
        case Failure::kOnePlace:
            return "Check its coordinates, or leave this animal out.";
        case Failure::kGridTooLarge:
            return "Choose larger cells or a smaller extent.";
        case Failure::kNoBandwidth:
            return "Choose another bandwidth.";
        case Failure::kNoCells:
            return "Choose smaller cells.";
        case Failure::kBelowCell:
            return record.BandwidthMapUnits < 1.0
                       ? "Choose a wider bandwidth."
                       : "Choose cells of at most " + NumberText(std::floor(record.BandwidthMapUnits)) +
                             ", or a wider bandwidth.";
        case Failure::kMemory:
            return "Choose larger cells or a smaller extent, or close other programs.";
        case Failure::kRescaling:
            return "Leave out the rescaling, or this animal.";
        case Failure::kOther:
            break;
    }
    return "The report tells how far it came.";
}

SearchFacts search_facts(const AnimalRecord& record) {
    return {.Method = record.Method,
            .Count = record.SampleSize,
            .Coincident = record.Coincident,
            .Profile = record.Profile,
            .Minimized = record.Minimized};
}

std::string diagnosis(const AnimalRecord& record) {
    std::vector<std::string> reasons = {search_reason(search_facts(record)),
                                        failure_reason(record),
                                        adhoc_reason(record),
                                        edge_reason(record),
                                        cut_reason(record),
                                        reach_reason(record),
                                        isopleth_reason(record)};
    reasons.erase(std::unique(reasons.begin(), reasons.end()), reasons.end());
    std::string text;
    for (const std::string& reason : reasons) {
        if (reason.empty()) continue;
        text += (text.empty() ? "" : "; ") + reason;
    }
    return text;
}

}  // namespace wxl::analysis
