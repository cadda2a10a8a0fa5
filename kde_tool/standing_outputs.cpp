#include "kde_tool/standing_outputs.h"

#include "kde_tool/run_plan.h"
#include "platform/dataset_files.h"

#include <optional>
#include <utility>

namespace wxl::kde_tool {

std::vector<std::vector<std::filesystem::path>> standing_outputs(const platform::IFileSystem& files,
                                                                 const RunInputs& inputs, const OutputPlace& place,
                                                                 std::span<const AnimalFixes> animals) {
    std::vector<std::vector<std::filesystem::path>> standing;
    const auto add = [&](std::vector<std::filesystem::path> dataset) {
        if (!dataset.empty()) standing.push_back(std::move(dataset));
    };
    std::optional<platform::FolderContents> contents;
    std::string subfolder;
    for (const AnimalFixes& animal : animals) {
        // Animals of one folder follow one another: it is listed once.
        if (!contents || animal.Subfolder != subfolder)
            contents.emplace(files, animal.Subfolder.empty() ? place.Folder : place.Folder / animal.Subfolder);
        subfolder = animal.Subfolder;
        for (std::size_t number = 1; number <= place.Values; ++number) {
            const auto names = dataset_names(inputs, raster_name(inputs, animal.NamingId, number, place.Values));
            add(contents->Raster(names.front(), place.RasterFormat));
            for (std::size_t i = 1; i < names.size(); ++i) add(contents->Shapefile(names[i]));
        }
    }
    return standing;
}

}  // namespace wxl::kde_tool
