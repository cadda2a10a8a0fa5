#pragma once
#include "results_page/range_page.h"

#include <cstddef>
#include <string>

namespace wxl::results_page {

/// The section of one animal as HTML: verdict, map, areas, figures, models, variogram. The raster is read from the
/// run's folder; one that cannot be read leaves a line in the place of its map.
/// @param number of the record in the run, from 0
std::string range_section(const RangePageRun& run, std::size_t number, const PictureSize& size,
                          const platform::Services& services);

/// "OU isotropic"; "" where there is no model.
std::string model_text(const akde::RangeRecord& record);

/// A time of autocorrelation: "5.2 h"; "" where the model has none.
std::string time_text(double seconds);

}  // namespace wxl::results_page
