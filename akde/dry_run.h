#pragma once
#include "akde/range_record.h"

#include <cstddef>
#include <string>
#include <vector>

namespace wxl::akde {

/// What a run would do for one animal.
struct ComingRange {
    platform::FieldValue Id;
    std::size_t Given = 0;  ///< fixes
    std::size_t Used = 0;   ///< of different times
    std::string First;      ///< time of the first of them; "" without one
    std::string Last;
    double Seconds = 0.0;    ///< estimated, on one core of 2020
    double Megabytes = 0.0;  ///< estimated, of fixes, sums and raster
    std::string Raster;      ///< with its sub-folder
    std::string Failure;     ///< why there will be no range; "" where nothing is known against one
};

/// One for each animal, in their order. Nothing is fitted.
std::vector<ComingRange> dry_run(const RangeSettings& settings, const TimedAnimals& animals);

}  // namespace wxl::akde
