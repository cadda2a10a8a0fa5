#include "adapters/ogr/geo_packages.h"

#include "adapters/disk/disk_file_system.h"
#include "adapters/gdal/database_check.h"
#include "adapters/gdal/gdal_support.h"
#include "adapters/gdal/package_rows.h"
#include "adapters/gdal/sqlite_fence.h"
#include "adapters/ogr/ogr_source.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <cpl_conv.h>
#include <cpl_string.h>
#include <optional>
#include <string_view>

namespace wxl::files {

namespace {

namespace fs = std::filesystem;
using platform::Package;
using platform::PackageTable;
using platform::ShapeType;

constexpr const char* kGeometryColumn = "geom";
constexpr const char* kStyles = "layer_styles";

OGRwkbGeometryType ogr_shape(ShapeType shape) {
    if (shape == ShapeType::kPoint) return wkbPoint;
    return shape == ShapeType::kPolygon ? wkbMultiPolygon : wkbNone;
}

/// A statement of ours for GDAL: its names are ours, so that nothing needs quoting but quotes.
void execute(GDALDataset& dataset, const std::string& statement) {
    dataset.ReleaseResultSet(dataset.ExecuteSQL(statement.c_str(), nullptr, nullptr));
}

bool has_field(OGRLayer& layer, const platform::Field& field) {
    const int place = layer.GetLayerDefn()->GetFieldIndex(field.Name.c_str());
    return place >= 0 && fields_of(layer)[static_cast<std::size_t>(place)].Type == field.Type;
}

bool is_table(OGRLayer& layer, const PackageTable& table, const platform::SpatialReference& reference) {
    if (layer.GetGeomType() != ogr_shape(table.Shape)) return false;
    if (layer.GetLayerDefn()->GetFieldCount() != static_cast<int>(table.Fields.size())) return false;
    if (!std::ranges::all_of(table.Fields, [&](const auto& field) { return has_field(layer, field); })) return false;
    if (table.Shape == ShapeType::kNull) return true;
    const platform::SpatialReference own = FromOgr(layer.GetSpatialRef());
    return own.Wkt.empty() == reference.Wkt.empty() && may_be_same(own, reference);
}

GdalDatasetPtr opened_package(const fs::path& file, unsigned int access) {
    const char* const drivers[] = {"GPKG", nullptr};
    return GdalDatasetPtr(GDALDataset::Open(file.c_str(), GDAL_OF_VECTOR | access, drivers));
}

bool is_package(const Package& package) {
    const GdalErrors errors;
    const GdalDatasetPtr dataset = opened_package(package.File, GDAL_OF_READONLY);
    if (!dataset) return false;
    const auto stands = [&](const PackageTable& table) { return dataset->GetLayerByName(table.Name.c_str()); };
    const auto fits = [&](const PackageTable& table) {
        OGRLayer* layer = stands(table);
        return layer != nullptr && is_table(*layer, table, package.Reference);
    };
    if (std::ranges::any_of(package.Tables,
                            [&](const auto& table) { return stands(table) != nullptr && !fits(table); }))
        return false;
    return std::ranges::any_of(package.Tables, fits) || std::ranges::any_of(package.Others, fits);
}

/// A draft needs neither a journal nor the disk's word: cut short, it is swept away. GDAL takes the package's moment
/// for the present one.
struct DraftSetting {
    explicit DraftSetting(const std::string& moment) : Moment("OGR_CURRENT_DATE", moment.c_str(), false) {}

    CPLConfigOptionSetter Journal{"OGR_SQLITE_JOURNAL", "OFF", false};
    CPLConfigOptionSetter Synchronous{"OGR_SQLITE_SYNCHRONOUS", "OFF", false};
    CPLConfigOptionSetter Moment;
};

/// A draft under a temporary name beside the package, deleted unless it is published.
class Draft {
public:
    Draft(platform::IFileSystem& files, const fs::path& file)
        : m_files(files),
          m_file(file),
          m_draft(file.parent_path() / platform::TemporaryName(file.filename().string())) {}

    ~Draft() {
        try {
            if (!m_published && m_files.FileExists(m_draft)) m_files.DeleteFile(m_draft, true);
        } catch (const std::exception&) {
            return;  // what cannot be deleted is swept away by the next run
        }
    }
    Draft(const Draft&) = delete;
    Draft& operator=(const Draft&) = delete;

    const fs::path& Path() const { return m_draft; }

