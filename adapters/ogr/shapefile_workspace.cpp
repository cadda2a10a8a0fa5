#include "adapters/ogr/shapefile_workspace.h"

#include "adapters/disk/posix_error.h"
#include "adapters/gdal/gdal_support.h"
#include "adapters/ogr/ogr_feature_class.h"
#include "adapters/shapefile/dbf_cells.h"
#include "adapters/shapefile/dbf_file.h"
#include "adapters/shapefile/row_buffer.h"
#include "adapters/shapefile/shapefile_parts.h"
#include "adapters/shapefile/shp_file.h"
#include "platform/dataset_files.h"
#include "platform/file_system.h"
#include "platform/runtime_error.h"

#include <algorithm>

namespace wxl::files {

using platform::Field;
using platform::FieldValue;
using platform::Raise;
using platform::Search;
namespace error_number = platform::error_number;
namespace fs = std::filesystem;

namespace {

constexpr const char* kEncoding = "UTF-8";

fs::path shapefile_path(const fs::path& folder, const std::string& name) {
    return folder / (name + ".shp");
}

/// A lone side file takes the name too.
void refuse_taken(const fs::path& folder, const std::string& name) {
    std::error_code ignored;
    for (const fs::path& part : platform::NewShapefileParts(folder, name))
        if (fs::exists(fs::symlink_status(part, ignored)))
            Raise(error_number::kFileExists, part.string() + " already exists.");
}

void write_text(const fs::path& file, std::string_view text) {
    DiskOutputFile out(file, platform::WriteMode::kReplace);
    out.Write(text);
    out.Close();
}

/// The table of a new shapefile; a table must have a column, as its readers want one.
DbfLayout layout_for(const std::vector<Field>& fields) {
    DbfLayout layout;
    for (const Field& field : fields) layout.AddColumn(field, field.Name);
    if (fields.empty()) layout.AddColumn({"Id", platform::FieldType::kInteger, 6, 0}, "Id");
    return layout;
}

/// Refuses at once what the table could not hold at the end.
class CheckedTable final : public platform::ITable {
public:
    explicit CheckedTable(platform::ITable& rows) : m_rows(rows) {}
    std::vector<Field> Fields() const override { return m_rows.Fields(); }
    int FindField(std::string_view name) const override { return m_rows.FindField(name); }
    int AddField(const Field& field) override {
        auto fields = m_rows.Fields();
        fields.push_back(field);
        layout_for(fields);
        return m_rows.AddField(field);
    }
    void DeleteField(int field) override { m_rows.DeleteField(field); }

private:
    platform::ITable& m_rows;
};

/// A shapefile being made: its rows are in memory until it is published, and in its files from then on, which are
/// opened when somebody asks for them.
class NewShapefile final : public platform::IFeatureClass {
public:
    NewShapefile(const fs::path& folder, const platform::FeatureClassDefinition& definition)
        : m_path(shapefile_path(folder, definition.Name)),
          m_folder(std::make_unique<TemporaryFolder>(m_path)),
          m_rows(std::make_unique<RowBuffer>(definition.Shape, definition.Fields, definition.Reference)),
          m_table(m_rows->Table()) {
        layout_for(definition.Fields);
    }

    platform::ShapeType Shape() const override { return Current().Shape(); }
    platform::SpatialReference Reference() const override { return Current().Reference(); }
    platform::Extent Bounds() const override { return Current().Bounds(); }
    std::int64_t FeatureCount() const override { return Current().FeatureCount(); }
    platform::ITable& Table() override { return m_rows ? m_table : Published().Table(); }
    std::unique_ptr<platform::IFeatureCursor> Find(const Search& search) override { return Current().Find(search); }
    std::unique_ptr<platform::IInsertCursor> Insert() override { return Current().Insert(); }

    void Publish() {
        if (!m_rows) Raise(error_number::kInvalidCall, m_path.string() + " is published already.");
        refuse_taken(m_path.parent_path(), m_path.stem().string());
        WriteParts();
        MoveParts();
        m_folder.reset();
        m_rows.reset();
    }

private:
    platform::IFeatureClass& Current() const {
        return m_rows ? static_cast<platform::IFeatureClass&>(*m_rows) : Published();
    }

