#pragma once

namespace wxl::movement_models {

/// The value below which a chi-square variable with `degrees` > 0 degrees of freedom (any number, not only a whole one)
/// falls with this probability, above 0 and below 1. Relative error about 1e-13.
double chi_square_quantile(double probability, double degrees);

}  // namespace wxl::movement_models
