#include "apps/cli/commands/overlap_output.h"

#include "platform/text.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>

namespace wxl::cli {

namespace {

using comparison::OverlapIndices;
using comparison::PairOverlap;
using platform::NumberText;

/// More animals than this make no table that a screen holds.
constexpr std::size_t kMatrixAnimals = 20;
constexpr std::size_t kLargestPairs = 40;

/// An index, from i to j and from j to i.
struct IndexKind {
    const char* Name;
    const char* Title;
    double OverlapIndices::*Forth;
    double OverlapIndices::*Back;
    bool OfRanges;  ///< depends on the percentage even for whole distributions
};

constexpr std::array<IndexKind, 6> kIndices = {{{"ba", "BA", &OverlapIndices::Ba, &OverlapIndices::Ba, false},
                                                {"vi", "VI", &OverlapIndices::Vi, &OverlapIndices::Vi, false},
                                                {"udoi", "UDOI", &OverlapIndices::Udoi, &OverlapIndices::Udoi, true},
                                                {"phr", "PHR", &OverlapIndices::PhrIj, &OverlapIndices::PhrJi, true},
                                                {"hr", "HR", &OverlapIndices::HrIj, &OverlapIndices::HrJi, true},
                                                {"hd", "HD", &OverlapIndices::Hd, &OverlapIndices::Hd, false}}};

const IndexKind& kind_of(const std::string& name) {
    return *std::find_if(kIndices.begin(), kIndices.end(),
                         [&](const IndexKind& kind) { return platform::EqualNoCase(kind.Name, name); });
}

bool is_known(const std::string& name) {
    return std::any_of(kIndices.begin(), kIndices.end(),
                       [&](const IndexKind& kind) { return platform::EqualNoCase(kind.Name, name); });
}

std::optional<double> value_of(const PairOverlap& pair, double OverlapIndices::*index) {
    if (!pair.Indices) return std::nullopt;
    return told((*pair.Indices).*index);
}

std::string text_of(const std::optional<double>& value) {
    return value ? NumberText(*value) : "";
}

/// The same at every percentage, so that it is told once.
bool is_repeated(const IndexKind& kind, const PairOverlap& pair, const ComparedRanges& ranges) {
    return !kind.OfRanges && !pair.Conditional && pair.Percent != ranges.Densities.Percents.front();
}

/// One table: an index, at a percentage, of whole distributions or conditional.
struct Section {
    const IndexKind* Kind;
    double Percent;
    bool Conditional;

