#pragma once
#include "platform/runtime_error.h"

#include <filesystem>
#include <gdal_priv.h>
#include <string>

namespace wxl::files {

/// What may be opened as a source of data.
enum class Sources {
    kPlain,  ///< files and folders of this machine that hold the data themselves
    kAny     ///< whatever GDAL opens: archives, addresses, databases, virtual datasets, pipes
};

/// A source that Sources::kPlain rules out: RuntimeError 5 whose description says what it is.
class IndirectSource : public platform::RuntimeError {
public:
    IndirectSource(const std::string& description, std::string advice)
        : RuntimeError(platform::error_number::kInvalidCall, description), Advice(std::move(advice)) {}

    std::string Advice;  ///< what to name instead
};

/// The advice of most refusals.
inline constexpr const char* kNameTheFile = "name the file that holds them";

/// What is read of a dataset.
enum class DataKind { kVector, kRaster };

/// Whether its name says that a file is an Excel or OpenDocument workbook of today.
bool has_ending_of_workbook(const std::filesystem::path& file);

/// IndirectSource when `path` is an address, an archive, a pipe or a device; RuntimeError 53 or 76 when nothing stands
/// there. Nothing but the first bytes of the file is read.
void CheckPlainFile(const std::filesystem::path& path);

/// The same for a dataset of several files: none of those beside it that bear its name, and none in its folder when it
/// is one, may be a pipe or a device.
void CheckPlain(const std::filesystem::path& path);

/// Names of the formats that hold their data themselves, as GDAL's list of allowed drivers; null for kAny.
const char* const* AllowedDrivers(Sources sources, DataKind kind);

/// Throws IndirectSource when the file is of a format that plain sources do not have. Opens nothing but the file.
void CheckFormat(const std::filesystem::path& path, DataKind kind);

/// Throws IndirectSource when PROJ asked for a grid elsewhere since the last call, which a coordinate system named. For
/// the dataset that was read meanwhile.
void CheckGrids(const std::filesystem::path& path);

/// Whether data may be fetched from other machines, by any part of GDAL, in this whole process. For a program of its
/// own, not for a plugin.
void SetDownloadsAllowed(bool allowed);

}  // namespace wxl::files