    /// A copy in pieces, as packages may be large.
    void CopyFrom(const fs::path& file) {
        constexpr std::uint64_t kPiece = 1ULL << 22U;
        const auto source = m_files.OpenForReading(file);
        const auto copy = m_files.OpenForWriting(m_draft, platform::WriteMode::kReplace);
        std::vector<char> bytes(kPiece);
        for (std::uint64_t at = 0; at < source->Size(); at += kPiece) {
            const std::span<char> piece(bytes.data(), std::min(kPiece, source->Size() - at));
            source->Read(at, piece);
            copy->Write({piece.data(), piece.size()});
        }
        copy->Close();
    }

    void Publish() {
        refuse_journals(m_file);
        m_files.Rename(m_draft, m_file);
        m_published = true;
    }

private:
    platform::IFileSystem& m_files;
    fs::path m_file;
    fs::path m_draft;
    bool m_published = false;
};

class Writer final : public platform::IPackageWriter {
public:
    Writer(platform::IFileSystem& files, const Package& package)
        : m_package(package),
          m_places(files.FileExists(package.File) ? PackageRows::Places::kNoIndex : PackageRows::Places::kIndexed),
          m_draft(files, package.File),
          m_writing(m_draft.Path()) {
        if (IsNew()) {
            Make();
        } else {
            m_draft.CopyFrom(package.File);
            Prepare();
        }
        m_rows.emplace(m_draft.Path(), m_package.Tables, kGeometryColumn, m_places);
    }

    void Drop(std::size_t table, const std::string& key) override {
        Checked([&] { return m_rows->Drop(table, key); });
    }

    void Clear(std::size_t table) override {
        Checked([&] { return m_rows->Clear(table); });
    }

    void Put(std::size_t table, const platform::Geometry& shape,
             std::span<const platform::FieldValue> values) override {
        if (shape.Type == ShapeType::kPoint) return Checked([&] { return m_rows->Put(table, shape.Location, values); });
        const auto geometry = shape.IsNull() ? nullptr : to_ogr(shape, ogr_shape(m_package.Tables[table].Shape));
        Checked([&] { return m_rows->Put(table, geometry.get(), values); });
    }

    void Publish() override {
        Checked([&] { return m_rows->Finish(); });
        m_rows.reset();
        if (!IsNew()) Complete();
        Checked([&] { return stamp_package(m_draft.Path(), m_package.Changed); });
        m_draft.Publish();
    }

private:
    bool IsNew() const { return m_places == PackageRows::Places::kIndexed; }

    void Make() {
        const DraftSetting setting(m_package.Changed);
        CPLStringList options;
        options.SetNameValue("ADD_GPKG_OGR_CONTENTS", "NO");
        GDALDriver* maker = GetGDALDriverManager()->GetDriverByName("GPKG");
        if (maker == nullptr) platform::Raise(platform::error_number::kInvalidCall, "this GDAL has no driver GPKG");
        GdalDatasetPtr dataset(maker->Create(m_draft.Path().c_str(), 0, 0, 0, GDT_Unknown, options.List()));
        if (!dataset) Fail();
        for (const PackageTable& table : m_package.Tables) MakeTable(*dataset, table);
        MakeStyles(*dataset, m_package.Tables);
        if (!CloseChecked(std::move(dataset), m_errors)) Fail();
    }

    void MakeTable(GDALDataset& dataset, const PackageTable& table) const {
        OGRSpatialReference system = ToOgr(m_package.Reference);
        CPLStringList options;
        if (!IsNew()) options.SetNameValue("SPATIAL_INDEX", "NO");
        options.SetNameValue("GEOMETRY_NAME", kGeometryColumn);
        options.SetNameValue("ASPATIAL_VARIANT", "GPKG_ATTRIBUTES");
        OGRLayer* layer = dataset.CreateLayer(table.Name.c_str(), system.IsEmpty() ? nullptr : &system,
                                              ogr_shape(table.Shape), options.List());
        if (layer == nullptr) Fail();
        for (const platform::Field& field : table.Fields)
            if (layer->CreateField(field_definition(field).get()) != OGRERR_NONE) Fail();
    }

    void MakeStyles(GDALDataset& dataset, const std::vector<PackageTable>& tables) const {
        if (std::ranges::all_of(tables, [](const PackageTable& table) { return table.Style.empty(); })) return;
        OGRLayer* layer = dataset.GetLayerByName(kStyles);
        if (layer == nullptr) layer = MakeStyleTable(dataset);
        for (const PackageTable& table : tables)
            if (!table.Style.empty()) AddStyle(*layer, table);
    }

