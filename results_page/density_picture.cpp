#include "results_page/density_picture.h"

#include "results_page/colour_ramp.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace wxl::results_page {
namespace {

std::uint8_t colour_of(double density, double maximum) {
    if (!(density > 0.0) || !(maximum > 0.0)) return 0;
    const double share = std::sqrt(std::min(1.0, density / maximum));
    return static_cast<std::uint8_t>(1 + std::lround(share * static_cast<double>(kDensityColours - 2)));
}

/// Sums of the blocks of one row of the picture.
class BlockRow {
public:
    BlockRow(std::size_t blocks, std::size_t size) : m_sums(blocks), m_counts(blocks), m_size(size) {}

    void Add(std::span<const float> cells) {
        for (std::size_t i = 0; i < cells.size(); ++i) {
            m_sums[i / m_size] += static_cast<double>(cells[i]);
            m_counts[i / m_size] += 1.0;
        }
    }

    void Draw(double maximum, std::vector<std::uint8_t>& picture) {
        for (std::size_t i = 0; i < m_sums.size(); ++i) picture.push_back(colour_of(m_sums[i] / m_counts[i], maximum));
        std::fill(m_sums.begin(), m_sums.end(), 0.0);
        std::fill(m_counts.begin(), m_counts.end(), 0.0);
    }

private:
    std::vector<double> m_sums;
    std::vector<double> m_counts;
    std::size_t m_size;
};

}  // namespace

DensityPicture density_picture(platform::IRasterBand& band, double maximum, std::int32_t side) {
    const platform::RasterGeometry geometry = band.Geometry();
    const std::int32_t block = std::max(1, (std::max(geometry.Columns, geometry.Rows) + side - 1) / side);
    DensityPicture drawn;
    platform::IndexedPicture& picture = drawn.Picture;
    picture.Width = (geometry.Columns + block - 1) / block;
    picture.Height = (geometry.Rows + block - 1) / block;
    picture.Palette = density_ramp(kDensityColours);
    std::vector<float> cells(static_cast<std::size_t>(geometry.Columns));
    BlockRow row(static_cast<std::size_t>(picture.Width), static_cast<std::size_t>(block));
    for (std::int32_t y = 0; y < geometry.Rows; ++y) {
        band.ReadRow(y, cells);
        row.Add(cells);
        if ((y + 1) % block == 0 || y + 1 == geometry.Rows) row.Draw(maximum, picture.Cells);
    }
    // The last blocks may reach beyond the raster.
    const double top = geometry.OriginY + geometry.Rows * geometry.CellSize;
    const double size = block * geometry.CellSize;
    drawn.Bounds = {geometry.OriginX, top - picture.Height * size, geometry.OriginX + picture.Width * size, top};
    return drawn;
}

}  // namespace wxl::results_page
