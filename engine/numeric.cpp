#include "engine/numeric.h"

#include "platform/checked.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <cmath>

namespace wxl::engine {
namespace {

/// Whose mean may be off by a rounding, so that its deviations would not be 0.
template <class Coordinate>
bool is_constant(std::span<const platform::Point> sample, const Coordinate& coordinate) {
    const double first = coordinate(sample.front());
    return std::isfinite(first) && std::all_of(sample.begin(), sample.end(), [&](const platform::Point& point) {
               return coordinate(point) == first;
           });
}

}  // namespace

double Variance(std::span<const platform::Point> sample, int column) {
    if (column != 0 && column != 1) return 0.0;
    const auto coordinate = [column](const platform::Point& point) { return column == 0 ? point.X : point.Y; };
    if (sample.size() > 1 && is_constant(sample, coordinate)) return 0.0;
    const auto count = static_cast<double>(sample.size());
    double sum = 0.0;
    for (const platform::Point& point : sample) sum += coordinate(point);
    const double mean = platform::quotient(sum, count);
    double squares = 0.0;
    for (const platform::Point& point : sample) {
        const double deviation = coordinate(point) - mean;
        squares += deviation * deviation;
    }
    const double variance = platform::quotient(squares, count - 1.0);
    if (!std::isfinite(variance)) platform::Raise(platform::error_number::kOverflow);
    return variance;
}

double NaturalLog(double x) {
    static const double kLogOfBase = std::log(2.718281828);
    return std::log(x) / kLogOfBase;
}

double PointDistance(double x1, double y1, double x2, double y2) {
    return std::sqrt((y1 - y2) * (y1 - y2) + (x1 - x2) * (x1 - x2));
}

double GaussianKernel(double t) {
    return SafeExp(t * t / -2.0) / 6.28318530717958;
}

double GaussianKernel2(double t) {
    return SafeExp(t * t / -4.0) / 12.56637061435916;
}

double SafeExp(double x) {
    return x >= -1000.0 ? std::exp(x) : 0.0;
}

double SafeLog(double x) {
    return x > 0.0 ? NaturalLog(x) : -3.4E-300;
}

double ReferenceBandwidth(std::span<const platform::Point> fixes) {
    const double sigma = std::sqrt((Variance(fixes, 1) + Variance(fixes, 0)) / 2.0);
    return std::pow(static_cast<double>(fixes.size()), -1.0 / 6.0) * sigma;
}

}  // namespace wxl::engine
