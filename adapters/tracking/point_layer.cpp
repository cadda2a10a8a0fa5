#include "adapters/tracking/point_layer.h"

#include "adapters/gdal/database_check.h"
#include "adapters/gdal/gdal_support.h"
#include "adapters/gdal/source_rules.h"
#include "adapters/gdal/text_lengths.h"
#include "adapters/tracking/text_file.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <map>
#include <ogrsf_frmts.h>
#include <string_view>
#include <vector>

namespace wxl::tracking {

namespace {

namespace fs = std::filesystem;
namespace error_number = platform::error_number;
using files::GdalDatasetPtr;
using files::GdalErrors;
using platform::Raise;

constexpr std::array<std::string_view, 14> kEndings = {".gpx",      ".kml",      ".kmz", ".geojson", ".json",
                                                       ".geojsonl", ".gpkg",     ".fgb", ".shp",     ".xlsx",
                                                       ".ods",      ".geojsons", ".gdb", ".xlsm"};
constexpr std::array<const char*, 12> kDrivers = {"GPX",        "LIBKML", "KML",         "GeoJSON",
                                                  "GeoJSONSeq", "GPKG",   "FlatGeobuf",  "ESRI Shapefile",
                                                  "XLSX",       "ODS",    "OpenFileGDB", nullptr};

bool is_driver(GDALDataset& dataset, std::string_view name) {
    return platform::EqualNoCase(dataset.GetDriverName(), name);
}

bool is_workbook(GDALDataset& dataset) {
    return is_driver(dataset, "XLSX") || is_driver(dataset, "ODS");
}

GdalDatasetPtr open_dataset(const fs::path& file) {
    files::RegisterGdal();
    if (files::is_database(file)) files::CheckDatabase(file);
    files::CheckXmlTexts(file);
    const GdalErrors errors;
    GdalDatasetPtr dataset(GDALDataset::Open(file.c_str(), GDAL_OF_VECTOR | GDAL_OF_READONLY, kDrivers.data()));
    if (!dataset && files::has_ending_of_workbook(file))
        platform::Raise(platform::error_number::kTypeMismatch,
                        file.string() +
                            " could not be read as a workbook: save its table as CSV (in a spreadsheet: Save as, CSV "
                            "UTF-8), and import that");
    if (!dataset) errors.RaiseReading(file);
    return dataset;
}

bool holds_points(OGRLayer& layer) {
    const auto type = wkbFlatten(layer.GetGeomType());
    if (type == wkbPoint) return true;
    if (type != wkbUnknown) return false;
    layer.ResetReading();
    for (const auto& feature : layer) {
        const OGRGeometry* geometry = feature->GetGeometryRef();
        if (geometry != nullptr) return wkbFlatten(geometry->getGeometryType()) == wkbPoint;
    }
    return false;
}

/// The layer of a GPX file that holds most: points of tracks, else waypoints, else points of routes.
OGRLayer* gpx_layer(GDALDataset& dataset) {
    for (const char* name : {"track_points", "waypoints", "route_points"}) {
        OGRLayer* layer = dataset.GetLayerByName(name);
        if (layer != nullptr && layer->GetFeatureCount() > 0) return layer;
    }
    return nullptr;
}

OGRLayer* choose_layer(GDALDataset& dataset, const std::string& input, const std::string& wanted) {
    if (!wanted.empty()) return dataset.GetLayerByName(wanted.c_str());
    if (is_driver(dataset, "GPX")) return gpx_layer(dataset);
    if (is_workbook(dataset)) return dataset.GetLayerCount() > 0 ? dataset.GetLayer(0) : nullptr;
    std::vector<OGRLayer*> layers;
    std::vector<std::string> names;
    for (OGRLayer* layer : dataset.GetLayers()) {
        if (!holds_points(*layer)) continue;
        layers.push_back(layer);
        names.emplace_back(layer->GetName());
    }
    if (layers.size() > 1)
        Raise(error_number::kTypeMismatch,
              fmt::format("{} holds several layers of points: name one as {}:LAYER; they are: {}", input, input,
                          fmt::join(names, ", ")));
    return layers.empty() ? nullptr : layers.front();
}

std::string time_text(const OGRField& field, OGRFieldType type) {
    const auto& date = field.Date;
    const auto seconds = static_cast<double>(date.Second);
    const int whole = static_cast<int>(seconds);
    if (type == OFTTime) return fmt::format("{:02}:{:02}:{:02}", date.Hour, date.Minute, whole);
    std::string text = fmt::format("{:04}-{:02}-{:02}", date.Year, date.Month, date.Day);
    if (type == OFTDate) return text;
    text += fmt::format("T{:02}:{:02}:{:02}", date.Hour, date.Minute, whole);
    if (date.TZFlag <= 1) return text;
    const int minutes = (date.TZFlag - 100) * 15;
    return text + fmt::format("{}{:02}:{:02}", minutes < 0 ? '-' : '+', std::abs(minutes) / 60, std::abs(minutes) % 60);
}

std::string cell_text(const OGRFeature& feature, int index) {
    if (!feature.IsFieldSetAndNotNull(index)) return "";
    const OGRFieldType type = feature.GetFieldDefnRef(index)->GetType();
    if (type == OFTDateTime || type == OFTDate || type == OFTTime)
        return time_text(*feature.GetRawFieldRef(index), type);
    if (type == OFTReal) return fmt::format("{}", feature.GetFieldAsDouble(index));
    return feature.GetFieldAsString(index);
}

/// A cell in quotes, on one line.
void append_cell(std::string& line, std::string_view text) {
    if (!line.empty()) line += ',';
    line += '"';
    for (const char c : text) {
        if (c == '"') line += '"';
        line += c == '\n' || c == '\r' ? ' ' : c;
    }
    line += '"';
}

std::map<GIntBig, std::string> names_of_tracks(GDALDataset& dataset) {
    std::map<GIntBig, std::string> names;
    OGRLayer* tracks = is_driver(dataset, "GPX") ? dataset.GetLayerByName("tracks") : nullptr;
    if (tracks == nullptr) return names;
    for (const auto& feature : *tracks) names[feature->GetFID()] = feature->GetFieldAsString("name");
    return names;
}

/// Writes the rows of a layer as separated values.
class RowWriter {
public:
    RowWriter(const fs::path& file, GDALDataset& dataset, OGRLayer& layer, LayerAsText& result)
        : m_file(file), m_layer(layer), m_result(result), m_tracks(names_of_tracks(dataset)) {
        // Formats with fields of their own have dozens that nobody filled.
        const bool manyFields = is_driver(dataset, "GPX") || is_driver(dataset, "LIBKML") || is_driver(dataset, "KML");
        m_used.assign(static_cast<std::size_t>(layer.GetLayerDefn()->GetFieldCount()), !manyFields);
        if (manyFields) FindUsedFields();
        m_trackField = layer.GetLayerDefn()->GetFieldIndex("track_fid");
    }

