#pragma once
#include "movement_models/fit.h"
#include "movement_models/variogram.h"
#include "pictures/variogram_picture.h"

#include <optional>
#include <string>
#include <vector>

namespace wxl::akde {

/// A variogram to be shown.
struct VariogramView {
    std::string Title;
    std::vector<movement_models::VariogramPoint> Points;
    double Duration = 0.0;                               ///< of the record, seconds
    std::optional<movement_models::FittedModel> Chosen;  ///< the model whose curve is drawn
    bool Metres = false;                                 ///< map units are
};

/// Lags in hours, of long records in days; areas in square kilometres where that can be told.
pictures::VariogramPicture variogram_picture_of(const VariogramView& view);

}  // namespace wxl::akde
