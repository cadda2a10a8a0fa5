#include "apps/cli/commands/obs_fields.h"

#include "apps/cli/movement_run.h"
#include "apps/cli/tool_session.h"
#include "movement/OVIOBS.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <string_view>

namespace wxl::cli {

namespace {

constexpr std::string_view kSplitFirst =
    "make a layer of one animal first, for instance by ogr2ogr -where {} OUT.shp INPUT";

Answers answers_of(const ObsFieldsOptions& options) {
    Answers answers = options.Questions;
    if (!options.Yes) return answers;
    if (answers.Any || !answers.ByTopic.empty()) throw WrongCall("give --yes or --answer, not both");
    answers.Any = platform::Answer::kYes;
    return answers;
}

}  // namespace

void register_obs_fields(CLI::App& command, ObsFieldsOptions& options) {
    add_input_options(command, options.Points);
    command.add_flag("--yes", options.Yes, "Add the fields without asking; the same as --answer yes");
    add_answer_option(command, options.Questions);
    add_large_option(command, options.Large);
    command.footer(
        "Adds the fields T_Obs_Sec, T_Cumul, Dist, Dist_Cumul, Me_per_Sec and Mi_per_hr to a\n"
        "point layer and fills them with the time, distance and speed between each row and\n"
        "the one before it. Fields that are there already are filled anew.\n"
        "\n"
        "The layer needs whole seconds in a field Time2, in ascending order, and a UTM\n"
        "projection. All rows are one track: split a layer of several animals first;\n"
        "standard error says so where there are several. Two rows of the same time end the\n"
        "work there (wxl remove-duplicates --by time2 helps); the rows before them stay\n"
        "filled.\n"
        "\n"
        "The layer itself is changed, so keep a copy. The question whether to do so is\n"
        "answered by --yes.\n"
        "\n"
        "Example:\n"
        "\n"
        "  wxl obs-fields wolf.shp --yes");
}

int run_obs_fields(const ObsFieldsOptions& options, Console& console) {
    Answers answers = answers_of(options);
    const auto layer = open_point_layer(options.Points);
    ToolSession session(console, std::move(answers));
    session.AddInput(layer);
    platform::Services services = session.Services();
    PleaseWaitBar bar(*services.Host, console, "observation fields");
    services.Host = &bar;
    movement::OVIOBS tool(services, bar);
    tool.SetBeyondLimits(options.Large);
    tool.OnCreate(session.Application());
    tell_mixed_animals(*layer, kSplitFirst, console);
    tool.OnClick();
    if (session.Messages().Stopped()) return exit_code::kFailed;
    if (session.Messages().Notices() > 0)
        return console.Fail(fmt::format("{}: the fields are not complete{}", options.Points.Input,
                                        large_advice(*layer, options.Large || session.Messages().Faults() == 0)));
    const std::int64_t rows = layer->FeatureClass()->FeatureCount();
    console.Result(bar.WasShown()
                       ? fmt::format("{}: {} {} filled", options.Points.Input, rows, rows == 1 ? "row" : "rows")
                       : options.Points.Input + ": nothing changed");
    return exit_code::kDone;
}

}  // namespace wxl::cli
