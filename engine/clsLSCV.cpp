#include "engine/clsLSCV.h"

#include "engine/cross_validation.h"
#include "engine/numeric.h"
#include "engine/work_clock.h"
#include "platform/checked.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

namespace wxl::engine {
namespace {

/// Longest profile; a step that asks for more is treated as memory that cannot be had.
constexpr std::int32_t kMostRows = 10'000'000;

/// Bandwidths this close, in steps, are the same but for the rounding of the accumulated sum.
constexpr double kSameBandwidth = 1e-9;

/// Number of rows of the profile: Int((max - min) / step) + 3.
std::int32_t rows_of_search(double min, double max, double step) {
    const std::int32_t last = platform::sum_i32(platform::floor_i32(platform::quotient(max - min, step)), 2);
    if (last >= kMostRows) platform::Raise(platform::error_number::kOutOfMemory);
    return last + 1;
}

/// min, min + step, ... accumulated up to max. RuntimeError 9 for more than `rows` bandwidths.
std::vector<double> bandwidths_of_search(double min, double max, double step, std::int32_t rows) {
    std::vector<double> bandwidths = {min};
    const auto most = static_cast<std::size_t>(rows);
    for (double h = min + step; h <= max; h += step) {
        if (bandwidths.size() == most) platform::Raise(platform::error_number::kSubscript);
        bandwidths.push_back(h);
    }
    return bandwidths;
}

}  // namespace

/// What tells the two searches apart.
struct clsLSCV::Method {
    Criterion Score;
    double HrefMultiple;  ///< upper end of the default range
    std::int32_t RowsStep;
    std::int32_t LoopStep;
    std::int32_t LastRowStep;
    std::int32_t Fault;
    const char* Label;
    const char* FaultText;  ///< box for faults outside the search itself; empty: none
};

void clsLSCV::SetSearchRange(double dMin, double dMax) {
    m_searchMin = std::abs(dMin);
    m_searchMax = std::abs(dMax);
}

void clsLSCV::SetInputCoords(std::span<const platform::Point> coordinates) {
    try {
        m_points.assign(coordinates.begin(), coordinates.end());
        if (!has_pair_distances(m_points)) platform::Raise(platform::error_number::kSubscript);
    } catch (...) {
        lErrorStatus = lscv_status::kPairs;
    }
}

void clsLSCV::CalculateHREF() {
    if (lErrorStatus >= 1 || m_hrefDone) return;
    try {
        const double href = ReferenceBandwidth(m_points);
        if (!std::isfinite(href)) platform::Raise(platform::error_number::kOverflow);
        m_href = href;
        m_hrefDone = true;
    } catch (...) {
        lErrorStatus = lscv_status::kHref;
    }
}

void clsLSCV::CalculateLSCV() {
    Search({.Score = Criterion::kLscv,
            .HrefMultiple = 2.0,
            .RowsStep = lscv_status::kLscvRows,
            .LoopStep = lscv_status::kLscvLoop,
            .LastRowStep = lscv_status::kLscvLastRow,
            .Fault = lscv_status::kLscv,
            .Label = "LSCV: ",
            .FaultText = ""});
}

void clsLSCV::CalculateBCV2() {
    Search({.Score = Criterion::kBcv,
            .HrefMultiple = 3.0,
            .RowsStep = lscv_status::kBcvRows,
            .LoopStep = lscv_status::kBcvLoop,
            .LastRowStep = lscv_status::kBcvLastRow,
            .Fault = lscv_status::kBcv,
            .Label = "BCV2: ",
            .FaultText = "BCV2 calculation error"});
}

std::optional<SearchProfile> clsLSCV::GetLSCVProfile() const {
    if (!m_lscvDone && !m_bcvDone) return std::nullopt;
    return m_profile;
}

double clsLSCV::GetBandwidth() const {
    return m_lscvDone || m_bcvDone ? m_bandwidth : -1.0;
}

double clsLSCV::GetHREF() const {
    return m_hrefDone ? m_href : -1.0;
}

void clsLSCV::Search(const Method& method) {
    if (lErrorStatus >= 1) return;
    try {
        CompleteRange(method.HrefMultiple);
        RunSearch(method);
    } catch (...) {
        lErrorStatus = method.Fault;
        const std::string text = method.FaultText;
        if (!text.empty()) m_messages->Show({.Text = text, .Title = "Error", .Kind = platform::BoxKind::kFault});
    }
}

void clsLSCV::CompleteRange(double hrefMultiple) {
    if (m_searchMin == 0.0 && m_searchMax == 0.0) {
        CalculateHREF();
        m_searchMin = 0.05 * m_href;
        m_searchMax = hrefMultiple * m_href;
    }
    if (m_step == 0.0) m_step = (m_searchMax - m_searchMin) / 200.0;
}

void clsLSCV::RunSearch(const Method& method) {
    bMinimized = false;
    if (m_searchMin > m_searchMax) std::swap(m_searchMin, m_searchMax);
    m_step = std::abs(m_step);
    try {
        lErrorStatus = method.RowsStep;
        const std::int32_t rows = rows_of_search(m_searchMin, m_searchMax, m_step);
        SearchProfile profile(static_cast<std::size_t>(rows));

        lErrorStatus = method.LoopStep;
        std::vector<double> bandwidths = bandwidths_of_search(m_searchMin, m_searchMax, m_step, rows);
        lErrorStatus = method.LastRowStep;
        if (bandwidths.size() == profile.size()) platform::Raise(platform::error_number::kSubscript);
        bandwidths.push_back(m_searchMax);

        lErrorStatus = method.LoopStep;
        WorkClock clock(m_turns);
        const SearchScores scores = search_scores(method.Score, m_points, bandwidths, clock);

        lErrorStatus = method.LastRowStep;
        for (std::size_t row = 0; row < bandwidths.size(); ++row) profile[row] = {bandwidths[row], scores.Values[row]};
        m_profile = std::move(profile);
        m_bandwidth = bandwidths[scores.Best];
        const double same = kSameBandwidth * m_step;
        bMinimized = std::abs(m_bandwidth - m_searchMin) > same && std::abs(m_bandwidth - m_searchMax) > same;
        (method.Score == Criterion::kLscv ? m_lscvDone : m_bcvDone) = true;
        lErrorStatus = lscv_status::kGood;
    } catch (...) {
        m_messages->Show({.Text = method.Label + std::to_string(lErrorStatus) + ", " +
                                  platform::NumberText(m_searchMin) + ", " + platform::NumberText(m_searchMax),
                          .Kind = platform::BoxKind::kFault});
    }
}

}  // namespace wxl::engine
