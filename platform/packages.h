#pragma once
// Several layers and tables in one file.

#include "platform/values.h"

#include <cstddef>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace wxl::platform {

/// A table of a package, with shapes or without.
struct PackageTable {
    std::string Name;
    ShapeType Shape = ShapeType::kNull;  ///< kPoint, kPolygon, or kNull: no shapes
    std::vector<Field> Fields;           ///< whole numbers, numbers and texts
    std::size_t Key = 0;                 ///< the field, a text, by whose values earlier rows are replaced
    std::string Style = {};              ///< how a desktop GIS draws it (QML of QGIS); empty: as that likes
};

/// What packages of ours tell as the moment of their last change: always the same, so that the same work gives the same
/// bytes.
inline constexpr const char* kPackageChanged = "1970-01-01T00:00:00.000Z";

/// A file of tables in one coordinate system.
struct Package {
    std::filesystem::path File;
    SpatialReference Reference;
    std::vector<PackageTable> Tables;
    std::string Changed;  ///< moment that the file tells as that of its last change: "2026-11-22T09:05:00.000Z"
    std::vector<PackageTable> Others = {};  ///< that other runs write into the same file, by which it is known
};

/// Rows on their way into a package. They appear all at once when they are published, and not at all otherwise.
class IPackageWriter {
public:
    virtual ~IPackageWriter() = default;

    /// Takes the rows of earlier runs away whose key is `key`.
    virtual void Drop(std::size_t table, const std::string& key) = 0;

    /// Takes all rows of earlier runs away.
    virtual void Clear(std::size_t table) = 0;

    /// `values` in the order of the table's fields; a null shape is stored as none.
    virtual void Put(std::size_t table, const Geometry& shape, std::span<const FieldValue> values) = 0;

    /// RuntimeError when the package cannot be written: what stood there stays.
    virtual void Publish() = 0;
};

/// Packages on disk.
class IPackages {
public:
    virtual ~IPackages() = default;

    /// Begins new rows of a package, which keeps those that it has, and all its other tables; tables that it lacks are
    /// made. Null where a file of that name is something else: no package, none of Tables and Others in it with their
    /// fields and coordinate system, or one of Tables with others. RuntimeError where it cannot be written.
    virtual std::unique_ptr<IPackageWriter> Open(const Package& package) = 0;

    /// Whether a package of that name has such a table with any rows.
    virtual bool HasRows(const std::filesystem::path& file, const std::string& table) const = 0;
};

}  // namespace wxl::platform
