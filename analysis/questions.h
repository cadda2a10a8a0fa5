#pragma once
// The questions that a run asks before its first distribution: is the buffer wide enough, may fixes share a place?

#include "analysis/settings.h"
#include "platform/values.h"

#include <cstdint>
#include <span>
#include <string>

namespace wxl::analysis {

/// The extent buffer that a run should have at least.
struct BufferAdvice {
    double Shown = 0.0;     ///< whole number, as the question names it
    double Accepted = 0.0;  ///< what the buffer becomes when the user agrees
};

/// Advice for the settings' bandwidths or proportions, and the largest reference bandwidth (0 until it was computed).
BufferAdvice recommended_buffer(const Settings& settings, double largestHref);

/// The buffer that the form suggests for bandwidths up to `widest` map units.
double suggested_buffer(double widest);

/// The question whether to use the recommended buffer.
std::string buffer_question(const BufferAdvice& advice);

/// Whether two points of a sample are at the same place.
bool has_overlap(std::span<const platform::Point> points);

/// The question whether to go on although animals have overlapping points.
std::string overlap_question(std::span<const std::string> ids);

/// An animal with overlapping points.
struct SharedPlaces {
    std::string Id;
    std::int64_t Sharing = 0;  ///< fixes at the place of another
    std::int64_t Fixes = 0;    ///< all

    double Share() const { return static_cast<double>(Sharing) / static_cast<double>(Fixes); }
};

/// Whether so few fixes of every animal share a place that a search is hardly touched: under 1 %.
bool is_harmless(std::span<const SharedPlaces> animals);

/// The question with counts and the remedy, before a search.
std::string search_overlap_question(std::span<const SharedPlaces> animals);

}  // namespace wxl::analysis
