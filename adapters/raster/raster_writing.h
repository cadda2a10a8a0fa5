#pragma once
// What the raster writers have in common.

#include "platform/file_system.h"
#include "platform/rasters.h"
#include "platform/runtime_error.h"

#include <filesystem>
#include <string>

namespace wxl::files {

/// RuntimeError 76 when `folder` is missing, 5 for a bad definition, 58 when the name is taken.
void check_new_raster(const platform::IFileSystem& files, const std::filesystem::path& folder,
                      const platform::RasterDefinition& definition);

/// RuntimeError 58 when anything stands where the raster will, or beside it as a side file of its name.
void refuse_taken_raster(const platform::IFileSystem& files, const std::filesystem::path& folder,
                         const platform::RasterDefinition& definition);

/// Removes the cached statistics that a reader left beside the raster at `place`, which goes.
void remove_side_file(platform::IFileSystem& files, const std::filesystem::path& place);

/// Throws RuntimeError 5: Publish was called before every row was written, or again.
[[noreturn]] void raise_unfinished(const std::string& name);

/// Runs `step`; a failure in it tells which raster could not be written, beside the file that it names.
template <class Step>
void naming_raster(const std::string& name, Step&& step) {
    try {
        step();
    } catch (...) {
        const platform::RuntimeError error = platform::CurrentError();
        platform::Raise(error.Number, "The raster \"" + name + "\" could not be written. " + error.Description);
    }
}

}  // namespace wxl::files
