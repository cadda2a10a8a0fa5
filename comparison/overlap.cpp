#include "comparison/overlap.h"

#include "comparison/pair_table.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <utility>

namespace wxl::comparison {
namespace {

double quotient(double part, std::int64_t whole) {
    return whole > 0 ? part / static_cast<double>(whole) : 0.0;
}

/// Distance of two distributions of volumes T: what they differ by where both are, and all of each elsewhere.
double hellinger(const PairTotals& sums, double volumeI, double volumeJ) {
    const double alone = std::max(0.0, volumeI - sums.VolumeI) + std::max(0.0, volumeJ - sums.VolumeJ);
    return std::sqrt(sums.Agreement.Distance + alone);
}

OverlapIndices indices(const TiledDensity& i, const TiledDensity& j, const RangeTotals& range, const PairTotals& sums,
                       std::size_t percent, double volumeI, double volumeJ) {
    OverlapIndices result;
    const auto common = static_cast<double>(range.CommonCells);
    result.HrIj = quotient(common, i.Ranges()[percent].Cells);
    result.HrJi = quotient(common, j.Ranges()[percent].Cells);
    result.Vi = sums.Agreement.Shared;
    result.Ba = sums.Agreement.Affinity;
    result.Udoi = common * sums.Agreement.Product;
    result.Hd = hellinger(sums, volumeI, volumeJ);
    return result;
}

/// Appends the records of one pair.
class PairRecords {
public:
    PairRecords(const DensitySet& set, const OverlapSettings& settings)
        : m_animals(set.Animals), m_percents(set.Percents), m_settings(settings), m_volumes(tile_volumes(set)) {}

    void Append(std::uint32_t i, std::uint32_t j, const PairSums& sums) {
        for (std::size_t percent = 0; percent < m_percents.size(); ++percent) {
            AppendWhole(i, j, sums, percent);
            if (m_settings.Conditional) AppendConditional(i, j, sums, percent);
        }
    }

    void AppendMissing(std::uint32_t i, std::uint32_t j) {
        for (const double percent : m_percents) {
            m_records.push_back({i, j, percent, false, std::nullopt});
            if (m_settings.Conditional) m_records.push_back({i, j, percent, true, std::nullopt});
        }
    }

    std::vector<PairOverlap> Taken() { return std::move(m_records); }

private:
    void AppendWhole(std::uint32_t i, std::uint32_t j, const PairSums& sums, std::size_t percent) {
        const RangeTotals& range = sums.Ranges[percent];
        OverlapIndices result =
            indices(m_animals[i], m_animals[j], range, sums.Whole, percent, m_volumes[i].Whole, m_volumes[j].Whole);
        result.PhrIj = range.JInRangeOfI;
        result.PhrJi = range.IInRangeOfJ;
        m_records.push_back({i, j, m_percents[percent], false, result});
    }

    void AppendConditional(std::uint32_t i, std::uint32_t j, const PairSums& sums, std::size_t percent) {
        const RangeTotals& range = sums.Ranges[percent];
        OverlapIndices result = indices(m_animals[i], m_animals[j], range, range.Conditional, percent,
                                        m_volumes[i].Ranges[percent], m_volumes[j].Ranges[percent]);
        result.PhrIj = range.JInBoth;
        result.PhrJi = range.IInBoth;
        m_records.push_back({i, j, m_percents[percent], true, result});
    }

    std::span<const TiledDensity> m_animals;
    std::span<const double> m_percents;
    const OverlapSettings& m_settings;
    std::vector<TileVolumes> m_volumes;
    std::vector<PairOverlap> m_records;
};

}  // namespace

std::vector<PairOverlap> overlaps(const DensitySet& set, const OverlapSettings& settings,
                                  const ProgressSink& progress) {
    return overlaps_from(set, settings, pair_sums(set, settings.Conditional, progress));
}

std::vector<PairOverlap> overlaps_from(const DensitySet& set, const OverlapSettings& settings,
                                       const std::vector<PairSums>& shared) {
    PairRecords records(set, settings);
    if (!settings.AllPairs) {
        for (const PairSums& sums : shared)
            if (sums.I == sums.J || sums.Whole.Agreement.Affinity > 0.0) records.Append(sums.I, sums.J, sums);
        return records.Taken();
    }
    const std::vector<TiledDensity>& animals = set.Animals;
    PairSums nothing;
    nothing.Ranges.resize(set.Percents.size());
    auto next = shared.begin();
    for (std::uint32_t i = 0; i < animals.size(); ++i)
        for (std::uint32_t j = i; j < animals.size(); ++j) {
            if (next != shared.end() && next->I == i && next->J == j) {
                records.Append(i, j, *next++);
            } else if (animals[i].IsAlive() && animals[j].IsAlive()) {
                records.Append(i, j, nothing);
            } else {
                records.AppendMissing(i, j);
            }
        }
    return records.Taken();
}

}  // namespace wxl::comparison
