#include "apps/cli/movement_run.h"

#include <CLI/CLI.hpp>
#include <limits>
#include <utility>
#include <vector>

namespace wxl::cli {

void add_large_option(CLI::App& command, bool& large) {
    command.add_flag("--large", large, "Lift the limit of 32767 rows");
}

std::string large_advice(files::FilesFeatureLayer& layer, bool large) {
    const std::vector<std::int64_t> oids = layer.Features().OIDs();
    const bool tooLarge = !oids.empty() && oids.back() >= std::numeric_limits<std::int16_t>::max();
    return tooLarge && !large ? "; --large lifts the limit of 32767 rows" : "";
}

PleaseWaitBar::PleaseWaitBar(platform::IHost& host, Console& console, std::string what)
    : m_host(host), m_console(console), m_what(std::move(what)) {}

void PleaseWaitBar::ShowPleaseWait(movement::FrmPW& form) {
    m_form = &form;
    m_wasShown = true;
}

void PleaseWaitBar::HidePleaseWait(movement::FrmPW&) {
    m_form = nullptr;
    m_console.EndProgress();
}

void PleaseWaitBar::Yield() {
    m_host.Yield();
    if (!m_form) return;
    const platform::ProgressBar& bar = m_form->PBar;
    m_console.Progress((bar.Value - bar.Minimum) / (bar.Maximum - bar.Minimum), m_what);
}

}  // namespace wxl::cli
