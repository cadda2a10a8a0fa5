#include "adapters/raster/png_encoder.h"

#include "adapters/gdal/gdal_support.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <atomic>
#include <cpl_string.h>
#include <cpl_vsi.h>
#include <memory>

namespace wxl::files {

namespace error_number = platform::error_number;

namespace {

constexpr std::size_t kMostColours = 256;

void check(const platform::IndexedPicture& picture) {
    const bool sized =
        picture.Width > 0 && picture.Height > 0 &&
        picture.Cells.size() == static_cast<std::size_t>(picture.Width) * static_cast<std::size_t>(picture.Height);
    const bool coloured = picture.Palette.size() <= kMostColours &&
                          std::all_of(picture.Cells.begin(), picture.Cells.end(),
                                      [&](std::uint8_t cell) { return cell < picture.Palette.size(); });
    if (!sized || !coloured) platform::Raise(error_number::kInvalidCall, "The picture's cells do not fit its size.");
}

/// A file of GDAL's memory, gone with the object.
class MemoryFile {
public:
    MemoryFile() {
        static std::atomic<unsigned> counter = 0;
        m_name = "/vsimem/wxl-picture-" + std::to_string(counter++) + ".png";
    }
    ~MemoryFile() { VSIUnlink(m_name.c_str()); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    const char* Name() const { return m_name.c_str(); }

    std::string Bytes() const {
        vsi_l_offset size = 0;
        const GByte* bytes = VSIGetMemFileBuffer(m_name.c_str(), &size, FALSE);
        return bytes == nullptr ? std::string() : std::string(bytes, bytes + size);
    }

private:
    std::string m_name;
};

GDALColorTable colours_of(const platform::IndexedPicture& picture) {
    GDALColorTable table;
    for (std::size_t i = 0; i < picture.Palette.size(); ++i) {
        const platform::Colour& colour = picture.Palette[i];
        const GDALColorEntry entry{colour.Red, colour.Green, colour.Blue, colour.Opacity};
        table.SetColorEntry(static_cast<int>(i), &entry);
    }
    return table;
}

GdalDatasetPtr in_memory(const platform::IndexedPicture& picture) {
    GDALDriver* driver = GetGDALDriverManager()->GetDriverByName("MEM");
    GdalDatasetPtr dataset(driver ? driver->Create("", picture.Width, picture.Height, 1, GDT_Byte, nullptr) : nullptr);
    if (!dataset) return nullptr;
    GDALRasterBand& band = *dataset->GetRasterBand(1);
    GDALColorTable table = colours_of(picture);
    // GDAL's interface takes no const buffer; it only reads from it here.
    auto* cells = const_cast<std::uint8_t*>(picture.Cells.data());
    if (band.SetColorTable(&table) != CE_None ||
        band.RasterIO(GF_Write, 0, 0, picture.Width, picture.Height, cells, picture.Width, picture.Height, GDT_Byte, 0,
                      0, nullptr) != CE_None)
        return nullptr;
    return dataset;
}

}  // namespace

std::string PngEncoder::Png(const platform::IndexedPicture& picture) {
    check(picture);
    RegisterGdal();
    const GdalErrors errors;
    const MemoryFile file;
    GDALDriver* driver = GetGDALDriverManager()->GetDriverByName("PNG");
    GdalDatasetPtr source = in_memory(picture);
    CPLStringList options;
    options.SetNameValue("ZLEVEL", "9");
    GdalDatasetPtr copy(driver && source
                            ? driver->CreateCopy(file.Name(), source.get(), FALSE, options.List(), nullptr, nullptr)
                            : nullptr);
    if (!copy || !CloseChecked(std::move(copy), errors))
        platform::Raise(error_number::kInvalidCall, "A picture could not be made: " + errors.Text());
    return file.Bytes();
}

}  // namespace wxl::files
