#pragma once
#include <filesystem>
#include <string>

namespace wxl::files {

/// Whether the file begins as an SQLite database does, as GeoPackages do.
bool is_database(const std::filesystem::path& file);

/// Looks through the tables of a database before anybody else reads it; nothing of it is run. IndirectSource when a
/// table stands for something else than itself (a virtual one other than SQLite's own indexes) or when what GeoPackages
/// say about themselves is a view; RuntimeError 57 when it cannot be read, and 70 when a change of it was cut short,
/// with what to do.
void CheckDatabase(const std::filesystem::path& path);

/// Reads through a layer that is a view, as its reader will. IndirectSource when it is no end of work (more than
/// half a second of the processor, and one for every 10 MB of the database), or calls functions that are not SQLite's
/// own.
void CheckView(const std::filesystem::path& path, const std::string& layer);

/// Why a database must not be opened for changes: its journal names another file, which SQLite would delete when it
/// takes the change back. Empty: it may.
std::string why_journal_blocks(const std::filesystem::path& path);

/// Whoever replaces a database, or makes one, calls this before: RuntimeError 70 when a journal or a write-ahead log
/// stands beside it, which SQLite would apply to the new file. What they hold belongs to another program that has the
/// old one open, or to a change that was cut short.
void refuse_journals(const std::filesystem::path& path);

}  // namespace wxl::files
