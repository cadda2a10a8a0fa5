#include "isopleths/levels.h"

#include "platform/checked.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <limits>

namespace wxl::isopleths {

namespace error_number = platform::error_number;
using platform::product_i32;
using platform::quotient;
using platform::Raise;

VolumeHistogram::VolumeHistogram(double minimum, double maximum)
    : m_minimum(minimum), m_range(maximum - minimum), m_counts(static_cast<std::size_t>(kBins) + 1, 0) {}

template <class Cell>
void VolumeHistogram::AddCells(std::span<const Cell> cells) {
    if (cells.empty()) return;
    // A range of zero faults here, so that the loop divides freely.
    quotient((static_cast<double>(cells.front()) - m_minimum) * kBins, m_range);
    for (const Cell cell : cells) {
        const double position = (static_cast<double>(cell) - m_minimum) * 100000.0 / m_range;
        // Negated, so that NaN fails too.
        if (!(position >= 0.0 && position < kBins + 1.0)) Raise(error_number::kSubscript);
        std::int32_t& count = m_counts[static_cast<std::size_t>(position)];
        if (count == std::numeric_limits<std::int32_t>::max()) Raise(error_number::kOverflow);
        ++count;
    }
}

void VolumeHistogram::Add(std::span<const float> cells) {
    AddCells(cells);
}

void VolumeHistogram::Add(std::span<const double> cells) {
    AddCells(cells);
}

std::int32_t VolumeHistogram::Weight(std::int32_t bin) const {
    return product_i32(m_counts[static_cast<std::size_t>(bin)], bin);
}

double VolumeHistogram::TotalVolume() const {
    double total = 0.0;
    for (std::int32_t bin = 1; bin <= kBins; ++bin) total += Weight(bin);
    return total;
}

std::vector<double> VolumeHistogram::Levels(std::span<const double> percentages) const {
    const double total = TotalVolume();

    // fromTop[k]: volume of the k top bins. Sums of 32-bit whole numbers are exact in double precision, so a search
    // finds the same bin as accumulating anew for every percentage.
    std::vector<double> fromTop(static_cast<std::size_t>(kBins) + 2, 0.0);
    for (std::int32_t bin = kBins; bin >= 0; --bin) {
        const auto k = static_cast<std::size_t>(kBins - bin);
        fromTop[k + 1] = fromTop[k] + Weight(bin);
    }

    std::vector<double> levels;
    levels.reserve(percentages.size());
    for (const double percentage : percentages) {
        const double target = percentage / 100.0 * total;
        const auto reached =
            std::partition_point(fromTop.begin(), fromTop.end(), [&](double volume) { return volume < target; });
        if (reached == fromTop.end()) Raise(error_number::kSubscript);
        const auto bin = kBins + 1 - static_cast<std::int32_t>(reached - fromTop.begin());
        levels.push_back(bin * m_range / 100000.0 + m_minimum);
    }
    return levels;
}

namespace {

void raise_max(double& largest, std::span<const double> values) {
    for (const double value : values) {
        if (value > largest) largest = value;
    }
}

/// `read(row, cells)` fills one row.
template <class Cell, class ReadRow>
void scan(std::int32_t columns, std::int32_t rows, ReadRow&& read, SurfaceEdge& edge, VolumeHistogram& histogram) {
    edge = {};
    if (columns < 1 || rows < 1) Raise(error_number::kSubscript);
    std::vector<Cell> row(static_cast<std::size_t>(columns));

    read(0, std::span<Cell>(row));
    edge.North.assign(row.begin(), row.end());
    raise_max(edge.MaxValue, edge.North);
    read(rows - 1, std::span<Cell>(row));
    edge.South.assign(row.begin(), row.end());
    raise_max(edge.MaxValue, edge.South);

    for (std::int32_t r = 0; r < rows; ++r) {
        read(r, std::span<Cell>(row));
        edge.West.push_back(static_cast<double>(row.front()));
        edge.East.push_back(static_cast<double>(row.back()));
        raise_max(edge.MaxValue, std::array{edge.West.back(), edge.East.back()});
        histogram.Add(std::span<const Cell>(row));
    }
}

}  // namespace

void scan_surface(platform::IRasterBand& band, platform::IHost* host, SurfaceEdge& edge, VolumeHistogram& histogram) {
    constexpr std::int32_t kRowsPerTurn = 256;
    const platform::RasterGeometry geometry = band.Geometry();
    const auto read = [&](std::int32_t row, std::span<float> cells) {
        if (host && row % kRowsPerTurn == kRowsPerTurn - 1) host->Yield();
        band.ReadRow(row, cells);
    };
    scan<float>(geometry.Columns, geometry.Rows, read, edge, histogram);
}

void scan_surface(const Grid& grid, SurfaceEdge& edge, VolumeHistogram& histogram) {
    const auto columns = static_cast<std::size_t>(std::max(grid.Columns, 0));
    if (grid.Cells.size() != columns * static_cast<std::size_t>(std::max(grid.Rows, 0)))
        Raise(error_number::kSubscript);
    const auto read = [&](std::int32_t row, std::span<double> cells) {
        std::ranges::copy(grid.Cells.subspan(static_cast<std::size_t>(row) * columns, columns), cells.begin());
    };
    scan<double>(grid.Columns, grid.Rows, read, edge, histogram);
}

std::vector<double> isopleth_levels(const Grid& grid, std::span<const double> percentages) {
    if (grid.Cells.empty()) Raise(error_number::kSubscript);
    const auto [minimum, maximum] = std::ranges::minmax(grid.Cells);
    VolumeHistogram histogram(minimum, maximum);
    SurfaceEdge edge;
    scan_surface(grid, edge, histogram);
    return histogram.Levels(percentages);
}

}  // namespace wxl::isopleths
