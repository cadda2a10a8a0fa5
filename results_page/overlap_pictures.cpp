#include "results_page/overlap_pictures.h"

#include "analysis/overlap_layer.h"
#include "comparison/cell_outline.h"
#include "pictures/axis.h"
#include "pictures/xml_text.h"
#include "platform/text.h"
#include "results_page/map_svg.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <deque>
#include <iterator>
#include <limits>
#include <numeric>
#include <optional>

namespace wxl::results_page {
namespace {

using comparison::ComparedRanges;
using comparison::IndexSection;
using comparison::PairOverlap;
using pictures::ShortNumber;
using pictures::XmlText;
using platform::NumberText;

constexpr double kTolerance = 0.35;  ///< picture units
constexpr std::size_t kLinePoints = 3000;
constexpr std::size_t kNamedAnimals = 30;  ///< more names hide the map
constexpr std::size_t kShownName = 16;
constexpr double kLetter = 6.2;
constexpr double kLine = 13.0;
constexpr double kBelowMap = 30.0;  ///< coordinates stand there; a range without room for its name has it as a title
constexpr int kDigits = 4;

/// Colours that people tell apart whatever they see of red and green (Okabe and Ito 2008).
constexpr std::array<const char*, 7> kColours = {"#0072b2", "#009e73", "#cc79a7", "#56b4e9",
                                                 "#e69f00", "#5d3a9b", "#000000"};
constexpr const char* kOneColour = "#0072b2";
constexpr const char* kCommon = "#d55e00";

/// The animals of the nearest pairs, then the others, `most` at most, ascending.
std::vector<std::uint32_t> nearest_animals(const ComparedRanges& ranges, const IndexSection& section,
                                           std::size_t most) {
    std::vector<std::uint32_t> all = all_animals(ranges);
    if (all.size() <= most) return all;
    std::vector<char> met(all.size(), 0);
    std::vector<std::uint32_t> chosen;
    const auto choose = [&](std::uint32_t animal) {
        if (chosen.size() < most && met[animal] == 0) chosen.push_back(animal);
        met[animal] = 1;
    };
    for (const comparison::RankedPair& pair : ranked_pairs(ranges, section)) {
        choose(pair.RangeOf);
        choose(pair.Animal);
    }
    for (const std::uint32_t animal : all)
        if (ranges.Densities.Animals[animal].IsAlive()) choose(animal);
    for (const std::uint32_t animal : all) choose(animal);
    std::ranges::sort(chosen);
    return chosen;
}

/// How near two animals are; the greater the nearer.
class Nearness {
public:
    Nearness(const ComparedRanges& ranges, const IndexSection& section, const std::vector<std::uint32_t>& animals)
        : m_values(index_matrix(ranges, section, animals)),
          m_count(animals.size()),
          m_sign(section.Kind->IsDistance() ? -1.0 : 1.0) {}

    /// @param a, b places among the animals
    double operator()(std::size_t a, std::size_t b) const {
        const auto there = m_values[a * m_count + b];
        const auto back = m_values[b * m_count + a];
        if (!there || !back) return kFarthest;
        return std::max(m_sign * *there, m_sign * *back);
    }

