#pragma once
// What the commands over the movement tools share.

#include "adapters/ogr/files_map.h"
#include "apps/cli/console_messages.h"
#include "movement/FrmPW.h"
#include "platform/messages.h"

#include <string>
#include <string_view>

namespace CLI {
class App;
}

namespace wxl::cli {

/// Gives `command` the flag --large.
void add_large_option(CLI::App& command, bool& large);

/// "; --large lifts the limit of 32767 rows" for a layer that the tools refuse without --large, else "". To be asked
/// before the tool works, which may delete the rows beyond the limit.
std::string large_advice(files::FilesFeatureLayer& layer, bool large);

/// RuntimeError 5 for a layer in which several rows have one number: the tools know the fixes of a track by their
/// numbers.
void refuse_repeated_numbers(files::FilesFeatureLayer& layer, const std::string& input);

/// Gives `command` the option --id-field.
void add_animal_option(CLI::App& command, std::string& field);

/// Says, before a tool changes or draws anything, that the chosen fixes of `layer` are of several animals and will be
/// taken as one track. The field that names the animal is found by its usual names; one of whose values no two fixes
/// share numbers the rows instead, and is no such field. `remedy` says how to choose one animal, with "{}" for the SQL
/// condition in double quotes.
void report_mixed_animals(files::FilesFeatureLayer& layer, std::string_view remedy, Console& console);

/// Asks whether to go on as report_mixed_animals would say; true where the chosen fixes are of one animal, false when
/// the answer is no or --answer does not tell (ConsoleMessages::Stopped).
bool may_mix_animals(files::FilesFeatureLayer& layer, ConsoleMessages& messages);

/// Says, before a tool changes the layer, which of its files have other names (hard links): those keep the old rows,
/// because a new file takes the place of the old one. A database is changed in place, for all its names.
void report_other_names(files::FilesFeatureLayer& layer, Console& console);

/// "--where CONDITION chooses one", the remedy where a command has --where.
inline constexpr std::string_view kChooseByWhere = "--where {} chooses one";

/// The "Please Wait" window as a bar on the terminal, and the host that redraws it.
class PleaseWaitBar final : public movement::IPleaseWaitWindow, public platform::IHost {
public:
    /// Host and console outlive the bar. `what` names the work.
    PleaseWaitBar(platform::IHost& host, Console& console, std::string what);

    void ShowPleaseWait(movement::FrmPW& form) override;
    void HidePleaseWait(movement::FrmPW& form) override;
    void Yield() override;
    void SetStatus(std::string_view text) override { m_host.SetStatus(text); }

    /// Whether it was ever shown, which a tool does when all was checked and its pass over the table begins.
    bool WasShown() const { return m_wasShown; }

private:
    platform::IHost& m_host;
    Console& m_console;
    std::string m_what;
    const movement::FrmPW* m_form = nullptr;
    bool m_wasShown = false;
};

}  // namespace wxl::cli
