#include "apps/cli/commands/track.h"

#include "apps/cli/movement_run.h"
#include "apps/cli/shapefile_output.h"
#include "apps/cli/tool_session.h"
#include "movement/MOLE.h"
#include "platform/runtime_error.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace wxl::cli {

namespace {

/// The user of the track player: keeps the path, steps to the end and saves it.
class TrackSaver final : public movement::ITrackPlayerWindow {
public:
    TrackSaver(ConsoleMessages& messages, Console& console) : m_messages(messages), m_console(console) {}

    void ShowTrackPlayer(movement::frmOVI& form) override {
        form.Form_Load();
        form.CBKeepGraphic.Value = 1;
        form.CBKeepGraphic_Click();
        while (AllIsWell() && form.Slider.Value < form.Slider.Maximum) {
            m_console.Progress(static_cast<double>(form.Slider.Value) / form.Slider.Maximum, "track");
            form.CmbStep_Click();
        }
        m_console.EndProgress();
        m_fixes = form.Fixes().size();
        m_legs = form.Legs().size();
        if (AllIsWell()) form.CmdSaveTravel_Click();
        form.Form_Unload();
    }

    /// The player has nothing to say as long as all goes well.
    bool AllIsWell() const { return !m_messages.Stopped() && m_messages.Notices() == 0; }
    bool Saved() const { return AllIsWell() && m_legs > 0; }
    std::size_t Fixes() const { return m_fixes; }
    std::size_t Legs() const { return m_legs; }

private:
    ConsoleMessages& m_messages;
    Console& m_console;
    std::size_t m_fixes = 0;
    std::size_t m_legs = 0;
};

}  // namespace

void register_track(CLI::App& command, TrackOptions& options) {
    add_input_options(command, options.Points);
    command.add_option("OUT.shp", options.Output, "Line shapefile to write")->required();
    command.add_option("--where", options.Where, "Use only the fixes that meet this condition")->type_name("SQL");
    command.add_flag("--overwrite", options.Overwrite, "Replace a shapefile of that name");
    add_answer_option(command, options.Questions);
    add_large_option(command, options.Large);
    command.footer(
        "Writes a line from each fix of a point layer to the next, in the order of the rows,\n"
        "with a running number in the field Id: the path that the track player draws and\n"
        "saves. Use --where to pick the fixes of one animal.\n"
        "\n"
        "Where rows between two fixes are left out, the player asks whether to draw the leg:\n"
        "--answer out-of-sequence=yes or --answer out-of-sequence=no.\n"
        "\n"
        "Example:\n"
        "\n"
        "  wxl track wolves.shp freja.shp --where \"animal = 'Freja'\"");
}

int run_track(const TrackOptions& options, Console& console) {
    const ShapefileOutput output(options.Output, options.Overwrite);
    const auto layer = open_point_layer(options.Points);
    refuse_repeated_numbers(*layer, options.Points.Input);
    output.Refuse(files_read(*layer));
    if (!options.Where.empty()) layer->SelectWhere(options.Where);
    ToolSession session(console, options.Questions);
    session.AddInput(layer);
    OptionDialogs dialogs;
    platform::Services services = session.Services();
    services.Dialogs = &dialogs;
    TrackSaver saver(session.Messages(), console);
    movement::MOLE tool(services, saver);
    tool.SetBeyondLimits(options.Large);
    tool.OnCreate(session.Application());
    report_mixed_animals(*layer, kChooseByWhere, console);
    output.WriteBy([&](const std::filesystem::path& shapefile) {
        dialogs.FileToSave = shapefile;
        tool.OnClick();
        if (!saver.Saved())
            platform::Raise(platform::error_number::kInvalidCall,
                            options.Output + ": the track was not saved" + large_advice(*layer, options.Large));
    });
    console.Result(fmt::format("{}: {} fixes, {} legs", options.Output, saver.Fixes(), saver.Legs()));
    return exit_code::kDone;
}

}  // namespace wxl::cli