    void SetTransformation(OGRCoordinateTransformation* transformation) { m_transformation = transformation; }

    void Write() {
        const OGRFeatureDefn& fields = *m_layer.GetLayerDefn();
        if (!HasNumberedFields()) WriteHeader(fields);
        m_layer.ResetReading();
        for (const auto& feature : m_layer) WriteRow(*feature);
        m_result.Text->flush();
        if (!*m_result.Text) Raise(error_number::kDiskFull, "a temporary copy of the layer could not be written");
        m_result.Text->seekg(0);
    }

private:
    void FindUsedFields() {
        m_layer.ResetReading();
        for (const auto& feature : m_layer) {
            files::CheckTexts(*feature, m_file);
            for (int i = 0; i < feature->GetFieldCount(); ++i)
                if (feature->IsFieldSetAndNotNull(i) && feature->GetFieldAsString(i)[0] != '\0')
                    m_used[static_cast<std::size_t>(i)] = true;
        }
    }

    /// Sheets whose first row was not taken for a header have fields "Field1", "Field2", ...
    bool HasNumberedFields() const {
        const OGRFeatureDefn& fields = *m_layer.GetLayerDefn();
        for (int i = 0; i < fields.GetFieldCount(); ++i)
            if (fmt::format("Field{}", i + 1) != fields.GetFieldDefn(i)->GetNameRef()) return false;
        return !m_result.HasPoints && fields.GetFieldCount() > 0;
    }

    void WriteHeader(const OGRFeatureDefn& fields) {
        std::string line;
        if (m_result.HasPoints) {
            append_cell(line, kLayerX);
            append_cell(line, kLayerY);
        }
        if (!m_tracks.empty()) append_cell(line, "track name");
        for (int i = 0; i < fields.GetFieldCount(); ++i)
            if (m_used[static_cast<std::size_t>(i)]) append_cell(line, fields.GetFieldDefn(i)->GetNameRef());
        Put(line);
    }

