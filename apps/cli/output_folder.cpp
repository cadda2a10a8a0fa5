#include "apps/cli/output_folder.h"

#include "platform/runtime_error.h"

namespace wxl::cli {

void make_output_folder(const std::filesystem::path& folder) {
    std::error_code failure;
    std::filesystem::create_directories(folder, failure);
    if (!std::filesystem::is_directory(folder, failure))
        platform::Raise(platform::error_number::kPathNotFound,
                        folder.string() + ": this folder cannot be made; choose another by --out");
}

}  // namespace wxl::cli