    bool Holds(const PairOverlap& pair) const { return pair.Percent == Percent && pair.Conditional == Conditional; }
    std::string Title() const {
        std::string title = Kind->Title;
        if (Kind->OfRanges || Conditional) title += " at " + NumberText(Percent) + " %";
        return title + (Conditional ? ", conditional" : "");
    }
};

std::vector<Section> sections_of(const ComparedRanges& ranges, const std::vector<std::string>& indices) {
    const bool conditional =
        std::any_of(ranges.Pairs.begin(), ranges.Pairs.end(), [](const PairOverlap& pair) { return pair.Conditional; });
    std::vector<Section> sections;
    for (const std::string& name : indices)
        for (const double percent : ranges.Densities.Percents) {
            const IndexKind& kind = kind_of(name);
            if (kind.OfRanges || percent == ranges.Densities.Percents.front())
                sections.push_back({&kind, percent, false});
            if (conditional) sections.push_back({&kind, percent, true});
        }
    return sections;
}

void print_matrix(const ComparedRanges& ranges, const Section& section, Console& console) {
    TextTable table{{section.Title()}, {}};
    for (const ComparedAnimal& animal : ranges.Animals) {
        table.Columns.push_back(animal.Name);
        table.Rows.emplace_back(ranges.Animals.size() + 1);
        table.Rows.back()[0] = animal.Name;
    }
    const auto shown = [](const std::optional<double>& value) {
        return value ? fmt::format("{:.4f}", *value) : std::string();
    };
    for (const PairOverlap& pair : ranges.Pairs) {
        if (!section.Holds(pair)) continue;
        table.Rows[pair.First][pair.Second + 1] = shown(value_of(pair, section.Kind->Forth));
        table.Rows[pair.Second][pair.First + 1] = shown(value_of(pair, section.Kind->Back));
    }
    console.Result("");
    print_table(table, console);
}

/// A value and whose it is.
struct RankedPair {
    double Value;
    std::uint32_t RangeOf;
    std::uint32_t Animal;
};

std::vector<RankedPair> ranked(const ComparedRanges& ranges, const Section& section) {
    std::vector<RankedPair> pairs;
    for (const PairOverlap& pair : ranges.Pairs) {
        if (!section.Holds(pair) || !pair.Indices || pair.First == pair.Second) continue;
        pairs.push_back({*value_of(pair, section.Kind->Forth), pair.First, pair.Second});
        if (section.Kind->Forth != section.Kind->Back)
            pairs.push_back({*value_of(pair, section.Kind->Back), pair.Second, pair.First});
    }
    // The nearest pairs first: a distance is small there, the others are large.
    const bool rising = section.Kind->Forth == &OverlapIndices::Hd;
    std::stable_sort(pairs.begin(), pairs.end(), [rising](const RankedPair& a, const RankedPair& b) {
        return rising ? a.Value < b.Value : a.Value > b.Value;
    });
    return pairs;
}

void print_largest(const ComparedRanges& ranges, const Section& section, Console& console) {
    const std::vector<RankedPair> pairs = ranked(ranges, section);
    TextTable table{{"range of", "animal", section.Title()}, {}};
    for (std::size_t i = 0; i < std::min(pairs.size(), kLargestPairs); ++i)
        table.Rows.push_back({ranges.Animals[pairs[i].RangeOf].Name, ranges.Animals[pairs[i].Animal].Name,
                              fmt::format("{:.4f}", pairs[i].Value)});
    console.Result("");
    print_table(table, console);
    if (pairs.size() > kLargestPairs)
        console.Result(fmt::format("... and {} more: --csv OUT.csv writes all", pairs.size() - kLargestPairs));
}

TextTable animals_table(const ComparedRanges& ranges) {
    TextTable table{{"animal", "n", "bandwidth", "volume"}, {}};
    for (const double percent : ranges.Densities.Percents)
        table.Columns.push_back("area " + NumberText(percent) + " %");
    table.Columns.emplace_back("status");
    const double cell = ranges.Densities.Grid.CellSize;
    for (std::size_t i = 0; i < ranges.Animals.size(); ++i) {
        const ComparedAnimal& animal = ranges.Animals[i];
        const bool alive = ranges.Densities.Animals[i].IsAlive();
        std::vector<std::string> row{animal.Name, animal.Fixes ? std::to_string(*animal.Fixes) : "",
                                     animal.Bandwidth ? fmt::format("{:.6g}", *animal.Bandwidth) : "",
                                     alive ? fmt::format("{:.4f}", animal.Volume) : ""};
        for (std::size_t p = 0; p < ranges.Densities.Percents.size(); ++p)
            row.push_back(
                alive ? NumberText(static_cast<double>(ranges.Densities.Animals[i].Ranges()[p].Cells) * cell * cell)
                      : "");
        row.push_back(animal.Status);
        table.Rows.push_back(std::move(row));
    }
    return table;
}

Json json_of_grid(const platform::RasterGeometry& grid) {
    return {{"cell_size", grid.CellSize},
            {"columns", grid.Columns},
            {"rows", grid.Rows},
            {"origin", {json_number(grid.OriginX), json_number(grid.OriginY)}}};
}

Json json_of_animal(const ComparedAnimal& animal, const comparison::TiledDensity& density,
                    const comparison::DensitySet& set) {
    Json areas = Json::object();
    for (std::size_t p = 0; p < set.Percents.size(); ++p)
        areas[NumberText(set.Percents[p])] =
            density.IsAlive()
                ? Json(static_cast<double>(density.Ranges()[p].Cells) * set.Grid.CellSize * set.Grid.CellSize)
                : Json(nullptr);
    Json json = {{"id", animal.Id},
                 {"n", animal.Fixes ? Json(*animal.Fixes) : Json(nullptr)},
                 {"bandwidth", json_number(animal.Bandwidth)},
                 {"volume", density.IsAlive() ? json_number(animal.Volume) : Json(nullptr)},
                 {"area", areas},
                 {"status", animal.Status}};
    json.update(animal.Times);
    return json;
}

Json json_of_pair(const PairOverlap& pair, const ComparedRanges& ranges) {
    const auto value = [&](double OverlapIndices::*index) { return json_number(value_of(pair, index)); };
    return {{"i", ranges.Animals[pair.First].Id},
            {"j", ranges.Animals[pair.Second].Id},
            {"percent", pair.Percent},
            {"conditional", pair.Conditional},
            {"hr_ij", value(&OverlapIndices::HrIj)},
            {"hr_ji", value(&OverlapIndices::HrJi)},
            {"phr_ij", value(&OverlapIndices::PhrIj)},
            {"phr_ji", value(&OverlapIndices::PhrJi)},
            {"vi", value(&OverlapIndices::Vi)},
            {"ba", value(&OverlapIndices::Ba)},
            {"udoi", value(&OverlapIndices::Udoi)},
            {"hd", value(&OverlapIndices::Hd)}};
}

}  // namespace

std::vector<std::string> index_names(const std::string& option) {
    std::vector<std::string> names;
    for (const std::string& piece : platform::Split(option, ',')) {
        const std::string name(platform::Trim(piece));
        if (!is_known(name)) throw WrongCall(fmt::format("--index: \"{}\" is not ba, vi, udoi, phr, hr or hd", name));
        names.emplace_back(kind_of(name).Name);
    }
    return names;
}

double told(double value) {
    return platform::NumberFromText(fmt::format("{:.6g}", value));
}

Json json_of(const ComparedRanges& ranges) {
    Json animals = Json::array();
    for (std::size_t i = 0; i < ranges.Animals.size(); ++i)
        animals.push_back(json_of_animal(ranges.Animals[i], ranges.Densities.Animals[i], ranges.Densities));
    Json pairs = Json::array();
    for (const PairOverlap& pair : ranges.Pairs) pairs.push_back(json_of_pair(pair, ranges));
    return {{"grid", json_of_grid(ranges.Densities.Grid)}, {"animals", animals}, {"pairs", pairs}};
}

TextTable long_table(const ComparedRanges& ranges, const std::vector<std::string>& indices) {
    TextTable table{{"range_of", "animal", "index", "percent", "conditional", "value"}, {}};
    for (const PairOverlap& pair : ranges.Pairs)
        for (const std::string& name : indices) {
            const IndexKind& kind = kind_of(name);
            if (is_repeated(kind, pair, ranges)) continue;
            const std::string& first = ranges.Animals[pair.First].Name;
            const std::string& second = ranges.Animals[pair.Second].Name;
            const std::string percent = kind.OfRanges || pair.Conditional ? NumberText(pair.Percent) : "";
            const char* conditional = pair.Conditional ? "yes" : "no";
            table.Rows.push_back({first, second, name, percent, conditional, text_of(value_of(pair, kind.Forth))});
            if (pair.First != pair.Second)
                table.Rows.push_back({second, first, name, percent, conditional, text_of(value_of(pair, kind.Back))});
        }
    return table;
}

pictures::HeatMapPicture heat_map(const ComparedRanges& ranges, const std::string& index) {
    const Section section = sections_of(ranges, {index}).front();
    const std::size_t count = ranges.Animals.size();
    pictures::HeatMapPicture picture{"Overlap: " + section.Title(), {}, {}, 0.0};
    for (const ComparedAnimal& animal : ranges.Animals) picture.Names.push_back(animal.Name);
    picture.Values.resize(count * count);
    for (const PairOverlap& pair : ranges.Pairs) {
        if (!section.Holds(pair)) continue;
        picture.Values[pair.First * count + pair.Second] = value_of(pair, section.Kind->Forth);
        picture.Values[pair.Second * count + pair.First] = value_of(pair, section.Kind->Back);
    }
    for (const std::optional<double>& value : picture.Values)
        picture.Full = std::max(picture.Full, value.value_or(0.0));
    return picture;
}

void print_ranges(const ComparedRanges& ranges, const std::vector<std::string>& indices, Console& console) {
    print_table(animals_table(ranges), console);
    for (const Section& section : sections_of(ranges, indices)) {
        if (ranges.Animals.size() > kMatrixAnimals) {
            print_largest(ranges, section, console);
        } else {
            print_matrix(ranges, section, console);
        }
    }
}

}  // namespace wxl::cli
