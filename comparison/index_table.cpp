#include "comparison/index_table.h"

#include "platform/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <utility>

namespace wxl::comparison {
namespace {

using platform::NumberText;

constexpr std::array<IndexKind, 6> kIndices = {{{"ba", "BA", &OverlapIndices::Ba, &OverlapIndices::Ba, false},
                                                {"vi", "VI", &OverlapIndices::Vi, &OverlapIndices::Vi, false},
                                                {"udoi", "UDOI", &OverlapIndices::Udoi, &OverlapIndices::Udoi, true},
                                                {"phr", "PHR", &OverlapIndices::PhrIj, &OverlapIndices::PhrJi, true},
                                                {"hr", "HR", &OverlapIndices::HrIj, &OverlapIndices::HrJi, true},
                                                {"hd", "HD", &OverlapIndices::Hd, &OverlapIndices::Hd, false}}};
constexpr int kDigits = 6;

std::string text_of(const std::optional<double>& value) {
    return value ? NumberText(*value) : "";
}

/// The value of a pair that is not told because it shares nothing; nothing where it is not known.
std::optional<double> disjoint_value(const ComparedRanges& ranges, const IndexSection& section, std::uint32_t i,
                                     std::uint32_t j) {
    const TiledDensity& first = ranges.Densities.Animals[i];
    const TiledDensity& second = ranges.Densities.Animals[j];
    if (!first.IsAlive() || !second.IsAlive()) return std::nullopt;
    if (!section.Kind->IsDistance()) return 0.0;
    if (section.Conditional) return std::nullopt;
    return told(std::sqrt(first.Volume() + second.Volume()));
}

/// The same at every percentage, so that it is told once.
bool is_repeated(const IndexKind& kind, const PairOverlap& pair, const ComparedRanges& ranges) {
    return !kind.OfRanges && !pair.Conditional && pair.Percent != ranges.Densities.Percents.front();
}

}  // namespace

std::span<const IndexKind> index_kinds() {
    return kIndices;
}

const IndexKind* index_kind(std::string_view name) {
    const auto* found =
        std::ranges::find_if(kIndices, [&](const IndexKind& kind) { return platform::EqualNoCase(kind.Name, name); });
    return found == kIndices.end() ? nullptr : found;
}

double told(double value) {
    std::array<char, 40> text{};
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::scientific, kDigits - 1);
    double rounded = value;
    std::from_chars(text.data(), end.ptr, rounded);
    return rounded;
}

std::string told_text(double value) {
    return NumberText(told(value));
}

std::optional<double> told_value(const PairOverlap& pair, double OverlapIndices::*index) {
    if (!pair.Indices) return std::nullopt;
    return told((*pair.Indices).*index);
}

std::string IndexSection::Title() const {
    std::string title = Kind->Title;
    if (Kind->OfRanges || Conditional) title += " at " + NumberText(Percent) + " %";
    return title + (Conditional ? ", conditional" : "");
}

std::vector<IndexSection> index_sections(const ComparedRanges& ranges, const std::vector<const IndexKind*>& indices) {
    const bool conditional =
        std::any_of(ranges.Pairs.begin(), ranges.Pairs.end(), [](const PairOverlap& pair) { return pair.Conditional; });
    std::vector<IndexSection> sections;
    for (const IndexKind* kind : indices)
        for (const double percent : ranges.Densities.Percents) {
            if (kind->OfRanges || percent == ranges.Densities.Percents.front())
                sections.push_back({kind, percent, false});
            if (conditional) sections.push_back({kind, percent, true});
        }
    return sections;
}

platform::TextTable long_table(const ComparedRanges& ranges, const std::vector<const IndexKind*>& indices) {
    platform::TextTable table{{"range_of", "animal", "index", "percent", "conditional", "value"}, {}};
    for (const PairOverlap& pair : ranges.Pairs)
        for (const IndexKind* kind : indices) {
            if (is_repeated(*kind, pair, ranges)) continue;
            const std::string& first = ranges.Animals[pair.First].Name;
            const std::string& second = ranges.Animals[pair.Second].Name;
            const std::string percent = kind->OfRanges || pair.Conditional ? NumberText(pair.Percent) : "";
            const char* conditional = pair.Conditional ? "yes" : "no";
            table.Rows.push_back(
                {first, second, kind->Name, percent, conditional, text_of(told_value(pair, kind->Forth))});
            if (pair.First != pair.Second)
                table.Rows.push_back(
                    {second, first, kind->Name, percent, conditional, text_of(told_value(pair, kind->Back))});
        }
    return table;
}

std::vector<RankedPair> ranked_pairs(const ComparedRanges& ranges, const IndexSection& section) {
    std::vector<RankedPair> pairs;
    for (const PairOverlap& pair : ranges.Pairs) {
        if (!section.Holds(pair) || !pair.Indices || pair.First == pair.Second) continue;
        pairs.push_back({*told_value(pair, section.Kind->Forth), pair.First, pair.Second});
        if (!section.Kind->IsSymmetric())
            pairs.push_back({*told_value(pair, section.Kind->Back), pair.Second, pair.First});
    }
    const bool rising = section.Kind->IsDistance();
    std::stable_sort(pairs.begin(), pairs.end(), [rising](const RankedPair& a, const RankedPair& b) {
        return rising ? a.Value < b.Value : a.Value > b.Value;
    });
    return pairs;
}

std::vector<std::optional<double>> index_matrix(const ComparedRanges& ranges, const IndexSection& section,
                                                std::span<const std::uint32_t> animals) {
    const std::size_t count = animals.size();
    std::vector<std::optional<std::size_t>> places(ranges.Animals.size());
    for (std::size_t place = 0; place < count; ++place) places[animals[place]] = place;
    std::vector<std::optional<double>> values(count * count);
    for (const PairOverlap& pair : ranges.Pairs) {
        if (!section.Holds(pair) || !places[pair.First] || !places[pair.Second]) continue;
        values[*places[pair.First] * count + *places[pair.Second]] = told_value(pair, section.Kind->Forth);
        values[*places[pair.Second] * count + *places[pair.First]] = told_value(pair, section.Kind->Back);
    }
    for (std::size_t row = 0; row < count; ++row)
        for (std::size_t column = 0; column < count; ++column)
            if (auto& value = values[row * count + column]; !value && row != column)
                value = disjoint_value(ranges, section, animals[row], animals[column]);
    return values;
}

std::vector<std::uint32_t> all_animals(const ComparedRanges& ranges) {
    std::vector<std::uint32_t> animals(ranges.Animals.size());
    std::iota(animals.begin(), animals.end(), 0U);
    return animals;
}

}  // namespace wxl::comparison
