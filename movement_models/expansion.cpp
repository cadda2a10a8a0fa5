#include "movement_models/expansion.h"

#include <algorithm>
#include <cmath>

namespace wxl::movement_models {

Expansion expansion_of(const Taylor<1>& t) {
    return {1, t.Value, {t.First[0], 0.0}, {t.Second[0], 0.0, 0.0}};
}

Expansion expansion_of(const Taylor<2>& t) {
    return {2, t.Value, {t.First[0], t.First[1]}, {t.Second[0], t.Second[1], t.Second[2]}};
}

Expansion in_linear_scales(const Expansion& logarithmic, const TimeScales& scales) {
    Expansion linear = logarithmic;
    if (logarithmic.Count == 0) return linear;
    const double tau1 = scales.Position;
    linear.Gradient[0] /= tau1;
    linear.Hessian.XX = (logarithmic.Hessian.XX - logarithmic.Gradient[0]) / (tau1 * tau1);
    if (logarithmic.Count < 2) return linear;
    const double tau2 = scales.Velocity;
    linear.Gradient[1] /= tau2;
    linear.Hessian.XY /= tau1 * tau2;
    linear.Hessian.YY = (logarithmic.Hessian.YY - logarithmic.Gradient[1]) / (tau2 * tau2);
    return linear;
}

bool is_positive_definite(const Matrix2& matrix, std::size_t count) {
    if (count == 0) return true;
    if (!(matrix.XX > 0.0) || !std::isfinite(matrix.XX)) return false;
    return count == 1 || (matrix.YY > 0.0 && matrix.Determinant() > 0.0 && std::isfinite(matrix.Determinant()));
}

std::optional<Vector2> solved(const Matrix2& matrix, const Vector2& right, std::size_t count) {
    if (!is_positive_definite(matrix, count)) return std::nullopt;
    if (count == 0) return Vector2{};
    if (count == 1) return Vector2{right[0] / matrix.XX, 0.0};
    const double determinant = matrix.Determinant();
    return Vector2{(matrix.YY * right[0] - matrix.XY * right[1]) / determinant,
                   (matrix.XX * right[1] - matrix.XY * right[0]) / determinant};
}

Vector2 downhill_step(const Expansion& e) {
    if (const auto step = solved(e.Hessian, e.Gradient, e.Count)) return {-(*step)[0], -(*step)[1]};
    const auto along = [](double slope, double curvature) {
        return curvature == 0.0 ? (slope > 0.0 ? -1.0 : slope < 0.0 ? 1.0 : 0.0) : -slope / std::abs(curvature);
    };
    if (e.Count == 1) return {along(e.Gradient[0], e.Hessian.XX), 0.0};
    const double half = 0.5 * (e.Hessian.XX - e.Hessian.YY);
    const double angle = 0.5 * std::atan2(e.Hessian.XY, half);
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    const double middle = 0.5 * e.Hessian.Trace();
    const double radius = std::hypot(half, e.Hessian.XY);
    const double first = along(c * e.Gradient[0] + s * e.Gradient[1], middle + radius);
    const double second = along(c * e.Gradient[1] - s * e.Gradient[0], middle - radius);
    return {c * first - s * second, s * first + c * second};
}

double product(const Vector2& x, const Vector2& y) {
    return x[0] * y[0] + x[1] * y[1];
}

}  // namespace wxl::movement_models
