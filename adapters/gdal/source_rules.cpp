#include "adapters/gdal/source_rules.h"

#include "adapters/disk/posix_error.h"
#include "adapters/gdal/gdal_support.h"
#include "adapters/gdal/grid_fence.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cpl_conv.h>
#include <cpl_http.h>
#include <cstring>
#include <fstream>
#include <string_view>
#include <sys/stat.h>

namespace wxl::files {

namespace fs = std::filesystem;

namespace {

// One file or folder each (with side files of its name), read without fetching or opening anything that it mentions.
constexpr std::array<const char*, 10> kVectorDrivers = {
    "ESRI Shapefile", "GPKG", "GeoJSON", "GeoJSONSeq", "FlatGeobuf", "CSV", "GPX", "KML", "OpenFileGDB", nullptr};
constexpr std::array<const char*, 10> kRasterDrivers = {"AIG",  "GTiff", "AAIGrid", "EHdr",  "SAGA",
                                                        "ENVI", "GSAG",  "GSBG",    "GS7BG", nullptr};

constexpr std::array<std::string_view, 12> kRedirectors = {"OGR_VRT", "VRT", "WFS", "OAPIF", "OGCAPI", "WMS",
                                                           "WMTS",    "WCS", "CSW", "GMLAS", "HTTP",   "EEDAI"};

bool begins_with(std::string_view text, std::string_view start) {
    return text.substr(0, start.size()) == start;
}

/// Whether GDAL would take the text for an address or the data themselves, and not for a path.
bool is_address(const std::string& text) {
    if (begins_with(text, "/vsi") || begins_with(text, "<") || begins_with(text, "{")) return true;
    if (text.find("://") != std::string::npos) return true;
    const std::size_t colon = text.find(':');
    if (colon == std::string::npos || colon < 2) return false;
    const std::string prefix = text.substr(0, colon);
    RegisterGdal();
    for (int i = 0; i < GetGDALDriverManager()->GetDriverCount(); ++i) {
        GDALDriver& driver = *GetGDALDriverManager()->GetDriver(i);
        const char* connection = driver.GetMetadataItem(GDAL_DMD_CONNECTION_PREFIX);
        if (platform::EqualNoCase(driver.GetDescription(), prefix) ||
            (connection != nullptr && platform::EqualNoCase(connection, prefix + ":")))
            return true;
    }
    return platform::EqualNoCase(prefix, "GTIFF_DIR") || platform::EqualNoCase(prefix, "http");
}

/// Neither file nor folder: a pipe, a device, a socket. False for what is not there.
bool is_special(const fs::path& path) {
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode);
}

void refuse_special(const fs::path& path) {
    if (is_special(path))
        throw IndirectSource(path.string() + " is a pipe or a device and no file", "copy its data into a file");
}

/// The files of a dataset that are read beside the one that was named.
void refuse_special_companions(const fs::path& path) {
    std::error_code ignored;
    const bool isFolder = fs::is_directory(path, ignored);
    const fs::path folder = isFolder ? path : path.has_parent_path() ? path.parent_path() : fs::path(".");
    const std::string start = isFolder ? "" : path.stem().string() + ".";
    for (const auto& entry : fs::directory_iterator(folder, ignored))
        if (begins_with(entry.path().filename().string(), start)) refuse_special(entry.path());
    if (isFolder) refuse_special(path.string() + ".aux.xml");
}

/// Up to four.
std::string first_bytes(const fs::path& file) {
    std::ifstream source(file, std::ios::binary);
    std::array<char, 4> start{};
    source.read(start.data(), start.size());
    return {start.data(), static_cast<std::size_t>(source.gcount())};
}

/// Workbooks are archives, too.
void refuse_archive(const fs::path& file) {
    const std::string magic = first_bytes(file);
    if (magic == "PK\x03\x04" && has_ending_of_workbook(file))
        throw IndirectSource(file.string() + " is a workbook",
                             "make a layer of it by wxl import, or save its table as CSV (in a spreadsheet: Save as, "
                             "CSV UTF-8) and import that");
    if (magic == "PK\x03\x04" || begins_with(magic, "\x1F\x8B"))
        throw IndirectSource(file.string() + " is an archive", "unpack it and name the file in it");
}

void refuse_old_workbook(const fs::path& file) {
    if (first_bytes(file) == "\xD0\xCF\x11\xE0")
        platform::Raise(platform::error_number::kTypeMismatch,
                        file.string() +
                            " is an old Excel workbook or Word document: save the table as CSV (in a "
                            "spreadsheet: Save as, CSV UTF-8), and import that");
}

/// Whether a driver knows the file by its first bytes or its name, without opening it.
bool knows(const GDALDriver* driver, GDALOpenInfo& info) {
    return driver != nullptr && driver->pfnIdentify != nullptr && driver->pfnIdentify(&info) > 0;
}

/// The driver that would open the file, were it allowed; null when one of the allowed ones knows it, or none does.
GDALDriver* refused_driver(const fs::path& path, DataKind kind) {
    const bool vector = kind == DataKind::kVector;
    GDALDriverManager& drivers = *GetGDALDriverManager();
    GDALOpenInfo info(path.c_str(), (vector ? GDAL_OF_VECTOR : GDAL_OF_RASTER) | GDAL_OF_READONLY);
    for (const char* const* name = AllowedDrivers(Sources::kPlain, kind); *name != nullptr; ++name)
        if (knows(drivers.GetDriverByName(*name), info)) return nullptr;
    for (int i = 0; i < drivers.GetDriverCount(); ++i) {
        GDALDriver* driver = drivers.GetDriver(i);
        const bool suits = driver->GetMetadataItem(vector ? GDAL_DCAP_VECTOR : GDAL_DCAP_RASTER) != nullptr;
        if (suits && knows(driver, info)) return driver;
    }
    return nullptr;
}

CPLHTTPResult* refuse_download(const char*, CSLConstList, GDALProgressFunc, void*, CPLHTTPFetchWriteFunc, void*,
                               void*) {
    auto* result = static_cast<CPLHTTPResult*>(CPLCalloc(1, sizeof(CPLHTTPResult)));
    result->nStatus = 1;
    result->pszErrBuf = CPLStrdup("downloads are not allowed");
    return result;
}

}  // namespace

