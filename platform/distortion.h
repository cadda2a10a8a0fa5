#pragma once
#include "platform/values.h"

#include <optional>
#include <span>
#include <string>

namespace wxl::platform {

/// How far a projection changes sizes on the WGS 84 ellipsoid, as the largest deviation from 1 over places.
struct Distortion {
    double Area = 0.0;    ///< 0.02: areas up to 2 % too large or too small
    double Length = 0.0;  ///< in the direction in which distances are changed most

    friend bool operator==(const Distortion&, const Distortion&) = default;
};

/// The larger one of each, for places of several animals.
Distortion larger_of(const Distortion& a, const Distortion& b);

/// "areas are up to 0.3 % and distances up to 0.2 % wrong"; shares below 0.05 % are told as such.
std::string distortion_text(const Distortion& distortion);

/// Knows what projections do to sizes.
class IDistortions {
public:
    virtual ~IDistortions() = default;

    /// The largest distortion over `points` (units of `reference`), to a millionth: over the outermost ones and some of
    /// the others.
    /// Nothing for no points, for geographic and unknown systems, and where there is no way to degrees.
    virtual std::optional<Distortion> Largest(std::span<const Point> points, const SpatialReference& reference) = 0;
};

}  // namespace wxl::platform
