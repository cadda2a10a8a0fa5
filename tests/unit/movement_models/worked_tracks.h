#pragma once
#include "movement_models/models.h"
#include "movement_models/track.h"

#include <array>
#include <cstdint>

namespace wxl::tests {

inline constexpr std::array kRangeShapes = {movement_models::RangeShape::kIsotropic,
                                            movement_models::RangeShape::kAnisotropic};

/// Fourteen fixes every two hours, in metres.
movement_models::Track fourteen_fixes();

/// A track drawn from a model with this covariance: `fixes` fixes every `step` seconds, dense (by the square root of
/// the step's covariance), deterministic in `seed`.
movement_models::Track drawn_track(const movement_models::Autocorrelation& model,
                                   const movement_models::Matrix2& covariance, std::size_t fixes, double step,
                                   std::uint64_t seed);

}  // namespace wxl::tests
