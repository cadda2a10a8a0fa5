#include "analysis/report_lines.h"

#include "analysis/diagnosis.h"
#include "analysis/summary_rows.h"
#include "platform/text.h"

namespace wxl::analysis {
namespace {

using platform::DateTimeText;
using platform::NumberText;

std::string joined(const TableRow& cells) {
    std::string text;
    for (std::size_t i = 0; i < cells.size(); ++i) text += (i == 0 ? "" : ", ") + cells[i];
    return text;
}

void append_table(Lines& lines, const std::string& heading, const std::vector<TableRow>& rows) {
    lines.push_back(heading);
    for (const TableRow& row : rows) lines.push_back(joined(row));
}

void append_name_remapping(Lines& lines, const RunHeader& header) {
    lines.emplace_back();
    lines.emplace_back("Unique ID name remapping (unique ID, naming ID):");
    for (std::size_t i = 0; i < header.Ids.size(); ++i)
        lines.push_back("     " + header.Ids[i] + ", " + header.NamingIds[i]);
}

std::string estimator_line(const Settings& settings) {
    const std::string label = "Bandwidth estimtor: ";
    switch (settings.Method) {
        case BandwidthMethod::kLscv:
            return label + "LSCV";
        case BandwidthMethod::kBcv:
            return label + "BCV";
        case BandwidthMethod::kManual:
            return label + "manual (" + settings.Bandwidths.Text + ")";
        case BandwidthMethod::kProportion:
            return label + "Proportion(s) of HREF (" + settings.Proportions.Text + ")";
        case BandwidthMethod::kAdHoc:
            return label + "ad hoc, smallest proportion of HREF with the 95 % range in " +
                   parts_text(settings.AdHocParts);
        case BandwidthMethod::kHref:
            break;
    }
    return label + "HREF";
}

std::string extent_line(const Settings& settings) {
    const std::string label = "Extent setting: ";
    switch (settings.Mode) {
        case ExtentMode::kMinimum:
            return label + "smallest extent for each set of points";
        case ExtentMode::kReference:
            return label + "reference layer (" + settings.ReferenceName + ")";
        case ExtentMode::kFull:
            break;
    }
    return label + "full extent + " + settings.Buffer.Text;
}

void append_isopleths(Lines& lines, const Settings& settings) {
    if (!settings.Isopleths) {
        lines.emplace_back("Isopleths not calculated");
        return;
    }
    std::string line = "Isopleths: " + settings.Percentages.Text + "(";
    if (settings.Lines) line += " lines ";
    if (settings.Polygons) line += " polygons ";
    if (settings.Donuts) line += " donuts ";
    lines.push_back(line + ")");
    lines.emplace_back();
}

/// The reason is told only beside a page of the results: without one the report's form is fixed to the letter.
void append_search(Lines& lines, const AnimalRecord& record, const std::string& search, const Settings& settings) {
    lines.push_back(record.Minimized ? "Bandwidth represents minimized " + search
                                     : search + " function could not be minimized. HREF bandwidth used.");
    if (const std::string reason = search_reason(search_facts(record)); settings.Html && !reason.empty())
        lines.push_back("Reason: " + reason);
    if (!settings.Verbose) return;
    lines.push_back(search + " Profile:");
    lines.push_back("h," + search + "_value");
    for (const engine::ProfileRow& point : record.Profile)
        lines.push_back(NumberText(point.Bandwidth) + ", " + NumberText(point.Score));
}

void append_outcome(Lines& lines, const AnimalRecord& record, const std::string& scalingText) {
    if (record.Status == 0) {
        lines.emplace_back("Kernel calculated successfully.");
        lines.push_back("Volume: " + NumberText(record.Volume) + " / " + scalingText);
    }
    if (!record.Warnings.empty()) lines.push_back("Warnings!" + record.Warnings);
    if (record.Status != 0)
        lines.push_back("Error encountered while calculating kernel! (code: " + std::to_string(record.Status) + ")");
}

}  // namespace

const char* const kEdgeWarningText =
    "A warning was generated when calculating the isopleths. It is possible that the extent of the raster was not "
    "large enough to accommodate the utilization distribution. Data truncation may therefore have occurred, and this "
    "can profoundly disrupt the isopleth calculation. It is recommended you inspect the vector isopleth carefully to "
    "determine if it is valid.";

Lines separator_lines() {
    return {"", "", "", std::string(60, '='), "", "", ""};
}

std::vector<std::string> remarks_of(const std::string& idField, std::int64_t withoutId, bool inDegrees) {
    std::vector<std::string> remarks;
    if (withoutId > 0)
        remarks.push_back(without_id_text(withoutId, idField) +
                          (withoutId == 1 ? " and was left out" : " and were left out"));
    if (inDegrees)
        remarks.emplace_back("The layer is in degrees: cell size, bandwidths and areas mean nothing as lengths");
    return remarks;
}

Lines header_lines(const RunHeader& header) {
    Lines lines = {"WXL KERNEL DENSITY ANALYSIS", "", "Start time: " + DateTimeText(header.Start),
                   "Input data: " + header.InputName, "Unique ID field: " + header.IdField};
    if (header.TextIds)
        lines.emplace_back("(Text based unique ID field detected - unique numerical ID's generated automatically)");
    if (header.SelectedOnly) lines.emplace_back("(Using selected features only)");
    for (const std::string& remark : header.Remarks) lines.push_back("(" + remark + ")");
    if (header.TextIds) append_name_remapping(lines, header);
    lines.emplace_back();
    if (header.Independence) {
        lines.emplace_back();
        lines.emplace_back("Independence of observation indices:");
        append_table(lines, header.IndependenceField + ", Count, Schoener, Swihart_Slade", *header.Independence);
    }
    lines.emplace_back("Variances of x and y coordinates: ");
    append_table(lines, header.IdField + ", Count, StdDev_X, StdDev_Y, Ratio(x:y)", header.Variances);
    return lines;
}

Lines kernel_settings_lines(const Settings& settings) {
    return {"",
            "KERNEL SETTINGS",
            settings.FixedKernel ? "Kernel type: fixed" : "Kernel type: adaptive",
            estimator_line(settings),
            "Output folder: " + settings.OutputFolder,
            "Raster prefix name: " + settings.Prefix,
            "Raster cell size: " + settings.Cells.Text,
            "Scaling factor: " + settings.ScalingFactor.Text};
}

Lines extent_settings_lines(const Settings& settings) {
    Lines lines = {extent_line(settings)};
    append_isopleths(lines, settings);
    lines.emplace_back();
    lines.emplace_back("Case specific settings:");
    return lines;
}

Lines animal_lines(const AnimalRecord& record, const Settings& settings, bool textIds) {
    Lines lines = {"Unique ID: " + platform::ValueText(record.Id)};
    if (textIds) lines.push_back("Unique numerical ID used for naming output: " + record.NamingId);
    lines.push_back("Sample size: " + std::to_string(record.SampleSize));
    lines.push_back("Bandwidth: " + NumberText(record.Bandwidth));
    lines.push_back("HREF (for reference): " + NumberText(record.Href));
    if (record.Method == BandwidthMethod::kLscv) append_search(lines, record, "LSCV", settings);
    if (record.Method == BandwidthMethod::kBcv) append_search(lines, record, "BCV", settings);
    lines.push_back("Columns, Rows: " + std::to_string(record.Grid.Columns) + ", " + std::to_string(record.Grid.Rows));
    lines.push_back("Origin of raster (lower left x, y): " + NumberText(record.Grid.OriginX) + ", " +
                    NumberText(record.Grid.OriginY));
    lines.push_back("Raster name: " + raster_place(record));
    append_outcome(lines, record, settings.ScalingFactor.Text);
    return lines;
}

Lines animal_end_lines(const AnimalRecord& record) {
    if (record.EdgeWarning) return {kEdgeWarningText, ""};
    return {""};
}

Lines finish_lines(const platform::DateTime& finish) {
    return {"Finish time: " + DateTimeText(finish), "Processing complete"};
}

}  // namespace wxl::analysis
