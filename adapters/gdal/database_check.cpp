#include "adapters/gdal/database_check.h"

#include "adapters/gdal/plain_words.h"
#include "adapters/gdal/source_rules.h"
#include "adapters/gdal/sqlite_fence.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <fstream>
#include <new>
#include <string_view>
#include <vector>

namespace wxl::files {

namespace error_number = platform::error_number;
namespace fs = std::filesystem;

namespace {

struct StatementCloser {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, StatementCloser>;

std::string column_text(sqlite3_stmt& statement, int column) {
    const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(&statement, column));
    return bytes == nullptr ? std::string()
                            : std::string(bytes, static_cast<std::size_t>(sqlite3_column_bytes(&statement, column)));
}

[[noreturn]] void raise_unreadable(sqlite3& database, const fs::path& path) {
    const int code = sqlite3_extended_errcode(&database);
    const std::array<int, 5> unfinished = {SQLITE_READONLY_ROLLBACK, SQLITE_READONLY_RECOVERY, SQLITE_READONLY_CANTINIT,
                                           SQLITE_READONLY_CANTLOCK, SQLITE_CANTOPEN};
    std::error_code none;
    for (const char* ending : {"-journal", "-wal"}) {
        const std::string side = path.string() + ending;
        if (fs::exists(fs::symlink_status(side, none)) &&
            std::find(unfinished.begin(), unfinished.end(), code) != unfinished.end())
            platform::Raise(
                error_number::kPermissionDenied,
                path.string() + " holds a change that was cut short (" + side +
                    "), and commands that read leave it alone: make the change again (wxl obs-fields and "
                    "wxl remove-duplicates first take back what was cut short), or open the file in QGIS and save it");
    }
    platform::Raise(error_number::kDeviceIo,
                    path.string() + " could not be read: " + plain_words(sqlite3_errmsg(&database)));
}

SqlitePtr opened(const fs::path& path) {
    SqlitePtr database = OpenForReading(path);
    if (!database) platform::Raise(error_number::kDeviceIo, path.string() + " could not be read: unable to open it");
    return database;
}

Statement prepared(sqlite3& database, const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(&database, sql.c_str(), static_cast<int>(sql.size()), &statement, nullptr);
    return Statement(statement);
}

/// What is left of a statement behind blanks and comments.
std::string_view without_blanks(std::string_view sql) {
    constexpr std::string_view kMark = "\xEF\xBB\xBF";  // of byte order
    for (;;) {
        const std::string_view before = sql;
        sql.remove_prefix(std::min(sql.find_first_not_of(" \t\n\f\r"), sql.size()));
        if (sql.starts_with(kMark)) sql.remove_prefix(kMark.size());
        if (sql.starts_with("--")) sql.remove_prefix(std::min(sql.find('\n'), sql.size()));
        if (sql.starts_with("/*")) sql.remove_prefix(std::min(sql.find("*/", 2), sql.size() - 2) + 2);
        if (sql.size() == before.size()) return sql;
    }
}

/// SQLite's own reading of statements, without running them.
class Grammar {
public:
    Grammar() {
        sqlite3* opened = nullptr;
        const int result = sqlite3_open_v2(":memory:", &opened, SQLITE_OPEN_READWRITE | SQLITE_OPEN_MEMORY, nullptr);
        m_database.reset(opened);
        if (result != SQLITE_OK) throw std::bad_alloc();
        // Names that SQLite keeps for itself stand in databases.
        sqlite3_exec(opened, "PRAGMA writable_schema=1", nullptr, nullptr, nullptr);
        sqlite3_set_authorizer(opened, &Grammar::Note, this);
    }