void CheckPlainFile(const fs::path& path) {
    const std::string text = path.string();
    struct stat status = {};
    const bool there = ::stat(path.c_str(), &status) == 0;
    const int code = errno;
    if (begins_with(text, "/vsi") || (!there && is_address(text)))
        throw IndirectSource(text + " leads to data elsewhere", kNameTheFile);
    if (!there) RaiseErrno(code, path);
    refuse_special(path);
    if (S_ISREG(status.st_mode)) refuse_archive(path);
}

bool has_ending_of_workbook(const fs::path& file) {
    const std::string ending = platform::UpperCase(file.extension().string());
    return ending == ".XLSX" || ending == ".XLSM" || ending == ".ODS";
}

void CheckPlain(const fs::path& path) {
    CheckPlainFile(path);
    refuse_old_workbook(path);
    refuse_special_companions(path);
}

const char* const* AllowedDrivers(Sources sources, DataKind kind) {
    if (sources == Sources::kAny) return nullptr;
    return kind == DataKind::kVector ? kVectorDrivers.data() : kRasterDrivers.data();
}

void CheckFormat(const fs::path& path, DataKind kind) {
    RegisterGdal();
    const GdalErrors quiet;
    const GDALDriver* driver = refused_driver(path, kind);
    if (driver == nullptr) return;
    const std::string name = driver->GetDescription();
    if (std::find(kRedirectors.begin(), kRedirectors.end(), name) != kRedirectors.end())
        throw IndirectSource(path.string() + " leads to data elsewhere", kNameTheFile);
    throw IndirectSource(
        path.string() + " is of a format (" + name + ") that may lead to data elsewhere",
        kind == DataKind::kVector ? "convert it to a shapefile or GeoPackage" : "convert it to a GeoTIFF");
}

void CheckGrids(const fs::path& path) {
    if (const std::string grid = TakeRefusedGrid(); !grid.empty())
        throw IndirectSource(path.string() + " has a coordinate system that needs another file (" + grid + ")",
                             "take that file out of the coordinate system");
}

void SetDownloadsAllowed(bool allowed) {
    CPLHTTPSetFetchCallback(allowed ? nullptr : refuse_download, nullptr);
}

}  // namespace wxl::files
