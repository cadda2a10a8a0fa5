#pragma once
// Numeric procedures shared by the kernel, the bandwidth searches and the statistics.

#include "platform/values.h"

#include <span>

namespace wxl::engine {

/// Sample variance (divisor n - 1) of x (column 0) or y (column 1); 0 for any other column, and exactly 0 where
/// all are equal. RuntimeError 6 or 11 for fewer than two points, and 6 when the result is not a finite number.
double Variance(std::span<const platform::Point> sample, int column);

/// Log(x) / Log(2.718281828): the divisor is the logarithm of that literal, not exactly 1. `x` > 0.
double NaturalLog(double x);

/// Euclidean distance.
double PointDistance(double x1, double y1, double x2, double y2);

/// Bivariate standard normal density at distance t: exp(-t^2 / 2) / 6.28318530717958.
double GaussianKernel(double t);

/// The convolution of GaussianKernel with itself at distance t: exp(-t^2 / 4) / 12.56637061435916.
double GaussianKernel2(double t);

/// exp(x), and 0 for x < -1000.
double SafeExp(double x);

/// NaturalLog(x), and -3.4E-300 for x <= 0.
double SafeLog(double x);

/// Reference bandwidth in the units of the fixes: n^(-1/6) x sqrt(mean of both variances, divisor n - 1) (Silverman
/// 1986). Faults as Variance does.
double ReferenceBandwidth(std::span<const platform::Point> fixes);

}  // namespace wxl::engine
