#pragma once
// Small pictures as files in memory.

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace wxl::platform {

/// A colour of sRGB with opacity 0 (clear) to 255.
struct Colour {
    std::uint8_t Red = 0;
    std::uint8_t Green = 0;
    std::uint8_t Blue = 0;
    std::uint8_t Opacity = 255;
    friend bool operator==(const Colour&, const Colour&) = default;
};

/// A picture of at most 256 colours, row by row from the top.
struct IndexedPicture {
    std::int32_t Width = 0;
    std::int32_t Height = 0;
    std::vector<std::uint8_t> Cells;  ///< Width x Height numbers of colours
    std::vector<Colour> Palette;
};

/// Turns pictures into files of a common format.
class IPictureEncoder {
public:
    virtual ~IPictureEncoder() = default;

    /// The bytes of a PNG file. RuntimeError 5 for a picture without cells, with another number of cells than its size
    /// says, with more than 256 colours or with a cell outside the palette.
    virtual std::string Png(const IndexedPicture& picture) = 0;
};

}  // namespace wxl::platform
