#pragma once
#include "adapters/disk/input_file.h"
#include "adapters/shapefile/dbf_layout.h"
#include "platform/values.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace wxl::files {

/// Rows that follow one another in a shapefile of points.
struct PointRows {
    enum class Kind : char {
        kPlain,    ///< its location and its cells stand here
        kDeleted,  ///< marked as deleted: no row any more
        kOther,    ///< to be read by OGR
    };

    PointRows(std::int64_t first, std::size_t rows, std::size_t columns)
        : First(first), Kinds(rows, Kind::kOther), Locations(rows), Columns(columns), Cells(rows * columns) {}

    int ColumnCount() const { return static_cast<int>(Columns); }
    const platform::FieldValue& Cell(std::size_t row, int column) const {
        return Cells[row * Columns + static_cast<std::size_t>(column)];
    }

    std::int64_t First;  ///< object ID of the first of them
    std::vector<Kind> Kinds;
    std::vector<platform::Point> Locations;  ///< by row
    std::size_t Columns;
    std::vector<platform::FieldValue> Cells;  ///< row by row, all columns; those not asked for are missing
};

/// A shapefile of points, read by a thousand rows at a time: several times as fast as OGR makes features of them.
/// It knows what nearly all rows hold and no more: a point, plain numbers, texts of printable ASCII. A row with
/// anything else is left to OGR, which knows all dialects of the format, so that both together give what OGR alone
/// would.
class PointShapefile {
public:
    /// Null when OGR has to read all of the file: its shapes are no points, or a column that is asked for holds neither
    /// texts nor numbers. `fields` are the columns as OGR tells them, `wanted` the names of those asked for (empty:
    /// all), `encoding` is GDAL's name for that of the texts (empty: unknown). RuntimeError as InputFile.
    static std::unique_ptr<PointShapefile> Open(const std::filesystem::path& shapefile,
                                                std::span<const platform::Field> fields,
                                                std::span<const std::string> wanted, const std::string& encoding);

    /// The next rows in the order of the file, null at its end; RuntimeError 57 when the files became shorter.
    std::shared_ptr<const PointRows> Next();

private:
    enum class Content : char { kUnasked, kText, kInteger, kDouble };

    /// The three files and what their headers say.
    struct Files {
        explicit Files(const std::filesystem::path& shapefile);
        InputFile Shapes;
        InputFile Index;
        InputFile Table;
        DbfLayout Layout;
        std::uint32_t ShapeType = 0;
        std::uint64_t Rows = 0;
    };

    PointShapefile(std::unique_ptr<Files> files, std::vector<Content> contents);

    static std::vector<Content> ContentsOf(const DbfLayout& layout, std::span<const platform::Field> fields,
                                           std::span<const std::string> wanted, const std::string& encoding);
    static bool Parse(std::string_view cell, Content content, platform::FieldValue& value);

    void ReadLocations(PointRows& rows);

    /// A record that lies apart from those of its neighbours; valid until the next one is asked for.
    std::span<const char> RecordApart(std::uint64_t offset);
    void ReadCells(PointRows& rows);

    std::unique_ptr<Files> m_files;
    std::vector<Content> m_contents;  // by column
    std::uint64_t m_next = 0;
    std::vector<char> m_bytes;  // of the file being read, kept for the next rows
    std::vector<char> m_apart;  // one record, or all shapes of a file whose records follow no order
    std::size_t m_askedApart = 0;
};

}  // namespace wxl::files
