#include "results_page/page_parts.h"

#include "analysis/diagnosis.h"
#include "pictures/xml_text.h"
#include "platform/text.h"
#include "results_page/document.h"
#include "results_page/repeat_command.h"

#include <algorithm>
#include <set>

namespace wxl::results_page {
namespace {

using analysis::AnimalRecord;
using analysis::BandwidthMethod;
using analysis::ExtentMode;
using pictures::XmlText;
using platform::NumberText;

/// Above this share a projection is worth another: 2 %.
constexpr double kMuchDistorted = 0.02;

std::string counted(std::size_t count, const std::string& one, const std::string& many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

std::size_t animal_count(const PageRun& run) {
    std::set<std::string> animals;
    for (const AnimalRecord& record : run.Records) animals.insert(record.NamingId);
    return animals.size();
}

std::string lede(const PageRun& run) {
    std::string text = counted(animal_count(run), "animal", "animals");
    if (run.ManyValues) text += ", " + counted(run.Records.size(), "distribution", "distributions");
    text += std::string(" · bandwidth: ") + method_text(run.Wanted.Method) +
            (run.Wanted.FixedKernel ? " · fixed kernel" : " · adaptive kernel");
    if (run.Wanted.Rescale) text += " · unit variance";
    return text;
}

std::string estimator_text(const analysis::Settings& settings) {
    switch (settings.Method) {
        case BandwidthMethod::kLscv:
            return "least squares cross-validation (LSCV)";
        case BandwidthMethod::kBcv:
            return "biased cross-validation (BCV)";
        case BandwidthMethod::kManual:
            return "user-defined: " + settings.Bandwidths.Text;
        case BandwidthMethod::kProportion:
            return "proportions of the reference bandwidth: " + settings.Proportions.Text;
        case BandwidthMethod::kAdHoc:
            return "ad hoc: the smallest proportion of HREF with the 95 % range in " +
                   analysis::parts_text(settings.AdHocParts);
        case BandwidthMethod::kHref:
            break;
    }
    return "reference bandwidth (HREF)";
}

std::string extent_text(const PageRun& run) {
    switch (run.Wanted.Mode) {
        case ExtentMode::kMinimum:
            return "the smallest for each distribution";
        case ExtentMode::kReference:
            return "that of the raster " + run.Wanted.ReferenceName;
        case ExtentMode::kFull:
            break;
    }
    return "all fixes and a buffer of " + run.Wanted.Buffer.Text + " " + length_unit(run);
}

std::string isopleth_text(const analysis::Settings& settings) {
    if (!settings.Isopleths) return "none";
    std::string kinds;
    for (const auto& [wanted, name] :
         {std::pair(settings.Lines, "lines"), {settings.Polygons, "polygons"}, {settings.Donuts, "donuts"}})
        if (wanted) kinds += (kinds.empty() ? "" : ", ") + std::string(name);
    return settings.Percentages.Text + " % (" + kinds + ")";
}

std::string reach_text(const analysis::Settings& settings) {
    switch (settings.KernelReach.How) {
        case analysis::Reach::Kind::kWhole:
            return "whole: four bandwidths of the widest kernel";
        case analysis::Reach::Kind::kBandwidths:
            return settings.KernelReach.Text + " bandwidths";
        case analysis::Reach::Kind::kUsual:
            break;
    }
    return std::string("four bandwidths") +
           (settings.Method == BandwidthMethod::kProportion ? ", those of HREF whatever the proportion" : "");
}

std::string reference_text(const PageRun& run) {
    const std::string& name = run.Reference.Name;
    return (name.empty() ? "unknown" : name) + ", coordinates in " + length_unit(run);
}

/// What the projection does to sizes.
std::string sizes_text(const PageRun& run) {
    const auto distorted = distortion_of(run);
    return distorted ? platform::distortion_text(*distorted) : std::string();
}

/// Where "significant autocorrelation" leads to.
std::string remedy(const PageRun& run) {
    const std::vector<std::string> words = {
        "wxl",         "akde", run.Source.empty() ? run.Wanted.LayerName : run.Source, "--id-field", run.Wanted.IdField,
        "--time-field"};
    return "<dt id=\"autocorrelation\">Significant autocorrelation</dt><dd>Each fix lies nearer to the one before than "
           "two fixes of the animal do that are taken at random, by more than chance would have it: where the animal "
           "is "
           "tells where it will be next. It is no fault of the data. Most tracks of one fix an hour or more have it, "
           "as "
           "an animal cannot cross its range between two fixes. It means that many fixes say much the same: a thousand "
           "of them may be worth a few dozen independent ones. The bandwidths of this page take all for independent, "
           "so "
           "that ranges come out too small, the more so the shorter the period, and they have no limits. Fewer fixes "
           "do not mend that, a longer period does. The estimator for such "
           "fixes is AKDE: <code>" +
           XmlText(shell_text(words)) +
           " FIELD --out akde</code>, or in the toolbox of QGIS “Home ranges for autocorrelated tracks (AKDE)”. "
           "The page “Which estimator?” of the guide tells when each is right.</dd>\n";
}

}  // namespace

std::string page_opening(const PageRun& run) {
    return document_opening({.Title = run.Wanted.LayerName,
                             .Kind = "Kernel density analysis",
                             .Suffix = "kernel density analysis",
                             .Lede = lede(run),
                             .HasMethods = true});
}

std::string problems(const PageRun& run) {
    const auto count = [&](auto&& is) {
        return static_cast<std::size_t>(std::count_if(run.Records.begin(), run.Records.end(), is));
    };
    const std::size_t failed = count([](const AnimalRecord& r) { return r.Status != 0; });
    const std::size_t unsure =
        count([](const AnimalRecord& r) { return r.Status == 0 && analysis::is_search(r.Method) && !r.Minimized; });
    const std::size_t cut = count([](const AnimalRecord& r) { return is_cut(r) && !r.CutTo; });
    const std::size_t beyond = count([](const AnimalRecord& r) { return r.BeyondReach >= analysis::kToldShare; });
    const std::size_t lost = count([](const AnimalRecord& r) { return r.CutTo.has_value(); });
    std::vector<std::string> texts;
    if (run.Stopped) texts.emplace_back("The run was stopped; what was done until then is shown.");
    if (failed > 0) texts.push_back(counted(failed, "distribution", "distributions") + " could not be computed.");
    if (unsure > 0)
        texts.push_back(counted(unsure, "search", "searches") +
                        " found no minimum; HREF was used instead of a searched bandwidth.");
    if (cut > 0)
        texts.push_back(counted(cut, "raster cuts", "rasters cut") + " up to 1 % of the distribution off at the edge.");
    if (beyond > 0)
        texts.push_back(counted(beyond, "distribution reaches", "distributions reach") +
                        " further than the kernels do: the outer areas are too small.");
    if (lost > 0)
        texts.push_back(counted(lost, "raster holds", "rasters hold") +
                        " less than 99 % of the distribution: choose a larger extent.");
    const auto distorted = distortion_of(run);
    if (distorted && distorted->Area > kMuchDistorted)
        texts.push_back("In " + XmlText(run.Reference.Name) + " " + platform::distortion_text(*distorted) +
                        ": take an equal-area projection.");
    if (texts.empty()) return {};
    std::string html = "<div class=\"notice\"><p><strong>Please check:</strong></p><ul>";
    for (const std::string& text : texts) html += "<li>" + text + "</li>";
    return html + "</ul><p>The column Remarks says why.</p></div>\n";
}

std::string reading_notes(const PageRun& run) {
    return "<section id=\"reading\" aria-labelledby=\"reading-name\">\n<h2 id=\"reading-name\">Reading the "
           "numbers</h2>\n"
           "<div class=\"legend\"><span>thin</span><span class=\"ramp\"></span><span>dense</span></div>\n"
           "<p>The maps show the density of use by the square root of its share of the highest value of the same "
           "animal: colours are not to be compared between animals. Lines are the isopleths; the line of 95 % encloses "
           "the densest part that holds 95 % of the raster’s volume. North is that of the map grid.</p>\n<dl>\n"
           "<dt>Dots</dt><dd>are fixes. Those that would cover each other are one dot, and of many places only some "
           "are drawn, "
           "at equal steps in their order.</dd>\n"
           "<dt>Bandwidth and HREF</dt><dd>in map units (" +
           XmlText(length_unit(run)) +
           "); HREF is the reference bandwidth. A search that is not minimised ended at an end of its range, so HREF "
           "was "
           "used.</dd>\n<dt>Volume captured</dt><dd>the share of the distribution that lies on its raster. A shortfall "
           "of "
           "a few hundredths of a per cent is the tail beyond four bandwidths; more means that the raster’s edge or "
           "the "
           "reach of the kernels cuts it, and Raster edge says which.</dd>\n<dt>Schoener index</dt><dd>Schoener Index: "
           "value &lt; 1.6 "
           "or "
           "&gt; 2.4 indicates significant autocorrelation.</dd>\n<dt>Swihart and Slade index</dt><dd>Swihart and "
           "Slade "
           "Index: value &gt; 0.6 indicates significant autocorrelation.</dd>\n" +
           remedy(run) + "</dl>\n</section>\n";
}

namespace {

std::string cells_text(const PageRun& run) {
    const analysis::CellSize& cells = run.Wanted.Cells;
    if (cells.OfBandwidths) return "a tenth of each bandwidth, rounded";
    return NumberText(cells.Typed) + " " + length_unit(run);
}

}  // namespace

std::string settings_section(const PageRun& run) {
    const analysis::Settings& settings = run.Wanted;
    return "<section id=\"settings\" aria-labelledby=\"settings-name\">\n<h2 "
           "id=\"settings-name\">Settings</h2>\n<table "
           "class=\"settings\"><tbody>\n" +
           settings_row("Input", run.Source.empty() ? settings.LayerName : run.Source) +
           settings_row("Animal ID field", settings.IdField) +
           settings_row("Fixes", !settings.Where.empty() ? "where " + settings.Where
                                 : settings.SelectedOnly ? "the selected ones"
                                                         : "all") +
           settings_row("Coordinate system", reference_text(run)) + settings_row("Sizes on its map", sizes_text(run)) +
           settings_row("Kernel", std::string("bivariate normal, ") + (settings.FixedKernel ? "fixed" : "adaptive")) +
           settings_row("Bandwidth", estimator_text(settings)) +
           settings_row("Reach of the kernels", reach_text(settings)) +
           settings_row("Rescaled to unit variance", settings.Rescale ? "yes" : "no") +
           settings_row("Cell size", cells_text(run)) + settings_row("Scaling factor", settings.ScalingFactor.Text) +
           settings_row("Extent of the rasters", extent_text(run)) +
           settings_row("Isopleths", isopleth_text(settings)) +
           (settings.ConvexPercentages.Text.empty()
                ? std::string()
                : settings_row("Minimum convex polygons", settings.ConvexPercentages.Text + " % of the fixes")) +
           settings_row("Output folder", run.Folder.string()) + settings_row("Raster prefix", settings.Prefix) +
           settings_row("Raster format", run.Wanted.RasterFormat) + "</tbody></table>\n</section>\n";
}

std::string repeat_section(const PageRun& run, const std::string& command) {
    std::string note =
        "The same analysis from a command line. Add <code>--overwrite</code> to replace the rasters, or "
        "name another folder.";
    if (run.Wanted.SelectedOnly && run.Wanted.Where.empty())
        note += " Fixes that were selected in the map have no words: <code>--where</code> takes a condition.";
    return command_section(note, command);
}

std::string methods_section(const PageRun& run) {
    std::string html =
        "<section id=\"methods\" aria-labelledby=\"methods-name\">\n<h2 id=\"methods-name\">Methods, to "
        "copy</h2>\n<p>What "
        "Laver and Kelly (2008) and Crane et al. (2021) ask reports of home ranges for, from the record of this run. "
        "Add what it cannot know: tags, positional error, season, and why these methods.</p>\n<blockquote "
        "tabindex=\"0\" aria-label=\"Methods\"><p>" +
        XmlText(run.Methods.Text()) + "</p></blockquote>\n<ul class=\"works\">";
    for (const std::string& work : run.Methods.References()) html += "<li>" + XmlText(work) + "</li>";
    return html + "</ul>\n</section>\n";
}

std::string page_closing(const PageRun& run) {
    return document_closing(run.Start, run.Finish);
}

}  // namespace wxl::results_page
