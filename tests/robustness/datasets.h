#pragma once
// What stands in an output folder under final names.

#include <filesystem>
#include <map>
#include <string>

namespace wxl::tests {

using Files = std::map<std::string, std::string>;  ///< bytes by path in the folder

/// Files of datasets with a final name: all files of a GRID folder, and of a shapefile as soon as its .shp stands.
/// Reports as well, without their times.
Files datasets_in(const std::filesystem::path& folder);

/// The dataset that a file belongs to: its GRID folder, or its name without extension.
std::string dataset_name(const std::string& file);

std::map<std::string, Files> by_dataset(const Files& files);

}  // namespace wxl::tests
