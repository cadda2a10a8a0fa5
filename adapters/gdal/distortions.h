#pragma once
#include "adapters/gdal/projection.h"
#include "platform/distortion.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <numbers>
#include <optional>
#include <span>
#include <vector>

namespace wxl::files {

/// The outermost places in sixteen directions, and others at equal steps: some 2,000, or every fiftieth of fewer than
/// 100,000. A place is anything with X and Y.
template <class Place>
std::vector<platform::Point> told_places(std::span<const Place> places) {
    constexpr std::size_t kAbout = 2000;
    constexpr std::size_t kEvery = 50;
    constexpr int kDirections = 16;
    if (places.empty()) return {};
    std::vector<platform::Point> told;
    const auto tell = [&](const Place& place) { told.push_back({place.X, place.Y}); };
    for (int direction = 0; direction < kDirections; ++direction) {
        const double angle = 2.0 * std::numbers::pi * direction / kDirections;
        const double x = std::cos(angle);
        const double y = std::sin(angle);
        const auto farther = [&](const Place& a, const Place& b) { return a.X * x + a.Y * y < b.X * x + b.Y * y; };
        tell(*std::max_element(places.begin(), places.end(), farther));
    }
    const std::size_t step = std::max(places.size() / kAbout, kEvery);
    for (std::size_t i = 0; i < places.size(); i += step) tell(places[i]);
    return told;
}

/// What projections do to sizes, by projecting small steps east and north. Keeps the way between two systems, as the
/// animals of a run ask for the same one.
class Distortions final : public platform::IDistortions {
public:
    std::optional<platform::Distortion> Largest(std::span<const platform::Point> points,
                                                const platform::SpatialReference& reference) override;

    /// The largest distortion at all of `places`; nothing as Largest has it.
    std::optional<platform::Distortion> Over(std::vector<platform::Point> places,
                                             const platform::SpatialReference& reference);

private:
    void Prepare(const platform::SpatialReference& reference);

    platform::SpatialReference m_reference;
    std::unique_ptr<PointProjector> m_toDegrees;
    std::unique_ptr<PointProjector> m_back;
};

}  // namespace wxl::files
