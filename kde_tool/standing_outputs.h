#pragma once
#include "kde_tool/animal_fixes.h"
#include "kde_tool/run_inputs.h"
#include "platform/file_system.h"

#include <filesystem>
#include <span>
#include <string>
#include <vector>

namespace wxl::kde_tool {

/// Where the datasets of a run go.
struct OutputPlace {
    std::filesystem::path Folder;
    std::string RasterFormat;
    std::size_t Values = 1;  ///< distributions of each animal
};

/// What stands under the names of the datasets that a run would write for these animals, in their order: for each
/// dataset of which anything stands its files, be they all of it or lone side files.
std::vector<std::vector<std::filesystem::path>> standing_outputs(const platform::IFileSystem& files,
                                                                 const RunInputs& inputs, const OutputPlace& place,
                                                                 std::span<const AnimalFixes> animals);

}  // namespace wxl::kde_tool