    static constexpr double kFarthest = -std::numeric_limits<double>::infinity();

private:
    std::vector<std::optional<double>> m_values;
    std::size_t m_count;
    double m_sign;
};

/// The place of the one that is nearest to place `to`; the first one where none is near.
std::size_t nearest_to(std::size_t to, const std::vector<std::size_t>& open, const Nearness& near) {
    std::size_t best = 0;
    for (std::size_t i = 1; i < open.size(); ++i)
        if (near(to, open[i]) > near(to, open[best])) best = i;
    return best;
}

/// The place in `open` of the one with the nearest neighbour of all.
std::size_t begin_of_chain(const std::vector<std::size_t>& open, const Nearness& near) {
    std::size_t best = 0;
    double nearest = Nearness::kFarthest;
    for (std::size_t i = 0; i < open.size(); ++i)
        for (std::size_t k = i + 1; k < open.size(); ++k)
            if (near(open[i], open[k]) > nearest) {
                nearest = near(open[i], open[k]);
                best = i;
            }
    return best;
}

/// Places in a chain that begins at the nearest pair and grows at either end by the one that is nearest to it.
std::vector<std::size_t> chained(std::size_t count, const Nearness& near) {
    std::vector<std::size_t> open(count);
    std::iota(open.begin(), open.end(), std::size_t{0});
    std::deque<std::size_t> chain;
    const auto take = [&](std::size_t place) {
        const std::size_t taken = open[place];
        open.erase(open.begin() + static_cast<std::ptrdiff_t>(place));
        return taken;
    };
    if (!open.empty()) chain.push_back(take(begin_of_chain(open, near)));
    while (!open.empty()) {
        const std::size_t back = nearest_to(chain.back(), open, near);
        const std::size_t front = nearest_to(chain.front(), open, near);
        if (near(chain.front(), open[front]) > near(chain.back(), open[back])) {
            chain.push_front(take(front));
        } else {
            chain.push_back(take(back));
        }
    }
    return {chain.begin(), chain.end()};
}

std::string path_of(const platform::Geometry& shape, const MapScale& scale, std::size_t points) {
    std::vector<platform::ContourLine> rings;
    for (const auto& ring : shape.Parts) rings.push_back({0.0, ring});
    return svg_path(rings, scale, kTolerance, points);
}

/// The middle of the cells, in map units.
platform::Point middle_of(const platform::RasterGeometry& grid, const comparison::CellWindow& cells) {
    double rows = 0.0;
    double columns = 0.0;
    for (std::int32_t row = 0; row < cells.Rows; ++row)
        for (std::int32_t column = 0; column < cells.Columns; ++column) {
            if (!cells.Holds(row, column)) continue;
            rows += row + 0.5;
            columns += column + 0.5;
        }
    const auto count = static_cast<double>(std::max<std::int64_t>(cells.Cells, 1));
    return {grid.OriginX + (cells.Column + columns / count) * grid.CellSize,
            grid.OriginY + (grid.Rows - cells.Row - rows / count) * grid.CellSize};
}

/// The box around the cells, in map units.
platform::Extent box_of(const platform::RasterGeometry& grid, const comparison::CellWindow& cells) {
    platform::Extent box;
    for (std::int32_t row = 0; row < cells.Rows; ++row)
        for (std::int32_t column = 0; column < cells.Columns; ++column) {
            if (!cells.Holds(row, column)) continue;
            const double x = grid.OriginX + (cells.Column + column) * grid.CellSize;
            const double y = grid.OriginY + (grid.Rows - cells.Row - row) * grid.CellSize;
            box.Include({x, y});
            box.Include({x + grid.CellSize, y - grid.CellSize});
        }
    return box;
}

/// One range of a map.
struct DrawnRange {
    std::uint32_t Animal = 0;
    platform::Geometry Outline;
    platform::Point Middle;
};

/// The ranges and common areas of one map.
class RangesMap {
public:
    RangesMap(const OverlapRun& run, std::size_t percent)
        : m_run(run), m_ranges(*run.Ranges), m_percent(percent), m_section{run.Indices.front(), PercentValue(), false} {
        if (!m_section.Kind->OfRanges) m_section.Percent = m_ranges.Densities.Percents.front();
        for (const std::uint32_t animal : nearest_animals(m_ranges, m_section, kMapAnimals)) {
            const comparison::CellWindow cells = range_cells(m_ranges.Densities, animal, percent);
            if (cells.Cells == 0) continue;
            m_drawn.push_back(
                {animal, cell_outline(m_ranges.Densities.Grid, cells), middle_of(m_ranges.Densities.Grid, cells)});
        }
        if (!m_drawn.empty()) m_layout = layout_of(Bounds());
    }

