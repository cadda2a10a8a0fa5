#include "analysis/overlap_layer.h"

#include "analysis/package_draft.h"
#include "analysis/range_tables.h"
#include "comparison/cell_outline.h"

#include <algorithm>
#include <optional>
#include <string>

namespace wxl::analysis {
namespace {

using comparison::ComparedRanges;
using comparison::OverlapIndices;
using comparison::PairOverlap;
using platform::FieldValue;

bool shares_cells(const PairOverlap& pair) {
    return !pair.Conditional && pair.First != pair.Second && pair.Indices && pair.Indices->HrIj > 0.0;
}

std::size_t place_of(const ComparedRanges& ranges, double percent) {
    const auto& percents = ranges.Densities.Percents;
    return static_cast<std::size_t>(std::ranges::find(percents, percent) - percents.begin());
}

std::vector<FieldValue> cells_of(const ComparedRanges& ranges, const PairOverlap& pair, double area,
                                 const platform::SpatialReference& reference) {
    const std::optional<double> squareMetres = square_metres(area, reference);
    const auto index = [&](double OverlapIndices::*value) { return cell_of(comparison::told_value(pair, value)); };
    return {utf8_cell(ranges.Animals[pair.First].Name),
            utf8_cell(ranges.Animals[pair.Second].Name),
            pair.Percent,
            cell_of(squareMetres),
            cell_of(hectares_of(squareMetres)),
            index(&OverlapIndices::HrIj),
            index(&OverlapIndices::HrJi),
            index(&OverlapIndices::PhrIj),
            index(&OverlapIndices::PhrJi),
            index(&OverlapIndices::Vi),
            index(&OverlapIndices::Ba),
            index(&OverlapIndices::Udoi),
            index(&OverlapIndices::Hd)};
}

}  // namespace

std::vector<std::size_t> drawn_pairs(const ComparedRanges& ranges, const comparison::IndexKind& index,
                                     std::size_t most) {
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < ranges.Pairs.size(); ++i)
        if (shares_cells(ranges.Pairs[i])) places.push_back(i);
    if (places.size() <= most) return places;
    const auto nearness = [&](std::size_t place) {
        const OverlapIndices& indices = *ranges.Pairs[place].Indices;
        return index.IsDistance() ? -(indices.*index.Forth) : std::max(indices.*index.Forth, indices.*index.Back);
    };
    std::ranges::stable_sort(places, [&](std::size_t a, std::size_t b) { return nearness(a) > nearness(b); });
    places.resize(most);
    std::ranges::sort(places);
    return places;
}

OverlapLayer write_overlap_layer(platform::IPackages& packages, const PackagePlace& place, const ComparedRanges& ranges,
                                 const comparison::IndexKind& index, const std::function<void(double)>& progress) {
    const auto writer =
        packages.Open({place.File, place.Reference, {overlap_table()}, platform::kPackageChanged, place.Others});
    if (!writer) return {.IsForeign = true};
    const std::vector<std::size_t> drawn = drawn_pairs(ranges, index, kMostOverlaps);
    const auto sharing = static_cast<std::size_t>(std::ranges::count_if(ranges.Pairs, shares_cells));
    const double cell = ranges.Densities.Grid.CellSize;
    writer->Clear(0);
    for (std::size_t i = 0; i < drawn.size(); ++i) {
        const PairOverlap& pair = ranges.Pairs[drawn[i]];
        const comparison::CellWindow common =
            common_cells(ranges.Densities, pair.First, pair.Second, place_of(ranges, pair.Percent));
        const double area = static_cast<double>(common.Cells) * cell * cell;
        writer->Put(0, cell_outline(ranges.Densities.Grid, common), cells_of(ranges, pair, area, place.Reference));
        if (progress && i % 64 == 0) progress(static_cast<double>(i) / static_cast<double>(drawn.size()));
    }
    writer->Publish();
    return {.Drawn = drawn.size(), .LeftOut = sharing - drawn.size()};
}

}  // namespace wxl::analysis
