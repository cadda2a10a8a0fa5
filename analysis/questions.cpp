#include "analysis/questions.h"

#include "platform/text.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <vector>

namespace wxl::analysis {
namespace {

/// Recommended buffers are this many bandwidths.
constexpr double kBufferFactor = 3.5;

constexpr double kHarmlessShare = 0.01;

/// "3.5 %", or "under 0.1 %".
std::string percent_text(double share) {
    const double percent = std::round(share * 1000.0) / 10.0;
    return percent > 0.0 ? platform::NumberText(percent) + " %" : "under 0.1 %";
}

/// Equal places have one hash: adding 0 makes a plain 0 of a negative one.
std::uint64_t place_hash(const platform::Point& point) {
    constexpr std::uint64_t kMix = 0x9e3779b97f4a7c15U;
    const std::uint64_t mixed =
        (std::bit_cast<std::uint64_t>(point.X + 0.0) * kMix) ^ std::bit_cast<std::uint64_t>(point.Y + 0.0);
    const std::uint64_t spread = (mixed ^ mixed >> 32U) * kMix;
    return spread ^ spread >> 32U;
}

/// A name with line breaks would pass for lines of the question.
std::string in_one_line(std::string name) {
    std::replace_if(
        name.begin(), name.end(), [](char c) { return c == '\r' || c == '\n' || c == '\t'; }, ' ');
    return name;
}

double largest_of(const TypedNumbers& list) {
    return list.Values.empty() ? 0.0 : *std::ranges::max_element(list.Values);
}

}  // namespace

BufferAdvice recommended_buffer(const Settings& settings, double largestHref) {
    const double largest = largest_of(list_of(settings));
    if (settings.Method == BandwidthMethod::kManual) return {suggested_buffer(largest), largest * kBufferFactor};
    const double bandwidth = settings.Method == BandwidthMethod::kProportion ? largest * largestHref : largestHref;
    return {std::floor(bandwidth * kBufferFactor), bandwidth * kBufferFactor};
}

double suggested_buffer(double widest) {
    return std::floor(kBufferFactor * widest + 0.5);
}

std::string buffer_question(const BufferAdvice& advice) {
    return "Warning: the extent buffer distance you have provided may not be large enough to capture the full extent "
           "of "
           "the utilization distribution. This data truncation can profoundly distort the isopleths. It is recommended "
           "you use a buffer distance of at least " +
           platform::NumberText(advice.Shown) + " for this dataset. Do you wish to use this recommended value?";
}

bool has_overlap(std::span<const platform::Point> points) {
    // A table of the places met so far: sorting takes several times as long.
    const std::size_t mask = std::bit_ceil(2 * points.size() + 1) - 1;
    std::vector<const platform::Point*> met(mask + 1, nullptr);
    for (const platform::Point& point : points) {
        std::size_t slot = place_hash(point) & mask;
        for (; met[slot] != nullptr; slot = (slot + 1) & mask)
            if (*met[slot] == point) return true;
        met[slot] = &point;
    }
    return false;
}

std::string overlap_question(std::span<const std::string> ids) {
    std::string list;
    for (std::size_t i = 0; i < ids.size(); ++i) list += (i == 0 ? "" : "  ") + in_one_line(ids[i]);
    return "Warning: overlapping points were detected for the following animals:\r\n" + list +
           "\r\nThis may prevent reasonable estimation of the bandwidth. Would you like to continue anyway?";
}

bool is_harmless(std::span<const SharedPlaces> animals) {
    return std::ranges::all_of(animals, [](const SharedPlaces& animal) { return animal.Share() < kHarmlessShare; });
}

std::string search_overlap_question(std::span<const SharedPlaces> animals) {
    std::string list;
    for (const SharedPlaces& animal : animals)
        list += (list.empty() ? "" : ", ") + in_one_line(animal.Id) + " (" + std::to_string(animal.Sharing) + " of " +
                std::to_string(animal.Fixes) + " fixes, " + percent_text(animal.Share()) + ")";
    return "Warning: LSCV and BCV take fixes at one place for a sign of a very small bandwidth, and these animals have "
           "such fixes: " +
           list +
           (is_harmless(animals)
                ? ". They are under 1 %, which hardly changes the search."
                : ". The remedy: thin the fixes in time, delete those at the place of another, or take "
                  "the reference bandwidth (HREF), which needs no places apart.") +
           " Would you like to continue anyway?";
}

}  // namespace wxl::analysis
