#include "adapters/ogr/stored_name.h"

#include "adapters/gdal/gdal_support.h"
#include "adapters/shapefile/shapefile_parts.h"

#include <fstream>
#include <string>
#include <string_view>

namespace wxl::files {
namespace {

/// The first text in quotes of a well-known text: the name of the whole system.
std::string first_name(std::string_view wkt) {
    const std::size_t begin = wkt.find('"');
    if (begin == std::string_view::npos) return {};
    const std::size_t end = wkt.find('"', begin + 1);
    return end == std::string_view::npos ? std::string() : std::string(wkt.substr(begin + 1, end - begin - 1));
}

std::string head_of(const std::filesystem::path& file) {
    constexpr std::size_t kEnough = 4096;
    std::string head(kEnough, '\0');
    std::ifstream stream(file, std::ios::binary);
    stream.read(head.data(), static_cast<std::streamsize>(head.size()));
    head.resize(static_cast<std::size_t>(stream.gcount()));
    return head;
}

}  // namespace

platform::SpatialReference NamedAsStored(platform::SpatialReference reference, const std::filesystem::path& shapefile) {
    if (reference.Wkt.empty()) return reference;
    const std::string stored = first_name(head_of(part_of(shapefile, "prj")));
    if (stored.empty() || stored == first_name(ProjectionFileText(reference))) return reference;
    reference.Name = stored;
    return reference;
}

}  // namespace wxl::files
