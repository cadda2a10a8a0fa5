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

void VolumeHistogram::Add(std::span<const float> cells) {
    if (cells.empty()) return;
    // A range of zero faults here, so that the loop divides freely.
    quotient((static_cast<double>(cells.front()) - m_minimum) * kBins, m_range);
    for (const float cell : cells) {
        const double position = (static_cast<double>(cell) - m_minimum) * 100000.0 / m_range;
        // Negated, so that NaN fails too.
        if (!(position >= 0.0 && position < kBins + 1.0)) Raise(error_number::kSubscript);
        std::int32_t& count = m_counts[static_cast<std::size_t>(position)];
        if (count == std::numeric_limits<std::int32_t>::max()) Raise(error_number::kOverflow);
        ++count;
    }
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

}  // namespace

void scan_surface(platform::IRasterBand& band, platform::IHost* host, SurfaceEdge& edge, VolumeHistogram& histogram) {
    constexpr std::int32_t kRowsPerTurn = 256;
    const platform::RasterGeometry geometry = band.Geometry();
    edge = {};
    if (geometry.Columns < 1 || geometry.Rows < 1) Raise(error_number::kSubscript);
    std::vector<float> row(static_cast<std::size_t>(geometry.Columns));
    const auto read = [&](std::int32_t number) {
        if (host && number % kRowsPerTurn == kRowsPerTurn - 1) host->Yield();
        band.ReadRow(number, row);
    };

    read(0);
    edge.North.assign(row.begin(), row.end());
    raise_max(edge.MaxValue, edge.North);
    read(geometry.Rows - 1);
    edge.South.assign(row.begin(), row.end());
    raise_max(edge.MaxValue, edge.South);

    for (std::int32_t r = 0; r < geometry.Rows; ++r) {
        read(r);
        edge.West.push_back(static_cast<double>(row.front()));
        edge.East.push_back(static_cast<double>(row.back()));
        raise_max(edge.MaxValue, std::array{edge.West.back(), edge.East.back()});
        histogram.Add(row);
    }
}

}  // namespace wxl::isopleths
