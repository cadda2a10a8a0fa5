#include "apps/cli/commands/remove_duplicates.h"

#include "apps/cli/movement_run.h"
#include "apps/cli/option_checks.h"
#include "apps/cli/tool_session.h"
#include "movement/FIndDupTime2.h"
#include "movement/FindDupxy.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace wxl::cli {

namespace {

template <class Tool>
void click(const platform::Services& services, PleaseWaitBar& bar, ToolSession& session,
           const RemoveDuplicatesOptions& options, const std::string& idField) {
    Tool tool(services, bar);
    tool.SetBeyondLimits(options.Large);
    tool.SetAnimalField(idField);
    tool.OnCreate(session.Application());
    tool.OnClick();
}

}  // namespace

void register_remove_duplicates(CLI::App& command, RemoveDuplicatesOptions& options) {
    add_input_options(command, options.Points);
    command
        .add_option("--by", options.By,
                    "time2 (equal whole seconds in the field Time2: the lowest row stays) or xy (the same place within "
                    "1 mm: the first stays)")
        ->type_name("time2|xy")
        ->required()
        ->transform(one_of({"time2", "xy"}));
    command.add_option("--where", options.Where, "Compare only the fixes that meet this condition")->type_name("SQL");
    add_animal_option(command, options.IdField);
    add_answer_option(command, options.Questions);
    add_large_option(command, options.Large);
    command.footer(
        "Deletes fixes of the same time, or of the same place, from a point layer, so that\n"
        "one of each is left. Only fixes that meet --where are compared and deleted. With\n"
        "--id-field the fixes of each animal are compared with each other only, and fixes\n"
        "that name no animal stay. Without it all fixes are compared: where they are of\n"
        "several animals, which have fixes at one time or place that are no duplicates, that\n"
        "is a question (--answer animals=yes).\n"
        "\n"
        "The layer itself is changed, so keep a copy; the rows that are left are numbered\n"
        "anew. A layer of more than 32767 rows needs --large: without it the work ends at\n"
        "that row, and what was deleted until then stays deleted.\n"
        "\n"
        "Examples:\n"
        "\n"
        "  wxl remove-duplicates wolves.shp --by time2 --id-field animal\n"
        "  wxl remove-duplicates wolves.shp --by xy --where \"animal = 'Freja'\"");
}

int run_remove_duplicates(const RemoveDuplicatesOptions& options, Console& console) {
    const auto layer = open_point_layer_to_change(options.Points);
    if (!options.Where.empty()) layer->SelectWhere(options.Where);
    const std::string idField =
        options.IdField.empty() ? ""
                                : find_id_field(layer->FeatureClass()->Table(), options.IdField, options.Points.Input);
    ToolSession session(console, options.Questions);
    session.AddInput(layer);
    platform::Services services = session.Services();
    PleaseWaitBar bar(*services.Host, console, "duplicates");
    services.Host = &bar;
    const std::int64_t rows = layer->FeatureClass()->FeatureCount();
    const std::int64_t compared = layer->Selection()->Count();
    const std::string advice = large_advice(*layer, options.Large);
    if (idField.empty() && !may_mix_animals(*layer, session.Messages())) {
        if (session.Messages().Stopped()) return exit_code::kFailed;
        console.Result(options.Points.Input + ": nothing changed");
        return exit_code::kDone;
    }
    report_other_names(*layer, console);
    if (options.By == "time2")
        click<movement::FIndDupTime2>(services, bar, session, options, idField);
    else
        click<movement::FindDupxy>(services, bar, session, options, idField);

    const std::int64_t left = layer->FeatureClass()->FeatureCount();
    if (!bar.WasShown() || session.Messages().Faults() > 0)
        return console.Fail(fmt::format("{}: the duplicates were not all removed; {} of {} rows are left{}",
                                        options.Points.Input, left, rows, advice));
    console.Result(fmt::format("{}: {} fixes compared, {} deleted, {} left in the layer", options.Points.Input,
                               compared, rows - left, left));
    return exit_code::kDone;
}

}  // namespace wxl::cli
