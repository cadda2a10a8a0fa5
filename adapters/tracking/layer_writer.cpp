#include "adapters/tracking/layer_writer.h"

#include "adapters/disk/disk_output_file.h"
#include "adapters/gdal/gdal_support.h"
#include "adapters/gdal/package_rows.h"
#include "adapters/gdal/sqlite_fence.h"
#include "adapters/shapefile/dbf_cells.h"
#include "adapters/shapefile/dbf_file.h"
#include "adapters/shapefile/shp_file.h"
#include "adapters/tracking/cell_text.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <charconv>
#include <cpl_string.h>
#include <cpl_vsi.h>
#include <cstring>
#include <fmt/format.h>
#include <new>
#include <ogrsf_frmts.h>
#include <set>

namespace wxl::tracking {

namespace {

namespace fs = std::filesystem;
namespace error_number = platform::error_number;
using platform::Field;
using platform::FieldType;
using platform::FieldValue;
using platform::Point;

constexpr const char* kEncoding = "UTF-8";

void write_text(const fs::path& file, std::string_view text) {
    files::DiskOutputFile out(file, platform::WriteMode::kReplace);
    out.Write(text);
    out.Close();
}

/// The content of a record for a point: its type and two little-endian doubles.
std::array<char, 20> point_record(const Point& point) {
    static_assert(std::endian::native == std::endian::little);
    std::array<char, 20> record{};
    record[0] = 1;
    std::memcpy(record.data() + 4, &point.X, 8);
    std::memcpy(record.data() + 12, &point.Y, 8);
    return record;
}

/// Puts a whole number at the right end of its cell.
void put_whole(char* cell, std::size_t width, std::int64_t value) {
    std::array<char, 24> digits{};
    const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    const auto length = static_cast<std::size_t>(end - digits.data());
    if (length > width) platform::Raise(error_number::kOverflow, "a whole number is longer than its column");
    std::memcpy(cell + width - length, digits.data(), length);
}

class ShapefileWriter final : public ILayerWriter {
public:
    ShapefileWriter(const fs::path& file, const std::vector<Field>& fields, const platform::SpatialReference& reference)
        : m_fields(fields),
          m_layout(LayoutOf(fields)),
          m_table(Part(file, ".dbf"), m_layout),
          m_shapes(file, Part(file, ".shx"), files::shp_header(platform::ShapeType::kPoint)),
          m_blank(m_layout.BlankRecord()) {
        write_text(Part(file, ".cpg"), kEncoding);
        if (const std::string projection = files::ProjectionFileText(reference); !projection.empty())
            write_text(Part(file, ".prj"), projection);
    }

    void Put(const Point& point, const std::vector<FieldValue>& values) override {
        m_record = m_blank;
        for (std::size_t i = 0; i < m_fields.size(); ++i) PutCell(m_layout.Columns()[i], values[i], m_fields[i].Name);
        m_table.Append(m_record);
        const auto shape = point_record(point);
        m_shapes.Append({shape.data(), shape.size()});
    }

    void Close() override {
        m_table.Close();
        m_shapes.Close();
    }

private:
    static fs::path Part(fs::path file, const char* extension) { return file.replace_extension(extension); }

    static files::DbfLayout LayoutOf(const std::vector<Field>& fields) {
        files::DbfLayout layout;
        for (const Field& field : fields) layout.AddColumn(field, field.Name);
        return layout;
    }

    void PutCell(const files::DbfColumn& column, const FieldValue& value, const std::string& field) {
        if (platform::IsMissing(value)) return;
        char* cell = m_record.data() + column.Offset;
        if (const auto* whole = std::get_if<std::int64_t>(&value); whole != nullptr && column.Decimals == 0) {
            put_whole(cell, column.Width, *whole);
            return;
        }
        if (const auto* text = std::get_if<std::string>(&value); text != nullptr && column.Type == 'C') {
            std::copy_n(text->data(), std::min(text->size(), column.Width), cell);
            return;
        }
        const std::string made = files::dbf_cell(column, value, kEncoding, field);
        std::ranges::copy(made, cell);
    }

