#include "movement_models/models.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace wxl::movement_models {

namespace {

double critical_semivariance(double z) {
    return -std::expm1(-z) - z * std::exp(-z);
}

double ouf_semivariance(double lag, double tau1, double tau2) {
    const double difference = tau1 - tau2;
    return -std::expm1(-lag / tau2) +
           tau1 * std::exp(-lag / tau1) * std::expm1(-lag * difference / (tau1 * tau2)) / difference;
}

}  // namespace

double Autocorrelation::Semivariance(double lag) const {
    const auto [tau1, tau2] = Scales;
    switch (Kind) {
        case ModelKind::kIid:
            return 1.0;
        case ModelKind::kOu:
            return -std::expm1(-lag / tau1);
        case ModelKind::kCritical:
            return critical_semivariance(lag / tau1);
        case ModelKind::kOuf:
            break;
    }
    return ouf_semivariance(lag, tau1, tau2);
}

std::string_view model_name(ModelKind kind) {
    switch (kind) {
        case ModelKind::kIid:
            return "IID";
        case ModelKind::kOu:
            return "OU";
        case ModelKind::kCritical:
            return "OUf";
        case ModelKind::kOuf:
            break;
    }
    return "OUF";
}

std::string model_title(ModelKind kind, RangeShape shape) {
    return std::string(model_name(kind)) + (shape == RangeShape::kIsotropic ? " isotropic" : " anisotropic");
}

int scale_count(ModelKind kind) {
    return kind == ModelKind::kIid ? 0 : kind == ModelKind::kOuf ? 2 : 1;
}

int parameter_count(ModelKind kind, RangeShape shape) {
    return scale_count(kind) + (shape == RangeShape::kIsotropic ? 1 : 3);
}

Ellipse ellipse_of(const Matrix2& covariance) {
    const double half = 0.5 * (covariance.XX - covariance.YY);
    const double radius = std::hypot(half, covariance.XY);
    const double larger = 0.5 * covariance.Trace() + radius;
    // The product of both is the determinant: no difference of near numbers for a thin ellipse.
    const double smaller = larger > 0.0 ? std::max(0.0, covariance.Determinant()) / larger : 0.0;
    const double angle = 0.5 * std::atan2(covariance.XY, half) * 180.0 / std::numbers::pi;
    return {std::sqrt(larger), std::sqrt(smaller), angle <= -90.0 ? 90.0 : angle};
}

}  // namespace wxl::movement_models
