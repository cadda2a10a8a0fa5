#pragma once
// The names of what a run writes, and what stands under them already.

#include "analysis/animal_fixes.h"
#include "analysis/settings.h"
#include "platform/dataset_files.h"
#include "platform/services.h"

#include <array>
#include <filesystem>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace wxl::analysis {

/// Names of the two text files of a run, joined to the output folder as files in it.
inline constexpr const char* kReportFile = "\\WXL_KDE_ANALYSIS.txt";
inline constexpr const char* kSettingsRecordFile = "\\WXL_KERNEL_SETTINGS.txt";

/// "\NAME" in `folder`, with the system's separator.
std::filesystem::path file_in_folder(const std::filesystem::path& folder, const char* name);

/// The output folder on disk: the folder of that name, or one that differs from it only in case (a loaded folder is in
/// capitals); as it stands when there is none.
std::filesystem::path output_folder(const platform::IFolders& folders, const Settings& settings);

/// Where the datasets of the animals of a sub-folder stand; the output folder itself for an empty one.
std::filesystem::path subfolder_in(const std::filesystem::path& folder, const std::string& subfolder);

/// What a run makes of one animal and one value.
enum class DatasetKind { kRaster, kLines, kPolygons, kDonuts };

struct Dataset {
    DatasetKind Kind = DatasetKind::kRaster;
    std::string Name;  ///< without an extension
    friend bool operator==(const Dataset&, const Dataset&) = default;
};

/// Name of the shapefile of all animals' minimum convex polygons, before its extension.
std::string convex_polygon_name(const Settings& settings);

/// What stands behind the isopleth name of a raster in the names of its shapefiles.
inline constexpr std::array<std::pair<DatasetKind, const char*>, 3> kIsoplethEndings = {
    {{DatasetKind::kLines, "_line"}, {DatasetKind::kPolygons, "_poly"}, {DatasetKind::kDonuts, "_donut"}}};

/// Prefix + naming ID, followed by "_b" and `number` (from 1) for proportions, and for lists of two or more bandwidths.
std::string raster_name(const Settings& settings, const std::string& namingId, std::size_t number);

/// Name of the isopleth datasets of a raster, before kIsoplethEndings.
std::string isopleth_stem(const std::string& rasterName);

/// Name of an isopleth dataset of a raster.
std::string isopleth_name(const std::string& rasterName, DatasetKind kind);

/// The datasets of one animal and one value: the raster, then the isopleths asked for.
std::vector<Dataset> datasets_of(const Settings& settings, const std::string& rasterName);

/// The same for every value, in their order. RuntimeError 5 for a name that no dataset can have.
std::vector<std::vector<Dataset>> datasets_of(const Settings& settings, const AnimalFixes& animal);

/// What of a dataset stands in a folder, be it all of it or lone side files.
std::vector<std::filesystem::path> files_of(const platform::FolderContents& contents, const Dataset& dataset,
                                            const std::string& rasterFormat);

/// What stands in the output folder under the names of the datasets that a run would write for these animals, in their
/// order: for each dataset of which anything stands its files.
std::vector<std::vector<std::filesystem::path>> standing_outputs(const platform::IFileSystem& files,
                                                                 const Settings& settings,
                                                                 const std::filesystem::path& folder,
                                                                 std::span<const AnimalFixes> animals);

/// What in the output folder keeps a run from starting, each with its sub-folder before it: rasters named prefix and
/// naming ID, the shapefile of the minimum convex polygons, and whatever stands under a name that the run is to give,
/// lone side files among them.
std::vector<std::string> taken_names(const platform::Services& services, const Settings& settings,
                                     const std::filesystem::path& folder, std::span<const AnimalFixes> animals);

/// Deletes what stands in the output folder under the names that a run would give, so that it meets no naming conflict.
/// Nothing outside the folder; RuntimeError 70, and nothing deleted, while another run is at work in it.
void delete_outputs(const platform::Services& services, const Settings& settings, const std::filesystem::path& folder,
                    std::span<const AnimalFixes> animals);

}  // namespace wxl::analysis
