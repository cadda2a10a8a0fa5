#pragma once
// What the commands over the movement tools share.

#include "adapters/files/files_map.h"
#include "apps/cli/console.h"
#include "movement/FrmPW.h"
#include "platform/messages.h"

#include <string>

namespace CLI {
class App;
}

namespace wxl::cli {

/// Gives `command` the flag --large.
void add_large_option(CLI::App& command, bool& large);

/// "; --large lifts the limit of 32767 rows" for a layer that the tools refuse without --large, else "".
std::string large_advice(files::FilesFeatureLayer& layer, bool large);

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