    std::vector<Field> m_fields;
    files::DbfLayout m_layout;
    files::DbfWriter m_table;
    files::ShpWriter m_shapes;
    std::string m_blank;
    std::string m_record;
};

/// A driver of GDAL, alone: all of them take 7 MB while the fixes fill the memory.
GDALDriver& driver_named(const char* name, void (*enlist)()) {
    GDALDriverManager& drivers = *GetGDALDriverManager();
    if (drivers.GetDriverByName(name) == nullptr) {
        // GDAL uses a driver that cannot be allocated all the same.
        constexpr std::size_t kDriverBytes = 1 << 20;
        ::operator delete(::operator new(kDriverBytes));
        enlist();
    }
    GDALDriver* driver = drivers.GetDriverByName(name);
    if (driver == nullptr) platform::Raise(error_number::kInvalidCall, fmt::format("this GDAL has no driver {}", name));
    return *driver;
}

OGRFieldType ogr_type(FieldType type) {
    if (type == FieldType::kInteger) return OFTInteger64;
    return type == FieldType::kDouble ? OFTReal : OFTString;
}

class FlatGeobufWriter final : public ILayerWriter {
public:
    FlatGeobufWriter(const fs::path& file, const std::vector<Field>& fields,
                     const platform::SpatialReference& reference)
        : m_file(file), m_writing(file) {
        GDALDriver& maker = driver_named("FlatGeobuf", RegisterOGRFlatGeobuf);
        m_dataset.reset(maker.Create(file.c_str(), 0, 0, 0, GDT_Unknown, nullptr));
        if (!m_dataset) Fail();
        OGRSpatialReference system = files::ToOgr(reference);
        CPLStringList options;
        options.SetNameValue("SPATIAL_INDEX", "NO");
        m_layer =
            m_dataset->CreateLayer(file.stem().c_str(), system.IsEmpty() ? nullptr : &system, wkbPoint, options.List());
        if (m_layer == nullptr) Fail();
        for (const Field& field : fields) {
            OGRFieldDefn definition(field.Name.c_str(), ogr_type(field.Type));
            if (m_layer->CreateField(&definition) != OGRERR_NONE) Fail();
        }
        m_feature = OGRFeature::CreateFeature(m_layer->GetLayerDefn());
        m_dataset->StartTransaction();
    }

    ~FlatGeobufWriter() override { OGRFeature::DestroyFeature(m_feature); }
    FlatGeobufWriter(const FlatGeobufWriter&) = delete;
    FlatGeobufWriter& operator=(const FlatGeobufWriter&) = delete;

    void Put(const Point& point, const std::vector<FieldValue>& values) override {
        m_feature->SetFID(OGRNullFID);
        OGRPoint shape(point.X, point.Y);
        m_feature->SetGeometry(&shape);
        for (std::size_t i = 0; i < values.size(); ++i) Set(static_cast<int>(i), values[i]);
        if (m_layer->CreateFeature(m_feature) != OGRERR_NONE) Fail();
    }

    void Close() override {
        if (m_dataset->TestCapability(ODsCTransactions) != 0 && m_dataset->CommitTransaction() != OGRERR_NONE) Fail();
        if (!files::CloseChecked(std::move(m_dataset), m_errors)) Fail();
    }

private:
    void Set(int field, const FieldValue& value) {
        if (const auto* whole = std::get_if<std::int64_t>(&value)) {
            m_feature->SetField(field, static_cast<GIntBig>(*whole));
        } else if (const auto* number = std::get_if<double>(&value)) {
            m_feature->SetField(field, *number);
        } else if (const auto* text = std::get_if<std::string>(&value)) {
            m_feature->SetField(field, text->c_str());
        } else {
            m_feature->SetFieldNull(field);
        }
    }

    [[noreturn]] void Fail() const {
        m_errors.RaiseWriting("\"" + m_file.filename().string() + "\"", m_file.parent_path());
    }

    fs::path m_file;
    files::SqliteWriting m_writing;  ///< before the dataset, which writes until it is closed
    files::GdalErrors m_errors;
    files::GdalDatasetPtr m_dataset;
    OGRLayer* m_layer = nullptr;
    OGRFeature* m_feature = nullptr;
};

/// A GeoPackage: its table and the index of it made by GDAL, both filled by SQLite's prepared statements.
class GeoPackageWriter final : public ILayerWriter {
public:
    GeoPackageWriter(const fs::path& file, const std::vector<Field>& fields,
                     const platform::SpatialReference& reference)
        : m_file(file), m_table{file.stem().string(), platform::ShapeType::kPoint, fields}, m_writing(file) {
        Make(driver_named("GPKG", RegisterOGRGeoPackage), reference);
        m_rows.emplace(m_file, std::vector{m_table}, kGeometryColumn, files::PackageRows::Places::kIndexed);
    }

    void Put(const Point& point, const std::vector<FieldValue>& values) override {
        if (!m_rows->Put(0, point, values)) Fail();
    }

    void Close() override {
        if (!m_rows->Finish()) Fail();
        m_rows.reset();
    }

private:
    static constexpr const char* kGeometryColumn = "geom";

