#include "apps/cli/timed_fixes.h"

#include "adapters/ogr/ogr_source.h"
#include "apps/cli/imported_layer.h"
#include "apps/cli/stop_signals.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <memory>

namespace wxl::cli {

namespace {

/// Fields of date and time in layers that wxl import writes.
constexpr const char* kImportedTimes = "Date,Time1";

bool is_tracking_file(const TimedInputOptions& options) {
    return options.Fixes != FixOptions() || needs_import(options.Points);
}

/// How the file is read: names of the fields that imported layers have are none of columns.
FixOptions fix_options_of(const TimedInputOptions& options) {
    FixOptions fixes = options.Fixes;
    fixes.Inputs = {options.Points.Input};
    fixes.AllowIndirect = options.Points.AllowIndirect;
    if (fixes.Id.empty() && !platform::EqualNoCase(options.Fields.Id, kAnimalField)) fixes.Id = options.Fields.Id;
    if (fixes.Time.empty() && !platform::EqualNoCase(options.Fields.Time, kImportedTimes))
        fixes.Time = options.Fields.Time;
    return fixes;
}

std::unique_ptr<ImportedLayer> import_where_needed(const TimedInputOptions& options, Console& console) {
    if (!is_tracking_file(options)) return nullptr;
    const auto columns = options.Where.empty() ? FixRows::Columns::kOwn : FixRows::Columns::kAll;
    auto imported = std::make_unique<ImportedLayer>(fix_options_of(options), columns, console);
    platform::IFeatureClass& points = *imported->Layer()->FeatureClass();
    report_mercator(options.Points.Input, points.Reference(), points.Bounds(), console);
    return imported;
}

[[noreturn]] void ask_for_field(const TimedInputOptions& options, platform::ITable& table, const char* option,
                                const char* purpose) {
    std::vector<std::string> names;
    for (const platform::Field& field : table.Fields()) names.push_back(field.Name);
    platform::Raise(platform::error_number::kSubscript,
                    fmt::format("{}: which field {}? Name it by {}; the fields are: {}", options.Points.Input, purpose,
                                option, fmt::join(names, ", ")));
}

/// The fields of a layer, those that were not given found by their names.
akde::TimedFields fields_of(const TimedInputOptions& options, platform::ITable& table) {
    akde::TimedFields fields = options.Fields;
    if (fields.Id.empty()) fields.Id = guess_id_field(table.Fields());
    if (fields.Id.empty()) ask_for_field(options, table, "--id-field", "names the animal");
    if (fields.Time.empty() && table.FindField("Date") >= 0 && table.FindField("Time1") >= 0)
        fields.Time = kImportedTimes;
    if (fields.Time.empty()) ask_for_field(options, table, "--time-field", "holds the time");
    fields.Id = find_id_field(table, fields.Id, options.Points.Input);
    return fields;
}

ReadFiles read_files_of(const TimedInputOptions& options, bool imported, files::FilesFeatureLayer& layer) {
    if (!imported) return files_read(layer);
    ReadFiles read;
    read.Add(files::split_input(options.Points.Input, sources_of(options.Points.AllowIndirect)).first);
    return read;
}

}  // namespace

void add_timed_input_options(CLI::App& command, TimedInputOptions& options) {
    add_measured_input_options(command, options.Points);
    command
        .add_option("--id-field", options.Fields.Id,
                    "Field or column that names the animal (default: found by its names)")
        ->type_name("FIELD");
    command
        .add_option("--time-field", options.Fields.Time,
                    "Field of date and time (a text, a date or seconds), or two fields: DATE,TIME (default: those "
                    "that wxl import writes, or the time column of a tracking file)")
        ->type_name("FIELD[,FIELD]");
    command.add_option("--where", options.Where, "Use only the fixes that meet this condition")->type_name("SQL");
    add_fix_options(command, options.Fixes);
}

TimedLayer read_timed_layer(const TimedInputOptions& options, Console& console) {
    if (options.Fixes.NoTime) throw WrongCall("--no-time: movement models need the times of the fixes");
    const auto imported = import_where_needed(options, console);
    const auto layer = imported ? imported->Layer() : open_measured_point_layer(options.Points, console);
    const bool chosen = !options.Where.empty();
    if (chosen) layer->SelectWhere(options.Where);
    if (chosen && layer->Selection()->Count() == 0)
        platform::Raise(platform::error_number::kInvalidCall, "no fix meets --where " + options.Where);
    const akde::TimedFields fields =
        imported ? akde::TimedFields{kAnimalField, kImportedTimes} : fields_of(options, layer->FeatureClass()->Table());
    return {akde::read_timed_animals(*layer, fields, chosen, options.Points.Input),
            read_files_of(options, imported != nullptr, *layer),
            layer->Name(),
            imported ? std::filesystem::absolute(options.Points.Input).lexically_normal().string()
                     : files::layer_of(layer).Source,
            imported ? words_of(fix_options_of(options)) : std::vector<std::string>(),
            fields};
}

bool ConsoleListener::IsStopped() const {
    return StopSignals::Came();
}

}  // namespace wxl::cli
