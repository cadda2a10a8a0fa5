#include "apps/cli/commands/import.h"

#include "apps/cli/fix_rows.h"
#include "apps/cli/input_layer.h"
#include "apps/cli/layer_output.h"
#include "apps/cli/text_output.h"
#include "platform/text.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <optional>

namespace wxl::cli {

namespace {

std::string counted(std::size_t count, const std::string& noun) {
    const char* plural = noun.ends_with('x') ? "es" : "s";
    return fmt::format("{} {}{}", count, noun, count == 1 ? "" : plural);
}

/// The table of rows that were left out, written when all are known, also where too many of them stop the import.
class LeftOutTable {
public:
    LeftOutTable(const std::string& path, bool overwrite) {
        if (!path.empty()) m_output.emplace(path, overwrite);
    }

    tracking::RejectedRows::Listener Listener() {
        if (!m_output) return {};
        return [this](const tracking::RejectedRow& row) {
            m_text += fmt::format("{},{},{},{},{}\n", platform::CsvCell(row.File), row.Line, reason_name(row.Why),
                                  platform::CsvCell(row.Column), platform::CsvCell(row.Value));
        };
    }

    void Write() const {
        if (m_output) m_output->Write("file,line,reason,column,value\n" + m_text);
    }

private:
    std::optional<TextOutput> m_output;
    std::string m_text;
};

ImportedFixes import_or_list(const FixOptions& options, LeftOutTable& leftOut, Console& console) {
    try {
        ImportedFixes fixes = import_fixes(options, leftOut.Listener(), console);
        leftOut.Write();
        return fixes;
    } catch (const WrongCall&) {
        throw;
    } catch (...) {
        leftOut.Write();
        throw;
    }
}

platform::Extent bounds_of(const std::vector<tracking::TrackingFix>& fixes) {
    platform::Extent extent;
    for (const tracking::TrackingFix& fix : fixes) extent.Include({fix.X, fix.Y});
    return extent;
}

void report_table(const FixRows& rows, Console& console) {
    const auto renamed = rows.Renamed();
    if (!renamed.empty()) console.Note(fmt::format("fields: {}", fmt::join(renamed, ", ")));
    if (rows.Cut() > 0)
        console.Problem(fmt::format("{} cut to the 254 bytes that a shapefile holds; a GeoPackage (.gpkg) holds all",
                                    counted(static_cast<std::size_t>(rows.Cut()), "text")));
}

}  // namespace

void register_import(CLI::App& command, ImportOptions& options) {
    command
        .add_option(
            "FILE", options.Files,
            "Tracking files: tables with one row per fix, or layers of points (FILE, or FILE:LAYER); and last the "
            "layer to write: .gpkg (advised), .shp or .fgb")
        ->required();
    add_indirect_option(command, options.Fixes.AllowIndirect);
    add_fix_options(command, options.Fixes);
    command.add_option("--rejected", options.Rejected, "Write a table of the rows that are left out, and why")
        ->type_name("FILE.csv");
    command.add_flag("--overwrite", options.Overwrite, "Replace a layer of that name");
    command.footer(
        "Turns tracking files into one layer of points for the other commands, sorted by\n"
        "animal and time, with the fields animal (text), Time2 (whole seconds since\n"
        "1970-01-01 UTC), Date and Time1 (UTC), and all other columns.\n"
        "\n"
        "Tables may be CSV of any separator, decimal comma or point, UTF-8, UTF-16 or\n"
        "Windows-1252, with lines before the header; layers GPX, KML, GeoJSON, GeoPackage,\n"
        "FlatGeobuf, shapefiles or the first sheet of a workbook. Columns are found by the\n"
        "names that data bases, tag makers and R packages give them, and by what they\n"
        "hold; what was found is told, and options name others. Where no column names the\n"
        "animal, a file is one animal, named after it.\n"
        "\n"
        "Positions are degrees (decimal, or with minutes, seconds and hemispheres), UTM with\n"
        "a column of zones, or of the coordinate system that --from-crs names; both may stand\n"
        "in one column (WKT points, pairs): \"--x COLUMN:2 --y COLUMN:1\" says that latitude is\n"
        "the first. Of steps (x1_ y1_ x2_ y2_) the starts are fixes. Times are read\n"
        "in the forms that people write, epoch seconds and day numbers of spreadsheets too,\n"
        "also from several columns; whether day or month comes first is decided by the whole\n"
        "column. A time without a zone is UTC unless --time-zone names one.\n"
        "\n"
        "Rows that are not visible, are marked as outliers, or have no position or no\n"
        "animal are left out and counted, as are those that cannot be read; over a fifth of\n"
        "these stops the import. A fix whose time is empty is kept, after the others of its\n"
        "animal.\n"
        "\n"
        "Examples:\n"
        "\n"
        "  wxl import wolves.csv wolves.gpkg\n"
        "  wxl import collars/*.csv all.gpkg --every 4h --rejected left_out.csv\n"
        "  wxl import relocs.csv relocs.shp --id wolf --x east --y north --from-crs EPSG:25833");
}

int run_import(const ImportOptions& options, Console& console) {
    if (options.Files.size() < 2) throw WrongCall("OUT is required; wxl import --help tells more");
    ReadFiles read;
    for (std::size_t i = 0; i + 1 < options.Files.size(); ++i) read.Add(options.Files[i]);
    const LayerOutput output(options.Files.back(), options.Overwrite, read);
    if (!options.Rejected.empty()) read.Refuse(options.Rejected);
    LeftOutTable leftOut(options.Rejected, options.Overwrite);
    FixOptions wanted = options.Fixes;
    wanted.Inputs.assign(options.Files.begin(), options.Files.end() - 1);
    ImportedFixes fixes = import_or_list(wanted, leftOut, console);
    FixRows rows(fixes, output.Format());
    output.Write(rows.Fields(), fixes.System.Reference, [&](tracking::ILayerWriter& writer) { rows.PutAll(writer); });
    report_table(rows, console);
    if (!fixes.System.Reference.IsGeographic)
        report_mercator(output.Path(), fixes.System.Reference, bounds_of(fixes.Data.Fixes), console);
    const std::string system = fixes.System.Code.empty() || fixes.System.Code == fixes.System.Reference.Name
                                   ? fixes.System.Reference.Name
                                   : fmt::format("{} ({})", fixes.System.Reference.Name, fixes.System.Code);
    const std::size_t animals = fixes.Groups.empty() ? fixes.Data.Animals.size() : fixes.Groups.size();
    console.Result(fmt::format("{}: {} of {}, {}", output.Path(), counted(fixes.Data.Fixes.size(), "fix"),
                               counted(animals, "animal"), system));
    return exit_code::kDone;
}

}  // namespace wxl::cli
