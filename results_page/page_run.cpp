#include "results_page/page_run.h"

#include "analysis/diagnosis.h"
#include "analysis/summary_rows.h"
#include "movement_models/verdict.h"
#include "pictures/axis.h"
#include "platform/text.h"

#include <algorithm>
#include <cmath>

namespace wxl::results_page {
namespace {

using analysis::AnimalRecord;
using analysis::BandwidthMethod;

constexpr int kDigits = 4;
constexpr double kHectaresPerSquareKilometre = 100.0;
constexpr double kFullSize = 150.0;  ///< distributions up to which the pictures have their full size

}  // namespace

PictureSize picture_size(std::size_t distributions) {
    const double share = std::min(1.0, kFullSize / static_cast<double>(std::max<std::size_t>(distributions, 1)));
    const PictureSize full;
    return {std::max(96, static_cast<std::int32_t>(full.Side * std::sqrt(share))),
            std::max<std::size_t>(200, static_cast<std::size_t>(static_cast<double>(full.LinePoints) * share)),
            std::max<std::size_t>(100, static_cast<std::size_t>(static_cast<double>(full.Dots) * share))};
}

std::string section_id(std::size_t number) {
    return "animal-" + std::to_string(number);
}

std::string record_name(const PageRun& run, const AnimalRecord& record) {
    std::string name = platform::ValueText(record.Id);
    if (!run.ManyValues) return name;
    const std::string value = platform::NumberText(record.Value);
    return name + (record.Method == BandwidthMethod::kProportion ? ", " + value + " × HREF" : ", bandwidth " + value);
}

bool has_kilometres(const PageRun& run) {
    return analysis::square_kilometres(1.0, run.Reference).has_value();
}

std::string area_unit(const PageRun& run) {
    return has_kilometres(run) ? "km²" : "square " + length_unit(run);
}

std::string area_text(const PageRun& run, std::optional<double> area) {
    if (has_kilometres(run)) area = analysis::square_kilometres(area, run.Reference);
    return area ? pictures::ShortNumber(*area, kDigits) : std::string();
}

std::string hectares_text(const PageRun& run, std::optional<double> area) {
    area = analysis::square_kilometres(area, run.Reference);
    return area ? pictures::ShortNumber(*area * kHectaresPerSquareKilometre, kDigits) : std::string();
}

bool has_times(const PageRun& run) {
    return std::ranges::any_of(run.Records, [](const AnimalRecord& record) { return record.Times.First.has_value(); });
}

std::string interval_text(double seconds) {
    return seconds > 0.0 ? movement_models::duration_text(seconds) : "0 s";
}

std::span<const platform::Point> fixes_of(const PageRun& run, const AnimalRecord& record) {
    if (run.Animals == nullptr) return {};
    const auto& animals = run.Animals->Animals;
    const auto found = std::ranges::lower_bound(animals, record.Id, platform::ValueLess, &analysis::AnimalFixes::Id);
    if (found == animals.end() || platform::ValueLess(record.Id, found->Id)) return {};
    return found->Fixes;
}

std::optional<platform::Distortion> distortion_of(const PageRun& run) {
    std::optional<platform::Distortion> worst;
    for (const AnimalRecord& record : run.Records)
        if (record.Distorted) worst = larger_of(worst.value_or(platform::Distortion{}), *record.Distorted);
    return worst;
}

std::string length_unit(const PageRun& run) {
    if (run.Reference.MetersPerUnit == 1.0 && !run.Reference.IsGeographic) return "m";
    return run.Reference.UnitName.empty() ? "map units" : run.Reference.UnitName;
}

const char* method_text(BandwidthMethod method) {
    switch (method) {
        case BandwidthMethod::kLscv:
            return "LSCV";
        case BandwidthMethod::kBcv:
            return "BCV";
        case BandwidthMethod::kManual:
            return "user-defined";
        case BandwidthMethod::kProportion:
            return "proportion of HREF";
        case BandwidthMethod::kAdHoc:
            return "ad hoc";
        case BandwidthMethod::kHref:
            break;
    }
    return "HREF";
}

std::string volume_text(const PageRun& run, const AnimalRecord& record) {
    if (record.Status != 0 || !(run.Wanted.ScalingFactor.Value.value_or(0.0) > 0.0)) return {};
    const double percent = record.Volume / run.Wanted.ScalingFactor.Value.value_or(0.0) * 100.0;
    return platform::NumberText(std::round(percent * 100.0) / 100.0) + " %";
}

bool is_cut(const AnimalRecord& record) {
    return analysis::edge_verdict(record) == analysis::EdgeVerdict::kCut;
}

const char* search_text(const AnimalRecord& record) {
    if (!analysis::is_search(record.Method)) return "";
    return record.Minimized ? "minimised" : "not minimised";
}

}  // namespace wxl::results_page