    OgrFeatureClass& Published() const {
        if (!m_published) m_published = OgrFeatureClass::Open(m_path.string());
        return *m_published;
    }

    fs::path Temporary(const char* extension) const {
        return m_folder->Path() / m_path.filename().replace_extension(extension);
    }

    void WriteParts() {
        const std::vector<Field> fields = m_rows->Table().Fields();
        const DbfLayout layout = layout_for(fields);
        DbfWriter table(Temporary(".dbf"), layout);
        ShpWriter shapes(Temporary(".shp"), Temporary(".shx"), shp_header(m_rows->Shape()));
        const auto cursor = m_rows->Find({});
        while (const auto feature = cursor->NextFeature()) {
            shapes.Append(shape_record(feature->Shape()));
            std::string record = layout.BlankRecord();
            for (std::size_t i = 0; i < fields.size(); ++i) {
                const DbfColumn& column = layout.Columns()[i];
                const FieldValue value = feature->Value(static_cast<int>(i));
                record.replace(column.Offset, column.Width, dbf_cell(column, value, kEncoding, fields[i].Name));
            }
            table.Append(record);
        }
        table.Close();
        shapes.Close();
        write_text(Temporary(".cpg"), kEncoding);
        if (const std::string projection = ProjectionFileText(m_rows->Reference()); !projection.empty())
            write_text(Temporary(".prj"), projection);
    }

    /// Side files first: without its .shp nobody takes them for a shapefile.
    void MoveParts() {
        const fs::path folder = m_path.has_parent_path() ? m_path.parent_path() : fs::path(".");
        std::vector<fs::path> moved;
        try {
            for (const char* extension : {".dbf", ".shx", ".cpg", ".prj", ".shp"}) {
                std::error_code ignored;
                const fs::path from = Temporary(extension);
                if (!fs::exists(from, ignored)) continue;
                rename_new(from, folder / from.filename());
                moved.push_back(folder / from.filename());
            }
        } catch (const platform::RuntimeError&) {
            std::error_code ignored;
            for (const fs::path& file : moved) fs::remove(file, ignored);
            throw;
        }
        sync_folder(folder);
    }

    fs::path m_path;
    std::unique_ptr<TemporaryFolder> m_folder;
    std::unique_ptr<RowBuffer> m_rows;  ///< null: published
    CheckedTable m_table;
    mutable std::shared_ptr<OgrFeatureClass> m_published;  ///< null: not opened
};

}  // namespace

std::shared_ptr<platform::IFeatureClass> ShapefileWorkspace::Open(const fs::path& folder, const std::string& name) {
    const fs::path path = shapefile_path(folder, name);
    std::error_code ignored;
    if (!fs::is_regular_file(path, ignored)) return nullptr;
    return OgrFeatureClass::Open(path.string());
}

std::shared_ptr<platform::IFeatureClass> ShapefileWorkspace::Create(
    const fs::path& folder, const platform::FeatureClassDefinition& definition) {
    platform::CheckDatasetName(definition.Name);
    std::error_code ignored;
    if (!fs::is_directory(folder, ignored)) Raise(error_number::kPathNotFound, "There is no folder " + folder.string());
    if (is_protected(folder))
        Raise(error_number::kPermissionDenied, "The folder " + folder.string() + " is read-only.");
    refuse_taken(folder, definition.Name);
    return std::make_shared<NewShapefile>(folder, definition);
}

void ShapefileWorkspace::Publish(const std::shared_ptr<platform::IFeatureClass>& created) {
    const auto shapefile = std::dynamic_pointer_cast<NewShapefile>(created);
    if (!shapefile) Raise(error_number::kInvalidCall, "This feature class is no new shapefile.");
    shapefile->Publish();
}

void ShapefileWorkspace::Delete(const fs::path& folder, const std::string& name) {
    const fs::path path = shapefile_path(folder, name);
    auto parts = parts_of(path);
    if (parts.empty()) Raise(error_number::kFileNotFound, path.string() + " does not exist.");
    std::error_code failure;
    // Without its .shp the rest is no shapefile any more.
    if (parts.back() == path) std::rotate(parts.begin(), parts.end() - 1, parts.end());
    for (const fs::path& part : parts) {
        fs::remove(part, failure);
        if (failure) RaiseErrno(failure.value(), part);
    }
}

}  // namespace wxl::files
