#include "apps/cli/commands/obs_fields.h"

#include "apps/cli/movement_run.h"
#include "apps/cli/tool_session.h"
#include "movement/OVIOBS.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace wxl::cli {

namespace {

Answers answers_of(const ObsFieldsOptions& options) {
    Answers answers = options.Questions;
    if (!options.Yes) return answers;
    const bool answered = answers.Any || answers.ByTopic.contains(platform::Topic::kAddFields);
    if (answered) throw WrongCall("give --yes or --answer, not both");
    answers.ByTopic[platform::Topic::kAddFields] = platform::Answer::kYes;
    return answers;
}

}  // namespace

void register_obs_fields(CLI::App& command, ObsFieldsOptions& options) {
    add_input_options(command, options.Points);
    command.add_flag("--yes", options.Yes, "Add the fields without asking; the same as --answer add-fields=yes");
    add_animal_option(command, options.IdField);
    add_answer_option(command, options.Questions);
    add_large_option(command, options.Large);
    command.footer(
        "Adds the fields T_Obs_Sec, T_Cumul, Dist, Dist_Cumul, Me_per_Sec and Mi_per_hr to a\n"
        "point layer and fills them with the time, distance and speed between each row and\n"
        "the one before it. Fields that are there already are filled anew.\n"
        "\n"
        "The layer needs whole seconds in a field Time2, in ascending order, and a UTM\n"
        "projection. With --id-field the fixes of each animal are a track of their own, and\n"
        "rows that name no animal get no values. Without it all rows are one track: where\n"
        "they are of several animals, that is a question (--answer animals=yes). Two rows of\n"
        "the same time in one track end the work there (wxl remove-duplicates --by time2\n"
        "helps); the rows before them stay filled.\n"
        "\n"
        "The layer itself is changed, so keep a copy. The question whether to do so is\n"
        "answered by --yes.\n"
        "\n"
        "Example:\n"
        "\n"
        "  wxl obs-fields wolves.shp --id-field animal --yes");
}

int run_obs_fields(const ObsFieldsOptions& options, Console& console) {
    Answers answers = answers_of(options);
    const auto layer = open_point_layer_to_change(options.Points);
    const std::string idField =
        options.IdField.empty() ? ""
                                : find_id_field(layer->FeatureClass()->Table(), options.IdField, options.Points.Input);
    ToolSession session(console, std::move(answers));
    session.AddInput(layer);
    platform::Services services = session.Services();
    PleaseWaitBar bar(*services.Host, console, "observation fields");
    services.Host = &bar;
    movement::OVIOBS tool(services, bar);
    tool.SetBeyondLimits(options.Large);
    tool.SetAnimalField(idField);
    tool.SetChecksValuesFirst(true);
    tool.OnCreate(session.Application());
    if (idField.empty() && !may_mix_animals(*layer, session.Messages())) {
        if (session.Messages().Stopped()) return exit_code::kFailed;
        console.Result(options.Points.Input + ": nothing changed");
        return exit_code::kDone;
    }
    report_other_names(*layer, console);
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
