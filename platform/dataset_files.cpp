#include "platform/dataset_files.h"

#include "platform/text.h"

#include <array>
#include <utility>

namespace wxl::platform {
namespace {

constexpr std::array<std::string_view, 16> kShapefileParts = {".shp", ".shx", ".dbf", ".prj",    ".cpg", ".qpj",
                                                              ".qix", ".sbn", ".sbx", ".fbn",    ".fbx", ".idm",
                                                              ".ind", ".ain", ".aih", ".shp.xml"};
constexpr std::array<std::string_view, 5> kWrittenParts = {".shp", ".shx", ".dbf", ".prj", ".cpg"};
constexpr std::array<std::string_view, 4> kRasterParts = {"", ".aux.xml", ".ovr", ".msk"};

std::string small(std::string_view text) {
    std::string result(text);
    for (char& c : result)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return result;
}

/// The name with its extension in small letters, with both of them where it ends in ".shp.xml".
std::string key_of(const std::string& name) {
    constexpr std::string_view kDescription = ".shp.xml";
    std::size_t point = name.rfind('.');
    if (point == std::string::npos) return name;
    if (name.size() > kDescription.size() && small(name.substr(name.size() - kDescription.size())) == kDescription)
        point = name.size() - kDescription.size();
    return name.substr(0, point) + small(name.substr(point));
}

}  // namespace

FolderContents::FolderContents(const IFileSystem& files, std::filesystem::path folder) : m_folder(std::move(folder)) {
    for (const std::string& name : files.List(m_folder.empty() ? "." : m_folder)) m_names.emplace(key_of(name), name);
}

std::vector<std::filesystem::path> FolderContents::Shapefile(const std::string& name) const {
    std::vector<std::filesystem::path> standing;
    for (const std::string_view part : kShapefileParts) {
        const auto [first, last] = m_names.equal_range(name + std::string(part));
        for (auto entry = first; entry != last; ++entry) standing.push_back(m_folder / entry->second);
    }
    return standing;
}

std::vector<std::filesystem::path> FolderContents::Raster(const std::string& name, const std::string& format) const {
    std::vector<std::filesystem::path> standing;
    for (const std::filesystem::path& part : RasterParts({}, name, format)) {
        const auto [first, last] = m_names.equal_range(key_of(part.string()));
        for (auto entry = first; entry != last; ++entry)
            if (entry->second == part) standing.push_back(m_folder / part);
    }
    return standing;
}

std::vector<std::filesystem::path> NewShapefileParts(const std::filesystem::path& folder, const std::string& name) {
    std::vector<std::filesystem::path> parts;
    for (const std::string_view part : kWrittenParts) parts.push_back(folder / (name + std::string(part)));
    return parts;
}

std::vector<std::filesystem::path> RasterParts(const std::filesystem::path& folder, const std::string& name,
                                               const std::string& format) {
    std::vector<std::filesystem::path> parts;
    for (const std::string_view part : kRasterParts)
        parts.emplace_back(RasterPlace(folder, name, format).string() + std::string(part));
    return parts;
}

std::filesystem::path RasterPlace(const std::filesystem::path& folder, const std::string& name,
                                  const std::string& format) {
    return folder / (format == "GTiff" ? name + ".tif" : name);
}

}  // namespace wxl::platform
