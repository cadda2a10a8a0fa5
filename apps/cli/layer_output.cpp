#include "apps/cli/layer_output.h"

#include "adapters/disk/disk_file_system.h"
#include "adapters/gdal/database_check.h"
#include "apps/cli/console.h"
#include "apps/cli/shapefile_output.h"
#include "platform/dataset_files.h"
#include "platform/file_system.h"
#include "platform/runtime_error.h"

#include <fmt/format.h>

namespace wxl::cli {

namespace {

namespace fs = std::filesystem;
namespace error_number = platform::error_number;

/// A folder beside the output, gone at the end.
class Staging {
public:
    explicit Staging(fs::path folder) : m_folder(std::move(folder)) { files::DiskFolders().Create(m_folder); }
    ~Staging() {
        std::error_code ignored;
        fs::remove_all(m_folder, ignored);
    }
    Staging(const Staging&) = delete;
    Staging& operator=(const Staging&) = delete;

    const fs::path& Folder() const { return m_folder; }

private:
    fs::path m_folder;
};

}  // namespace

LayerOutput::LayerOutput(std::string path, bool overwrite, const ReadFiles& read)
    : m_path(std::move(path)), m_folder(fs::path(m_path).parent_path()), m_file(fs::path(m_path).filename()) {
    const auto format = tracking::layer_format_of(m_path);
    if (!format)
        throw WrongCall(
            m_path + ": the name of the output must end in .gpkg (GeoPackage), .shp (shapefile) or .fgb (FlatGeobuf)");
    m_format = *format;
    if (m_folder.empty()) m_folder = ".";
    if (m_format == tracking::LayerFormat::kShapefile) {
        const ShapefileOutput checked(m_path, overwrite, read);
        return;
    }
    read.Refuse(m_path);
    const files::DiskFileSystem disk;
    if (!disk.FolderExists(m_folder))
        platform::Raise(error_number::kPathNotFound,
                        fmt::format("{}: there is no such folder; make it first", m_folder.string()));
    if (!overwrite && disk.FileExists(m_path))
        platform::Raise(error_number::kFileExists, m_path + " exists: choose another name, or give --overwrite");
    if (m_format == tracking::LayerFormat::kGeoPackage) files::refuse_journals(m_path);
}

void LayerOutput::Write(const std::vector<platform::Field>& fields, const platform::SpatialReference& reference,
                        const std::function<void(tracking::ILayerWriter&)>& put) const {
    platform::CheckDatasetName(m_file.stem().string());
    const Staging staging(m_folder / platform::TemporaryName(m_file.stem().string()));
    const auto writer = tracking::make_layer_writer(m_format, staging.Folder() / m_file, fields, reference);
    put(*writer);
    writer->Close();
    Publish(staging.Folder());
}

/// Side files first: without the file that was asked for, nobody takes them for a layer. Those of an old one go before.
void LayerOutput::Publish(const fs::path& staging) const {
    files::DiskFileSystem disk;
    if (m_format == tracking::LayerFormat::kGeoPackage) files::refuse_journals(m_path);
    if (m_format == tracking::LayerFormat::kShapefile)
        for (const fs::path& old : platform::FolderContents(disk, m_folder).Shapefile(m_file.stem().string()))
            disk.DeleteFile(old, true);
    for (const std::string& name : disk.List(staging))
        if (name != m_file.string()) disk.Rename(staging / name, m_folder / name);
    disk.Rename(staging / m_file, m_folder / m_file);
}

}  // namespace wxl::cli
