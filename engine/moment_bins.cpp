#include "engine/moment_bins.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>

namespace wxl::engine {
namespace {

/// The bins near q = 0 have this many scale lengths of the fastest function to the number that they grow with.
constexpr double kShiftInScales = 16.0;

/// Functions count as 0 from exp(-46) = 1E-20 on.
constexpr double kVanishing = 46.0;

constexpr std::size_t kBlock = 256;

double edge_of(std::int64_t bin) {
    return std::bit_cast<double>(static_cast<std::uint64_t>(bin) << (52 - kBinBits));
}

std::int64_t bin_of(double shifted) {
    return static_cast<std::int64_t>(std::bit_cast<std::uint64_t>(shifted) >> (52 - kBinBits));
}

}  // namespace

MomentBins::MomentBins(double largestDecay, double largestValue, const VectorMath& math)
    : m_math(&math),
      m_shift(edge_of(bin_of(std::max(kShiftInScales / largestDecay, 1e-300)))),
      m_firstBin(bin_of(m_shift)),
      m_lastBin(bin_of(m_shift + largestValue) + 1),
      m_moments(static_cast<std::size_t>(m_lastBin - m_firstBin + 1) * kMomentOrders, 0.0),
      m_bins(kBlock),
      m_offsets(kBlock) {}

void MomentBins::Add(std::span<const double> values, std::span<const double> weights) {
    m_collected = false;
    for (std::size_t first = 0; first < values.size(); first += kBlock) {
        const std::size_t count = std::min(kBlock, values.size() - first);
        m_math->FindBins(&values[first], m_shift, m_lastBin, m_bins.data(), m_offsets.data(), count);
        m_math->AddMoments(m_bins.data(), m_offsets.data(), &weights[first], m_firstBin, m_moments.data(), count);
    }
}

void MomentBins::Collect() const {
    m_filled = {};
    for (std::int64_t bin = m_firstBin; bin < m_lastBin; ++bin) {
        const double* moments = &m_moments[static_cast<std::size_t>(bin - m_firstBin) * kMomentOrders];
        if (std::all_of(moments, moments + kMomentOrders, [](double moment) { return moment == 0.0; })) continue;
        const double low = edge_of(bin);
        const double half = (edge_of(bin + 1) - low) / 2.0;
        m_filled.Centre.push_back((low - m_shift) + half);
        m_filled.HalfWidth.push_back(half);
        for (std::size_t k = 0; k < kMomentOrders; ++k) m_filled.Moments[k].push_back(moments[k]);
    }
    m_collected = true;
}

double MomentBins::Sum(const DecayingFunction& function) const {
    if (!m_collected) Collect();
    const auto& centres = m_filled.Centre;
    const auto end = std::upper_bound(centres.begin(), centres.end(), kVanishing / function.Decay);
    const auto bins = static_cast<std::size_t>(end - centres.begin());
    std::array<double, kBlock> terms{};
    double sum = 0.0;
    for (std::size_t first = 0; first < bins; first += kBlock) {
        const std::size_t count = std::min(kBlock, bins - first);
        for (std::size_t i = 0; i < count; ++i) terms[i] = -function.Decay * centres[first + i];
        m_math->Exponentials(terms.data(), count);
        for (std::size_t i = 0; i < count; ++i) {
            const double centre = centres[first + i];
            const double half = m_filled.HalfWidth[first + i];
            // The function at centre + half z is exp(-decay centre) (a + b z + c z^2) exp(-decay half z).
            const double a = function.Constant + (function.Linear + function.Square * centre) * centre;
            const double b = (function.Linear + 2.0 * function.Square * centre) * half;
            const double c = function.Square * half * half;
            double series = a * m_filled.Moments[0][first + i] + b * m_filled.Moments[1][first + i] +
                            c * m_filled.Moments[2][first + i];
            double power = 1.0;
            for (std::size_t k = 1; k < kMomentOrders; ++k) {
                power *= -function.Decay * half / static_cast<double>(k);
                double moments = a * m_filled.Moments[k][first + i];
                if (k + 1 < kMomentOrders) moments += b * m_filled.Moments[k + 1][first + i];
                if (k + 2 < kMomentOrders) moments += c * m_filled.Moments[k + 2][first + i];
                series += power * moments;
            }
            terms[i] *= series;
        }
        for (std::size_t i = 0; i < count; ++i) sum += terms[i];
    }
    return sum;
}

}  // namespace wxl::engine
