#include "adapters/ogr/transaction_editor.h"

#include "adapters/gdal/database_check.h"
#include "adapters/gdal/sqlite_fence.h"
#include "adapters/shapefile/shapefile_parts.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <array>

namespace wxl::files {

using platform::Field;
using platform::FieldValue;
using platform::Raise;
namespace error_number = platform::error_number;
namespace fs = std::filesystem;

namespace {

/// A database open for changes. Dataset null where it cannot be opened; RuntimeError 70 for a journal that would delete
/// other files.
class UpdatedDatabase {
public:
    explicit UpdatedDatabase(const fs::path& path) : m_door(path) {
        if (const std::string why = why_journal_blocks(path); !why.empty()) Raise(error_number::kPermissionDenied, why);
        RegisterGdal();
        constexpr std::array<const char*, 3> kDatabases = {"GPKG", "SQLite", nullptr};
        Dataset.reset(GDALDataset::Open(path.c_str(), GDAL_OF_VECTOR | GDAL_OF_UPDATE, kDatabases.data()));
    }

private:
    SqliteWriting m_door;

public:
    GdalDatasetPtr Dataset;
};

void change_cells(OGRLayer& layer, const RowEdits& edits) {
    for (const auto& [oid, cells] : edits.Values) {
        if (edits.Deleted.contains(oid)) continue;
        const OGRFeatureUniquePtr feature(layer.GetFeature(oid));
        if (!feature)
            Raise(error_number::kInvalidCall, "There is no feature with the object ID " + std::to_string(oid) + ".");
        for (const auto& [field, value] : cells) set_value(*feature, field, value);
        if (layer.SetFeature(feature.get()) != OGRERR_NONE) Raise(error_number::kDeviceIo);
    }
}

void delete_rows(OGRLayer& layer, const RowEdits& edits) {
    for (const std::int64_t oid : edits.Deleted)
        if (layer.DeleteFeature(oid) != OGRERR_NONE) Raise(error_number::kDeviceIo);
}

void insert_rows(OGRLayer& layer, const RowEdits& edits) {
    for (const NewRow& row : edits.Inserted) {
        const OGRFeatureUniquePtr feature(OGRFeature::CreateFeature(layer.GetLayerDefn()));
        for (std::size_t i = 0; i < row.Values.size(); ++i) set_value(*feature, static_cast<int>(i), row.Values[i]);
        feature->SetGeometryDirectly(to_ogr(row.Shape, layer.GetGeomType()).release());
        if (layer.CreateFeature(feature.get()) != OGRERR_NONE) Raise(error_number::kDeviceIo);
    }
}

/// Characters of a UTF-8 text.
int characters_of(const std::string& text) {
    return static_cast<int>(std::count_if(text.begin(), text.end(),
                                          [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; }));
}

}  // namespace

TransactionEditor::TransactionEditor(fs::path path, std::string layer, const OGRFeatureDefn* columns)
    : m_path(std::move(path)), m_layer(std::move(layer)), m_columns(columns ? columns->Clone() : nullptr) {
    if (m_columns != nullptr) m_columns->Reference();
}

TransactionEditor::~TransactionEditor() {
    if (m_columns != nullptr) m_columns->Release();
}

void TransactionEditor::Check(int field, const FieldValue& value) const {
    if (m_columns == nullptr || platform::IsMissing(value)) return;
    if (field < 0 || field >= m_columns->GetFieldCount()) Raise(error_number::kSubscript);
    const OGRFieldDefn& column = *m_columns->GetFieldDefn(field);
    const GdalErrors quiet;
    const OGRFeatureUniquePtr row(OGRFeature::CreateFeature(m_columns));
    set_value(*row, field, value);
    const FieldValue held = value_of(*row, field);
    const bool isText = std::holds_alternative<std::string>(value);
    const bool comesBack = isText && column.GetType() != OFTString ? !platform::IsMissing(held) : held == value;
    const bool tooLong = isText && column.GetType() == OFTString && column.GetWidth() > 0 &&
                         characters_of(std::get<std::string>(value)) > column.GetWidth();
    if (comesBack && !tooLong) return;
    const char* type = column.GetSubType() == OFSTNone ? OGRFieldDefn::GetFieldTypeName(column.GetType())
                                                       : OGRFieldDefn::GetFieldSubTypeName(column.GetSubType());
    Raise(platform::IsMissing(held) ? error_number::kTypeMismatch : error_number::kOverflow,
          "The value " + platform::ValueText(value) + " does not fit the field \"" + column.GetNameRef() +
              "\" of the type " + type + ".");
}

template <class Action>
void TransactionEditor::InTransaction(Action&& action) {
    if (const std::string why = WhyReadOnly(); !why.empty()) Raise(error_number::kPermissionDenied, why);
    GdalErrors errors;
    UpdatedDatabase database(m_path);
    GdalDatasetPtr& dataset = database.Dataset;
    OGRLayer* layer = dataset ? dataset->GetLayerByName(m_layer.c_str()) : nullptr;
    if (layer == nullptr || dataset->StartTransaction() != OGRERR_NONE)
        errors.RaiseWriting(m_path.string(), m_path.parent_path());
    try {
        action(*layer);
    } catch (...) {
        const platform::RuntimeError fault = platform::CurrentError();
        dataset->RollbackTransaction();
        if (fault.Number == error_number::kDeviceIo) errors.RaiseWriting(m_path.string(), m_path.parent_path());
        platform::Raise(fault.Number, fault.Description);
    }
    const bool committed = dataset->CommitTransaction() == OGRERR_NONE;
    if (!committed) dataset->RollbackTransaction();
    if (!CloseChecked(std::move(dataset), errors) || !committed)
        errors.RaiseWriting(m_path.string(), m_path.parent_path());
}

void TransactionEditor::FinishInterrupted(const fs::path& path) {
    std::error_code none;
    const bool waits = fs::exists(path.string() + "-journal", none) || fs::exists(path.string() + "-wal", none);
    if (!waits || !is_database(path)) return;
    if (const std::string why = why_journal_blocks(path); !why.empty()) Raise(error_number::kPermissionDenied, why);
    const SqliteWriting door(path);
    sqlite3* opened = nullptr;
    sqlite3_open_v2(path.c_str(), &opened, SQLITE_OPEN_READWRITE, nullptr);
    const SqlitePtr database(opened);
    // SQLite takes back what was cut short before it reads; whoever opens the file next is told what it could not.
    sqlite3_exec(opened, "SELECT 1 FROM sqlite_master LIMIT 1", nullptr, nullptr, nullptr);
}

std::string TransactionEditor::WhyReadOnly() const {
    if (is_protected(m_path)) return m_path.string() + " is read-only.";
    const fs::path folder = m_path.has_parent_path() ? m_path.parent_path() : fs::path(".");
    if (is_protected(folder)) return "The folder " + folder.string() + " is read-only.";
    if (std::string why = why_journal_blocks(m_path); !why.empty()) return why;
    const GdalErrors errors;
    const UpdatedDatabase database(m_path);
    const GdalDatasetPtr& dataset = database.Dataset;
    if (!dataset) return m_path.string() + " cannot be opened for changes: " + errors.Text();
    // A transaction that changes nothing shows whether another program holds the file.
    dataset->ReleaseResultSet(dataset->ExecuteSQL("BEGIN IMMEDIATE", nullptr, nullptr));
    if (errors.Failed()) return m_path.string() + " is in use by another program.";
    dataset->ReleaseResultSet(dataset->ExecuteSQL("ROLLBACK", nullptr, nullptr));
    return {};
}

void TransactionEditor::Write(const RowEdits& edits) {
    InTransaction([&](OGRLayer& layer) {
        change_cells(layer, edits);
        delete_rows(layer, edits);
        insert_rows(layer, edits);
    });
    if (!edits.Deleted.empty()) RecomputeExtent();
}

void TransactionEditor::RecomputeExtent() {
    const GdalErrors quiet;
    const UpdatedDatabase database(m_path);
    const GdalDatasetPtr& dataset = database.Dataset;
    if (!dataset || std::string(dataset->GetDriverName()) != "GPKG") return;
    const std::string statement = "RECOMPUTE EXTENT ON \"" + m_layer + "\"";
    dataset->ReleaseResultSet(dataset->ExecuteSQL(statement.c_str(), nullptr, nullptr));
}

void TransactionEditor::AddField(const Field& field) {
    InTransaction([&](OGRLayer& layer) {
        const auto definition = field_definition(field);
        if (layer.CreateField(definition.get()) != OGRERR_NONE) Raise(error_number::kDeviceIo);
    });
}

void TransactionEditor::DeleteField(int field) {
    InTransaction([&](OGRLayer& layer) {
        if (layer.DeleteField(field) != OGRERR_NONE) Raise(error_number::kDeviceIo);
    });
}

}  // namespace wxl::files
