#include "adapters/gdal/gdal_support.h"

#include "adapters/disk/disk_output_file.h"
#include "adapters/disk/posix_error.h"
#include "adapters/gdal/plain_words.h"
#include "platform/file_system.h"
#include "platform/runtime_error.h"

#include <array>
#include <cerrno>
#include <cpl_conv.h>
#include <cpl_error.h>
#include <cpl_string.h>
#include <cstddef>
#include <map>
#include <new>
#include <unistd.h>

namespace wxl::files {

namespace error_number = platform::error_number;

namespace {

/// The number of the error that writing into `folder` meets now; 57 when it meets none.
std::int32_t write_obstacle(const std::filesystem::path& folder) {
    const auto probe = folder / platform::TemporaryName("probe");
    std::int32_t number = error_number::kDeviceIo;
    try {
        DiskOutputFile file(probe, platform::WriteMode::kReplace);
        file.Write(std::string(1 << 20, ' '));
        file.Close();
    } catch (const platform::RuntimeError& error) {
        number = error.Number;
    }
    ::unlink(probe.c_str());
    return number;
}

void (*g_shortageAction)() = nullptr;
bool (*g_shortageSeen)() = nullptr;

void act_on_shortage(CPLErr severity, CPLErrorNum number) {
    // The number of a shortage in which GDAL cannot even make its message is that of anything else.
    const bool isShortage = number == CPLE_OutOfMemory || number == CPLE_AppDefined;
    if (severity == CE_Fatal && isShortage && g_shortageAction != nullptr) g_shortageAction();
}

void CPL_STDCALL receive_unwatched(CPLErr severity, CPLErrorNum number, const char* message) {
    act_on_shortage(severity, number);
    CPLDefaultErrorHandler(severity, number, message);
}

std::string take_text(char* text) {
    std::string copy = text == nullptr ? "" : text;
    CPLFree(text);
    return copy;
}

std::string wkt_in(const OGRSpatialReference& reference, const char* dialect) {
    const std::string format = std::string("FORMAT=") + dialect;
    const std::array<const char*, 2> options = {format.c_str(), nullptr};
    char* text = nullptr;
    const bool done = reference.exportToWkt(&text, options.data()) == OGRERR_NONE;
    const std::string wkt = take_text(text);
    // Without memory for its database PROJ still tells a system, by other names.
    if (g_shortageSeen != nullptr && g_shortageSeen()) throw std::bad_alloc();
    return done ? wkt : std::string();
}

}  // namespace

void RegisterGdal() {
    // A driver that cannot be allocated is used all the same by GDAL; registering takes less than 2 MB.
    constexpr std::size_t kRegistrationBytes = 4 << 20;
    [[maybe_unused]] static const bool registered = [] {
        ::operator delete(::operator new(kRegistrationBytes));
        GDALAllRegister();
        return true;
    }();
}

void LimitGdal() {
    constexpr GIntBig kCacheBytes = 64 << 20;
    if (CPLGetConfigOption("GDAL_CACHEMAX", nullptr) == nullptr) GDALSetCacheMax64(kCacheBytes);
    // One feature of a GeoJSON file, in MB.
    if (CPLGetConfigOption("OGR_GEOJSON_MAX_OBJ_SIZE", nullptr) == nullptr)
        CPLSetConfigOption("OGR_GEOJSON_MAX_OBJ_SIZE", "16");
}

void SetShortageAction(void (*action)(), bool (*seen)()) {
    g_shortageAction = action;
    g_shortageSeen = seen;
    CPLSetErrorHandler(receive_unwatched);
}

GdalErrors::GdalErrors() {
    CPLPushErrorHandlerEx(&GdalErrors::Receive, this);
}

GdalErrors::~GdalErrors() {
    CPLPopErrorHandler();
    // The failure was dealt with here; nobody should meet it again.
    CPLErrorReset();
}

void GdalErrors::Receive(CPLErr severity, CPLErrorNum number, const char* message) {
    act_on_shortage(severity, number);
    auto& self = *static_cast<GdalErrors*>(CPLGetErrorHandlerUserData());
    if (severity < CE_Failure || self.m_failed) return;
    self.m_failed = true;
    self.m_text = plain_words(message == nullptr ? "" : message);
}

void GdalErrors::Clear() {
    m_failed = false;
    m_text.clear();
    CPLErrorReset();
}

void GdalErrors::RaiseReading(const std::filesystem::path& path) const {
    if (::access(path.c_str(), R_OK) != 0) RaiseErrno(errno, path);
    platform::Raise(error_number::kDeviceIo, path.string() + " could not be read" +
                                                 (m_text.empty() ? std::string(": unknown format") : ": " + m_text));
}

void GdalErrors::RaiseWriting(const std::string& what, const std::filesystem::path& folder) const {
    const std::int32_t number = write_obstacle(folder);
    const bool foreign = number == error_number::kDeviceIo;
    const std::string reason = foreign && !m_text.empty() ? m_text : platform::DescriptionOf(number);
    platform::Raise(number, what + " could not be written to " + folder.string() + ": " + reason);
}

void GdalDatasetCloser::operator()(GDALDataset* dataset) const {
    GDALClose(GDALDataset::ToHandle(dataset));
}

std::vector<std::filesystem::path> files_of(GDALDataset& dataset) {
    std::vector<std::filesystem::path> files;
    char** names = dataset.GetFileList();
    for (char** name = names; name != nullptr && *name != nullptr; ++name) files.emplace_back(*name);
    CSLDestroy(names);
    return files;
}

bool CloseChecked(GdalDatasetPtr dataset, const GdalErrors& errors) {
    dataset->FlushCache(false);
    dataset.reset();
    return !errors.Failed();
}

namespace {

/// What no code and no text stands for; another fault where PROJ can look up none at all.
[[noreturn]] void raise_unknown_system(const std::string& text) {
    if (OGRSpatialReference().importFromEPSG(4326) == OGRERR_NONE)
        platform::Raise(error_number::kInvalidCall, "Not a coordinate system: " + text);
    platform::Raise(error_number::kDeviceIo, std::string("coordinate systems cannot be looked up: ") + kNoProjDatabase);
}

}  // namespace

OGRSpatialReference ToOgr(const platform::SpatialReference& reference) {
    OGRSpatialReference result;
    if (!reference.Wkt.empty()) {
        const GdalErrors errors;
        if (result.importFromWkt(reference.Wkt.c_str()) != OGRERR_NONE) raise_unknown_system(reference.Wkt);
    }
    result.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
    return result;
}

platform::SpatialReference FromOgr(const OGRSpatialReference* reference) {
    platform::SpatialReference result;
    if (reference == nullptr || reference->IsEmpty()) return result;
    const GdalErrors errors;
    result.Wkt = wkt_in(*reference, "WKT2_2019");
    const char* name = reference->GetName();
    result.Name = name == nullptr ? "" : name;
    const char* unit = nullptr;
    result.IsGeographic = reference->IsGeographic() != 0;
    if (result.IsGeographic)
        reference->GetAngularUnits(&unit);
    else
        result.MetersPerUnit = reference->GetLinearUnits(&unit);
    result.UnitName = unit == nullptr ? "" : unit;
    return result;
}

platform::SpatialReference ReferenceFromText(const std::string& text) {
    const GdalErrors errors;
    OGRSpatialReference reference;
    const std::array<const char*, 2> options = {"ALLOW_NETWORK_ACCESS=NO", nullptr};
    if (text.empty() || reference.SetFromUserInput(text.c_str(), options.data()) != OGRERR_NONE)
        raise_unknown_system(text);
    return FromOgr(&reference);
}

namespace {

/// The projection as PROJ's parameters; empty where they cannot tell it.
std::string proj_text(const OGRSpatialReference& reference) {
    char* text = nullptr;
    const bool told = reference.exportToProj4(&text) == OGRERR_NONE && text != nullptr;
    std::string result = told ? text : "";
    CPLFree(text);
    return result;
}

}  // namespace

bool has_places(const platform::SpatialReference& reference) {
    const OGRSpatialReference ogr = ToOgr(reference);
    return ogr.IsEmpty() || (ogr.IsGeocentric() == 0 && (ogr.IsVertical() == 0 || ogr.IsCompound() != 0));
}

bool may_be_same(const platform::SpatialReference& a, const platform::SpatialReference& b) {
    OGRSpatialReference first = ToOgr(a);
    OGRSpatialReference second = ToOgr(b);
    // Points may have heights, and a raster none.
    first.StripVertical();
    second.StripVertical();
    if (first.IsEmpty() || second.IsEmpty()) return true;
    const GdalErrors quiet;
    const std::array<const char*, 3> options = {"CRITERION=EQUIVALENT_EXCEPT_AXIS_ORDER_GEOGCRS",
                                                "IGNORE_DATA_AXIS_TO_SRS_AXIS_MAPPING=YES", nullptr};
    if (first.IsSame(&second, options.data()) != 0) return true;
    // Older dialects name datums in words that are not known everywhere.
    const std::string text = proj_text(first);
    return !text.empty() && text == proj_text(second);
}

std::string ProjectionFileText(const platform::SpatialReference& reference) {
    // A batch writes thousands of datasets in one coordinate system, and each translation searches PROJ's database.
    static std::map<std::string, std::string> known;
    if (const auto text = known.find(reference.Wkt); text != known.end()) return text->second;
    const OGRSpatialReference ogr = ToOgr(reference);
    if (ogr.IsEmpty()) return {};
    const GdalErrors errors;
    std::string text = wkt_in(ogr, "WKT1_ESRI");
    if (text.empty()) text = wkt_in(ogr, "WKT1_GDAL");
    if (known.size() < 32) known[reference.Wkt] = text;
    return text;
}

}  // namespace wxl::files
