#include "results_page/range_page.h"

#include "akde/animal_models.h"
#include "pictures/axis.h"
#include "pictures/xml_text.h"
#include "platform/text.h"
#include "results_page/document.h"
#include "results_page/range_section.h"
#include "results_page/repeat_command.h"
#include "results_page/result_table.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace wxl::results_page {
namespace {

using akde::RangeExtent;
using akde::RangeRecord;
using movement_models::Estimation;
using pictures::ShortNumber;
using pictures::XmlText;
using platform::NumberText;

constexpr int kDigits = 4;

std::string counted(std::size_t count, const std::string& one, const std::string& many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

using Cell = TableCell;

struct Column {
    std::string Title;
    bool Numeric = false;
    std::function<Cell(const RangeRecord&)> Show;
};

Cell number_cell(double value) {
    if (!(value > 0.0)) return {};
    return {ShortNumber(value, kDigits), value};
}

Cell time_cell(double seconds) {
    return {time_text(seconds), seconds > 0.0 ? std::optional(seconds) : std::nullopt};
}

Cell verdict_cell(const RangeRecord& record) {
    if (!record.IsDone()) return {"<strong class=\"bad\">failed</strong>"};
    return {record.Verdict.Resident ? "yes" : "<strong class=\"warn\">not shown</strong>"};
}

Cell remark_cell(const RangeRecord& record) {
    if (!record.IsDone()) return {XmlText(record.Reason)};
    std::string text;
    for (const std::string& warning : record.Verdict.Warnings) text += (text.empty() ? "" : " ") + XmlText(warning);
    if (record.IsCut()) text += std::string(text.empty() ? "" : " ") + "The raster cuts an outline.";
    return {text};
}

bool has_remarks(const RangeRecord& record) {
    return !remark_cell(record).Html.empty();
}

void add_areas(const RangePageRun& run, double percent, std::vector<Column>& columns) {
    for (const char* bound : {"est", "low", "high"}) {
        const std::string name = std::string(bound) == "est"
                                     ? NumberText(percent) + " % area (" + area_unit(run.Units) + ")"
                                     : NumberText(percent) + " % " + bound;
        columns.push_back({name, true, [&run, percent, bound](const RangeRecord& r) {
                               const auto area = r.AreaAt(percent, bound);
                               return Cell{area_text(run.Units, area), area};
                           }});
    }
}

double dof_of(const RangeRecord& record) {
    return record.Chosen ? record.Chosen->DofArea : 0.0;
}

void add_model(std::vector<Column>& columns) {
    columns.push_back({"Range crossed in", true, [](const RangeRecord& r) {
                           return time_cell(r.Chosen ? r.Chosen->Model.Scales.Position : 0.0);
                       }});
    columns.push_back({"Direction kept for", true, [](const RangeRecord& r) {
                           return time_cell(r.Chosen ? akde::velocity_scale(*r.Chosen) : 0.0);
                       }});
    columns.push_back({"Bandwidth", true, [](const RangeRecord& r) { return number_cell(r.H); }});
}

std::vector<Column> columns_of(const RangePageRun& run) {
    std::vector<Column> columns = {
        {"Resident", false, verdict_cell},
        {"Fixes", true,
         [](const RangeRecord& r) {
             return Cell{std::to_string(r.Used), static_cast<double>(r.Used)};
         }},
        {"Effective fixes", true, [](const RangeRecord& r) { return number_cell(dof_of(r)); }},
        {"Model", false, [](const RangeRecord& r) { return Cell{XmlText(model_text(r))}; }}};
    std::vector<double> percentages = run.Wanted.Percentages;
    std::sort(percentages.begin(), percentages.end(), std::greater<>());
    percentages.erase(std::unique(percentages.begin(), percentages.end()), percentages.end());
    for (const double percent : percentages) add_areas(run, percent, columns);
    add_model(columns);
    // First, where it is seen in a narrow window too.
    if (std::any_of(run.Records.begin(), run.Records.end(), has_remarks))
        columns.insert(columns.begin() + 1, Column{"Remarks", false, remark_cell});
    return columns;
}

TableColumn head_of(const Column& column) {
    if (column.Numeric) return {column.Title, ColumnLook::kNumber};
    return {column.Title, column.Title == "Remarks" ? ColumnLook::kRemark : ColumnLook::kText};
}

std::string table(const RangePageRun& run) {
    const std::vector<Column> columns = columns_of(run);
    std::vector<TableColumn> heads;
    for (const Column& column : columns) heads.push_back(head_of(column));
    std::vector<TableRow> rows;
    for (const RangeRecord& record : run.Records) {
        rows.push_back({platform::ValueText(record.Id), {}});
        for (const Column& column : columns) rows.back().Cells.push_back(column.Show(record));
    }
    return result_table(heads, rows);
}

std::string problems(const RangePageRun& run) {
    const auto count = [&](auto&& is) {
        return static_cast<std::size_t>(std::count_if(run.Records.begin(), run.Records.end(), is));
    };
    const std::size_t failed = count([](const RangeRecord& r) { return !r.IsDone(); });
    const std::size_t unsure = count([](const RangeRecord& r) { return r.IsDone() && !r.Verdict.Resident; });
    const std::size_t cut = count([](const RangeRecord& r) { return r.IsDone() && r.IsCut(); });
    std::vector<std::string> texts;
    if (run.Stopped) texts.emplace_back("The run was stopped; what was done until then is shown.");
    if (failed > 0) texts.push_back(counted(failed, "range", "ranges") + " could not be computed.");
    if (unsure > 0)
        texts.push_back(counted(unsure, "animal is", "animals are") +
                        " not shown to be resident: look at the variogram before using the area.");
    if (cut > 0) texts.push_back(counted(cut, "raster cuts", "rasters cut") + " an outline at the edge.");
    if (texts.empty()) return {};
    std::string html = "<div class=\"notice\"><p><strong>Please check:</strong></p><ul>";
    for (const std::string& text : texts) html += "<li>" + text + "</li>";
    return html + "</ul><p>The column Remarks says why.</p></div>\n";
}

const char* const kReading =
    "<section id=\"reading\" aria-labelledby=\"reading-name\">\n<h2 id=\"reading-name\">Reading the numbers</h2>\n"
    "<div class=\"legend\"><span>thin</span><span class=\"ramp\"></span><span>dense</span></div>\n"
    "<p>The maps show the density of use by the square root of its share of the highest value of the same animal: "
    "colours are not to be compared between animals. Unbroken lines enclose the estimated area of a percentage, the "
    "dotted and the dashed ones its 95 % limits: the truth lies between them as far as the size of the range is "
    "concerned. North is that of the map grid.</p>\n<dl>\n"
    "<dt>Model</dt><dd>How fixes depend on each other: IID not at all; OU: the position returns to the middle of the "
    "range; OUf and OUF: the animal keeps its direction for a while as well. The one with the smallest AICc is "
    "chosen.</dd>\n"
    "<dt>Effective fixes</dt><dd>how many independent fixes the record is worth for the size of the range. Below 4 the "
    "data are few.</dd>\n"
    "<dt>Bandwidth</dt><dd>in units of the range: the kernel is the ellipse of the range, scaled by it. Areas are "
    "divided by the correction for the width of the kernel.</dd>\n"
    "<dt>Variogram</dt><dd>how far positions drift apart with time. That of a resident animal rises and levels "
    "off.</dd>\n</dl>\n</section>\n";

const char* method_name(Estimation method) {
    return movement_models::estimation_name(method).data();
}

std::string extent_text(const RangePageRun& run) {
    switch (run.Wanted.Extent) {
        case RangeExtent::kFull:
            return run.Wanted.Buffer
                       ? "all fixes and a buffer of " + NumberText(*run.Wanted.Buffer) + " " + length_unit(run.Units)
                       : "all fixes, as far as the widest kernel reaches";
        case RangeExtent::kReference:
            return "that of the raster " + run.Wanted.ReferenceName;
        case RangeExtent::kMinimum:
            break;
    }
    return "each animal's own";
}

std::string percentages_text(const RangePageRun& run, const char* between) {
    std::string text;
    for (const double percent : run.Wanted.Percentages) text += (text.empty() ? "" : between) + NumberText(percent);
    return text;
}

/// The model as --at takes it.
std::string given_text(const akde::GivenModel& given) {
    std::string text(model_name(given.Model.Kind));
    if (given.Shape == movement_models::RangeShape::kIsotropic) text += ":isotropic";
    if (given.Model.Scales.Position > 0.0) text += ":" + NumberText(given.Model.Scales.Position);
    if (given.Model.Scales.Velocity > 0.0) text += "," + NumberText(given.Model.Scales.Velocity);
    return text;
}

std::string settings_section(const RangePageRun& run) {
    const akde::RangeSettings& wanted = run.Wanted;
    const std::string& system = run.Units.Reference.Name;
    return "<section id=\"settings\" aria-labelledby=\"settings-name\">\n<h2 "
           "id=\"settings-name\">Settings</h2>\n<table class=\"settings\"><tbody>\n" +
           settings_row("Input", wanted.Source.empty() ? wanted.LayerName : wanted.Source) +
           settings_row("Animal ID field", wanted.Fields.Id) + settings_row("Time field", wanted.Fields.Time) +
           settings_row("Fixes", !wanted.Where.empty() ? "where " + wanted.Where
                                 : wanted.SelectedOnly ? "the selected ones"
                                                       : "all") +
           settings_row("Coordinate system",
                        (system.empty() ? "unknown" : system) + ", coordinates in " + length_unit(run.Units)) +
           settings_row("Model", wanted.Fit.Given ? "given: " + given_text(*wanted.Fit.Given)
                                                  : std::string("the best of eight by AICc, fitted by ") +
                                                        method_name(wanted.Fit.Method)) +
           settings_row("Weights", wanted.Optimal ? "optimal" : "uniform") +
           settings_row("Cell size", wanted.CellSize ? NumberText(*wanted.CellSize) + " " + length_unit(run.Units)
                                                     : "as advised by the kernel") +
           settings_row("Scaling factor", NumberText(wanted.Scaling)) +
           settings_row("Extent of the rasters", extent_text(run)) +
           settings_row("Isopleths",
                        percentages_text(run, ", ") + (wanted.Lines ? " % (polygons, lines)" : " % (polygons)")) +
           settings_row("Output folder", wanted.Folder.string()) + settings_row("Raster prefix", wanted.Prefix) +
           settings_row("Raster format", wanted.RasterFormat) + "</tbody></table>\n</section>\n";
}

std::string repeat_section(const RangePageRun& run) {
    std::string note =
        "The same analysis from a command line. Add <code>--overwrite</code> to replace the files, or name another "
        "folder.";
    if (run.Wanted.SelectedOnly && run.Wanted.Where.empty())
        note += " Fixes that were selected in the map have no words: <code>--where</code> takes a condition.";
    return command_section(note, shell_text(range_words(run)));
}

std::string extent_word(const RangePageRun& run) {
    switch (run.Wanted.Extent) {
        case RangeExtent::kFull:
            return run.Wanted.Buffer ? "full:" + NumberText(*run.Wanted.Buffer) : "full";
        case RangeExtent::kReference:
            return "ref:" + run.Wanted.ReferenceName;
        case RangeExtent::kMinimum:
            break;
    }
    return {};
}

std::string lede(const RangePageRun& run) {
    return counted(run.Records.size(), "animal", "animals") + " · bandwidth of autocorrelated fixes (AKDE) · " +
           (run.Wanted.Optimal ? "optimal weights" : "uniform weights");
}

}  // namespace

std::vector<std::string> range_words(const RangePageRun& run) {
    const akde::RangeSettings& wanted = run.Wanted;
    std::vector<std::string> words = {"wxl", "akde", wanted.Source.empty() ? wanted.LayerName : wanted.Source};
    words.insert(words.end(), wanted.SourceOptions.begin(), wanted.SourceOptions.end());
    const auto add = [&](const std::string& option, const std::string& value) {
        if (value.empty()) return;
        words.push_back(option);
        words.push_back(value);
    };
    add("--id-field", wanted.Fields.Id);
    add("--time-field", wanted.Fields.Time);
    add("--where", wanted.Where);
    add("--out", wanted.Folder.string());
    add("--prefix", wanted.Prefix);
    if (wanted.CellSize) add("--cell-size", NumberText(*wanted.CellSize));
    if (wanted.Scaling != 1e6) add("--scaling", NumberText(wanted.Scaling));
    add("--extent", extent_word(run));
    if (wanted.RasterFormat != "GRID") add("--raster-format", wanted.RasterFormat);
    if (wanted.AnimalsPerSubfolder > 0) add("--group-by", std::to_string(wanted.AnimalsPerSubfolder));
    add("--isopleths", percentages_text(run, ","));
    if (wanted.Optimal) add("--weights", "optimal");
    if (wanted.Fit.Given) add("--at", given_text(*wanted.Fit.Given));
    if (wanted.Fit.Method != Estimation::kPhreml) add("--method", method_name(wanted.Fit.Method));
    if (wanted.Lines) words.emplace_back("--lines");
    if (run.Units.Reference.IsGeographic) words.emplace_back("--degrees");
    if (wanted.GeoPackage) words.emplace_back("--gpkg");
    words.emplace_back("--html");
    return words;
}

RangePage::RangePage(const platform::Services& services, const akde::RangeSettings& settings,
                     const platform::SpatialReference& reference)
    : m_services(services) {
    m_run.Wanted = settings;
    m_run.Units.Reference = reference;
    m_run.Start = services.Clock->Now();
}

std::filesystem::path RangePage::Write(const akde::RangeOutcome& outcome) {
    std::filesystem::path page = m_run.Wanted.Folder / kRangePageFile;
    if (!may_replace_page(*m_services.Files, page)) return {};
    m_run.Stopped = outcome.Stopped;
    m_run.Finish = m_services.Clock->Now();
    PendingFile pending(*m_services.Files, page);
    platform::IOutputFile& file = pending.File();
    file.Write(document_opening({.Title = m_run.Wanted.LayerName,
                                 .Kind = "Home ranges of autocorrelated fixes",
                                 .Suffix = "home ranges of autocorrelated fixes",
                                 .Lede = lede(m_run)}));
    file.Write("<section id=\"results\" aria-labelledby=\"results-name\">\n<h2 id=\"results-name\">Results</h2>\n" +
               problems(m_run) + table(m_run) + "</section>\n");
    file.Write("<section id=\"animals\" aria-labelledby=\"animals-name\">\n<h2 id=\"animals-name\">Animals</h2>\n");
    const PictureSize size = picture_size(m_run.Records.size());
    for (std::size_t i = 0; i < m_run.Records.size(); ++i) file.Write(range_section(m_run, i, size, m_services));
    file.Write("</section>\n" + std::string(kReading) + settings_section(m_run) + repeat_section(m_run) +
               document_closing(m_run.Start, m_run.Finish));
    pending.Publish();
    return page;
}

}  // namespace wxl::results_page
