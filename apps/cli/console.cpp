#include "apps/cli/console.h"

#include "apps/cli/printable.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace wxl::cli {

namespace {

constexpr int kBarWidth = 30;

std::string bar_text(double fraction, std::string_view what) {
    const double part = std::isfinite(fraction) ? std::clamp(fraction, 0.0, 1.0) : 0.0;
    const auto filled = static_cast<int>(part * kBarWidth);
    return fmt::format("[{:=<{}}{:<{}}] {:3d} % {}", "", filled, "", kBarWidth - filled, static_cast<int>(part * 100.0),
                       what);
}

}  // namespace

Console::Console(std::ostream& out, std::ostream& err, bool terminal) : m_out(out), m_err(err), m_terminal(terminal) {}

void Console::Result(std::string_view line) {
    EndProgress();
    m_out << printable_line(line) << '\n';
}

void Console::Text(std::string_view lines) {
    EndProgress();
    m_out << printable(lines) << '\n';
}

void Console::Note(std::string_view line) {
    if (!m_quiet) ErrorLine(line);
}

void Console::Problem(std::string_view line) {
    ErrorLine(line);
}

int Console::Fail(std::string_view line) {
    ErrorLine(fmt::format("wxl: {}", line));
    return exit_code::kFailed;
}

void Console::Progress(double fraction, std::string_view what) {
    if (!m_terminal || m_quiet) return;
    const std::string bar = bar_text(fraction, printable_line(what));
    if (bar == m_bar) return;
    EndProgress();
    m_err << bar << std::flush;
    m_bar = bar;
}

void Console::EndProgress() {
    if (m_bar.empty()) return;
    m_err << '\r' << std::string(m_bar.size(), ' ') << '\r' << std::flush;
    m_bar.clear();
}

bool Console::Finish() {
    EndProgress();
    m_out.flush();
    m_err.flush();
    return m_out.good();
}

void Console::ErrorLine(std::string_view line) {
    EndProgress();
    // Results and messages keep their order where both go to one terminal or file.
    m_out.flush();
    m_err << printable_line(line) << '\n' << std::flush;
}

}  // namespace wxl::cli
