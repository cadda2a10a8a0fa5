#include "analysis/independence.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace wxl::analysis {

using platform::Point;

namespace {

/// Both indices depend on differences alone. Taken from the first fix, large map coordinates lose no digits, and fixes
/// at one location are exactly 0.
Point from_first(std::span<const Point> fixes, std::size_t i) {
    return {fixes[i].X - fixes[0].X, fixes[i].Y - fixes[0].Y};
}

Point mean(std::span<const Point> fixes, std::size_t begin, std::size_t end) {
    Point sum;
    for (std::size_t i = begin; i < end; ++i) {
        const Point p = from_first(fixes, i);
        sum.X += p.X;
        sum.Y += p.Y;
    }
    const auto count = static_cast<double>(end - begin);
    return {sum.X / count, sum.Y / count};
}

double square(double value) {
    return value * value;
}

/// Sums over the lag-one pairs: squared deviations of the four coordinates, and products of a leading deviation with a
/// trailing one.
struct LagOneSums {
    double LeadingX = 0.0, LeadingY = 0.0, TrailingX = 0.0, TrailingY = 0.0;
    double XX = 0.0, YY = 0.0, XY = 0.0, YX = 0.0;
};

LagOneSums lag_one_sums(std::span<const Point> fixes) {
    const std::size_t n = fixes.size();
    const Point leadingMean = mean(fixes, 0, n - 1);
    const Point trailingMean = mean(fixes, 1, n);
    LagOneSums sums;
    for (std::size_t i = 1; i < n; ++i) {
        const Point before = from_first(fixes, i - 1);
        const Point after = from_first(fixes, i);
        const Point leading{before.X - leadingMean.X, before.Y - leadingMean.Y};
        const Point trailing{after.X - trailingMean.X, after.Y - trailingMean.Y};
        sums.LeadingX += square(leading.X);
        sums.LeadingY += square(leading.Y);
        sums.TrailingX += square(trailing.X);
        sums.TrailingY += square(trailing.Y);
        sums.XX += leading.X * trailing.X;
        sums.YY += leading.Y * trailing.Y;
        sums.XY += leading.X * trailing.Y;
        sums.YX += leading.Y * trailing.X;
    }
    return sums;
}

/// Whether a coordinate differs between fixes. Asked exactly: the sum of squares of a constant other than 0 can be a
/// rounding above 0.
bool varies(std::span<const Point> fixes, double Point::*coordinate) {
    return std::ranges::any_of(fixes, [&](const Point& fix) { return fix.*coordinate != fixes.front().*coordinate; });
}

/// Not a number where the denominator has underflowed.
double correlation(double products, double squaresA, double squaresB) {
    const double denominator = std::sqrt(squaresA * squaresB);
    return denominator > 0.0 ? products / denominator : std::numeric_limits<double>::quiet_NaN();
}

std::optional<double> if_finite(double value) {
    return std::isfinite(value) ? std::optional(value) : std::nullopt;
}

}  // namespace

std::optional<double> Schoener(std::span<const Point> fixes) {
    const std::size_t n = fixes.size();
    if (n < 2) return std::nullopt;
    const Point centre = mean(fixes, 0, n);
    double fromCentre = 0.0;
    double fromPrevious = 0.0;
    for (std::size_t i = 0; i < n; ++i) {
        const Point p = from_first(fixes, i);
        fromCentre += square(p.X - centre.X) + square(p.Y - centre.Y);
        if (i > 0) fromPrevious += square(fixes[i].X - fixes[i - 1].X) + square(fixes[i].Y - fixes[i - 1].Y);
    }
    if (fromCentre == 0.0) return std::nullopt;
    const auto pairs = static_cast<double>(n - 1);
    return if_finite((fromPrevious / pairs) / (fromCentre / pairs));
}

std::optional<double> SwihartSlade(std::span<const Point> fixes) {
    const std::size_t n = fixes.size();
    if (n < 3) return std::nullopt;
    const auto leading = fixes.first(n - 1);
    const auto trailing = fixes.last(n - 1);
    for (const auto coordinate : {&Point::X, &Point::Y})
        if (!varies(leading, coordinate) || !varies(trailing, coordinate)) return std::nullopt;

    const LagOneSums sums = lag_one_sums(fixes);
    return if_finite(correlation(sums.XX, sums.LeadingX, sums.TrailingX) +
                     correlation(sums.YY, sums.LeadingY, sums.TrailingY) +
                     std::fabs(correlation(sums.XY, sums.LeadingX, sums.TrailingY)) +
                     std::fabs(correlation(sums.YX, sums.LeadingY, sums.TrailingX)));
}

}  // namespace wxl::analysis
