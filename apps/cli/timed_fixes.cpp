#include "apps/cli/timed_fixes.h"

#include "apps/cli/stop_signals.h"
#include "platform/runtime_error.h"

#include <CLI/CLI.hpp>

namespace wxl::cli {

void add_timed_input_options(CLI::App& command, TimedInputOptions& options) {
    add_measured_input_options(command, options.Points);
    command.add_option("--id-field", options.Fields.Id, "Field that names the animal")->type_name("FIELD")->required();
    command
        .add_option("--time-field", options.Fields.Time,
                    "Field of date and time (a text, a date or seconds), or two fields: DATE,TIME")
        ->type_name("FIELD[,FIELD]")
        ->required();
    command.add_option("--where", options.Where, "Use only the fixes that meet this condition")->type_name("SQL");
}

TimedLayer read_timed_layer(const TimedInputOptions& options, Console& console) {
    const auto layer = open_measured_point_layer(options.Points, console);
    const bool chosen = !options.Where.empty();
    if (chosen) layer->SelectWhere(options.Where);
    if (chosen && layer->Selection()->Count() == 0)
        platform::Raise(platform::error_number::kInvalidCall, "no fix meets --where " + options.Where);
    akde::TimedFields fields = options.Fields;
    fields.Id = find_id_field(layer->FeatureClass()->Table(), fields.Id, options.Points.Input);
    return {akde::read_timed_animals(*layer, fields, chosen, options.Points.Input), files_read(*layer), layer->Name(),
            files::layer_of(layer).Source};
}

bool ConsoleListener::IsStopped() const {
    return StopSignals::Came();
}

}  // namespace wxl::cli
