#pragma once
// Shapefiles beside which a change stands that was cut short.

#include <filesystem>

namespace wxl::tests {

/// Leaves a change of a shapefile as a killed program does: the .dbf, .shp and .shx of `changed` are its new files. The
/// first `moved` of them stand in their places, the others wait in ".NAME.swap" beside the manifest.
void leave_half_moved(const std::filesystem::path& shapefile, const std::filesystem::path& changed, int moved);

/// The folder in which new files of a shapefile wait.
std::filesystem::path swap_folder_of(const std::filesystem::path& shapefile);

}  // namespace wxl::tests
