#pragma once
#include "platform/values.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace wxl::tracking {

/// The format that the ending of a file's name stands for.
enum class LayerFormat { kShapefile, kGeoPackage, kFlatGeobuf };

/// By ".shp", ".gpkg" or ".fgb" in any case; nothing for any other.
std::optional<LayerFormat> layer_format_of(const std::filesystem::path& file);

/// Names for the fields of that format, unique in any case: in a shapefile up to 10 letters, digits and underscores.
std::vector<std::string> field_names_for(LayerFormat format, const std::vector<std::string>& names);

/// A new file with one layer of points, written row by row in little memory.
class ILayerWriter {
public:
    virtual ~ILayerWriter() = default;
    virtual void Put(const platform::Point& point, const std::vector<platform::FieldValue>& values) = 0;

    /// Writes what is left and checks that all is on disk.
    virtual void Close() = 0;
};

/// A place in memory that GDAL takes for a file, free again at the end.
class MemoryFile {
public:
    /// `name`: of the file in it, with its ending.
    explicit MemoryFile(const std::string& name);
    ~MemoryFile();
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    const std::filesystem::path& Path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

/// Begins a FlatGeobuf without an index in memory; otherwise as make_layer_writer.
std::unique_ptr<ILayerWriter> make_memory_writer(const MemoryFile& file, const std::vector<platform::Field>& fields,
                                                 const platform::SpatialReference& reference);

/// Begins the file, whose folder exists and which does not. The layer is called after the file. Names of fields are
/// those of field_names_for. RuntimeError as the system says when it cannot be written.
std::unique_ptr<ILayerWriter> make_layer_writer(LayerFormat format, const std::filesystem::path& file,
                                                const std::vector<platform::Field>& fields,
                                                const platform::SpatialReference& reference);

}  // namespace wxl::tracking
