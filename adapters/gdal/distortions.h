#pragma once
#include "adapters/gdal/projection.h"
#include "platform/distortion.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <memory>
#include <numbers>
#include <optional>
#include <span>
#include <vector>

namespace wxl::files {

/// The outermost of the places that it is shown, in sixteen directions.
class OutermostPlaces {
public:
    static constexpr std::size_t kDirections = 16;

    OutermostPlaces() {
        for (std::size_t i = 0; i < kDirections; ++i) {
            const double angle = 2.0 * std::numbers::pi * static_cast<double>(i) / kDirections;
            m_directions[i] = {std::cos(angle), std::sin(angle)};
        }
        m_reach.fill(-std::numeric_limits<double>::infinity());
    }

    void Look(const platform::Point& place) {
        for (std::size_t i = 0; i < kDirections; ++i) {
            const double reach = place.X * m_directions[i].X + place.Y * m_directions[i].Y;
            if (!(reach > m_reach[i])) continue;
            m_reach[i] = reach;
            m_places[i] = place;
        }
    }

    const std::array<platform::Point, kDirections>& Places() const { return m_places; }

private:
    std::array<platform::Point, kDirections> m_directions;
    std::array<double, kDirections> m_reach;
    std::array<platform::Point, kDirections> m_places;
};

/// The outermost places in sixteen directions, and others at equal steps: some 2,000, or every fiftieth of fewer than
/// 100,000. A place is anything with X and Y.
template <class Place>
std::vector<platform::Point> told_places(std::span<const Place> places) {
    constexpr std::size_t kAbout = 2000;
    constexpr std::size_t kEvery = 50;
    const std::size_t step = std::max(places.size() / kAbout, kEvery);
    std::vector<platform::Point> told;
    OutermostPlaces outermost;
    for (std::size_t i = 0; i < places.size(); ++i) {
        const platform::Point place{places[i].X, places[i].Y};
        outermost.Look(place);
        if (i % step == 0) told.push_back(place);
    }
    if (!places.empty()) told.insert(told.end(), outermost.Places().begin(), outermost.Places().end());
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
