#pragma once
// Functions of one or two time scales to second order, and the small linear algebra that a fit needs of them.

#include "movement_models/models.h"
#include "movement_models/taylor.h"

#include <array>
#include <cstddef>
#include <optional>

namespace wxl::movement_models {

/// Gradient or step; a function of one scale leaves the second number 0.
using Vector2 = std::array<double, 2>;

/// Value, gradient and Hessian of a function of `Count` variables (0, 1 or 2).
struct Expansion {
    std::size_t Count = 0;
    double Value = 0.0;
    Vector2 Gradient{};
    Matrix2 Hessian{};  ///< of one variable only XX
};

Expansion expansion_of(const Taylor<1>& t);
Expansion expansion_of(const Taylor<2>& t);

/// The same function of tau, given it as a function of ln tau.
Expansion in_linear_scales(const Expansion& logarithmic, const TimeScales& scales);

/// Whether a matrix of `count` variables has positive eigenvalues only. One without variables has none.
bool is_positive_definite(const Matrix2& matrix, std::size_t count);

/// Solution of matrix x = right; nothing where the matrix is not positive definite.
std::optional<Vector2> solved(const Matrix2& matrix, const Vector2& right, std::size_t count);

/// The step from here down to the minimum of the second-order form. Where that is none, its curvatures are taken as
/// positive, so that the step goes downhill.
Vector2 downhill_step(const Expansion& expansion);

/// x'y.
double product(const Vector2& x, const Vector2& y);

}  // namespace wxl::movement_models
