#pragma once
// GeoPackages that were made to mislead.

#include <filesystem>
#include <string>
#include <vector>

namespace wxl::tests {

/// A GeoPackage with a layer "points" of three fixes of the animal "a" (and Time2 0, 60, 120) in EPSG:32633; then these
/// statements are run on it by SQLite alone, with its schema open for writing. RuntimeError where one fails.
void make_geopackage(const std::filesystem::path& file, const std::vector<std::string>& statements = {});

/// The statement that puts another into the schema of a database as it stands there, of the type "table" or "view".
std::string schema_entry(const std::string& type, const std::string& name, const std::string& sql);

/// The statement that tells a table or view as a layer of points.
std::string told_as_layer(const std::string& name);

/// Leaves the database as a killed writer does: rows of a table "half" stand in it, and its journal, which says how to
/// take them back, beside it.
void leave_half_changed(const std::filesystem::path& database);

/// Makes the journal of a half changed database one of several databases, which names this file as their common one.
void name_common_journal(const std::filesystem::path& database, const std::filesystem::path& named);

/// Puts a database into the mode with a write-ahead log, and leaves it without one.
void turn_to_logging(const std::filesystem::path& database);

/// Leaves the database as a killed writer in that mode does: a row of a table "half" stands in the log beside it alone.
void leave_log(const std::filesystem::path& database);

}  // namespace wxl::tests
