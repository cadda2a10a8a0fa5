#include "adapters/gdal/package_rows.h"

#include "adapters/gdal/place_index.h"
#include "adapters/gdal/sqlite_statements.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace wxl::files {

namespace {

namespace fs = std::filesystem;
using platform::FieldValue;
using platform::PackageTable;
using platform::ShapeType;

constexpr std::size_t kHeader = 8;     ///< magic, version, flags, system
constexpr std::size_t kEnvelope = 32;  ///< xmin, xmax, ymin, ymax

SqlitePtr open_for_writing(const fs::path& file) {
    sqlite3* database = nullptr;
    const int code = sqlite3_open_v2(file.c_str(), &database, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    SqlitePtr opened(database);
    return code == SQLITE_OK ? std::move(opened) : nullptr;
}

bool bind(sqlite3_stmt* statement, int place, const FieldValue& value) {
    if (const auto* whole = std::get_if<std::int64_t>(&value))
        return sqlite3_bind_int64(statement, place, *whole) == SQLITE_OK;
    if (const auto* number = std::get_if<double>(&value))
        return sqlite3_bind_double(statement, place, *number) == SQLITE_OK;
    if (const auto* text = std::get_if<std::string>(&value)) return bind_text(statement, place, *text);
    return sqlite3_bind_null(statement, place) == SQLITE_OK;
}

std::size_t column_count(const PackageTable& table) {
    return table.Fields.size() + (table.Shape == ShapeType::kNull ? 0 : 1);
}

/// "INSERT INTO t (geom, a, b) VALUES (?, ?, ?), (?, ?, ?)"
std::string insertion(const PackageTable& table, const std::string& geometryColumn, std::size_t rows) {
    std::string names;
    const auto add = [&](const std::string& name) { names += (names.empty() ? "" : ", ") + sql_name(name); };
    if (table.Shape != ShapeType::kNull) add(geometryColumn);
    for (const platform::Field& field : table.Fields) add(field.Name);
    std::string marks;
    for (std::size_t i = 0; i < column_count(table); ++i) marks += i == 0 ? "?" : ", ?";
    std::string all;
    for (std::size_t i = 0; i < rows; ++i) all += (i == 0 ? "(" : ", (") + marks + ")";
    return "INSERT INTO " + sql_name(table.Name) + " (" + names + ") VALUES " + all;
}

/// Rows that one statement may insert.
std::size_t rows_at_once(sqlite3* database, const PackageTable& table) {
    constexpr std::size_t kMostRows = 16;
    const int marks = sqlite3_limit(database, SQLITE_LIMIT_VARIABLE_NUMBER, -1);
    return std::clamp<std::size_t>(static_cast<std::size_t>(marks) / column_count(table), 1, kMostRows);
}

/// The triggers by which whoever changes rows keeps their number.
struct CountTrigger {
    const char* Name;  ///< before that of the table
    const char* Event;
    const char* Step;
};
constexpr std::array<CountTrigger, 2> kCountTriggers = {
    {{"trigger_insert_feature_count_", "INSERT", "+ 1"}, {"trigger_delete_feature_count_", "DELETE", "- 1"}}};

/// The header of a shape in a GeoPackage: little-endian, with an envelope or without.
void put_header(char* bytes, std::int32_t system, bool envelope) {
    static_assert(std::endian::native == std::endian::little);
    const std::array<char, 4> start = {'G', 'P', 0, static_cast<char>(envelope ? 3 : 1)};
    std::memcpy(bytes, start.data(), start.size());
    std::memcpy(bytes + 4, &system, 4);
}

}  // namespace

/// A row that waits for its statement.
struct PackageRows::Row {
    std::string Shape;  ///< as a GeoPackage stores it; empty: none
    platform::Extent Box;
    std::vector<FieldValue> Values;
};

struct PackageRows::Table {
    std::string Name;
    bool HasShapes = false;
    std::string Key;
    std::int32_t System = 0;
    int Columns = 0;
    StatementPtr Insertion;
    StatementPtr Insertions;  ///< of as many rows as wait at most
    std::vector<Row> Waiting;
    std::size_t Count = 0;  ///< of the rows that wait
    StatementPtr Deletion;
    std::optional<std::multimap<std::string, std::int64_t>> Earlier;  ///< rows by their key, read when first asked for
    platform::Extent Bounds;
    std::optional<PlaceIndex> Places;
};

PackageRows::PackageRows(const fs::path& file, const std::vector<PackageTable>& tables,
                         const std::string& geometryColumn, Places places)
    : m_database(open_for_writing(file)) {
    m_good = m_database && Execute("PRAGMA journal_mode = OFF") && Execute("PRAGMA synchronous = OFF") &&
             Execute("PRAGMA locking_mode = EXCLUSIVE") && Execute("BEGIN");
    for (const PackageTable& given : tables) {
        auto table = std::make_unique<Table>();
        table->Name = given.Name;
        table->HasShapes = given.Shape != ShapeType::kNull;
        table->Key = given.Fields.at(given.Key).Name;
        // The rows are counted at the end: a count at every row costs more than the row itself.
        for (const CountTrigger& trigger : kCountTriggers)
            m_good = m_good && Execute("DROP TRIGGER IF EXISTS " + sql_name(trigger.Name + given.Name));
        // The triggers of an index know functions of GDAL's: with them no insertion can be prepared.
        if (m_good && table->HasShapes && places == Places::kIndexed)
            table->Places.emplace(m_database.get(), given.Name, geometryColumn);
        table->Columns = static_cast<int>(column_count(given));
        table->Waiting.resize(rows_at_once(m_database.get(), given));
        table->Insertion = prepared(m_database.get(), insertion(given, geometryColumn, 1));
        table->Insertions = prepared(m_database.get(), insertion(given, geometryColumn, table->Waiting.size()));
        table->Deletion = prepared(m_database.get(), "DELETE FROM " + sql_name(given.Name) + " WHERE fid = ?");
        const StatementPtr system =
            prepared(m_database.get(), "SELECT srs_id FROM gpkg_geometry_columns WHERE table_name = ?");
        m_good = m_good && table->Insertion && table->Insertions && table->Deletion && system &&
                 bind_text(system.get(), 1, given.Name);
        if (m_good && sqlite3_step(system.get()) == SQLITE_ROW) table->System = sqlite3_column_int(system.get(), 0);
        m_tables.push_back(std::move(table));
    }
}

PackageRows::~PackageRows() = default;

bool PackageRows::Execute(const std::string& sql) {
    return executed(m_database.get(), sql);
}

bool PackageRows::ReadKeys(Table& table) {
    table.Earlier.emplace();
    const StatementPtr rows = prepared(
        m_database.get(), "SELECT fid, " + sql_name(table.Key) + " FROM " + sql_name(table.Name) + " ORDER BY fid");
    if (!rows) return false;
    int code = sqlite3_step(rows.get());
    for (; code == SQLITE_ROW; code = sqlite3_step(rows.get())) {
        const auto* key = reinterpret_cast<const char*>(sqlite3_column_text(rows.get(), 1));
        if (key != nullptr) table.Earlier->emplace(key, sqlite3_column_int64(rows.get(), 0));
    }
    return code == SQLITE_DONE;
}

bool PackageRows::Drop(std::size_t place, const std::string& key) {
    Table& table = *m_tables.at(place);
    if (!m_good || (!table.Earlier && !(Flush(table) && ReadKeys(table)))) return m_good = false;
    const auto [first, last] = table.Earlier->equal_range(key);
    for (auto row = first; row != last && m_good; ++row)
        m_good = sqlite3_bind_int64(table.Deletion.get(), 1, row->second) == SQLITE_OK && ran(table.Deletion.get());
    table.Earlier->erase(first, last);
    return m_good;
}

/// The extent is that of the rows, of which there are none.
bool PackageRows::Clear(std::size_t place) {
    Table& table = *m_tables.at(place);
    table.Earlier.emplace();
    m_good = m_good && Flush(table);
    const StatementPtr extent = prepared(
        m_database.get(),
        "UPDATE gpkg_contents SET min_x = NULL, min_y = NULL, max_x = NULL, max_y = NULL WHERE table_name = ?");
    m_good = m_good && Execute("DELETE FROM " + sql_name(table.Name)) && extent &&
             bind_text(extent.get(), 1, table.Name) && ran(extent.get());
    return m_good;
}

PackageRows::Row& PackageRows::NextRow(Table& table, std::span<const FieldValue> values) {
    Row& row = table.Waiting[table.Count];
    row.Values.assign(values.begin(), values.end());
    return row;
}

bool PackageRows::Put(std::size_t place, const OGRGeometry* shape, std::span<const FieldValue> values) {
    if (!m_good) return false;
    Table& table = *m_tables.at(place);
    Row& row = NextRow(table, values);
    row.Shape.clear();
    if (shape == nullptr) return Take(table);
    OGREnvelope box;
    shape->getEnvelope(&box);
    row.Box = {box.MinX, box.MinY, box.MaxX, box.MaxY};
    row.Shape.resize(kHeader + kEnvelope + shape->WkbSize());
    put_header(row.Shape.data(), table.System, true);
    const std::array<double, 4> sides = {box.MinX, box.MaxX, box.MinY, box.MaxY};
    std::memcpy(row.Shape.data() + kHeader, sides.data(), kEnvelope);
    auto* wkb = reinterpret_cast<unsigned char*>(row.Shape.data() + kHeader + kEnvelope);
    if (shape->exportToWkb(wkbNDR, wkb, wkbVariantIso) != OGRERR_NONE) return m_good = false;
    return Take(table);
}

bool PackageRows::Put(std::size_t place, const platform::Point& point, std::span<const FieldValue> values) {
    if (!m_good) return false;
    Table& table = *m_tables.at(place);
    Row& row = NextRow(table, values);
    row.Box = {point.X, point.Y, point.X, point.Y};
    row.Shape.assign(kHeader + 21, '\0');
    put_header(row.Shape.data(), table.System, false);
    row.Shape[kHeader] = 1;
    row.Shape[kHeader + 1] = 1;
    std::memcpy(row.Shape.data() + kHeader + 5, &point.X, 8);
    std::memcpy(row.Shape.data() + kHeader + 13, &point.Y, 8);
    return Take(table);
}

bool PackageRows::Take(Table& table) {
    ++table.Count;
    return table.Count < table.Waiting.size() || Flush(table);
}

bool PackageRows::Flush(Table& table) {
    const bool isFull = table.Count == table.Waiting.size();
    if (isFull) {
        InsertAll(table);
    } else {
        for (std::size_t i = 0; m_good && i < table.Count; ++i) InsertOne(table, table.Waiting[i]);
    }
    table.Count = 0;
    return m_good;
}

/// The rows of one statement get numbers that follow one another.
bool PackageRows::InsertAll(Table& table) {
    int place = 1;
    for (const Row& row : table.Waiting) {
        m_good = m_good && BindRow(table, table.Insertions.get(), place, row);
        place += table.Columns;
    }
    m_good = m_good && ran(table.Insertions.get());
    std::int64_t number =
        sqlite3_last_insert_rowid(m_database.get()) - static_cast<std::int64_t>(table.Waiting.size()) + 1;
    for (const Row& row : table.Waiting) m_good = m_good && Place(table, row, number++);
    return m_good;
}

bool PackageRows::InsertOne(Table& table, const Row& row) {
    m_good = m_good && BindRow(table, table.Insertion.get(), 1, row) && ran(table.Insertion.get()) &&
             Place(table, row, sqlite3_last_insert_rowid(m_database.get()));
    return m_good;
}

bool PackageRows::BindRow(const Table& table, sqlite3_stmt* statement, int place, const Row& row) {
    if (table.HasShapes) {
        const int code = row.Shape.empty()
                             ? sqlite3_bind_null(statement, place)
                             : sqlite3_bind_blob64(statement, place, row.Shape.data(), row.Shape.size(), SQLITE_STATIC);
        m_good = m_good && code == SQLITE_OK;
        ++place;
    }
    for (const FieldValue& value : row.Values) m_good = m_good && bind(statement, place++, value);
    return m_good;
}

bool PackageRows::Place(Table& table, const Row& row, std::int64_t number) {
    if (row.Shape.empty()) return true;
    table.Bounds.Include({row.Box.XMin, row.Box.YMin});
    table.Bounds.Include({row.Box.XMax, row.Box.YMax});
    return !table.Places || table.Places->Add(number, row.Box);
}

bool PackageRows::Finish() {
    for (const auto& table : m_tables) m_good = m_good && Flush(*table);
    // An extent that stands already is that of earlier rows.
    const StatementPtr extent =
        prepared(m_database.get(),
                 "UPDATE gpkg_contents SET min_x = min(coalesce(min_x, ?1), ?1), min_y = min(coalesce(min_y, ?2), ?2), "
                 "max_x = max(coalesce(max_x, ?3), ?3), max_y = max(coalesce(max_y, ?4), ?4) WHERE table_name = ?5");
    m_good = m_good && extent;
    for (const auto& table : m_tables) {
        if (!m_good || !table->HasShapes || table->Bounds.IsEmpty()) continue;
        const platform::Extent& box = table->Bounds;
        int place = 1;
        for (const double side : {box.XMin, box.YMin, box.XMax, box.YMax})
            m_good = m_good && sqlite3_bind_double(extent.get(), place++, side) == SQLITE_OK;
        m_good = m_good && bind_text(extent.get(), place, table->Name) && ran(extent.get());
    }
    for (const auto& table : m_tables)
        if (table->Places) m_good = m_good && table->Places->Finish();
    m_good = m_good && CountRows() && Execute("COMMIT");
    return m_good;
}

/// As GDAL keeps them. QGIS takes the number of all rows of a table without one for that of its filtered rows.
bool PackageRows::CountRows() {
    m_good = m_good && Execute(
                           "CREATE TABLE IF NOT EXISTS gpkg_ogr_contents(table_name TEXT NOT NULL PRIMARY KEY,"
                           "feature_count INTEGER DEFAULT NULL)");
    for (const auto& table : m_tables) {
        const std::string name = sql_name(table->Name);
        const std::string text = sql_text(table->Name);
        m_good =
            m_good && Execute("INSERT OR REPLACE INTO gpkg_ogr_contents SELECT " + text + ", count(*) FROM " + name);
        for (const CountTrigger& trigger : kCountTriggers)
            m_good =
                m_good && Execute("CREATE TRIGGER " + sql_name(trigger.Name + table->Name) + " AFTER " + trigger.Event +
                                  " ON " + name + " BEGIN UPDATE gpkg_ogr_contents SET feature_count = feature_count " +
                                  trigger.Step + " WHERE lower(table_name) = lower(" + text + "); END");
    }
    return m_good;
}

bool stamp_package(const fs::path& file, const std::string& moment) {
    const SqlitePtr database = open_for_writing(file);
    if (!database) return false;
    sqlite3_exec(database.get(), "PRAGMA journal_mode = OFF", nullptr, nullptr, nullptr);
    const StatementPtr change = prepared(database.get(), "UPDATE gpkg_contents SET last_change = ?");
    return change && bind_text(change.get(), 1, moment) && ran(change.get());
}

}  // namespace wxl::files