    /// Whether the statement makes a virtual table other than SQLite's own indexes. One that begins so and cannot be
    /// read does.
    bool MakesForeignTable(const std::string& sql) {
        m_modules.clear();
        const bool isRead = prepared(*m_database, sql) != nullptr;
        if (sqlite3_errcode(m_database.get()) == SQLITE_NOMEM) throw std::bad_alloc();
        const bool foreign = std::any_of(m_modules.begin(), m_modules.end(), [](const auto& m) { return !is_own(m); });
        return foreign || (!isRead && begins_as_virtual(sql));
    }

private:
    static bool begins_as_virtual(std::string_view sql) {
        constexpr std::size_t kCreate = 6;
        const std::string_view rest = without_blanks(sql.substr(std::min(kCreate, sql.size())));
        return platform::EqualNoCase(rest.substr(0, rest.find_first_of(" \t\n\f\r/-")), "VIRTUAL");
    }

    static bool is_own(const std::string& module) {
        constexpr std::array<std::string_view, 4> kOwn = {"rtree", "fts3", "fts4", "fts5"};
        return std::any_of(kOwn.begin(), kOwn.end(), [&](auto own) { return platform::EqualNoCase(own, module); });
    }

    static int Note(void* self, int action, const char*, const char* module, const char*, const char*) {
        if (action == SQLITE_CREATE_VTABLE)
            static_cast<Grammar*>(self)->m_modules.emplace_back(module == nullptr ? "" : module);
        return SQLITE_OK;
    }

