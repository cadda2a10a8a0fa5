#include "adapters/gdal/sqlite_statements.h"

namespace wxl::files {

namespace {

std::string in_quotes(const std::string& text, char quote) {
    std::string quoted(1, quote);
    for (const char c : text) quoted += c == quote ? std::string(2, quote) : std::string(1, c);
    return quoted + quote;
}

}  // namespace

std::string sql_name(const std::string& name) {
    return in_quotes(name, '"');
}

std::string sql_text(const std::string& text) {
    return in_quotes(text, '\'');
}

StatementPtr prepared(sqlite3* database, const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    const int code = sqlite3_prepare_v3(database, sql.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
    return StatementPtr(code == SQLITE_OK ? statement : nullptr);
}

bool ran(sqlite3_stmt* statement) {
    const bool done = sqlite3_step(statement) == SQLITE_DONE;
    return sqlite3_reset(statement) == SQLITE_OK && done;
}

bool executed(sqlite3* database, const std::string& sql) {
    return sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
}

bool bind_text(sqlite3_stmt* statement, int place, const std::string& text) {
    return sqlite3_bind_text(statement, place, text.data(), static_cast<int>(text.size()), SQLITE_STATIC) == SQLITE_OK;
}

bool bind_pair(sqlite3_stmt* statement, std::int64_t first, std::int64_t second) {
    return sqlite3_bind_int64(statement, 1, first) == SQLITE_OK &&
           sqlite3_bind_int64(statement, 2, second) == SQLITE_OK;
}

std::string column_text(sqlite3_stmt* statement, int column) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
    return text == nullptr ? std::string() : std::string(text);
}

}  // namespace wxl::files
