#pragma once
#include <string>
#include <vector>

namespace wxl::pictures {

/// One labelled place of an axis.
struct Tick {
    double Value = 0.0;
    std::string Text;
    friend bool operator==(const Tick&, const Tick&) = default;
};

/// The scale of one direction of a plot.
struct Axis {
    double From = 0.0;
    double To = 1.0;          ///< above From
    std::vector<Tick> Ticks;  ///< within From and To, ascending
    std::string Factor;       ///< "10⁻⁶" when the labels are to be multiplied by it, "" otherwise
};

/// The axis of values from `low` to `high` with about `count` ticks (2 or more) at 1, 2, 2.5 or 5 times a power of ten.
/// `margin` of the range is added at both ends. A range without width is widened around its value.
Axis MakeAxis(double low, double high, int count, double margin);

/// The number with `digits` significant digits, without trailing zeros: "14.44", "2E-06".
std::string ShortNumber(double value, int digits);

}  // namespace wxl::pictures
