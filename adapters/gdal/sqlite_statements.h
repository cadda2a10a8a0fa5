#pragma once
#include <cstdint>
#include <memory>
#include <sqlite3.h>
#include <string>

namespace wxl::files {

struct StatementCloser {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using StatementPtr = std::unique_ptr<sqlite3_stmt, StatementCloser>;

/// A name of a table or column as it stands in SQL, in quotes.
std::string sql_name(const std::string& name);

/// A text as it stands in SQL, in quotes.
std::string sql_text(const std::string& text);

/// Made ready to be run often; null where it is no statement of this database.
StatementPtr prepared(sqlite3* database, const std::string& sql);

/// Runs a statement that gives no rows, and makes it ready for the next time. Whether it worked.
bool ran(sqlite3_stmt* statement);

/// Runs statements that give no rows. Whether all worked.
bool executed(sqlite3* database, const std::string& sql);

/// The text must stay until the statement has run.
bool bind_text(sqlite3_stmt* statement, int place, const std::string& text);

/// The first two places.
bool bind_pair(sqlite3_stmt* statement, std::int64_t first, std::int64_t second);

/// A cell of the present row; "" for NULL.
std::string column_text(sqlite3_stmt* statement, int column);

}  // namespace wxl::files