    SqlitePtr m_database;
    std::vector<std::string> m_modules;
};

/// A name of the tables in which a GeoPackage, SQLite or OGR says what is where: read by whoever opens it.
bool is_reserved(const std::string& name) {
    const std::string upper = platform::UpperCase(name);
    constexpr std::array<std::string_view, 4> kReserved = {"GPKG_", "SQLITE_", "OGR_", "RTREE_"};
    return std::any_of(kReserved.begin(), kReserved.end(), [&](auto start) { return upper.starts_with(start); });
}

double processor_seconds() {
    timespec now = {};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

int stop_late(void* end) {
    return processor_seconds() > *static_cast<const double*>(end) ? 1 : 0;
}

/// Views compute and read; a row that differs from one reading to the next would make a judgement worthless.
int allow_reading(void*, int action, const char*, const char* name, const char*, const char*) {
    const std::string_view function = name == nullptr ? "" : name;
    if (action == SQLITE_FUNCTION)
        return function == "load_extension" || function == "random" || function == "randomblob" ? SQLITE_DENY
                                                                                                : SQLITE_OK;
    const bool reads = action == SQLITE_SELECT || action == SQLITE_READ || action == SQLITE_RECURSIVE;
    return reads ? SQLITE_OK : SQLITE_DENY;
}

std::string quoted(const std::string& name) {
    std::string text = "\"";
    for (const char c : name) text += c == '"' ? std::string("\"\"") : std::string(1, c);
    return text + "\"";
}

bool is_view(sqlite3& database, const std::string& name) {
    const Statement statement =
        prepared(database, "SELECT 1 FROM sqlite_master WHERE type = 'view' AND name = ?1 COLLATE NOCASE");
    if (!statement) return false;
    sqlite3_bind_text(statement.get(), 1, name.c_str(), static_cast<int>(name.size()), SQLITE_TRANSIENT);
    return sqlite3_step(statement.get()) == SQLITE_ROW;
}

/// The name at the end of a journal that was made for several databases at once; empty for others.
std::string file_named_by(const std::string& journal) {
    constexpr std::string_view kMark = "\xd9\xd5\x05\xf9\x20\xa1\x63\xd7";
    constexpr std::streamoff kTail = 16;  // length, checksum, mark
    std::ifstream file(journal, std::ios::binary | std::ios::ate);
    const std::streamoff size = file.tellg();
    std::array<char, kTail> tail{};
    if (size < kTail || !file.seekg(size - kTail).read(tail.data(), kTail)) return {};
    if (std::string_view(tail.data() + 8, 8) != kMark) return {};
    const auto byte = [&](std::size_t at) { return std::streamoff{static_cast<unsigned char>(tail[at])}; };
    const std::streamoff length = byte(0) << 24 | byte(1) << 16 | byte(2) << 8 | byte(3);
    constexpr std::streamoff kLongest = 4096;
    if (length < 1 || length > std::min(kLongest, size - kTail)) return "?";
    std::string name(static_cast<std::size_t>(length), '\0');
    file.seekg(size - kTail - length).read(name.data(), length);
    return name;
}

}  // namespace

bool is_database(const fs::path& file) {
    constexpr std::string_view kMark("SQLite format 3\0", 16);
    std::array<char, kMark.size()> start{};
    std::ifstream source(file, std::ios::binary);
    source.read(start.data(), start.size());
    return std::string_view(start.data(), static_cast<std::size_t>(source.gcount())) == kMark;
}

void CheckDatabase(const fs::path& path) {
    const SqlitePtr database = opened(path);
    const Statement statement = prepared(*database, "SELECT type, name, sql FROM sqlite_master");
    if (!statement) raise_unreadable(*database, path);
    Grammar grammar;
    int result = SQLITE_ROW;
    while ((result = sqlite3_step(statement.get())) == SQLITE_ROW) {
        const bool stands = column_text(*statement, 0) == "view" && is_reserved(column_text(*statement, 1));
        if (stands || grammar.MakesForeignTable(column_text(*statement, 2)))
            throw IndirectSource(path.string() + " leads to data elsewhere", kNameTheFile);
    }
    if (result != SQLITE_DONE) raise_unreadable(*database, path);
}

void CheckView(const fs::path& path, const std::string& layer) {
    const SqlitePtr database = opened(path);
    if (!is_view(*database, layer)) return;
    const auto refuse = [&](const std::string& why) {
        throw IndirectSource(path.string() + ": the view \"" + layer + "\" " + why,
                             "write its rows into a table (ogr2ogr OUT.gpkg INPUT " + layer + ")");
    };
    sqlite3_set_authorizer(database.get(), allow_reading, nullptr);
    const Statement rows = prepared(*database, "SELECT * FROM " + quoted(layer));
    if (!rows) refuse(std::string("is not plain: ") + sqlite3_errmsg(database.get()));
    constexpr double kBytesASecond = 10e6;
    constexpr int kSteps = 1000;
    std::error_code none;
    double end = processor_seconds() + 0.5 + static_cast<double>(fs::file_size(path, none)) / kBytesASecond;
    sqlite3_progress_handler(database.get(), kSteps, stop_late, &end);
    int result = SQLITE_ROW;
    while ((result = sqlite3_step(rows.get())) == SQLITE_ROW && processor_seconds() <= end) {
    }
    if (result == SQLITE_ROW || result == SQLITE_INTERRUPT) refuse("takes too long to compute, or has no end");
    if (result != SQLITE_DONE) raise_unreadable(*database, path);
}

std::string why_journal_blocks(const fs::path& path) {
    const std::string journal = path.string() + "-journal";
    const std::string named = file_named_by(journal);
    if (named.empty()) return {};
    return journal + " names another file (" + named +
           "), which would be deleted with the change that it takes back: finish that change with the program that "
           "began it, or delete the journal when " +
           path.string() + " is as it should be";
}

void refuse_journals(const fs::path& path) {
    std::error_code none;
    for (const char* ending : {"-journal", "-wal"}) {
        const std::string side = path.string() + ending;
        if (!fs::exists(fs::symlink_status(side, none))) continue;
        const std::string why =
            fs::exists(path, none)
                ? path.string() + " is open in another program, or a change of it was cut short (" + side +
                      " stands beside it): close it there, or open it in QGIS and save it, and do this again"
                : side + " is left from another file, and would be taken for a part of " + path.string() +
                      ": delete it, or choose another name";
        platform::Raise(error_number::kPermissionDenied, why);
    }
}

}  // namespace wxl::files
