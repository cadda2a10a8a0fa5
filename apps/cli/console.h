#pragma once
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace wxl::cli {

/// What the program's exit code says.
namespace exit_code {
inline constexpr int kDone = 0;       ///< the work was done, warnings included
inline constexpr int kFailed = 1;     ///< the work failed
inline constexpr int kWrongCall = 2;  ///< the command line makes no sense
}  // namespace exit_code

/// A command line that parses but makes no sense (two options that exclude each other, an empty name): the program says
/// `what()` and ends with exit code 2.
class WrongCall : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Where a command writes: results to standard output, everything else to standard error. A line is written at once,
/// with its control characters made visible, line breaks and tabs in it as well, and ends with a line feed.
class Console {
public:
    /// `terminal`: `err` is a terminal, so that a progress bar can be drawn on it.
    Console(std::ostream& out, std::ostream& err, bool terminal);

    /// Quiet: no notes and no progress. Problems are still told.
    void SetQuiet(bool quiet) { m_quiet = quiet; }

    /// A line of the result.
    void Result(std::string_view line);

    /// A result of several lines whose line breaks are the program's own: JSON, a manual page.
    void Text(std::string_view lines);

    /// A line that tells how the work went: counts, choices made.
    void Note(std::string_view line);

    /// A line that the user has to see, even when quiet.
    void Problem(std::string_view line);

    /// Why the command failed: "wxl: LINE". Returns exit_code::kFailed.
    int Fail(std::string_view line);

    /// Draws `fraction` (0 to 1) of the work called `what` as a bar, on a terminal only. The bar gives way to any line
    /// written after it.
    void Progress(double fraction, std::string_view what);

    /// Takes the bar away.
    void EndProgress();

    /// Hands all that was written to the system; false when a result could not be written (disk full, closed pipe).
    bool Finish();

private:
    void ErrorLine(std::string_view line);

    std::ostream& m_out;
    std::ostream& m_err;
    bool m_terminal;
    bool m_quiet = false;
    std::string m_bar;  ///< the bar on screen; empty when there is none
};

}  // namespace wxl::cli
