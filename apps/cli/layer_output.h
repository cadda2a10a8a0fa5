#pragma once
#include "adapters/tracking/layer_writer.h"
#include "apps/cli/read_files.h"

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace wxl::cli {

/// A layer of points that a command is asked to write, in the format that its ending names. Nothing stands under its
/// name until all is on disk, and an old layer is replaced only by a whole new one.
class LayerOutput {
public:
    /// WrongCall when the ending is none of .gpkg, .shp and .fgb; RuntimeError 76 when the folder is missing, 58 when
    /// the layer exists and `overwrite` is false, 70 when it is among the files that are
    /// `read`.
    LayerOutput(std::string path, bool overwrite, const ReadFiles& read);

    const std::string& Path() const { return m_path; }
    tracking::LayerFormat Format() const { return m_format; }

    /// Writes the points that `put` hands over and publishes the layer.
    void Write(const std::vector<platform::Field>& fields, const platform::SpatialReference& reference,
               const std::function<void(tracking::ILayerWriter&)>& put) const;

private:
    void Publish(const std::filesystem::path& staging) const;

    std::string m_path;
    std::filesystem::path m_folder;
    std::filesystem::path m_file;  ///< name alone
    tracking::LayerFormat m_format = tracking::LayerFormat::kShapefile;
};

}  // namespace wxl::cli
