#include "kde_tool/bandwidth_doctor.h"

#include "engine/status.h"
#include "isopleths/clsHISO.h"
#include "platform/text.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <span>
#include <vector>

namespace wxl::kde_tool {
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

/// A bandwidth of the sample in four digits, which is what a reader compares.
std::string short_number(double value) {
    if (value == 0.0 || !std::isfinite(value)) return NumberText(value);
    const double unit = std::pow(10.0, std::floor(std::log10(std::abs(value))) - 3.0);
    return NumberText(std::round(value / unit) * unit);
}

std::string end_text(const SearchFacts& facts) {
    const auto rows = engine::ReachedRows(facts.Profile);
    if (rows.empty()) return "the search has no scores";
    const engine::ProfileRow& best = rows[lowest(rows)];
    return std::string("the smallest score is at the ") + (at_lower_end(rows) ? "lower" : "upper") +
           " end of the range (bandwidth " + short_number(best.Bandwidth) + ")";
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

std::string edge_reason(const AnimalRecord& record) {
    if (!record.EdgeWarning || !record.MaxEdgeValue) return {};
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

std::string nothing_text(const AnimalRecord& record) {
    if (record.Grid.Columns > 0 && record.Grid.Rows > 0) return "the bandwidth is 0";
    return "the raster has no cells: the cell size " + NumberText(record.Grid.CellSize) + " is larger than the extent";
}

std::string cell_text(const AnimalRecord& record) {
    return "the bandwidth " + short_number(record.BandwidthMapUnits) + " is smaller than the cell size " +
           NumberText(record.Grid.CellSize);
}

}  // namespace

std::string fixes_text(std::int64_t count) {
    return std::to_string(count) + (count == 1 ? " fix" : " fixes");
}

std::string share_left_text(double share) {
    if (share == 0.0) return "0 %";
    const double percent = std::round(share * 10000.0) / 100.0;
    return percent == 0.0 ? "less than 0.01 %" : "only " + NumberText(percent) + " %";
}

bool is_search(BandwidthMethod method) {
    return method == BandwidthMethod::kLscv || method == BandwidthMethod::kBcv;
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
            return end_text(facts) + ": the score falls all the way to wide bandwidths";
    }
    return {};
}

std::string failure_reason(const AnimalRecord& record) {
    namespace kernel_status = engine::kernel_status;
    if (record.Status == kernel_status::kGood) return {};
    if (record.SampleSize < 2) return too_few_text(record.SampleSize);
    if (all_at_one_place(record.SampleSize, record.Coincident)) return one_place_text(record.SampleSize);
    if (record.Status == kernel_status::kGridTooLarge) return "the raster would have more than 50 million cells";
    if (record.Status == kernel_status::kNothingToCompute) return nothing_text(record);
    if (record.Status == kernel_status::kBandwidthBelowCell) return cell_text(record);
    return "the calculation failed (code " + std::to_string(record.Status) + ")";
}

SearchFacts search_facts(const AnimalRecord& record) {
    return {.Method = record.Method,
            .Count = record.SampleSize,
            .Coincident = record.Coincident,
            .Profile = record.Profile,
            .Minimized = record.Minimized};
}

std::string diagnosis(const AnimalRecord& record) {
    std::vector<std::string> reasons = {search_reason(search_facts(record)), failure_reason(record),
                                        edge_reason(record), cut_reason(record)};
    reasons.erase(std::unique(reasons.begin(), reasons.end()), reasons.end());
    std::string text;
    for (const std::string& reason : reasons) {
        if (reason.empty()) continue;
        text += (text.empty() ? "" : "; ") + reason;
    }
    return text;
}

}  // namespace wxl::kde_tool
