#include "adapters/gdal/sqlite_fence.h"

#include <array>
#include <map>
#include <mutex>
#include <new>
#include <set>
#include <string>
#include <string_view>
#include <sys/stat.h>

namespace wxl::files {

namespace fs = std::filesystem;

namespace {

constexpr const char* kName = "wxl-reading";
constexpr int kLongestCell = 64 << 20;  // bytes

std::mutex& guard() {
    static std::mutex mutex;
    return mutex;
}

/// Databases that may be written now, as often as they were named.
std::multiset<std::string>& writable() {
    static std::multiset<std::string> databases;
    return databases;
}

sqlite3_vfs& system_files() {
    static sqlite3_vfs& found = *sqlite3_vfs_find(nullptr);
    return found;
}

std::string without_side_ending(const std::string& path) {
    for (const std::string_view ending : {"-journal", "-wal", "-shm"})
        if (path.ends_with(ending)) return path.substr(0, path.size() - ending.size());
    return path;
}

bool may_write(const char* path) {
    const std::scoped_lock lock(guard());
    return writable().contains(path) || writable().contains(without_side_ending(path));
}

/// Files without a name, and those that SQLite makes in the folder for temporary ones.
bool is_temporary(const char* path, int flags) {
    constexpr int kTemporary =
        SQLITE_OPEN_TEMP_DB | SQLITE_OPEN_TRANSIENT_DB | SQLITE_OPEN_TEMP_JOURNAL | SQLITE_OPEN_SUBJOURNAL;
    return path == nullptr || (flags & kTemporary) != 0;
}

bool is_empty_or_missing(const std::string& file) {
    struct stat status = {};
    return ::stat(file.c_str(), &status) != 0 || status.st_size == 0;
}

/// Whether an open database is in the mode with a write-ahead log, and has none: its readers would make one.
bool lacks_its_log(sqlite3_file& file, const std::string& database) {
    constexpr sqlite3_int64 kReadVersion = 19;
    char version = 0;
    return file.pMethods->xRead(&file, &version, 1, kReadVersion) == SQLITE_OK && version == 2 &&
           is_empty_or_missing(database + "-wal");
}

int immutable(sqlite3_file*) {
    return SQLITE_IOCAP_IMMUTABLE;
}

/// The same file as one that nobody changes: it needs neither locks nor side files.
void set_immutable(sqlite3_file& file) {
    static const sqlite3_io_methods* const usual = file.pMethods;
    static const sqlite3_io_methods methods = [] {
        sqlite3_io_methods changed = *usual;
        changed.xDeviceCharacteristics = immutable;
        return changed;
    }();
    if (file.pMethods == usual) file.pMethods = &methods;
}

/// The name with the wish that a log's index be opened for reading only. SQLite keeps the pointer while the file is
/// open, so names are never given up.
const char* with_index_for_reading(const std::string& database) {
    static std::map<std::string, const char*>& known = *new std::map<std::string, const char*>;
    const std::scoped_lock lock(guard());
    const char*& name = known[database];
    if (name == nullptr) {
        std::array<const char*, 2> wish = {"readonly_shm", "1"};
        const std::string journal = database + "-journal";
        const std::string log = database + "-wal";
        name = sqlite3_create_filename(database.c_str(), journal.c_str(), log.c_str(), 1, wish.data());
    }
    return name;
}

int open_file(sqlite3_vfs*, const char* path, sqlite3_file* file, int flags, int* opened) {
    sqlite3_vfs& system = system_files();
    if (is_temporary(path, flags) || may_write(path)) return system.xOpen(&system, path, file, flags, opened);
    constexpr int kWriting = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_DELETEONCLOSE;
    flags = (flags & ~kWriting) | SQLITE_OPEN_READONLY;
    const bool isDatabase = (flags & SQLITE_OPEN_MAIN_DB) != 0;
    const int result = system.xOpen(&system, isDatabase ? with_index_for_reading(path) : path, file, flags, opened);
    if (result == SQLITE_OK && isDatabase && lacks_its_log(*file, path)) set_immutable(*file);
    return result;
}

int delete_file(sqlite3_vfs*, const char* path, int sync) {
    sqlite3_vfs& system = system_files();
    return may_write(path) ? system.xDelete(&system, path, sync) : SQLITE_IOERR_DELETE;
}

void* load_nothing(sqlite3_vfs*, const char*) {
    return nullptr;
}

sqlite3_vfs& reading_files() {
    static sqlite3_vfs& files = [&]() -> sqlite3_vfs& {
        static sqlite3_vfs made = system_files();
        made.pNext = nullptr;
        made.zName = kName;
        made.xOpen = open_file;
        made.xDelete = delete_file;
        made.xDlOpen = load_nothing;
        sqlite3_vfs_register(&made, 0);
        return made;
    }();
    return files;
}

void restrain(sqlite3& database) {
    sqlite3_limit(&database, SQLITE_LIMIT_LENGTH, kLongestCell);
    sqlite3_db_config(&database, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
}

int restrain_new(sqlite3* database, const char**, const void*) {
    const char* file = sqlite3_db_filename(database, "main");
    if (file != nullptr && *file != '\0' && !may_write(file)) restrain(*database);
    return SQLITE_OK;
}

using Entry = void (*)();

Entry restrain_entry() {
    return reinterpret_cast<Entry>(restrain_new);
}

}  // namespace

SqliteFence::SqliteFence() {
    sqlite3_vfs_register(&reading_files(), 1);
    sqlite3_auto_extension(restrain_entry());
}

SqliteFence::~SqliteFence() {
    sqlite3_cancel_auto_extension(restrain_entry());
    sqlite3_vfs_register(&system_files(), 1);
}

SqliteWriting::SqliteWriting(const fs::path& database) : m_database(fs::weakly_canonical(database)) {
    const std::scoped_lock lock(guard());
    writable().insert(m_database.string());
}

SqliteWriting::~SqliteWriting() {
    const std::scoped_lock lock(guard());
    writable().erase(writable().find(m_database.string()));
}

SqlitePtr OpenForReading(const fs::path& database) {
    sqlite3* opened = nullptr;
    constexpr int kFlags = SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX;
    const int result = sqlite3_open_v2(database.c_str(), &opened, kFlags, reading_files().zName);
    SqlitePtr owned(opened);
    if (result == SQLITE_NOMEM) throw std::bad_alloc();
    if (result != SQLITE_OK) return nullptr;
    restrain(*owned);
    sqlite3_extended_result_codes(owned.get(), 1);
    return owned;
}

}  // namespace wxl::files