    /// The table in which QGIS looks for the styles of a package's layers.
    OGRLayer* MakeStyleTable(GDALDataset& dataset) const {
        CPLStringList options;
        options.SetNameValue("FID", "id");
        options.SetNameValue("ASPATIAL_VARIANT", "GPKG_ATTRIBUTES");
        OGRLayer* layer = dataset.CreateLayer(kStyles, nullptr, wkbNone, options.List());
        if (layer == nullptr) Fail();
        for (const char* name : {"f_table_catalog", "f_table_schema", "f_table_name", "f_geometry_column", "styleName",
                                 "styleQML", "styleSLD", "useAsDefault", "description", "owner", "ui", "update_time"}) {
            OGRFieldDefn field(name, OFTString);
            if (std::string_view(name) == "useAsDefault") {
                field.SetType(OFTInteger);
                field.SetSubType(OFSTBoolean);
            }
            if (layer->CreateField(&field) != OGRERR_NONE) Fail();
        }
        return layer;
    }

    void AddStyle(OGRLayer& layer, const PackageTable& table) const {
        const OGRFeatureUniquePtr style(OGRFeature::CreateFeature(layer.GetLayerDefn()));
        for (const char* empty : {"f_table_catalog", "f_table_schema", "styleSLD", "owner"}) style->SetField(empty, "");
        style->SetField("f_table_name", table.Name.c_str());
        style->SetField("f_geometry_column", kGeometryColumn);
        style->SetField("styleName", table.Name.c_str());
        style->SetField("styleQML", table.Style.c_str());
        style->SetField("useAsDefault", 1);
        style->SetField("description", "WXL Tools");
        style->SetField("update_time", m_package.Changed.c_str());
        if (layer.CreateFeature(style.get()) != OGRERR_NONE) Fail();
    }

    /// The index of places of a table that has rows is kept by functions of GDAL's: it goes while SQLite alone writes.
    void Prepare() {
        const DraftSetting setting(m_package.Changed);
        GdalDatasetPtr dataset = opened_package(m_draft.Path(), GDAL_OF_UPDATE);
        if (!dataset) Fail();
        std::vector<PackageTable> missing;
        for (const PackageTable& table : m_package.Tables) {
            if (dataset->GetLayerByName(table.Name.c_str()) == nullptr) {
                missing.push_back(table);
            } else if (table.Shape != ShapeType::kNull) {
                execute(*dataset, "SELECT DisableSpatialIndex('" + table.Name + "', '" + kGeometryColumn + "')");
            }
        }
        for (const PackageTable& table : missing) MakeTable(*dataset, table);
        MakeStyles(*dataset, missing);
        if (!CloseChecked(std::move(dataset), m_errors)) Fail();
    }

    void Complete() {
        const DraftSetting setting(m_package.Changed);
        GdalDatasetPtr dataset = opened_package(m_draft.Path(), GDAL_OF_UPDATE);
        if (!dataset) Fail();
        for (const PackageTable& table : m_package.Tables)
            if (table.Shape != ShapeType::kNull)
                execute(*dataset, "SELECT CreateSpatialIndex('" + table.Name + "', '" + kGeometryColumn + "')");
        if (!CloseChecked(std::move(dataset), m_errors)) Fail();
    }

    template <class Work>
    void Checked(Work&& work) {
        if (!work()) Fail();
    }

    [[noreturn]] void Fail() const {
        m_errors.RaiseWriting("The GeoPackage \"" + m_package.File.filename().string() + "\"",
                              m_package.File.parent_path());
    }

    Package m_package;
    PackageRows::Places m_places;  ///< new tables are indexed as they are filled
    Draft m_draft;
    SqliteWriting m_writing;
    GdalErrors m_errors;
    std::optional<PackageRows> m_rows;
};

}  // namespace

std::unique_ptr<platform::IPackageWriter> GeoPackages::Open(const Package& package) {
    RegisterGdal();
    CheckReplaceable(package.File);
    refuse_journals(package.File);
    if (m_files.FileExists(package.File) && !is_package(package)) return nullptr;
    return std::make_unique<Writer>(m_files, package);
}

bool GeoPackages::HasRows(const fs::path& file, const std::string& table) const {
    RegisterGdal();
    if (!m_files.FileExists(file)) return false;
    const GdalErrors errors;
    const GdalDatasetPtr dataset = opened_package(file, GDAL_OF_READONLY);
    OGRLayer* layer = dataset ? dataset->GetLayerByName(table.c_str()) : nullptr;
    return layer != nullptr && layer->GetFeatureCount() > 0;
}

}  // namespace wxl::files
