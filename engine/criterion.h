#pragma once

namespace wxl::engine {

/// Least squares cross-validation (Silverman 1986, ch. 3) and biased cross-validation (Sain, Baggerly and Scott 1994).
enum class Criterion { kLscv, kBcv };

/// What a score makes of the pairs of fixes. For LSCV, the sum of GaussianKernel2(d / h) - 2 GaussianKernel(d / h); for
/// BCV, with t = d / h, that of (t^4 - 8 t^2 + 8) exp(-t^2 / 2); over all pairs i < j.
struct PairSum {
    double Value = 0.0;
    double Error = 0.0;  ///< bound of the difference to the plain double loop
};

}  // namespace wxl::engine
