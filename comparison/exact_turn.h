#pragma once
#include "platform/values.h"

namespace wxl::comparison {

/// On which side of the line from `a` to `b` the point `c` lies: 1 to the left (a, b, c run counter-clockwise), -1 to
/// the right, 0 on it. Decided exactly: where rounding could decide, with all digits (after Shewchuk 1997).
/// @param a, b, c coordinates finite, below 1E150 and, where not 0, above 1E-140 in size
int turn(const platform::Point& a, const platform::Point& b, const platform::Point& c);

}  // namespace wxl::comparison
