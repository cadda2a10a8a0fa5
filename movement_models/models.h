#pragma once
// Models of stationary movement within a home range (Fleming et al. 2014, Am. Nat. 183:E154). Both axes share one
// autocorrelation function of the lag.

#include <array>
#include <string>
#include <string_view>

namespace wxl::movement_models {

/// Which autocorrelation the positions have.
enum class ModelKind {
    kIid,       ///< none: independent positions
    kOu,        ///< of the position (Ornstein-Uhlenbeck)
    kCritical,  ///< OUf: of position and velocity, with one time scale for both
    kOuf,       ///< of position and velocity, with a time scale for each
};

/// Whether the range is a circle or an ellipse.
enum class RangeShape { kIsotropic, kAnisotropic };

inline constexpr std::array kModelKinds = {ModelKind::kIid, ModelKind::kOu, ModelKind::kCritical, ModelKind::kOuf};

/// Time scales in seconds; a model that has fewer leaves the rest 0.
struct TimeScales {
    double Position = 0.0;  ///< tau1: of crossing the range
    double Velocity = 0.0;  ///< tau2 < tau1: of keeping a direction
    friend bool operator==(const TimeScales&, const TimeScales&) = default;
};

/// A model with its time scales.
struct Autocorrelation {
    ModelKind Kind = ModelKind::kIid;
    TimeScales Scales;

    /// 1 - the correlation of two positions of different fixes, `lag` >= 0 seconds apart; IID: 1 at every lag. Without
    /// cancellation at short lags.
    double Semivariance(double lag) const;
    friend bool operator==(const Autocorrelation&, const Autocorrelation&) = default;
};

/// "IID", "OU", "OUf", "OUF".
std::string_view model_name(ModelKind kind);

/// "OUF isotropic", "OU anisotropic".
std::string model_title(ModelKind kind, RangeShape shape);

/// How many time scales the model has: 0, 1 or 2.
int scale_count(ModelKind kind);

/// Number of parameters of the autocovariance: time scales, and one or three numbers of the covariance.
int parameter_count(ModelKind kind, RangeShape shape);

/// A symmetric matrix of both axes; of a covariance in square map units.
struct Matrix2 {
    double XX = 0.0;
    double XY = 0.0;
    double YY = 0.0;

    double Trace() const { return XX + YY; }
    double Determinant() const { return XX * YY - XY * XY; }
    Matrix2 Scaled(double factor) const { return {factor * XX, factor * XY, factor * YY}; }
    friend bool operator==(const Matrix2&, const Matrix2&) = default;
};

/// The ellipse of a covariance matrix.
struct Ellipse {
    double Major = 0.0;  ///< standard deviation along the long axis
    double Minor = 0.0;  ///< and across it
    double Angle = 0.0;  ///< of the long axis, degrees from east towards north, above -90 and up to 90
};

Ellipse ellipse_of(const Matrix2& covariance);

}  // namespace wxl::movement_models
