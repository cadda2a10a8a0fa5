#pragma once
#include "adapters/shapefile/dbf_layout.h"
#include "adapters/shapefile/row_editor.h"

namespace wxl::files {

/// State of a file that tells whether another program changed it.
struct FileStamp {
    std::uint64_t File = 0;
    std::int64_t Changed = 0;  ///< nanoseconds
    std::uint64_t Size = 0;
    friend bool operator==(const FileStamp&, const FileStamp&) = default;
};

/// Stamp of a file; all zero when it is not there.
FileStamp stamp_of(const std::filesystem::path& file);

/// Changes shapefiles. Cells, marks of deletion and columns need a new .dbf only, which takes the place of the old one
/// in a single step; new rows and the dropping of marked ones replace .dbf, .shp and .shx together (see PartsSwap).
/// Bytes of records and cells that were not asked for are carried over as they are.
class ShapefileEditor final : public IRowEditor {
public:
    /// `encoding` of the table's texts; empty when unknown.
    ShapefileEditor(std::filesystem::path shapefile, std::string encoding);

    std::string WhyReadOnly() const override;
    void Check(int field, const platform::FieldValue& value) const override;
    void CheckInsert() const override;
    void Write(const RowEdits& edits) override;
    void AddField(const platform::Field& field) override;
    void DeleteField(int field) override;
    std::vector<std::int64_t> Repack() override;

    /// Puts the files of another shapefile (.shp, .shx, .dbf) into the places of this one's, byte for byte.
    void Replace(const std::filesystem::path& other);

    /// Rows that stand and are not marked as deleted.
    std::int64_t CountRows() const;

private:
    class Locked;

    std::string WhySwapBlocks() const;
    const DbfColumn& Column(int field) const;
    std::string Cell(int field, const platform::FieldValue& value) const;
    void Patch(std::uint32_t row, std::span<char> record, const RowEdits& edits) const;
    std::string Record(const NewRow& row) const;
    void WriteTable(const RowEdits& edits);
    void WriteAll(const RowEdits& edits);
    void Reload();

    std::filesystem::path m_shapefile;
    std::filesystem::path m_table;
    std::string m_encoding;
    DbfLayout m_layout;
    FileStamp m_tableStamp;
    FileStamp m_shapesStamp;
};

}  // namespace wxl::files
