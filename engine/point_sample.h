#pragma once
#include "platform/values.h"

#include <vector>

namespace wxl::engine {

/// The fixes of one animal, in map units or, once rescaled, in standard deviations.
using PointSample = std::vector<platform::Point>;

}  // namespace wxl::engine
