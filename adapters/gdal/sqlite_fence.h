#pragma once
// SQLite writes where nobody asked it to: it finishes other people's transactions, deletes the files that their
// journals name, and puts files of its own beside a database that is only read. What it asks of the file system goes
// through a table of functions (its "VFS"), and this one opens for reading alone whatever was not named for writing.

#include <filesystem>
#include <memory>
#include <sqlite3.h>

namespace wxl::files {

/// While it lives every SQLite of this process that names no other table of functions, GDAL's too, opens databases and
/// their side files for reading only, deletes nothing, and loads no extensions; databases opened so use no functions of
/// a view or a computed column that may do more than compute, and make no texts of more than 64 MB. What is named by an
/// SqliteWriting is excepted, and so are SQLite's own temporary files. For a program of its own, not for a plugin.
class SqliteFence {
public:
    SqliteFence();
    ~SqliteFence();
    SqliteFence(const SqliteFence&) = delete;
    SqliteFence& operator=(const SqliteFence&) = delete;
};

/// While it lives this database may be written behind the fence: itself, its journal and its write-ahead log.
class SqliteWriting {
public:
    explicit SqliteWriting(const std::filesystem::path& database);
    ~SqliteWriting();
    SqliteWriting(const SqliteWriting&) = delete;
    SqliteWriting& operator=(const SqliteWriting&) = delete;

private:
    std::filesystem::path m_database;
};

struct SqliteCloser {
    void operator()(sqlite3* database) const { sqlite3_close_v2(database); }
};
using SqlitePtr = std::unique_ptr<sqlite3, SqliteCloser>;

/// A database behind the fence, whether or not it is up for others. Null where it cannot be opened; one that is not
/// SQLite's shows at the first statement only.
SqlitePtr OpenForReading(const std::filesystem::path& database);

}  // namespace wxl::files
