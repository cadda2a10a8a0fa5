#pragma once
#include "adapters/ogr/ogr_source.h"
#include "adapters/shapefile/row_editor.h"

namespace wxl::files {

/// Changes layers of databases in a file (GeoPackage, SpatiaLite): every change is one transaction.
class TransactionEditor final : public IRowEditor {
public:
    /// `columns` of the layer, for Check; without them it lets everything pass.
    TransactionEditor(std::filesystem::path path, std::string layer, const OGRFeatureDefn* columns = nullptr);
    ~TransactionEditor() override;

    /// Whether a driver's layers are changed so.
    static bool Suits(const std::string& driver) { return driver == "GPKG" || driver == "SQLite"; }

    /// Takes back what a killed run left half done: SQLite does it when the file is opened for changes, and refuses to
    /// open it for reading alone until then. For what is about to be changed only; does nothing when there is nothing
    /// to take back. RuntimeError 70 when the journal names another file, which SQLite would delete.
    static void FinishInterrupted(const std::filesystem::path& path);

    std::string WhyReadOnly() const override;

    /// RuntimeError 6 or 13 for a value that would come back as another: too large for a SMALLINT, a BOOLEAN or a
    /// DATE that it is none of, longer than the text may be.
    void Check(int field, const platform::FieldValue& value) const override;
    void CheckInsert() const override {}
    void Write(const RowEdits& edits) override;
    void AddField(const platform::Field& field) override;
    void DeleteField(int field) override;
    std::vector<std::int64_t> Repack() override { return {}; }

private:
    template <class Action>
    void InTransaction(Action&& action);

    /// A GeoPackage keeps a layer's extent beside it, and deletions do not shrink it. Without this it stays too wide,
    /// which does no harm: failures do not matter.
    void RecomputeExtent();

    std::filesystem::path m_path;
    std::string m_layer;
    OGRFeatureDefn* m_columns = nullptr;  // counted by OGR
};

}  // namespace wxl::files
