#pragma once
#include "platform/values.h"

#include <cstdint>
#include <span>

namespace wxl::analysis {

/// How much of a sample lies at places that several fixes share (equal x and equal y).
struct Coincidence {
    std::int32_t Fixes = 0;  ///< fixes whose place is that of another fix too
    std::int64_t Pairs = 0;  ///< pairs of fixes at one place
    friend bool operator==(const Coincidence&, const Coincidence&) = default;
};

Coincidence coincidence_of(std::span<const platform::Point> fixes);

}  // namespace wxl::analysis
