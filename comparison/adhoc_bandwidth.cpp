#include "comparison/adhoc_bandwidth.h"

#include "comparison/kernel_sum.h"
#include "engine/kernel_reach.h"

#include <array>

namespace wxl::comparison {
namespace {

constexpr double kWidth = 0.001;  // of the bisection

/// Asks for the parts at proportions and writes down the answers.
class Search {
public:
    Search(const AdHocSettings& settings, const std::function<RangeParts(double)>& rangeAt)
        : m_parts(settings.Parts), m_rangeAt(rangeAt) {}

    bool IsWhole(double proportion) {
        Trace.push_back({proportion, m_rangeAt(proportion)});
        return Trace.back().Range.Parts <= m_parts;
    }

    std::vector<AdHocStep> Trace;

private:
    std::int32_t m_parts;
    const std::function<RangeParts(double)>& m_rangeAt;
};

double bisected(Search& search, double whole, double broken) {
    while (whole - broken > kWidth) {
        const double middle = (whole + broken) / 2.0;
        (search.IsWhole(middle) ? whole : broken) = middle;
    }
    return whole;
}

AdHocBandwidth outcome(AdHocStatus status, double proportion, Search& search) {
    AdHocBandwidth found;
    found.Status = status;
    found.Proportion = proportion;
    found.Trace = std::move(search.Trace);
    return found;
}

}  // namespace

std::string_view status_name(AdHocStatus status) {
    switch (status) {
        case AdHocStatus::kFound:
            return "ok";
        case AdHocStatus::kInPartsAtReference:
            return "in parts at the reference bandwidth";
        case AdHocStatus::kWholeToCellSize:
            return "whole down to the cell size";
        case AdHocStatus::kNoBandwidth:
            return "no bandwidth";
    }
    return "";
}

AdHocBandwidth search_proportion(const AdHocSettings& settings, double smallest,
                                 const std::function<RangeParts(double)>& range_at) {
    Search search(settings, range_at);
    if (!search.IsWhole(1.0)) return outcome(AdHocStatus::kInPartsAtReference, 1.0, search);
    double whole = 1.0;
    for (std::int32_t step = 1; step < settings.Steps; ++step) {
        const double proportion = static_cast<double>(settings.Steps - step) / settings.Steps;
        if (proportion < smallest) break;
        if (!search.IsWhole(proportion)) {
            const double found = bisected(search, whole, proportion);
            return outcome(AdHocStatus::kFound, found, search);
        }
        whole = proportion;
    }
    return outcome(AdHocStatus::kWholeToCellSize, whole, search);
}

AdHocBandwidth adhoc_bandwidth(std::span<const platform::Point> fixes, const AdHocSettings& settings,
                               const std::function<void(double)>& progress) {
    AdHocBandwidth none;
    none.Href = reference_bandwidth(fixes);
    const platform::Extent extent = platform::bounds_of(fixes);
    const double margin = engine::kUsualReach * none.Href;
    none.CellSize = settings.CellSize > 0.0 ? settings.CellSize : usual_cell_size(0.5 * none.Href, extent, margin);
    if (!(none.Href > 0.0) || none.Href < none.CellSize) return none;

    const platform::RasterGeometry grid = covering_grid(extent, margin, none.CellSize);
    KernelSum sum(grid);
    const std::array<double, 1> percents = {settings.Percent};
    const auto range_at = [&](double proportion) {
        if (progress) progress(1.0 - proportion);
        sum.Clear();
        sum.Add(fixes, proportion * none.Href);
        return range_parts(sum.Cells(), grid.Columns, ranges_by_volume(sum.Cells(), percents).front());
    };
    AdHocBandwidth found = search_proportion(settings, none.CellSize / none.Href, range_at);
    found.Href = none.Href;
    found.CellSize = none.CellSize;
    found.Bandwidth = found.Proportion * found.Href;
    return found;
}

}  // namespace wxl::comparison
