#include "adapters/gdal/place_index.h"

#include "adapters/gdal/sqlite_statements.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <iterator>
#include <limits>
#include <utility>

namespace wxl::files {
namespace {

using platform::Extent;
using platform::Point;

constexpr std::int64_t kRoot = 1;
constexpr std::size_t kNodeHeader = 4;   ///< depth (of the root alone), entries
constexpr std::size_t kEntryBytes = 24;  ///< number, x from, x to, y from, y to
constexpr std::size_t kPairs = 64;       ///< rows of one statement
constexpr std::size_t kRowsAtOnce = std::size_t{1} << 14;

/// Where a cell of a square of 65536 x 65536 lies on Hilbert's curve: neighbours on it are neighbours in the plane.
std::uint32_t hilbert(std::uint32_t x, std::uint32_t y) {
    std::uint32_t place = 0;
    for (std::uint32_t side = 1U << 15U; side > 0; side /= 2) {
        const bool right = (x & side) != 0;
        const bool upper = (y & side) != 0;
        place += side * side * ((right ? 3U : 0U) ^ (upper ? 1U : 0U));
        if (upper) continue;
        if (right) {
            x = 65535U - x;
            y = 65535U - y;
        }
        std::swap(x, y);
    }
    return place;
}

std::uint32_t cell_of(double value, double from, double to) {
    const double share = to > from ? (value - from) / (to - from) : 0.0;
    return static_cast<std::uint32_t>(std::clamp(share, 0.0, 1.0) * 65535.0);
}

Point middle_of(const Extent& box) {
    return {box.XMin + (box.XMax - box.XMin) / 2.0, box.YMin + (box.YMax - box.YMin) / 2.0};
}

std::string many_rows(const std::string& table) {
    std::string statement = "INSERT INTO " + sql_name(table) + " (rowid, nodeno) VALUES (?, ?)";
    for (std::size_t i = 1; i < kPairs; ++i) statement += ", (?, ?)";
    return statement;
}

std::uint32_t place_on_curve(const Point& point, const Extent& all) {
    return hilbert(cell_of(point.X, all.XMin, all.XMax), cell_of(point.Y, all.YMin, all.YMax));
}

/// The largest float not above, and the smallest not below a number: boxes in the index hold what they stand for.
float float_below(double value) {
    const auto nearest = static_cast<float>(value);
    return static_cast<double>(nearest) > value ? std::nextafter(nearest, -std::numeric_limits<float>::infinity())
                                                : nearest;
}

float float_above(double value) {
    const auto nearest = static_cast<float>(value);
    return static_cast<double>(nearest) < value ? std::nextafter(nearest, std::numeric_limits<float>::infinity())
                                                : nearest;
}

template <class Whole>
unsigned char* put_big_endian(unsigned char* place, Whole value) {
    for (std::size_t i = 0; i < sizeof(Whole); ++i)
        place[i] = static_cast<unsigned char>(value >> (8 * (sizeof(Whole) - 1 - i)));
    return place + sizeof(Whole);
}

unsigned char* put_float(unsigned char* place, float value) {
    return put_big_endian(place, std::bit_cast<std::uint32_t>(value));
}

}  // namespace

struct PlaceIndex::Statements {
    StatementPtr Node;
    StatementPtr Row;
    StatementPtr Rows;  ///< kPairs at once
    StatementPtr Parent;
};

PlaceIndex::PlaceIndex(sqlite3* database, const std::string& table, const std::string& geometryColumn)
    : m_database(database), m_table(table), m_statements(std::make_unique<Statements>()) {
    const std::string index = "rtree_" + table + "_" + geometryColumn;
    const auto filling = [&](const std::string& part) {
        return prepared(database, "INSERT OR REPLACE INTO " + sql_name(index + part) + " VALUES (?, ?)");
    };
    TakeTriggers();
    const StatementPtr size =
        prepared(database, "SELECT length(data) FROM " + sql_name(index + "_node") + " WHERE nodeno = 1");
    m_good = m_good && size && sqlite3_step(size.get()) == SQLITE_ROW;
    if (m_good) m_bytes.resize(static_cast<std::size_t>(sqlite3_column_int(size.get(), 0)));
    m_good = m_good && m_bytes.size() >= kNodeHeader + 2 * kEntryBytes;
    m_statements->Node = filling("_node");
    m_statements->Parent = filling("_parent");
    m_statements->Rows = prepared(database, many_rows(index + "_rowid"));
    m_statements->Row =
        prepared(database, "INSERT INTO " + sql_name(index + "_rowid") + " (rowid, nodeno) VALUES (?, ?)");
    m_good = m_good && m_statements->Node && m_statements->Parent && m_statements->Row && m_statements->Rows;
}

PlaceIndex::~PlaceIndex() = default;

void PlaceIndex::TakeTriggers() {
    const StatementPtr found = prepared(
        m_database, "SELECT name, sql FROM sqlite_master WHERE type = 'trigger' AND tbl_name = ? ORDER BY rowid");
    m_good = found && bind_text(found.get(), 1, m_table);
    std::vector<std::string> names;
    while (m_good && sqlite3_step(found.get()) == SQLITE_ROW) {
        names.push_back(column_text(found.get(), 0));
        m_triggers.push_back(column_text(found.get(), 1));
    }
    if (found) sqlite3_reset(found.get());
    for (const std::string& name : names) m_good = m_good && executed(m_database, "DROP TRIGGER " + sql_name(name));
}

std::size_t PlaceIndex::Capacity() const {
    return (m_bytes.size() - kNodeHeader) / kEntryBytes;
}

bool PlaceIndex::Add(std::int64_t row, const Extent& box) {
    m_rows.push_back({row, box});
    if (m_rows.size() >= kRowsAtOnce) FlushRows();
    return m_good;
}

void PlaceIndex::Record(sqlite3_stmt* above, std::int64_t number, std::int64_t node) {
    m_good = m_good && bind_pair(above, number, node) && ran(above);
}

/// The node takes the place of one of the same number.
void PlaceIndex::WriteNode(std::int64_t number, std::span<const Entry> entries, std::size_t depth) {
    std::ranges::fill(m_bytes, static_cast<unsigned char>(0));
    unsigned char* place = put_big_endian(m_bytes.data(), static_cast<std::uint16_t>(depth));
    place = put_big_endian(place, static_cast<std::uint16_t>(entries.size()));
    for (const Entry& entry : entries) {
        place = put_big_endian(place, static_cast<std::uint64_t>(entry.Number));
        place = put_float(place, float_below(entry.Box.XMin));
        place = put_float(place, float_above(entry.Box.XMax));
        place = put_float(place, float_below(entry.Box.YMin));
        place = put_float(place, float_above(entry.Box.YMax));
    }
    sqlite3_stmt* statement = m_statements->Node.get();
    m_good = m_good && sqlite3_bind_int64(statement, 1, number) == SQLITE_OK &&
             sqlite3_bind_blob64(statement, 2, m_bytes.data(), m_bytes.size(), SQLITE_STATIC) == SQLITE_OK &&
             ran(statement);
}

/// Entries side by side on the curve share a node, which `above` notes of each. The nodes, as entries of the next
/// level.
std::vector<PlaceIndex::Entry> PlaceIndex::Pack(const std::vector<Entry>& entries, sqlite3_stmt* above) {
    Extent all;
    for (const Entry& entry : entries) all.Include(middle_of(entry.Box));
    std::vector<std::pair<std::uint32_t, std::size_t>> order;
    order.reserve(entries.size());
    for (const Entry& entry : entries) order.emplace_back(place_on_curve(middle_of(entry.Box), all), order.size());
    std::ranges::sort(order);
    std::vector<Entry> nodes;
    std::vector<Entry> inside;
    std::vector<std::int64_t> nodeOf(entries.size());
    for (std::size_t first = 0; first < order.size(); first += Capacity()) {
        Entry node{++m_nodes, {}};
        inside.clear();
        for (std::size_t i = first; i < std::min(first + Capacity(), order.size()); ++i) {
            const Entry& entry = inside.emplace_back(entries[order[i].second]);
            nodeOf[order[i].second] = node.Number;
            node.Box.Include({entry.Box.XMin, entry.Box.YMin});
            node.Box.Include({entry.Box.XMax, entry.Box.YMax});
        }
        WriteNode(node.Number, inside, 0);
        nodes.push_back(node);
    }
    RecordAll(entries, nodeOf, above);
    return nodes;
}

/// Rows by the hundred thousand go in as many at once as a statement takes; nodes are few.
void PlaceIndex::RecordAll(const std::vector<Entry>& entries, const std::vector<std::int64_t>& nodes,
                           sqlite3_stmt* above) {
    std::size_t done = 0;
    sqlite3_stmt* rows = m_statements->Rows.get();
    for (; above == m_statements->Row.get() && done + kPairs <= entries.size(); done += kPairs) {
        for (std::size_t i = 0; i < kPairs; ++i) {
            const int place = static_cast<int>(2 * i + 1);
            m_good = m_good && sqlite3_bind_int64(rows, place, entries[done + i].Number) == SQLITE_OK &&
                     sqlite3_bind_int64(rows, place + 1, nodes[done + i]) == SQLITE_OK;
        }
        m_good = m_good && ran(rows);
    }
    for (; done < entries.size(); ++done) Record(above, entries[done].Number, nodes[done]);
}

void PlaceIndex::FlushRows() {
    std::ranges::move(Pack(m_rows, m_statements->Row.get()), std::back_inserter(m_leaves));
    m_rows.clear();
}

void PlaceIndex::WriteRoot(const std::vector<Entry>& entries, std::size_t depth, sqlite3_stmt* above) {
    WriteNode(kRoot, entries, depth);
    for (const Entry& entry : entries) Record(above, entry.Number, kRoot);
}

bool PlaceIndex::Finish() {
    if (m_good && m_leaves.empty() && m_rows.size() <= Capacity()) {
        WriteRoot(m_rows, 0, m_statements->Row.get());
    } else if (m_good) {
        FlushRows();
        std::size_t depth = 1;
        for (; m_good && m_leaves.size() > Capacity(); ++depth) m_leaves = Pack(m_leaves, m_statements->Parent.get());
        WriteRoot(m_leaves, depth, m_statements->Parent.get());
    }
    for (const std::string& trigger : m_triggers) m_good = m_good && executed(m_database, trigger);
    return m_good;
}

}  // namespace wxl::files
