#include "apps/cli/writable_places.h"

#include "adapters/disk/disk_file_system.h"
#include "adapters/ogr/ogr_source.h"
#include "apps/cli/commands/kde_defaults.h"
#include "kde_tool/settings_file.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <filesystem>

namespace wxl::cli {

namespace {

namespace fs = std::filesystem;
using files::WritablePlaces;

void add_text_file(WritablePlaces& places, const std::string& file) {
    if (!file.empty()) places.FolderOf(file);
}

/// The output folders that a settings file names; it is read in earnest later. Its lines are upper-cased when it is
/// loaded, so that a folder is found by its name in any case.
std::vector<fs::path> folders_of_settings(const std::string& file) {
    std::string bytes;
    try {
        if (fs::is_regular_file(file)) bytes = files::DiskFileSystem().ReadFile(file, kde_tool::kSettingsFileLimit);
    } catch (const platform::RuntimeError&) {
        return {};
    }
    for (char& c : bytes)
        if (c == '\r') c = '\n';
    std::vector<fs::path> folders;
    bool isFolder = false;
    for (const std::string& line : platform::Split(platform::FromWindows1252(bytes), '\n')) {
        if (line.empty()) continue;
        if (isFolder)
            if (const auto folder = files::DiskFolders().FindIgnoringCase(line); !folder.empty())
                folders.push_back(folder);
        isFolder = platform::EqualNoCase(line, "[OUTFOLDER]");
    }
    return folders;
}

/// The folder of a dataset that is changed in place.
WritablePlaces beside(const InputOptions& points) {
    WritablePlaces places;
    std::error_code ignored;
    const fs::path path = files::split_input(points.Input, sources_of(points.AllowIndirect)).first;
    if (!fs::exists(path, ignored)) return places;
    const fs::path real = fs::canonical(path);
    return fs::is_directory(real) ? places.Folder(real) : places.FolderOf(real);
}

}  // namespace

Fence fence_of(const AkdeOptions& options) {
    if (options.DryRun) return WritablePlaces();
    WritablePlaces places = WritablePlaces().Folder(options.Out);
    return options.Jobs > 1 ? places.Programs() : places;
}

Fence fence_of(const BatchPlanAkdeOptions& options) {
    return fence_of(options.Run);
}

Fence fence_of(const ImportOptions& options) {
    WritablePlaces places;
    if (!options.Files.empty()) places.FolderOf(options.Files.back());
    add_text_file(places, options.Rejected);
    return places;
}

Fence fence_of(const InfoOptions&) {
    return WritablePlaces();
}

Fence fence_of(const KdeOptions& given) {
    const KdeOptions options = completed(given);
    WritablePlaces places;
    if (options.Out) places.Folder(*options.Out);
    if (!options.Out && !options.Settings.empty())
        for (const fs::path& folder : folders_of_settings(options.Settings)) places.Folder(folder);
    add_text_file(places, options.SaveSettings);
    if (options.DryRun) return WritablePlaces();
    return options.Jobs > 1 ? places.Programs() : places;
}

Fence fence_of(const BatchPlanOptions& options) {
    return fence_of(options.Run);
}

Fence fence_of(const BatchRunOptions& options) {
    return WritablePlaces().Folder(options.Folder);
}

Fence fence_of(const BatchMergeOptions& options) {
    return WritablePlaces().Folder(options.Folder);
}

/// Whether a task is at work is found out by its lock.
Fence fence_of(const BatchStatusOptions& options) {
    return WritablePlaces().Folder(options.Folder);
}

/// sbatch belongs to the cluster and writes where its owner has it write.
Fence fence_of(const BatchSubmitOptions& options) {
    if (options.Engine == "slurm" && !options.DryRun) return std::nullopt;
    WritablePlaces places = WritablePlaces().Folder(options.Folder);
    return options.Engine == "slurm" ? places : places.Programs();
}

Fence fence_of(const BandwidthOptions& options) {
    WritablePlaces places;
    add_text_file(places, options.Profile);
    add_text_file(places, options.Plot);
    return places;
}

Fence fence_of(const StatsOptions& options) {
    WritablePlaces places;
    add_text_file(places, options.Csv);
    return places;
}

Fence fence_of(const OverlapOptions& options) {
    WritablePlaces places;
    add_text_file(places, options.Csv);
    if (!options.Out.empty()) places.Folder(options.Out);
    return places;
}

/// Whether a task is at work is found out by its lock.
Fence fence_of(const BatchOverlapOptions& options) {
    WritablePlaces places;
    places.Folder(options.Overlap.Tracks.Points.Input);
    add_text_file(places, options.Overlap.Csv);
    if (!options.Overlap.Out.empty()) places.Folder(options.Overlap.Out);
    return places;
}

Fence fence_of(const McpOptions& options) {
    WritablePlaces places;
    add_text_file(places, options.Csv);
    add_text_file(places, options.Out);
    return places;
}

Fence fence_of(const CurveOptions& options) {
    WritablePlaces places;
    add_text_file(places, options.Csv);
    add_text_file(places, options.Plot);
    return places;
}

Fence fence_of(const IsoplethOptions& options) {
    return WritablePlaces().Folder(options.Out);
}

Fence fence_of(const ObsFieldsOptions& options) {
    return beside(options.Points);
}

Fence fence_of(const RemoveDuplicatesOptions& options) {
    return beside(options.Points);
}

Fence fence_of(const TrackOptions& options) {
    return WritablePlaces().FolderOf(options.Output);
}

Fence fence_of(const ModelsOptions& options) {
    WritablePlaces places;
    add_text_file(places, options.Csv);
    if (!options.Plot.empty()) places.Folder(options.Plot);
    return places;
}

Fence fence_of(const ManOptions& options) {
    return options.Folder.empty() ? WritablePlaces() : WritablePlaces().Folder(options.Folder);
}

Fence fence_of(const CompletionOptions&) {
    return WritablePlaces();
}

}  // namespace wxl::cli
