#include "results_page/overlap_page.h"

#include "pictures/axis.h"
#include "pictures/xml_text.h"
#include "platform/text.h"
#include "results_page/document.h"
#include "results_page/overlap_pictures.h"
#include "results_page/repeat_command.h"
#include "results_page/result_table.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

namespace wxl::results_page {
namespace {

using comparison::ComparedAnimal;
using comparison::IndexKind;
using comparison::IndexSection;
using comparison::PairOverlap;
using pictures::ShortNumber;
using pictures::XmlText;
using platform::NumberText;

constexpr int kDigits = 4;
constexpr std::size_t kTablePairs = 40;
constexpr std::size_t kMaps = 3;
constexpr std::size_t kTableAnimals = 1000;

std::string counted(std::size_t count, const char* one, const char* many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

/// A dash where there is no value.
TableCell number_cell(const std::optional<double>& value, const std::string& text) {
    return {value ? text : "", value};
}

std::string number_html(const std::optional<double>& value, const std::string& text) {
    return body_cell(number_cell(value, text), ColumnLook::kNumber);
}

std::string problems(const OverlapRun& run) {
    if (run.Warnings.empty()) return {};
    constexpr std::size_t kTold = 20;
    std::string html = "<div class=\"notice\"><p><strong>Please check:</strong></p><ul>";
    for (std::size_t i = 0; i < std::min(run.Warnings.size(), kTold); ++i)
        html += "<li>" + XmlText(run.Warnings[i]) + "</li>";
    if (run.Warnings.size() > kTold) html += "<li>… and " + std::to_string(run.Warnings.size() - kTold) + " more</li>";
    return html + "</ul></div>\n";
}

std::string heat_note(const OverlapRun& run, const IndexSection& section, std::size_t shown) {
    const std::size_t all = run.Ranges->Animals.size();
    if (all <= kOwnOrder) return {};
    std::string note = "Near animals stand side by side. ";
    if (shown < all)
        note += "Shown are the " + std::to_string(shown) + " of " + std::to_string(all) +
                " animals with the nearest pairs by " + XmlText(section.Kind->Title) + ". ";
    return "<p class=\"quiet\">" + note + "</p>\n";
}

std::string heat_figure(const OverlapRun& run, const IndexSection& section, std::size_t number) {
    const std::vector<std::uint32_t> order = heat_order(*run.Ranges, section, kHeatAnimals);
    return "<figure class=\"heat\">\n" +
           pictures::HeatMapSvg(heat_map(*run.Ranges, section, order), "heat-" + std::to_string(number)) +
           heat_note(run, section, order.size()) + "</figure>\n";
}

/// The first index in full view, the others to be unfolded.
std::string heat_maps(const OverlapRun& run) {
    const std::vector<IndexSection> sections = index_sections(*run.Ranges, run.Indices);
    std::string html = heat_figure(run, sections.front(), 1);
    for (std::size_t i = 1; i < sections.size(); ++i)
        html += "<details class=\"trace\"><summary>" + XmlText(sections[i].Title()) + "</summary>\n" +
                heat_figure(run, sections[i], i + 1) + "</details>\n";
    return html;
}

/// The records of one pair, by percentage and kind.
using PairRecords = std::vector<const PairOverlap*>;

/// The nearest pairs by the first index, each once.
std::vector<std::pair<std::uint32_t, std::uint32_t>> nearest_pairs(const OverlapRun& run) {
    const IndexSection first = index_sections(*run.Ranges, run.Indices).front();
    std::vector<std::pair<std::uint32_t, std::uint32_t>> pairs;
    for (const comparison::RankedPair& ranked : ranked_pairs(*run.Ranges, first)) {
        const std::pair<std::uint32_t, std::uint32_t> pair = std::minmax(ranked.RangeOf, ranked.Animal);
        if (std::ranges::find(pairs, pair) == pairs.end()) pairs.push_back(pair);
        if (pairs.size() == kTablePairs) break;
    }
    return pairs;
}

TableCell value_cell(const PairRecords& records, const IndexSection& section,
                     double comparison::OverlapIndices::*index) {
    for (const PairOverlap* record : records)
        if (section.Holds(*record)) {
            const auto value = told_value(*record, index);
            return number_cell(value, value ? ShortNumber(*value, kDigits) : "");
        }
    return number_cell(std::nullopt, "");
}

/// A percentage at which ranges are compared, as a section of the index that counts their cells.
IndexSection common_section(double percent) {
    return {comparison::index_kind("hr"), percent, false};
}

TableCell common_cell(const OverlapRun& run, const PairRecords& records, std::size_t percent) {
    const double value = run.Ranges->Densities.Percents[percent];
    for (const PairOverlap* record : records) {
        if (!common_section(value).Holds(*record) || !record->Indices) continue;
        const double area = record->Indices->HrIj * area_of(*run.Ranges, record->First, percent).value_or(0.0);
        return number_cell(area, area_text(run.Units, area));
    }
    return number_cell(std::nullopt, "");
}

std::vector<TableColumn> pair_columns(const OverlapRun& run, const std::vector<IndexSection>& sections) {
    std::vector<TableColumn> columns = {{"Second"}};
    for (const IndexSection& section : sections) {
        const std::string title = section.Title();
        columns.push_back({section.Kind->IsSymmetric() ? title : title + ", first", ColumnLook::kNumber});
        if (!section.Kind->IsSymmetric()) columns.push_back({title + ", second", ColumnLook::kNumber});
    }
    for (const double percent : run.Ranges->Densities.Percents)
        columns.push_back(
            {"In common at " + NumberText(percent) + " % (" + area_unit(run.Units) + ")", ColumnLook::kNumber});
    return columns;
}

TableRow pair_row(const OverlapRun& run, const std::vector<IndexSection>& sections, std::uint32_t second,
                  const std::string& first, const PairRecords& records) {
    TableRow row{first, {{"<bdi>" + XmlText(run.Ranges->Animals[second].Name) + "</bdi>"}}};
    for (const IndexSection& section : sections) {
        row.Cells.push_back(value_cell(records, section, section.Kind->Forth));
        if (!section.Kind->IsSymmetric()) row.Cells.push_back(value_cell(records, section, section.Kind->Back));
    }
    for (std::size_t p = 0; p < run.Ranges->Densities.Percents.size(); ++p)
        row.Cells.push_back(common_cell(run, records, p));
    return row;
}

std::string pair_table(const OverlapRun& run) {
    const auto pairs = nearest_pairs(run);
    if (pairs.empty()) return "<p class=\"missing\">There is no pair of two animals that can be compared.</p>\n";
    const std::vector<IndexSection> sections = index_sections(*run.Ranges, run.Indices);
    std::map<std::pair<std::uint32_t, std::uint32_t>, PairRecords> records;
    for (const auto& pair : pairs) records[pair];
    for (const PairOverlap& pair : run.Ranges->Pairs)
        if (const auto found = records.find({pair.First, pair.Second}); found != records.end())
            found->second.push_back(&pair);
    std::vector<TableRow> rows;
    for (const auto& pair : pairs)
        rows.push_back(pair_row(run, sections, pair.second, run.Ranges->Animals[pair.first].Name, records[pair]));
    std::string html = "<h3>" + std::string(pairs.size() == kTablePairs ? "The nearest pairs" : "Pairs") + "</h3>\n" +
                       sorted_table("Table of pairs", "First", RowNames::kPlain, pair_columns(run, sections), rows);
    if (pairs.size() == kTablePairs)
        html += "<p class=\"quiet\">The " + std::to_string(kTablePairs) + " nearest by " +
                XmlText(sections.front().Title()) + "; <code>WXL_OVERLAP.csv</code> has all.</p>\n";
    return html;
}

std::string animal_row(const OverlapRun& run, std::size_t i) {
    const ComparedAnimal& animal = run.Ranges->Animals[i];
    const bool alive = run.Ranges->Densities.Animals[i].IsAlive();
    std::string html = "<tr><th scope=\"row\"><bdi>" + XmlText(animal.Name) + "</bdi></th>" +
                       number_html(animal.Fixes ? std::optional(static_cast<double>(*animal.Fixes)) : std::nullopt,
                                   animal.Fixes ? std::to_string(*animal.Fixes) : "") +
                       number_html(animal.Bandwidth, animal.Bandwidth ? ShortNumber(*animal.Bandwidth, kDigits) : "") +
                       number_html(alive ? std::optional(animal.Volume) : std::nullopt,
                                   ShortNumber(100.0 * animal.Volume, kDigits) + " %");
    for (std::size_t p = 0; p < run.Ranges->Densities.Percents.size(); ++p) {
        const auto area = area_of(*run.Ranges, i, p);
        html += number_html(area, area_text(run.Units, area));
    }
    return html + "<td>" + (alive ? "ok" : "<strong class=\"bad\">not compared</strong>: " + XmlText(animal.Status)) +
           "</td></tr>\n";
}

std::string animal_table(const OverlapRun& run) {
    const std::size_t shown = std::min(run.Ranges->Animals.size(), kTableAnimals);
    std::string html =
        "<div class=\"scroll\" role=\"region\" aria-label=\"Table of animals\" tabindex=\"0\">\n"
        "<table class=\"animals\"><thead><tr><th scope=\"col\">Animal</th><th scope=\"col\" "
        "class=\"num\">Fixes</th><th scope=\"col\" class=\"num\">Bandwidth (" +
        XmlText(length_unit(run.Units)) + ")</th><th scope=\"col\" class=\"num\">On the grid</th>";
    for (const double percent : run.Ranges->Densities.Percents)
        html += "<th scope=\"col\" class=\"num\">" + NumberText(percent) + " % area (" + XmlText(area_unit(run.Units)) +
                ")</th>";
    html += "<th scope=\"col\">State</th></tr></thead>\n<tbody>\n";
    for (std::size_t i = 0; i < shown; ++i) html += animal_row(run, i);
    html += "</tbody></table></div>\n";
    if (shown < run.Ranges->Animals.size())
        html += "<p class=\"quiet\">The first " + std::to_string(shown) + " of " +
                std::to_string(run.Ranges->Animals.size()) + " animals.</p>\n";
    return html;
}

std::string maps(const OverlapRun& run) {
    const std::size_t count = std::min(run.Ranges->Densities.Percents.size(), kMaps);
    std::string html;
    for (std::size_t percent = 0; percent < count; ++percent) html += overlap_map(run, percent);
    return html.empty() ? html : "<div class=\"maps\">\n" + html + "</div>\n";
}

/// What an index means, by its name.
struct Meaning {
    std::string_view Name;
    const char* Html;
};

constexpr std::array<Meaning, 6> kMeanings = {
    {{"ba",
      "<dt>BA, Bhattacharyya’s affinity</dt><dd>how alike two distributions of use are: the sum of √(f g) over "
      "all places. 0: they share nothing; 1: they are the same (Bhattacharyya 1943, Fieberg and Kochanny "
      "2005).</dd>\n"},
     {"vi",
      "<dt>VI, volume of intersection</dt><dd>what both distributions have in common: the smaller of the two at every "
      "place. 0 to 1 (Seidel 1992, Millspaugh et al. 2004).</dd>\n"},
     {"udoi",
      "<dt>UDOI, utilization distribution overlap index</dt><dd>the common area times the sum of f g: 0 where ranges "
      "do "
      "not meet, 1 for two equal uniform ranges, more where both use the same places intensely (Fieberg and Kochanny "
      "2005, after Hurlbert 1978).</dd>\n"},
     {"phr",
      "<dt>PHR</dt><dd>the probability of meeting the other animal within the range of the first (the second) of the "
      "pair. In a heat map the row is the range, the column the animal (Kernohan et al. 2001).</dd>\n"},
     {"hr",
      "<dt>HR</dt><dd>the share of the range of the first (the second) of the pair that lies in that of the other. In "
      "a "
      "heat map the row is the range whose share it is (Kernohan et al. 2001).</dd>\n"},
     {"hd",
      "<dt>HD, Hellinger’s distance</dt><dd>how unlike two distributions are: 0 for equal ones, 1.414 for "
      "such that share nothing. Its square is 2 − 2 BA where both lie whole on the grid.</dd>\n"}}};

constexpr const char* kWorks =
    "<ul class=\"works\"><li>Bhattacharyya 1943, Bulletin of the Calcutta Mathematical Society 35:99–109</li>"
    "<li>Fieberg and Kochanny 2005, Journal of Wildlife Management 69:1346–1359, "
    "doi:10.2193/0022-541X(2005)69[1346:QHOTIO]2.0.CO;2</li>"
    "<li>Hurlbert 1978, Ecology 59:67–77, doi:10.2307/1936632</li>"
    "<li>Kernohan, Gitzen and Millspaugh 2001, in Radio Tracking and Animal Populations, Academic Press</li>"
    "<li>Millspaugh et al. 2004, Wildlife Society Bulletin 32:148, "
    "doi:10.2193/0091-7648(2004)32[148:COTATT]2.0.CO;2</li>"
    "<li>Seidel 1992, thesis, University of Washington</li></ul>\n";

std::string reading(const OverlapRun& run) {
    std::string html =
        "<section id=\"reading\" aria-labelledby=\"reading-name\">\n<h2 id=\"reading-name\">Reading the numbers</h2>\n"
        "<p>All animals lie on one grid. A range at p % is the cells of highest density that hold p % of the "
        "animal’s use; it differs from a drawn isopleth by a cell or so. Ranges and common areas are drawn along "
        "the edges of their cells, so that a common area is exactly HR times the area of its range. Indices of "
        "<em>whole</em> distributions know no percentage; <em>conditional</em> ones count both densities as nothing "
        "outside their own ranges. Values are exact to six digits. An animal without a distribution has no "
        "values, never zeros.</p>\n<dl>\n";
    for (const Meaning& meaning : kMeanings)
        if (std::ranges::any_of(run.Indices, [&](const IndexKind* kind) { return kind->Name == meaning.Name; }))
            html += meaning.Html;
    return html +
           "<dt>On the grid</dt><dd>how much of the distribution the cells hold. It is never divided away: below 99 % "
           "the grid, or the reach of the kernels, cuts it.</dd>\n</dl>\n" +
           kWorks + "</section>\n";
}

std::string settings(const OverlapRun& run) {
    std::string html =
        "<section id=\"settings\" aria-labelledby=\"settings-name\">\n<h2 id=\"settings-name\">Settings</h2>\n"
        "<table class=\"settings\"><tbody>\n";
    for (const auto& [name, value] : run.Settings) html += settings_row(XmlText(name), value);
    const platform::RasterGeometry& grid = run.Ranges->Densities.Grid;
    const std::string& system = run.Units.Reference.Name;
    return html +
           settings_row("Grid", std::to_string(grid.Columns) + " × " + std::to_string(grid.Rows) + " cells of " +
                                    NumberText(grid.CellSize) + " " + length_unit(run.Units)) +
           settings_row("Coordinate system", system.empty() ? "unknown" : system) + "</tbody></table>\n</section>\n";
}

std::string lede(const OverlapRun& run) {
    std::string percents;
    for (const double percent : run.Ranges->Densities.Percents)
        percents += (percents.empty() ? "" : ", ") + NumberText(percent);
    return counted(run.Ranges->Animals.size(), "range", "ranges") + " · at " + percents + " %";
}

}  // namespace

std::filesystem::path write_overlap_page(platform::IFileSystem& files, const std::filesystem::path& folder,
                                         const OverlapRun& run) {
    std::filesystem::path page = folder / kOverlapPageFile;
    if (!may_replace_page(files, page)) return {};
    PendingFile pending(files, page);
    platform::IOutputFile& file = pending.File();
    file.Write(document_opening(
        {.Title = run.Title, .Kind = "Overlap of home ranges", .Suffix = "overlap of home ranges", .Lede = lede(run)}));
    file.Write("<section id=\"results\" aria-labelledby=\"results-name\">\n<h2 id=\"results-name\">Results</h2>\n" +
               problems(run) + heat_maps(run) + pair_table(run) + "</section>\n");
    file.Write("<section id=\"animals\" aria-labelledby=\"animals-name\">\n<h2 id=\"animals-name\">Animals</h2>\n" +
               maps(run) + animal_table(run) + "</section>\n");
    file.Write(reading(run) + settings(run) +
               command_section("The same comparison from a command line. Add <code>--overwrite</code> to replace the "
                               "files, or name another folder.",
                               shell_text(run.Words)) +
               document_closing(run.Start, run.Finish));
    pending.Publish();
    return page;
}

}  // namespace wxl::results_page