    std::string Html() const {
        if (m_drawn.empty()) return {};
        MapPicture map;
        map.Id = "map-" + std::to_string(m_percent + 1);
        map.Title = "Map of the ranges at " + PercentText();
        map.Description = "Outlines of the ranges of " + std::to_string(m_drawn.size()) +
                          " animals, and what pairs of them have in common.";
        map.Reference = m_run.Units.Reference;
        std::vector<MapArea> common = CommonAreas();
        const std::size_t pairs = common.size();
        map.Areas = Ranges();
        std::ranges::move(common, std::back_inserter(map.Areas));
        map.Labels = Names();
        return "<figure>\n" + map_svg(map, m_layout) + "\n<figcaption>" + Caption(pairs) + "</figcaption>\n" +
               Keys(pairs > 0) + "</figure>\n";
    }

private:
    /// The same for the maps of all percentages: the box around the largest ranges.
    platform::Extent Bounds() const {
        const auto& percents = m_ranges.Densities.Percents;
        const auto widest = static_cast<std::size_t>(std::ranges::max_element(percents) - percents.begin());
        const platform::RasterGeometry& grid = m_ranges.Densities.Grid;
        platform::Extent bounds;
        for (const DrawnRange& drawn : m_drawn) {
            const platform::Extent box = box_of(grid, range_cells(m_ranges.Densities, drawn.Animal, widest));
            bounds.Include({box.XMin, box.YMin});
            bounds.Include({box.XMax, box.YMax});
        }
        return bounds;
    }

    double PercentValue() const { return m_ranges.Densities.Percents[m_percent]; }
    std::string PercentText() const { return NumberText(PercentValue()) + " %"; }

    const char* ColourOf(std::size_t place) const {
        return m_drawn.size() <= kColours.size() ? kColours.at(place) : kOneColour;
    }

    std::string AreaText(double area) const { return area_text(m_run.Units, area) + " " + area_unit(m_run.Units); }

    std::vector<MapArea> Ranges() const {
        std::vector<MapArea> areas;
        for (std::size_t i = 0; i < m_drawn.size(); ++i)
            areas.push_back({path_of(m_drawn[i].Outline, m_layout.Scale, kLinePoints), "none", ColourOf(i),
                             m_ranges.Animals[m_drawn[i].Animal].Name + ": " +
                                 AreaText(area_of(m_ranges, m_drawn[i].Animal, m_percent).value_or(0.0))});
        return areas;
    }

    std::vector<MapArea> CommonAreas() const {
        ComparedRanges here;
        here.Animals = m_ranges.Animals;
        for (const PairOverlap& pair : m_ranges.Pairs)
            if (pair.Percent == PercentValue() && !pair.Conditional) here.Pairs.push_back(pair);
        std::vector<MapArea> areas;
        for (const std::size_t place : analysis::drawn_pairs(here, *m_section.Kind, kMapPairs)) {
            const PairOverlap& pair = here.Pairs[place];
            const comparison::CellWindow cells = common_cells(m_ranges.Densities, pair.First, pair.Second, m_percent);
            const double cell = m_ranges.Densities.Grid.CellSize;
            areas.push_back(
                {path_of(cell_outline(m_ranges.Densities.Grid, cells), m_layout.Scale, kLinePoints), kCommon, "none",
                 here.Animals[pair.First].Name + " and " + here.Animals[pair.Second].Name + ": " +
                     AreaText(static_cast<double>(cells.Cells) * cell * cell) + ", " + m_section.Kind->Title + " " +
                     ShortNumber((*pair.Indices).*m_section.Kind->Forth, kDigits)});
        }
        return areas;
    }