    void WriteRow(const OGRFeature& feature) {
        files::CheckTexts(feature, m_file);
        std::string line;
        if (m_result.HasPoints) AppendPoint(feature, line);
        if (!m_tracks.empty()) {
            const GIntBig track = m_trackField < 0 ? 0 : feature.GetFieldAsInteger64(m_trackField);
            append_cell(line, m_tracks.contains(track) && !m_tracks[track].empty()
                                  ? m_tracks[track]
                                  : fmt::format("track {}", track + 1));
        }
        for (int i = 0; i < feature.GetFieldCount(); ++i)
            if (m_used[static_cast<std::size_t>(i)]) append_cell(line, cell_text(feature, i));
        Put(line);
    }

    void AppendPoint(const OGRFeature& feature, std::string& line) {
        const OGRGeometry* geometry = feature.GetGeometryRef();
        const bool isPoint =
            geometry != nullptr && wkbFlatten(geometry->getGeometryType()) == wkbPoint && geometry->IsEmpty() == 0;
        double x = isPoint ? geometry->toPoint()->getX() : 0.0;
        double y = isPoint ? geometry->toPoint()->getY() : 0.0;
        const bool is = isPoint && (m_transformation == nullptr || m_transformation->Transform(1, &x, &y) != 0);
        append_cell(line, is ? fmt::format("{}", x) : "");
        append_cell(line, is ? fmt::format("{}", y) : "");
    }

    void Put(std::string& line) {
        line += '\n';
        m_result.Text->write(line.data(), static_cast<std::streamsize>(line.size()));
    }

    const fs::path& m_file;
    OGRLayer& m_layer;
    LayerAsText& m_result;
    std::map<GIntBig, std::string> m_tracks;
    std::vector<bool> m_used;
    int m_trackField = -1;
    OGRCoordinateTransformation* m_transformation = nullptr;
};

/// The file and the layer of "FILE:LAYER"; a path that exists is never split.
std::pair<fs::path, std::string> split_layer(const std::string& input) {
    std::error_code ignored;
    const std::size_t colon = input.rfind(':');
    if (fs::exists(input, ignored) || colon == std::string::npos || !fs::exists(input.substr(0, colon), ignored))
        return {input, ""};
    return {input.substr(0, colon), input.substr(colon + 1)};
}

std::unique_ptr<OGRCoordinateTransformation> to_degrees(const platform::SpatialReference& reference) {
    const OGRSpatialReference source = files::ToOgr(reference);
    const OGRSpatialReference target = files::ToOgr(files::ReferenceFromText("EPSG:4326"));
    return std::unique_ptr<OGRCoordinateTransformation>(OGRCreateCoordinateTransformation(&source, &target));
}

}  // namespace

bool is_layer_file(const fs::path& file) {
    const std::string ending = split_layer(file.string()).first.extension().string();
    return std::any_of(kEndings.begin(), kEndings.end(),
                       [&](std::string_view known) { return platform::EqualNoCase(known, ending); });
}

LayerAsText read_layer(const std::string& input, bool inDegrees) {
    const auto [file, wanted] = split_layer(input);
    const GdalDatasetPtr dataset = open_dataset(file);
    const GdalErrors errors;
    OGRLayer* layer = choose_layer(*dataset, input, wanted);
    if (layer == nullptr)
        Raise(error_number::kTypeMismatch, wanted.empty()
                                               ? input + " holds no points: fixes are points, one for each"
                                               : fmt::format("{} has no layer \"{}\"", file.string(), wanted));
    LayerAsText result{make_spool(), {}, !is_workbook(*dataset), dataset->GetDriverName(), layer->GetName()};
    if (result.HasPoints) result.Reference = files::FromOgr(layer->GetSpatialRef());
    RowWriter rows(file, *dataset, *layer, result);
    std::unique_ptr<OGRCoordinateTransformation> transformation;
    if (inDegrees && !result.Reference.Wkt.empty() && !result.Reference.IsGeographic) {
        transformation = to_degrees(result.Reference);
        if (transformation) result.Reference = files::ReferenceFromText("EPSG:4326");
        rows.SetTransformation(transformation.get());
    }
    rows.Write();
    if (errors.Failed())
        Raise(error_number::kDeviceIo, file.string() + " could not be read to its end: " + errors.Text());
    return result;
}

}  // namespace wxl::tracking
