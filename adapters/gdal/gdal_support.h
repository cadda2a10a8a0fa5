#pragma once
#include "platform/values.h"

#include <filesystem>
#include <gdal_priv.h>
#include <memory>
#include <ogr_spatialref.h>
#include <string>
#include <vector>

namespace wxl::files {

/// Makes GDAL's drivers known; any number of calls. Throws std::bad_alloc where there is no memory for them.
void RegisterGdal();

/// Bounds GDAL's block cache and the length of a feature in GeoJSON for a program of its own, unless the user set
/// GDAL_CACHEMAX and OGR_GEOJSON_MAX_OBJ_SIZE. Not for a plugin, where both belong to the host.
void LimitGdal();

/// What GDAL is to do, from any thread, when it has no memory for itself and would abort the program. The action must
/// not come back. `seen` tells whether memory ran out, or nearly, before now: what is looked up in PROJ's database is
/// not believed then. Set once, before GDAL is used.
void SetShortageAction(void (*action)(), bool (*seen)());

/// Catches GDAL's messages on this thread while it lives: nothing reaches standard error. The first failure is kept.
class GdalErrors {
public:
    GdalErrors();
    ~GdalErrors();
    GdalErrors(const GdalErrors&) = delete;
    GdalErrors& operator=(const GdalErrors&) = delete;

    bool Failed() const { return m_failed; }

    /// GDAL's words for the first failure; empty without one.
    const std::string& Text() const { return m_text; }
    void Clear();

    /// Throws for a dataset that could not be opened or read: RuntimeError 53 when nothing stands at `path`, 70 when it
    /// may not be read, else 57, with the path and GDAL's words.
    [[noreturn]] void RaiseReading(const std::filesystem::path& path) const;

    /// Throws for a dataset that could not be written: RuntimeError 61 when its disk or quota is full, 70 when its
    /// folder may not be written, else 57. `what` names it ("The raster \"K3\""). Call before temporary files are
    /// deleted: a freed disk is no longer full.
    [[noreturn]] void RaiseWriting(const std::string& what, const std::filesystem::path& folder) const;

private:
    static void CPL_STDCALL Receive(CPLErr severity, CPLErrorNum number, const char* message);

    bool m_failed = false;
    std::string m_text;
};

/// Closes a GDAL dataset. What a close still writes can fail: close through CloseChecked after writing.
struct GdalDatasetCloser {
    void operator()(GDALDataset* dataset) const;
};
using GdalDatasetPtr = std::unique_ptr<GDALDataset, GdalDatasetCloser>;

/// Flushes and closes a written dataset; false when GDAL reported a failure to `errors` on the way or before.
bool CloseChecked(GdalDatasetPtr dataset, const GdalErrors& errors);

/// The files that an open dataset consists of, as far as GDAL knows them.
std::vector<std::filesystem::path> files_of(GDALDataset& dataset);

/// A coordinate system as GDAL sees it: x before y, whatever the authority's axis order. Empty for an unknown one;
/// RuntimeError 5 when the text is no coordinate system.
OGRSpatialReference ToOgr(const platform::SpatialReference& reference);

/// Name, well-known text (WKT 2), unit, metres per unit and kind. Null and empty ones are unknown.
platform::SpatialReference FromOgr(const OGRSpatialReference* reference);

/// A coordinate system from "EPSG:26915", a well-known text, a PROJ text or a file that holds one. RuntimeError 5 when
/// it means nothing, 57 when PROJ lacks its database.
platform::SpatialReference ReferenceFromText(const std::string& text);

/// Whether x and y of a coordinate system tell where something is on the ground: not in one of heights alone, nor in
/// one of distances from the Earth's centre. An unknown one may.
bool has_places(const platform::SpatialReference& reference);

/// Whether two coordinate systems are one whatever their names are, or one of the two is unknown.
bool may_be_same(const platform::SpatialReference& a, const platform::SpatialReference& b);

/// One line of well-known text in the dialect of .prj and prj.adf files; empty for an unknown coordinate system.
std::string ProjectionFileText(const platform::SpatialReference& reference);

}  // namespace wxl::files