    /// Names at the middles of the ranges, one below the other where they would meet, as long as there is room.
    std::vector<MapLabel> Names() const {
        std::vector<MapLabel> labels;
        if (m_drawn.size() > kNamedAnimals) return labels;
        for (const DrawnRange& drawn : m_drawn) {
            MapLabel label{m_layout.Scale.At(drawn.Middle),
                           pictures::Shortened(m_ranges.Animals[drawn.Animal].Name, kShownName)};
            const double half = kLetter * static_cast<double>(label.Text.size()) / 2.0 + 4.0;
            label.Place.X = std::clamp(label.Place.X, std::min(half + 26.0, m_layout.Width / 2.0),
                                       std::max(m_layout.Width - half - 10.0, m_layout.Width / 2.0));
            const auto meets = [&](const MapLabel& other) {
                const double room = kLetter * static_cast<double>(label.Text.size() + other.Text.size()) / 2.0;
                return std::abs(other.Place.X - label.Place.X) < room &&
                       std::abs(other.Place.Y - label.Place.Y) < kLine;
            };
            for (int moved = 0; moved < 12 && std::ranges::any_of(labels, meets); ++moved) label.Place.Y += kLine;
            if (label.Place.Y < m_layout.Height - kBelowMap) labels.push_back(std::move(label));
        }
        return labels;
    }

    std::string Caption(std::size_t pairs) const {
        std::size_t ranges = 0;
        for (std::size_t i = 0; i < m_ranges.Animals.size(); ++i)
            ranges += m_ranges.Densities.Animals[i].IsAlive() ? 1U : 0U;
        std::string text = std::string("Ranges at ") + PercentText() + ", along their cells" +
                           (pairs > 0 ? "; orange is what a pair has in common. " : ". No two have a cell in common. ");
        if (ranges > m_drawn.size())
            text += "Drawn are " + std::to_string(m_drawn.size()) + " of " + std::to_string(ranges) + " ranges. ";
        if (pairs == kMapPairs)
            text += "Drawn are the " + std::to_string(kMapPairs) + " pairs that are nearest by " +
                    m_section.Kind->Title + ". ";
        return text + "Rest the pointer on a range for its name and area.";
    }

    std::string Keys(bool common) const {
        if (m_drawn.size() > kColours.size()) return {};
        std::string keys = "<ul class=\"keys\">";
        const auto key = [&](const char* fill, const char* stroke, const std::string& text) {
            keys +=
                "<li><svg class=\"key\" viewBox=\"0 0 20 16\" aria-hidden=\"true\"><rect x=\"1.5\" y=\"1.5\" "
                "width=\"17\" height=\"13\" fill-opacity=\".4\" stroke-width=\"2.5\" fill=\"" +
                std::string(fill) + "\" stroke=\"" + stroke + "\"/></svg><bdi>" + XmlText(text) + "</bdi></li>";
        };
        for (std::size_t i = 0; i < m_drawn.size(); ++i)
            key("none", ColourOf(i), m_ranges.Animals[m_drawn[i].Animal].Name);
        if (common) key(kCommon, kCommon, "in common");
        return keys + "</ul>\n";
    }

    const OverlapRun& m_run;
    const ComparedRanges& m_ranges;
    std::size_t m_percent;
    IndexSection m_section;
    std::vector<DrawnRange> m_drawn;
    MapLayout m_layout;
};

}  // namespace

std::vector<std::uint32_t> heat_order(const ComparedRanges& ranges, const IndexSection& section, std::size_t most) {
    std::vector<std::uint32_t> animals = nearest_animals(ranges, section, most);
    if (ranges.Animals.size() <= kOwnOrder) return animals;
    std::vector<std::uint32_t> order;
    for (const std::size_t place : chained(animals.size(), Nearness(ranges, section, animals)))
        order.push_back(animals[place]);
    return order;
}

pictures::HeatMapPicture heat_map(const ComparedRanges& ranges, const IndexSection& section,
                                  const std::vector<std::uint32_t>& animals) {
    pictures::HeatMapPicture picture{"Overlap: " + section.Title(), {}, index_matrix(ranges, section, animals), 0.0};
    for (const std::uint32_t animal : animals) picture.Names.push_back(ranges.Animals[animal].Name);
    for (const std::optional<double>& value : picture.Values)
        picture.Full = std::max(picture.Full, value.value_or(0.0));
    return picture;
}

std::string overlap_map(const OverlapRun& run, std::size_t percent) {
    return RangesMap(run, percent).Html();
}

}  // namespace wxl::results_page
