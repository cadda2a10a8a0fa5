#include "adapters/ogr/unread_shapes.h"

#include "adapters/gdal/gdal_support.h"
#include "platform/text.h"

#include <array>
#include <cpl_json.h>
#include <ogrsf_frmts.h>

namespace wxl::files {

namespace {

/// Whether a feature's JSON tells a location: anything but null and lists without a number.
bool tells_location(const char* json) {
    CPLJSONDocument document;
    if (json == nullptr || !document.LoadMemory(std::string(json))) return false;
    const CPLJSONObject geometry = document.GetRoot().GetObj("geometry");
    if (!geometry.IsValid() || geometry.GetType() == CPLJSONObject::Type::Null) return false;
    for (const char* list : {"coordinates", "geometries"}) {
        const CPLJSONObject member = geometry.GetObj(list);
        if (member.IsValid() && member.GetType() == CPLJSONObject::Type::Array) return member.ToArray().Size() > 0;
    }
    return true;
}

/// Whether a column of locations, which CSV keeps as text too, is not blank.
bool tells_location(const OGRFeature& row) {
    for (int i = 0; i < row.GetFieldCount(); ++i) {
        const std::string name = row.GetFieldDefnRef(i)->GetNameRef();
        const bool holdsLocations = platform::EqualNoCase(name, "WKT") || name.starts_with("_WKT") ||
                                    row.GetGeomFieldIndex(("geom_" + name).c_str()) >= 0;
        // GetFieldAsString keeps its result inside the feature and is not const for that reason alone.
        const std::string text = holdsLocations ? const_cast<OGRFeature&>(row).GetFieldAsString(i) : "";
        if (text.find_first_not_of(" \t\r\n") != std::string::npos) return true;
    }
    return false;
}

}  // namespace

std::set<std::int64_t> unread_shapes(const std::filesystem::path& path, const std::string& layer,
                                     const std::string& driver, Sources sources) {
    std::set<std::int64_t> found;
    const bool isTable = driver == "CSV";
    if (!isTable && driver != "GeoJSON") return found;
    const GdalErrors quiet;
    const std::array<const char*, 2> native = {"NATIVE_DATA=YES", nullptr};
    const GdalDatasetPtr dataset(GDALDataset::Open(path.c_str(), GDAL_OF_VECTOR | GDAL_OF_READONLY,
                                                   AllowedDrivers(sources, DataKind::kVector),
                                                   isTable ? nullptr : native.data()));
    OGRLayer* rows = dataset ? dataset->GetLayerByName(layer.c_str()) : nullptr;
    if (rows == nullptr) return found;
    for (const OGRFeatureUniquePtr& row : *rows)
        if (row->GetGeometryRef() == nullptr && (isTable ? tells_location(*row) : tells_location(row->GetNativeData())))
            found.insert(row->GetFID());
    return found;
}

}  // namespace wxl::files
