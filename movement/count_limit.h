#pragma once
#include "platform/checked.h"

#include <cstdint>

namespace wxl::movement {

/// The range of row counts and object IDs in the movement tools: signed 16 bits, unless the limit is lifted.
class CountLimit {
public:
    explicit CountLimit(bool lifted = false) : m_lifted(lifted) {}

    /// The value itself; RuntimeError 6 when it is outside the range.
    std::int64_t Checked(std::int64_t value) const { return m_lifted ? value : platform::to_i16(value); }

private:
    bool m_lifted;
};

}  // namespace wxl::movement
