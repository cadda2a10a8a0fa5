#include "apps/cli/commands/import.h"

#include "adapters/files/gdal_support.h"
#include "adapters/files/projection.h"
#include "adapters/files/tracking_csv.h"
#include "apps/cli/input_layer.h"
#include "apps/cli/shapefile_output.h"
#include "platform/runtime_error.h"
#include "platform/text.h"
#include "tracking_times/timestamps.h"

#include <algorithm>
#include <CLI/CLI.hpp>
#include <cmath>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <optional>
#include <vector>

namespace wxl::cli {

namespace {

namespace fs = std::filesystem;
namespace error_number = platform::error_number;
using files::Tracking;
using files::TrackingFix;
using platform::Point;
using platform::Raise;
using platform::SpatialReference;

/// "EPSG:n" in any case; an empty text when it is one, else what is wrong, as CLI11 wants it.
std::string check_crs(const std::string& text) {
    const bool prefix = text.size() > 5 && text.size() < 13 && platform::EqualNoCase(text.substr(0, 5), "epsg:");
    const bool digits = prefix && text.find_first_not_of("0123456789", 5) == std::string::npos;
    return digits ? "" : fmt::format("\"{}\" is no code like EPSG:32633", text);
}

std::string check_target_crs(const std::string& text) {
    return text == "auto" ? "" : check_crs(text);
}

/// Refuses pipes, devices, archives and addresses.
void check_plain_file(const std::string& input) {
    std::error_code ignored;
    try {
        if (fs::exists(input, ignored)) files::CheckPlainFile(input);
    } catch (const files::IndirectSource& refused) {
        raise_with_option(refused);
    }
}

Tracking read_input(const ImportOptions& options, Console& console) {
    std::error_code ignored;
    if (!options.AllowIndirect) check_plain_file(options.Input);
    if (!fs::exists(options.Input, ignored))
        Raise(error_number::kFileNotFound, options.Input + ": there is no such file");
    if (fs::is_directory(options.Input, ignored))
        Raise(error_number::kFileNotFound, options.Input + " is a folder: name the CSV file in it");
    std::ifstream source(options.Input, std::ios::binary);
    if (!source) Raise(error_number::kPermissionDenied, options.Input + " may not be read: check its permissions");

    const auto size = fs::file_size(options.Input, ignored);
    const double bytes = ignored ? 0.0 : static_cast<double>(size);
    files::CsvReader reader(source, options.Input);
    Tracking tracking =
        files::read_tracking(reader, {options.Id, options.X, options.Y, options.Time}, [&](std::uint64_t position) {
            if (bytes > 0.0) console.Progress(static_cast<double>(position) / bytes, "reading " + options.Input);
        });
    console.EndProgress();
    return tracking;
}

/// The coordinate system of an option, whose code may exist in form only.
SpatialReference reference_of(const std::string& code, const std::string& option) {
    try {
        return files::ReferenceFromText(code);
    } catch (const platform::RuntimeError&) {
        throw WrongCall(fmt::format("{} {}: there is no such coordinate system", option, code));
    }
}

[[noreturn]] void refuse_position(const ImportOptions& options, const TrackingFix& fix, const std::string& what) {
    Raise(error_number::kTypeMismatch,
          fmt::format("{}, line {}: the position {}, {} {}", options.Input, fix.Line, fix.X, fix.Y, what));
}

void check_degrees(const ImportOptions& options, const Tracking& tracking) {
    for (const TrackingFix& fix : tracking.Fixes) {
        if (fix.X < -180.0 || fix.X > 360.0 || fix.Y < -90.0 || fix.Y > 90.0)
            refuse_position(options, fix,
                            fmt::format("is not in degrees; say what it is by --from-crs EPSG:n (it was taken for {}), "
                                        "or empty the cells",
                                        options.FromCrs));
    }
}

std::vector<Point> positions(const Tracking& tracking) {
    std::vector<Point> points;
    points.reserve(tracking.Fixes.size());
    for (const TrackingFix& fix : tracking.Fixes) points.push_back({fix.X, fix.Y});
    return points;
}

std::string counted(std::size_t count, const std::string& noun) {
    const char* plural = noun.ends_with('x') ? "es" : "s";
    return fmt::format("{} {}{}", count, noun, count == 1 ? "" : plural);
}

/// Fixes that have something in common, and the one that stands first in the file.
struct Remarkable {
    std::size_t Count = 0;
    const TrackingFix* First = nullptr;

    void Add(const TrackingFix& fix) {
        ++Count;
        if (First == nullptr || fix.Line < First->Line) First = &fix;
    }

