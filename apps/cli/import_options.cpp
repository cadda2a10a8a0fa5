#include "apps/cli/import_options.h"

#include "adapters/gdal/gdal_support.h"
#include "apps/cli/console.h"
#include "platform/runtime_error.h"
#include "platform/text.h"
#include "tracking_times/thinning.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <memory>

namespace wxl::cli {

namespace {

/// A code, well-known text or PROJ text; an empty text when it may be one, else what is wrong, as CLI11 wants it. Names
/// of files, which GDAL would take, are none.
std::string check_crs(const std::string& text) {
    const auto colon = text.find(':');
    const bool code = colon != std::string::npos && colon > 2 && colon < 8 && text.size() > colon + 1 &&
                      text.find_first_not_of("0123456789", colon + 1) == std::string::npos;
    const bool proj = text.starts_with("+proj=");
    const bool wkt = text.find('[') != std::string::npos && text.find('/') != 0;
    return code || proj || wkt ? "" : fmt::format("\"{}\" is no code like EPSG:32633, WKT or PROJ text", text);
}

std::string check_target_crs(const std::string& text) {
    return text == "auto" || text == "equal-area" ? "" : check_crs(text);
}

}  // namespace

void add_fix_options(CLI::App& command, FixOptions& options) {
    command.add_option("--id", options.Id, "Column that names the animal")->type_name("COLUMN");
    command.add_option("--animal", options.Animal, "Name of the one animal whose fixes these are")->type_name("NAME");
    CLI::Option* x = command.add_option("--x", options.X, "Column of longitudes or eastings")->type_name("COLUMN");
    CLI::Option* y = command.add_option("--y", options.Y, "Column of latitudes or northings")->type_name("COLUMN");
    x->needs(y);
    y->needs(x);
    CLI::Option* time = command
                            .add_option("--time", options.Time,
                                        "Column of the time of the fix, or several of date and time, parted by commas")
                            ->type_name("COLUMN[,COLUMN]");
    command.add_flag("--no-time", options.NoTime, "Import without times")->excludes(time);
    command
        .add_option("--date-order", options.DateOrder,
                    "Order of day, month and year in dates like 03/04/2020 (default: decided by the whole column)")
        ->type_name("dmy|mdy|ymd")
        ->check([](const std::string& text) {
            return tracking::date_order_from(text) ? std::string() : fmt::format("\"{}\" is not dmy, mdy or ymd", text);
        });
    command
        .add_option("--time-zone", options.TimeZone,
                    "Time zone of times that tell none, such as Europe/Berlin or UTC+2 (default: UTC)")
        ->type_name("NAME");
    command
        .add_option("--from-crs", options.FromCrs,
                    "Coordinate system of the file (default: degrees of WGS 84, or what the layer says)")
        ->type_name("EPSG:n|WKT|PROJ")
        ->check(check_crs);
    command
        .add_option(
            "--to-crs", options.ToCrs,
            "Coordinate system of the result; auto: for degrees the UTM zone where all fixes lie within it and a "
            "half, else an equal-area projection of their own; else that of the file")
        ->type_name("auto|equal-area|EPSG:n|WKT|PROJ")
        ->check(check_target_crs)
        ->capture_default_str();
    command.add_option("--max-dop", options.MaxDop, "Leave out fixes with a greater dilution of precision")
        ->type_name("X");
    command.add_option("--argos-class", options.ArgosClasses, "Leave out fixes of other Argos location classes")
        ->type_name("3,2,1");
    CLI::Option* every =
        command.add_option("--every", options.Every, "Keep the first fix of each interval, such as 4h, 30min, 1d")
            ->type_name("DURATION");
    command
        .add_option("--every-tolerance", options.EveryTolerance,
                    "Let a fix that comes earlier by so much count for the next interval")
        ->type_name("DURATION")
        ->needs(every);
    command
        .add_option(
            "--split-by", options.SplitBy,
            "Make an animal of each season, month, year, year-month, year-season, day-night, or value of a column")
        ->type_name("KEY|COLUMN");
}

std::vector<std::string> words_of(const FixOptions& options) {
    std::vector<std::string> words;
    const auto add = [&](const char* option, const std::string& value) {
        if (value.empty()) return;
        words.emplace_back(option);
        words.push_back(value);
    };
    add("--id", options.Id);
    add("--animal", options.Animal);
    add("--x", options.X);
    add("--y", options.Y);
    add("--time", options.Time);
    if (options.NoTime) words.emplace_back("--no-time");
    add("--date-order", options.DateOrder);
    add("--time-zone", options.TimeZone);
    add("--from-crs", options.FromCrs);
    if (options.ToCrs != "auto") add("--to-crs", options.ToCrs);
    if (options.MaxDop) add("--max-dop", platform::NumberText(*options.MaxDop));
    add("--argos-class", options.ArgosClasses);
    add("--every", options.Every);
    add("--every-tolerance", options.EveryTolerance);
    add("--split-by", options.SplitBy);
    return words;
}

tracking::ReadOptions read_options(const FixOptions& options) {
    tracking::ReadOptions read;
    read.Columns.Id = options.Id;
    read.Columns.X = options.X;
    read.Columns.Y = options.Y;
    read.Columns.Time = options.Time;
    read.Columns.NoTime = options.NoTime;
    read.Columns.MaxDop = options.MaxDop.has_value();
    read.Columns.ArgosClass = !options.ArgosClasses.empty();
    read.Animal = options.Animal;
    if (!options.DateOrder.empty()) read.Order = tracking::date_order_from(options.DateOrder);
    if (!options.TimeZone.empty()) {
        try {
            read.Zone = std::make_shared<tracking::TimeZone>(options.TimeZone);
        } catch (const platform::RuntimeError& error) {
            throw WrongCall("--time-zone: " + error.Description);
        }
    }
    read.MaxDop = options.MaxDop;
    for (const std::string& name : platform::Split(options.ArgosClasses, ','))
        if (!platform::Trim(name).empty()) read.ArgosClasses.insert(platform::UpperCase(platform::Trim(name)));
    return read;
}

platform::SpatialReference reference_of(const std::string& text, const std::string& option) {
    platform::SpatialReference reference;
    try {
        reference = files::ReferenceFromText(text);
    } catch (const platform::RuntimeError& fault) {
        if (fault.Number != platform::error_number::kInvalidCall) throw;
        throw WrongCall(fmt::format("{} {}: there is no such coordinate system", option, text));
    }
    if (!files::has_places(reference))
        throw WrongCall(fmt::format("{} {}: x and y of {} are no places on a map", option, text, reference.Name));
    return reference;
}

std::int64_t duration_of(const std::string& text, const std::string& option) {
    const auto seconds = tracking_times::seconds_from_duration(text);
    if (!seconds) throw WrongCall(fmt::format("{}: \"{}\" is no duration like 4h, 30min or 1d", option, text));
    return *seconds;
}

}  // namespace wxl::cli
