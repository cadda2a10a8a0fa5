#include "adapters/raster/tiff_writer.h"

#include "adapters/disk/posix_error.h"
#include "adapters/gdal/gdal_support.h"
#include "adapters/raster/raster_dataset.h"
#include "adapters/raster/raster_writing.h"
#include "platform/runtime_error.h"

#include <array>
#include <bit>
#include <cerrno>
#include <cpl_conv.h>
#include <cpl_string.h>
#include <cstdint>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>
#include <utility>
#include <vector>

namespace wxl::files {

namespace error_number = platform::error_number;

namespace {

constexpr std::int32_t kTileRows = 256;
// One row of tiles waits in memory; a wider raster is written in strips of one row.
constexpr std::int32_t kWidestTiled = 16384;  // columns

CPLStringList creation_options(const platform::RasterGeometry& geometry) {
    CPLStringList options;
    options.SetNameValue("COMPRESS", "DEFLATE");
    options.SetNameValue("PREDICTOR", "3");
    options.SetNameValue("ZLEVEL", "6");
    options.SetNameValue("BIGTIFF", "IF_SAFER");
    if (geometry.Columns > kWidestTiled)
        options.SetNameValue("BLOCKYSIZE", "1");
    else if (geometry.Columns >= kTileRows && geometry.Rows >= kTileRows)
        options.SetNameValue("TILED", "YES");
    return options;
}

/// GDAL's own look-up by name turns letters to capitals by the locale: where that became Turkish after GDAL met its
/// drivers, it misses every name with an i.
GDALDriver* tiff_driver() {
    GDALDriverManager* drivers = GetGDALDriverManager();
    for (int i = 0; i < drivers->GetDriverCount(); ++i)
        if (std::string_view("GTiff") == drivers->GetDriver(i)->GetDescription()) return drivers->GetDriver(i);
    return nullptr;
}

void flush_to_disk(const std::filesystem::path& file) {
    const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) RaiseErrno(errno, file);
    const int code = ::fsync(descriptor) == 0 || errno == EINVAL || errno == EROFS ? 0 : errno;
    ::close(descriptor);
    if (code != 0) RaiseErrno(code, file);
}

/// Takes the cells into a sum that any other cell, or the same ones in another order, would change.
std::uint64_t summed(std::uint64_t sum, std::span<const float> cells) {
    constexpr std::uint64_t kOddFactor = 0x9E3779B97F4A7C15;
    for (const float cell : cells) sum = (sum ^ std::bit_cast<std::uint32_t>(cell)) * kOddFactor;
    return sum;
}

/// Whether the file holds what is defined, with cells of that sum, read as any reader would.
bool holds(const std::filesystem::path& file, const platform::RasterDefinition& definition, std::uint64_t sum) {
    const auto& geometry = definition.Geometry;
    try {
        const auto band = OpenRaster(file)->Band();
        const auto found = band->Geometry();
        if (found.Columns != geometry.Columns || found.Rows != geometry.Rows || found.CellSize != geometry.CellSize ||
            found.OriginX != geometry.OriginX || band->Reference().Wkt.empty() != definition.Reference.Wkt.empty())
            return false;
        std::vector<float> row(static_cast<std::size_t>(geometry.Columns));
        std::uint64_t read = 0;
        for (std::int32_t i = 0; i < geometry.Rows; ++i) {
            band->ReadRow(i, row);
            read = summed(read, row);
        }
        return read == sum;
    } catch (const platform::RuntimeError&) {
        return false;
    }
}

class TiffWriter final : public platform::IRasterWriter {
public:
    TiffWriter(platform::IFileSystem& files, std::filesystem::path folder, platform::RasterDefinition definition)
        : m_files(files),
          m_folder(std::move(folder)),
          m_definition(std::move(definition)),
          m_place(m_folder / (m_definition.Name + ".tif")),
          m_temporary(m_folder / platform::TemporaryName(m_definition.Name + ".tif")) {
        RegisterGdal();
        const GdalErrors errors;
        try {
            Open(errors);
        } catch (const platform::RuntimeError&) {
            Discard();
            throw;
        }
    }

    ~TiffWriter() override { Discard(); }
    TiffWriter(const TiffWriter&) = delete;
    TiffWriter& operator=(const TiffWriter&) = delete;