    void Make(GDALDriver& maker, const platform::SpatialReference& reference) {
        const CPLConfigOptionSetter moment("OGR_CURRENT_DATE", platform::kPackageChanged, false);
        CPLStringList options;
        options.SetNameValue("ADD_GPKG_OGR_CONTENTS", "NO");
        files::GdalDatasetPtr dataset(maker.Create(m_file.c_str(), 0, 0, 0, GDT_Unknown, options.List()));
        if (!dataset) Fail();
        OGRSpatialReference system = files::ToOgr(reference);
        CPLStringList ofLayer;
        ofLayer.SetNameValue("GEOMETRY_NAME", kGeometryColumn);
        OGRLayer* layer =
            dataset->CreateLayer(m_table.Name.c_str(), system.IsEmpty() ? nullptr : &system, wkbPoint, ofLayer.List());
        if (layer == nullptr) Fail();
        for (const Field& field : m_table.Fields) {
            OGRFieldDefn definition(field.Name.c_str(), ogr_type(field.Type));
            if (layer->CreateField(&definition) != OGRERR_NONE) Fail();
        }
        if (!files::CloseChecked(std::move(dataset), m_errors)) Fail();
    }

    [[noreturn]] void Fail() const {
        m_errors.RaiseWriting("\"" + m_file.filename().string() + "\"", m_file.parent_path());
    }

    fs::path m_file;
    platform::PackageTable m_table;
    files::SqliteWriting m_writing;  ///< before the rows, which write until they are closed
    files::GdalErrors m_errors;
    std::optional<files::PackageRows> m_rows;
};

std::string lower(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return text;
}

/// Letters, digits and underscores of ASCII.
std::string table_name(const std::string& name) {
    std::string made;
    for (std::size_t i = 0; i < name.size();) {
        const auto byte = static_cast<unsigned char>(name[i]);
        const std::size_t length = byte < 0x80 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
        const std::string letter = name.substr(i, length);
        const bool plain = (letter[0] >= '0' && letter[0] <= '9') || (letter[0] >= 'a' && letter[0] <= 'z') ||
                           (letter[0] >= 'A' && letter[0] <= 'Z');
        const std::string folded = length > 1 ? bare_name(letter) : "";
        if (plain) {
            made += letter;
        } else if (!folded.empty()) {
            made += folded;
        } else if (!made.empty() && made.back() != '_') {
            made += '_';
        }
        i += length;
    }
    while (!made.empty() && made.back() == '_') made.pop_back();
    return made.empty() ? "field" : made;
}

}  // namespace

std::optional<LayerFormat> layer_format_of(const fs::path& file) {
    const std::string ending = lower(file.extension().string());
    if (ending == ".shp") return LayerFormat::kShapefile;
    if (ending == ".gpkg") return LayerFormat::kGeoPackage;
    if (ending == ".fgb") return LayerFormat::kFlatGeobuf;
    return std::nullopt;
}

std::vector<std::string> field_names_for(LayerFormat format, const std::vector<std::string>& names) {
    constexpr std::size_t kLongest = 10;
    const bool isShort = format == LayerFormat::kShapefile;
    std::set<std::string> taken = {"fid", "geom", "ogc_fid"};
    std::vector<std::string> made;
    for (const std::string& name : names) {
        const std::string whole = isShort ? table_name(name) : name;
        std::string candidate = isShort ? whole.substr(0, kLongest) : whole;
        for (int number = 2; !taken.insert(lower(candidate)).second; ++number) {
            const std::string end = fmt::format("_{}", number);
            candidate = (isShort ? whole.substr(0, kLongest - end.size()) : whole) + end;
        }
        made.push_back(candidate);
    }
    return made;
}

MemoryFile::MemoryFile(const std::string& name) {
    static std::atomic<int> number{0};
    m_path = fmt::format("/vsimem/wxl_layer_{}/{}", ++number, name);
}

MemoryFile::~MemoryFile() {
    VSIRmdirRecursive(m_path.parent_path().c_str());
}

std::unique_ptr<ILayerWriter> make_memory_writer(const MemoryFile& file, const std::vector<Field>& fields,
                                                 const platform::SpatialReference& reference) {
    return std::make_unique<FlatGeobufWriter>(file.Path(), fields, reference);
}

std::unique_ptr<ILayerWriter> make_layer_writer(LayerFormat format, const fs::path& file,
                                                const std::vector<Field>& fields,
                                                const platform::SpatialReference& reference) {
    switch (format) {
        case LayerFormat::kShapefile:
            return std::make_unique<ShapefileWriter>(file, fields, reference);
        case LayerFormat::kGeoPackage:
            return std::make_unique<GeoPackageWriter>(file, fields, reference);
        default:
            return std::make_unique<FlatGeobufWriter>(file, fields, reference);
    }
}

}  // namespace wxl::tracking