    /// "3 fixes have (first: line 7, animal "a")" with the verb for one and for several.
    std::string Say(const Tracking& tracking, const char* one, const char* several, const std::string& what) const {
        return fmt::format("{} {} {} ({}line {}, animal \"{}\")", counted(Count, "fix"), Count == 1 ? one : several,
                           what, Count == 1 ? "" : "the first: ", First->Line, tracking.Animals[First->Animal]);
    }
};

/// Says when fixes lie so far beside the zone that its distances no longer hold.
void note_far_fixes(const Tracking& tracking, const files::UtmZone& zone, Console& console) {
    constexpr double kFar = 9.0;  // one and a half zones from the middle: distances 1 % too long at the equator
    Remarkable far;
    for (const TrackingFix& fix : tracking.Fixes)
        if (std::abs(std::remainder(fix.X - zone.MiddleDegrees(), 360.0)) > kFar) far.Add(fix);
    if (far.Count > 0)
        console.Note(
            far.Say(tracking, "lies", "lie", "more than 9 degrees from the middle of UTM zone " + zone.Name()) +
            ", where distances are distorted; correct what is wrong, or consider another projection by --to-crs");
}

/// Says when fixes lie at 0, 0, where few animals go.
void note_zero_positions(const Tracking& tracking, Console& console) {
    Remarkable zero;
    for (const TrackingFix& fix : tracking.Fixes)
        if (fix.X == 0.0 && fix.Y == 0.0) zero.Add(fix);
    if (zero.Count > 0)
        console.Note(zero.Say(tracking, "has", "have", "the position 0, 0") +
                     ", which often stands for a missing one; if so, empty these cells");
}

/// A coordinate system and how the user would ask for it.
struct Target {
    SpatialReference Reference;
    std::string Code;
};

/// The coordinate systems asked for.
struct Request {
    Target From;
    std::optional<Target> To;  ///< none: to be chosen by the positions
};

Request resolve(const ImportOptions& options) {
    Request request{{reference_of(options.FromCrs, "--from-crs"), options.FromCrs}, std::nullopt};
    if (options.ToCrs != "auto") request.To = Target{reference_of(options.ToCrs, "--to-crs"), options.ToCrs};
    return request;
}

Target choose_target(const ImportOptions& options, const Request& request, const Tracking& tracking,
                     const std::vector<Point>& points, Console& console) {
    if (request.To) return *request.To;
    if (!request.From.Reference.IsGeographic) return request.From;
    const auto zone = files::utm_zone_of(files::median_position(points));
    if (!zone)
        Raise(error_number::kInvalidCall,
              options.Input +
                  ": the median position lies near a pole, where there is no UTM zone; choose a projection by "
                  "--to-crs EPSG:n");
    note_far_fixes(tracking, *zone, console);
    return {reference_of(zone->Code(), "--to-crs"), zone->Code()};
}

/// Projects the positions of the fixes in place.
void project_fixes(const ImportOptions& options, const Tracking& tracking, const SpatialReference& from,
                   const SpatialReference& to, std::vector<Point>& points) {
    if (to == from) return;
    if (const auto failed = files::project(points, from, to))
        refuse_position(
            options, tracking.Fixes[*failed],
            fmt::format("cannot be projected to {}; correct it, or choose another projection by --to-crs", to.Name));
}

platform::Extent bounds_of(const std::vector<Point>& points) {
    platform::Extent extent;
    for (const Point& point : points) extent.Include(point);
    return extent;
}

/// Width of Time2: 10 digits, which programs take for 32 bits where they can, unless a time lies before 1970 or after
/// 2286.
int width_of_seconds(const Tracking& tracking) {
    std::size_t width = 10;
    for (const TrackingFix& fix : tracking.Fixes)
        if (fix.HasTime()) width = std::max(width, std::to_string(fix.Seconds).size());
    return static_cast<int>(width);
}

std::vector<platform::Field> fields_of(const Tracking& tracking) {
    std::size_t longest = 1;
    for (const std::string& animal : tracking.Animals) longest = std::max(longest, animal.size());
    std::vector<platform::Field> fields{{"animal", platform::FieldType::kText, static_cast<int>(longest), 0}};
    if (tracking.Columns.Time.empty()) return fields;
    fields.push_back({"Time2", platform::FieldType::kInteger, width_of_seconds(tracking), 0});
    fields.push_back({"Date", platform::FieldType::kText, 10, 0});
    fields.push_back({"Time1", platform::FieldType::kText, 8, 0});
    return fields;
}

void insert_fixes(const Tracking& tracking, const std::vector<Point>& points, platform::IInsertCursor& cursor) {
    for (std::size_t i = 0; i < points.size(); ++i) {
        const TrackingFix& fix = tracking.Fixes[i];
        std::vector<platform::FieldValue> values{tracking.Animals[fix.Animal]};
        if (fix.HasTime()) {
            values.emplace_back(fix.Seconds);
            values.emplace_back(tracking_times::date_text(fix.Seconds));
            values.emplace_back(tracking_times::time_of_day_text(fix.Seconds));
        }
        cursor.Insert(platform::Geometry::OfPoint(points[i]), values);
    }
    cursor.Flush();
}

/// The columns of the time as a note tells them.
std::string time_columns(const Tracking& tracking) {
    if (tracking.Columns.Time.empty()) return "no time";
    const std::string ofDay = tracking.TimeOfDay.empty() ? "" : fmt::format(" and \"{}\"", tracking.TimeOfDay);
    return fmt::format("time \"{}\"{}", tracking.Columns.Time, ofDay);
}

void tell_choices(const Tracking& tracking, Console& console) {
    const files::TrackingColumns& columns = tracking.Columns;
    console.Note(fmt::format("columns: animal \"{}\", x \"{}\", y \"{}\", {}", columns.Id, columns.X, columns.Y,
                             time_columns(tracking)));
    if (!tracking.OtherId.empty())
        console.Note(fmt::format(
            "animals are told apart by the column \"{}\", not by \"{}\"; if several have the same name, give "
            "--id \"{}\"",
            columns.Id, tracking.OtherId, tracking.OtherId));
    if (columns.Time.empty())
        console.Note("no time column found; give it by --time COLUMN (the movement tools need it)");
    const files::LeftOutRows& out = tracking.LeftOut;
    console.Note(fmt::format("rows left out: {} not visible, {} outliers, {} without a position, {} without an animal",
                             out.NotVisible, out.Outliers, out.WithoutPosition, out.WithoutAnimal));
    if (!columns.Time.empty() && tracking.WithoutTime > 0)
        console.Note(fmt::format("{} without a time kept, after the others of the animal; Time2 is empty there",
                                 counted(static_cast<std::size_t>(tracking.WithoutTime), "fix")));
}

}  // namespace

void register_import(CLI::App& command, ImportOptions& options) {
    command.add_option("FILE.csv", options.Input, "Tracking file: a header row, then one row per fix")->required();
    command.add_option("OUT.shp", options.Output, "Point shapefile to write")->required();
    add_indirect_option(command, options.AllowIndirect);
    command.add_option("--id", options.Id, "Column that names the animal")->type_name("COLUMN");
    CLI::Option* x = command.add_option("--x", options.X, "Column of longitudes or eastings")->type_name("COLUMN");
    CLI::Option* y = command.add_option("--y", options.Y, "Column of latitudes or northings")->type_name("COLUMN");
    x->needs(y);
    y->needs(x);
    command.add_option("--time", options.Time, "Column of the time of the fix")->type_name("COLUMN");
    command.add_option("--from-crs", options.FromCrs, "Coordinate system of the file")
        ->type_name("EPSG:n")
        ->check(check_crs)
        ->capture_default_str();
    command
        .add_option(
            "--to-crs", options.ToCrs,
            "Coordinate system of the shapefile; auto: the UTM zone of the median position for degrees, else that "
            "of the file")
        ->type_name("auto|EPSG:n")
        ->check(check_target_crs)
        ->capture_default_str();
    command.add_flag("--overwrite", options.Overwrite, "Replace a shapefile of that name");
    command.footer(
        "Turns a table of fixes into a point shapefile for the other commands, sorted by\n"
        "animal and time, with the fields animal (text), Time2 (whole seconds since\n"
        "1970-01-01 UTC), Date and Time1 (UTC).\n"
        "\n"
        "Columns are found by the names that Movebank, Darwin Core and most people give\n"
        "them, in any case and with any punctuation; options name others. Cells are\n"
        "separated by commas, semicolons or tabs. Rows that are not visible, are marked as\n"
        "outliers, or have no position or no animal are left out and counted on standard\n"
        "error. A fix whose time is empty is kept, after the others of its animal; a time\n"
        "that cannot be read is an error. Times are written like 2018-05-09 14:59:05 or\n"
        "9.5.2018 14:59, also as date and time in two columns; without an offset they are\n"
        "UTC.\n"
        "\n"
        "Positions in degrees are projected to the UTM zone (WGS 84) of their median.\n"
        "\n"
        "Examples:\n"
        "\n"
        "  wxl import wolves.csv wolves.shp\n"
        "  wxl import relocs.csv relocs.shp --id wolf --x east --y north --from-crs EPSG:25833");
}

int run_import(const ImportOptions& options, Console& console) {
    ReadFiles read;
    read.Add(options.Input);
    const ShapefileOutput output(options.Output, options.Overwrite, read);
    const Request request = resolve(options);
    const Tracking tracking = read_input(options, console);
    tell_choices(tracking, console);
    note_zero_positions(tracking, console);
    if (request.From.Reference.IsGeographic) check_degrees(options, tracking);
    std::vector<Point> points = positions(tracking);
    const Target target = choose_target(options, request, tracking, points, console);
    project_fixes(options, tracking, request.From.Reference, target.Reference, points);
    if (!target.Reference.IsGeographic) tell_mercator(options.Output, target.Reference, bounds_of(points), console);
    output.Write(platform::ShapeType::kPoint, fields_of(tracking), target.Reference,
                 [&](platform::IInsertCursor& cursor) { insert_fixes(tracking, points, cursor); });
    console.Result(fmt::format("{}: {} of {}, {} ({})", options.Output, counted(points.size(), "fix"),
                               counted(tracking.Animals.size(), "animal"), target.Reference.Name, target.Code));
    return exit_code::kDone;
}

}  // namespace wxl::cli