    void WriteRow(std::span<const float> cells) override {
        const auto& geometry = m_definition.Geometry;
        if (m_row == geometry.Rows || cells.size() != static_cast<std::size_t>(geometry.Columns))
            platform::Raise(error_number::kSubscript);
        platform::CheckCells(cells, m_definition.Name);
        if (m_broken) raise_unfinished(m_definition.Name);
        const GdalErrors errors;
        // GDAL's interface takes no const buffer; it only reads from it here.
        auto* data = const_cast<float*>(cells.data());
        const CPLErr result = m_handle->GetRasterBand(1)->RasterIO(GF_Write, 0, m_row, geometry.Columns, 1, data,
                                                                   geometry.Columns, 1, GDT_Float32, 0, 0, nullptr);
        ++m_row;
        m_sum = summed(m_sum, cells);
        if (m_row % kTileRows == 0) m_handle->FlushCache(false);
        if (result != CE_None || errors.Failed()) Fail(errors);
    }

    std::shared_ptr<platform::IRasterDataset> Publish() override {
        if (m_row != m_definition.Geometry.Rows || m_broken || !m_handle) raise_unfinished(m_definition.Name);
        const GdalErrors errors;
        if (!CloseChecked(std::move(m_handle), errors)) Fail(errors);
        naming_raster(m_definition.Name, [&] { flush_to_disk(m_temporary); });
        // GDAL 3.10 and later tell nothing of a write that fails while a file is closed.
        if (!holds(m_temporary, m_definition, m_sum)) Fail(errors);
        naming_raster(m_definition.Name, [&] {
            refuse_taken_raster(m_files, m_folder, m_definition);
            m_files.Rename(m_temporary, m_place);
        });
        return OpenRaster(m_place);
    }

private:
    void Open(const GdalErrors& errors) {
        // Otherwise a coordinate system that the format cannot hold would go into a file beside it.
        const CPLConfigOptionSetter noSideFiles("GDAL_PAM_ENABLED", "NO", false);
        const auto& geometry = m_definition.Geometry;
        // GDAL would write through a link of that name.
        if (::unlink(m_temporary.c_str()) != 0 && errno != ENOENT) RaiseErrno(errno, m_temporary);
        GDALDriver* driver = tiff_driver();
        if (driver == nullptr) platform::Raise(error_number::kInvalidCall, "This GDAL cannot write GeoTIFF files.");
        m_handle.reset(driver->Create(m_temporary.c_str(), geometry.Columns, geometry.Rows, 1, GDT_Float32,
                                      creation_options(geometry).List()));
        if (!m_handle) Fail(errors);
        std::array<double, 6> transform = {geometry.OriginX,  geometry.CellSize, 0.0, geometry.Bounds().YMax, 0.0,
                                           -geometry.CellSize};
        m_handle->SetGeoTransform(transform.data());
        const OGRSpatialReference reference = ToOgr(m_definition.Reference);
        if (!reference.IsEmpty()) m_handle->SetSpatialRef(&reference);
        if (errors.Failed()) Fail(errors);
    }

    [[noreturn]] void Fail(const GdalErrors& errors) {
        m_broken = true;
        errors.RaiseWriting("The raster \"" + m_definition.Name + "\"", m_folder);
    }

    /// Closes the file and removes it, unless it has been published under its final name.
    void Discard() {
        const GdalErrors errors;
        m_handle.reset();
        try {
            if (m_files.FileExists(m_temporary)) m_files.DeleteFile(m_temporary, true);
        } catch (const platform::RuntimeError&) {
            // A temporary file stays; its name tells what it is.
        }
    }

    platform::IFileSystem& m_files;
    std::filesystem::path m_folder;
    platform::RasterDefinition m_definition;
    std::filesystem::path m_place;
    std::filesystem::path m_temporary;
    GdalDatasetPtr m_handle;
    std::int32_t m_row = 0;
    std::uint64_t m_sum = 0;
    bool m_broken = false;
};

}  // namespace

std::unique_ptr<platform::IRasterWriter> CreateTiff(platform::IFileSystem& files, const std::filesystem::path& folder,
                                                    const platform::RasterDefinition& definition) {
    check_new_raster(files, folder, definition);
    return std::make_unique<TiffWriter>(files, folder, definition);
}

}  // namespace wxl::files
