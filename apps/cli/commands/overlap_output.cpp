#include "apps/cli/commands/overlap_output.h"

#include "platform/text.h"

#include <algorithm>
#include <fmt/format.h>

namespace wxl::cli {

namespace {

using comparison::ComparedAnimal;
using comparison::ComparedRanges;
using comparison::IndexKind;
using comparison::IndexSection;
using comparison::OverlapIndices;
using comparison::PairOverlap;
using platform::NumberText;

/// More animals than this make no table that a screen holds.
constexpr std::size_t kMatrixAnimals = 20;
constexpr std::size_t kLargestPairs = 40;

void print_matrix(const ComparedRanges& ranges, const IndexSection& section, Console& console) {
    TextTable table{{section.Title()}, {}};
    for (const ComparedAnimal& animal : ranges.Animals) {
        table.Columns.push_back(animal.Name);
        table.Rows.emplace_back(ranges.Animals.size() + 1);
        table.Rows.back()[0] = animal.Name;
    }
    const std::size_t count = ranges.Animals.size();
    const auto values = comparison::index_matrix(ranges, section, comparison::all_animals(ranges));
    for (std::size_t at = 0; at < values.size(); ++at)
        if (values[at]) table.Rows[at / count][at % count + 1] = fmt::format("{:.4f}", *values[at]);
    console.Result("");
    print_table(table, console);
}

void print_largest(const ComparedRanges& ranges, const IndexSection& section, Console& console) {
    const std::vector<comparison::RankedPair> pairs = comparison::ranked_pairs(ranges, section);
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
    for (std::size_t i = 0; i < ranges.Animals.size(); ++i) {
        const ComparedAnimal& animal = ranges.Animals[i];
        const bool alive = ranges.Densities.Animals[i].IsAlive();
        std::vector<std::string> row{animal.Name, animal.Fixes ? std::to_string(*animal.Fixes) : "",
                                     animal.Bandwidth ? fmt::format("{:.6g}", *animal.Bandwidth) : "",
                                     alive ? fmt::format("{:.4f}", animal.Volume) : ""};
        for (std::size_t p = 0; p < ranges.Densities.Percents.size(); ++p) {
            const auto area = comparison::area_of(ranges, i, p);
            row.push_back(area ? NumberText(*area) : "");
        }
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

Json json_of_animal(const OverlapResult& result, std::size_t i) {
    const ComparedRanges& ranges = result.Ranges;
    const ComparedAnimal& animal = ranges.Animals[i];
    Json areas = Json::object();
    for (std::size_t p = 0; p < ranges.Densities.Percents.size(); ++p)
        areas[NumberText(ranges.Densities.Percents[p])] = json_number(comparison::area_of(ranges, i, p));
    Json json = {{"id", result.Ids[i]},
                 {"n", animal.Fixes ? Json(*animal.Fixes) : Json(nullptr)},
                 {"bandwidth", json_number(animal.Bandwidth)},
                 {"volume", ranges.Densities.Animals[i].IsAlive() ? json_number(animal.Volume) : Json(nullptr)},
                 {"area", areas},
                 {"status", animal.Status}};
    json.update(result.Times[i]);
    return json;
}

Json json_of_pair(const OverlapResult& result, const PairOverlap& pair) {
    const auto value = [&](double OverlapIndices::*index) { return json_number(comparison::told_value(pair, index)); };
    return {{"i", result.Ids[pair.First]},
            {"j", result.Ids[pair.Second]},
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

std::vector<const IndexKind*> indices_of(const std::string& option) {
    std::vector<const IndexKind*> kinds;
    for (const std::string& piece : platform::Split(option, ',')) {
        const std::string name(platform::Trim(piece));
        kinds.push_back(comparison::index_kind(name));
        if (kinds.back() == nullptr)
            throw WrongCall(fmt::format("--index: \"{}\" is not ba, vi, udoi, phr, hr or hd", name));
    }
    return kinds;
}

Json json_of(const OverlapResult& result) {
    const ComparedRanges& ranges = result.Ranges;
    Json animals = Json::array();
    for (std::size_t i = 0; i < ranges.Animals.size(); ++i) animals.push_back(json_of_animal(result, i));
    Json pairs = Json::array();
    for (const PairOverlap& pair : ranges.Pairs) pairs.push_back(json_of_pair(result, pair));
    return {{"grid", json_of_grid(ranges.Densities.Grid)}, {"animals", animals}, {"pairs", pairs}};
}

void print_ranges(const ComparedRanges& ranges, const std::vector<const IndexKind*>& indices, Console& console) {
    print_table(animals_table(ranges), console);
    for (const IndexSection& section : comparison::index_sections(ranges, indices)) {
        if (ranges.Animals.size() > kMatrixAnimals) {
            print_largest(ranges, section, console);
        } else {
            print_matrix(ranges, section, console);
        }
    }
}

}  // namespace wxl::cli
