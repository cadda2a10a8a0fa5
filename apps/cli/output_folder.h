#pragma once
#include <filesystem>

namespace wxl::cli {

/// Makes the folder of --out, and those above it, unless it is there. RuntimeError 76 when it cannot be made.
void make_output_folder(const std::filesystem::path& folder);

}  // namespace wxl::cli
