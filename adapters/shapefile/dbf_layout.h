#pragma once
#include "adapters/disk/input_file.h"
#include "platform/values.h"

#include <string>
#include <vector>

namespace wxl::files {

/// A column of a .dbf table.
struct DbfColumn {
    char Type = 'C';        ///< 'C' text, 'N' and 'F' numbers, 'D' date, ...
    std::size_t Width = 0;  ///< bytes of a cell
    int Decimals = 0;
    std::size_t Offset = 0;  ///< of the cell in its record; byte 0 is the deletion mark
    std::string Descriptor;  ///< its 32 bytes in the header
};

/// The header of a .dbf table: columns, and bytes that are carried over unchanged.
class DbfLayout {
public:
    /// A table without columns.
    DbfLayout();

    /// RuntimeError 57 when the file is no table or shorter than its header says.
    static DbfLayout Read(const InputFile& file);

    const std::vector<DbfColumn>& Columns() const { return m_columns; }
    std::size_t HeaderLength() const;
    std::size_t RecordLength() const { return m_recordLength; }
    std::uint32_t Rows() const { return m_rows; }

    /// Adds a column for a field: numbers N(24,15), whole numbers N(18,0), texts C(254), dates D(8), unless the field
    /// asks for a length. `name` is in the table's own encoding: RuntimeError 5 when it is empty or longer than 10
    /// bytes or the type cannot be held, 6 when a record would grow too long.
    void AddColumn(const platform::Field& field, const std::string& name);
    void DropColumn(std::size_t column);

    /// The header with this number of rows.
    std::string Header(std::uint32_t rows) const;

    /// A record whose cells are all missing.
    std::string BlankRecord() const { return std::string(m_recordLength, ' '); }

private:
    void PlaceColumns(std::size_t extra);

    std::string m_start;  // the 32 bytes before the columns
    std::vector<DbfColumn> m_columns;
    std::string m_rest;  // what follows the columns: the end mark, and whatever a program put there
    std::uint32_t m_rows = 0;
    std::size_t m_recordLength = 1;
    std::size_t m_slack = 0;  // bytes of a record behind its last column
};

}  // namespace wxl::files
