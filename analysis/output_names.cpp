#include "analysis/output_names.h"

#include "platform/runtime_error.h"

#include <algorithm>
#include <map>
#include <optional>

namespace wxl::analysis {
namespace {

using Path = std::filesystem::path;

/// A raster of this name keeps a run from starting, whatever the number of values.
Dataset plain_raster(const Settings& settings, const AnimalFixes& animal) {
    return {DatasetKind::kRaster, settings.Prefix + animal.NamingId};
}

bool is_wanted(const Settings& settings, DatasetKind kind) {
    switch (kind) {
        case DatasetKind::kLines:
            return settings.Isopleths && settings.Lines;
        case DatasetKind::kPolygons:
            return settings.Isopleths && settings.Polygons;
        case DatasetKind::kDonuts:
            return settings.Isopleths && settings.Donuts;
        case DatasetKind::kRaster:
            break;
    }
    return true;
}

bool is_taken(const platform::Services& services, const Path& folder, const std::string& name) {
    return services.Rasters->Exists(folder, name) || services.Files->FolderExists(folder / name) ||
           services.Files->FileExists(folder / name);
}

bool holds(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

std::string shown_name(const AnimalFixes& animal, const std::string& name) {
    return animal.Subfolder.empty() ? name : animal.Subfolder + "/" + name;
}

/// Folders as they were when they were first asked for.
class ListedFolders {
public:
    explicit ListedFolders(const platform::IFileSystem& files) : m_files(files) {}

    const platform::FolderContents& Of(const Path& folder) {
        return m_folders.try_emplace(folder, m_files, folder).first->second;
    }

private:
    const platform::IFileSystem& m_files;
    std::map<Path, platform::FolderContents> m_folders;
};

/// Deletes one dataset where it stands, and side files that stand there without it. `contents` is the folder as it was
/// before.
void delete_dataset(const platform::Services& services, const Path& folder, const platform::FolderContents& contents,
                    const Dataset& dataset, const std::string& format) {
    const bool raster = dataset.Kind == DatasetKind::kRaster;
    if (raster && services.Rasters->Exists(folder, dataset.Name)) services.Rasters->Delete(folder, dataset.Name);
    for (const Path& file : files_of(contents, dataset, format)) {
        const bool isOther = raster && file == platform::RasterPlace(folder, dataset.Name, format);
        if (!isOther && services.Files->FileExists(file)) services.Files->DeleteFile(file, true);
    }
}

}  // namespace

Path file_in_folder(const Path& folder, const char* name) {
    return folder / (name + 1);
}

Path output_folder(const platform::IFolders& folders, const Settings& settings) {
    const Path found = folders.FindIgnoringCase(settings.OutputFolder);
    return found.empty() ? Path(settings.OutputFolder) : found;
}

Path subfolder_in(const Path& folder, const std::string& subfolder) {
    return subfolder.empty() ? folder : folder / subfolder;
}

std::string raster_name(const Settings& settings, const std::string& namingId, std::size_t number) {
    const bool isNumbered = settings.Method == BandwidthMethod::kProportion ||
                            (settings.Method == BandwidthMethod::kManual && settings.Bandwidths.Values.size() > 1);
    return settings.Prefix + namingId + (isNumbered ? "_b" + std::to_string(number) : "");
}

std::string convex_polygon_name(const Settings& settings) {
    return settings.Prefix + "mcp";
}

std::string isopleth_stem(const std::string& rasterName) {
    return rasterName + "_iso";
}

std::string isopleth_name(const std::string& rasterName, DatasetKind kind) {
    const auto entry = std::ranges::find(kIsoplethEndings, kind, &std::pair<DatasetKind, const char*>::first);
    return isopleth_stem(rasterName) + entry->second;
}

std::vector<Dataset> datasets_of(const Settings& settings, const std::string& rasterName) {
    std::vector<Dataset> datasets = {{DatasetKind::kRaster, rasterName}};
    for (const auto& [kind, ending] : kIsoplethEndings)
        if (is_wanted(settings, kind)) datasets.push_back({kind, isopleth_stem(rasterName) + ending});
    return datasets;
}

std::vector<std::vector<Dataset>> datasets_of(const Settings& settings, const AnimalFixes& animal) {
    std::vector<std::vector<Dataset>> datasets;
    const std::size_t count = values_of(settings).size();
    for (std::size_t number = 1; number <= count; ++number) {
        datasets.push_back(datasets_of(settings, raster_name(settings, animal.NamingId, number)));
        for (const Dataset& dataset : datasets.back()) platform::CheckDatasetName(dataset.Name);
    }
    return datasets;
}

std::vector<Path> files_of(const platform::FolderContents& contents, const Dataset& dataset,
                           const std::string& rasterFormat) {
    return dataset.Kind == DatasetKind::kRaster ? contents.Raster(dataset.Name, rasterFormat)
                                                : contents.Shapefile(dataset.Name);
}

std::vector<std::vector<Path>> standing_outputs(const platform::IFileSystem& files, const Settings& settings,
                                                const Path& folder, std::span<const AnimalFixes> animals) {
    std::vector<std::vector<Path>> standing;
    ListedFolders listed(files);
    if (!settings.ConvexPercentages.Values.empty())
        if (auto found = listed.Of(folder).Shapefile(convex_polygon_name(settings)); !found.empty())
            standing.push_back(std::move(found));
    for (const AnimalFixes& animal : animals)
        for (const auto& datasets : datasets_of(settings, animal))
            for (const Dataset& dataset : datasets) {
                auto found =
                    files_of(listed.Of(subfolder_in(folder, animal.Subfolder)), dataset, settings.RasterFormat);
                if (!found.empty()) standing.push_back(std::move(found));
            }
    return standing;
}

std::vector<std::string> taken_names(const platform::Services& services, const Settings& settings, const Path& folder,
                                     std::span<const AnimalFixes> animals) {
    std::vector<std::string> taken;
    for (const AnimalFixes& animal : animals) {
        const Path place = subfolder_in(folder, animal.Subfolder);
        const std::string plain = plain_raster(settings, animal).Name;
        const bool isConflict = services.Rasters->Exists(place, plain);
        if (isConflict) taken.push_back(shown_name(animal, plain));
        for (const auto& datasets : datasets_of(settings, animal)) {
            const std::string& name = datasets.front().Name;
            if (!(isConflict && name == plain) && is_taken(services, place, name))
                taken.push_back(shown_name(animal, name));
        }
    }
    // Of other datasets, and of lone side files, the run would learn when it comes to write them.
    for (const auto& dataset : standing_outputs(*services.Files, settings, folder, animals)) {
        const Path name = dataset.front().lexically_relative(folder);
        if (!holds(taken, name.string()) && !holds(taken, (name.parent_path() / name.stem()).string()))
            taken.push_back(name.string());
    }
    return taken;
}

void delete_outputs(const platform::Services& services, const Settings& settings, const Path& folder,
                    std::span<const AnimalFixes> animals) {
    for (const AnimalFixes& animal : animals) datasets_of(settings, animal);  // a name that cannot be ends it here
    std::string holder;
    const auto lock = services.Locks->Take(folder, holder);
    if (!lock)
        platform::Raise(platform::error_number::kPermissionDenied,
                        "another analysis is writing into the output folder (" + holder +
                            "): nothing was deleted; wait until it has finished, or choose another folder");
    for (const AnimalFixes& animal : animals)
        if (!animal.Subfolder.empty()) platform::RefuseLink(*services.Folders, folder / animal.Subfolder);
    ListedFolders listed(*services.Files);
    if (!settings.ConvexPercentages.Values.empty())
        for (const Path& file : listed.Of(folder).Shapefile(convex_polygon_name(settings)))
            services.Files->DeleteFile(file, true);
    for (const AnimalFixes& animal : animals) {
        const Path place = subfolder_in(folder, animal.Subfolder);
        const platform::FolderContents& contents = listed.Of(place);
        delete_dataset(services, place, contents, plain_raster(settings, animal), settings.RasterFormat);
        for (const auto& datasets : datasets_of(settings, animal))
            for (const Dataset& dataset : datasets)
                delete_dataset(services, place, contents, dataset, settings.RasterFormat);
    }
}

}  // namespace wxl::analysis
