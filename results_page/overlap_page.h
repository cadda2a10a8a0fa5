#pragma once
#include "platform/file_system.h"
#include "results_page/overlap_run.h"

#include <filesystem>

namespace wxl::results_page {

/// Name of the page in the output folder.
inline constexpr const char* kOverlapPageFile = "WXL_OVERLAP_ANALYSIS.html";

/// Writes the page of a comparison: heat maps, the largest pairs, maps of ranges and common areas, the animals, what
/// each index means. It stands whole under its name or not at all. Where something else has its name, that stays, and
/// an empty path is returned. RuntimeError when the page cannot be written.
std::filesystem::path write_overlap_page(platform::IFileSystem& files, const std::filesystem::path& folder,
                                         const OverlapRun& run);

}  // namespace wxl::results_page
