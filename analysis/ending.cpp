#include "analysis/ending.h"

#include "platform/boxes.h"
#include "platform/runtime_error.h"

namespace wxl::analysis {

void end_report(AnalysisReport& report, const platform::DateTime& finish, bool stopped) {
    Lines lines = finish_lines(finish);
    if (stopped) lines.back() = "Processing stopped by the user";
    report.Write(lines);
    report.Close();
}

void report_end(std::span<IRunObserver* const> observers, RunOutcome outcome, platform::IMessages& messages) {
    for (IRunObserver* observer : observers) {
        try {
            observer->RunEnds(outcome);
        } catch (...) {
            platform::ShowError(messages, platform::CurrentError().Description);
        }
    }
}

void show_ending(platform::IMessages& messages, bool stopped) {
    messages.Show({.Text = stopped ? "Processing stopped." : "Processing complete.",
                   .Title = "Status",
                   .Sign = platform::Icon::kInformation});
}

}  // namespace wxl::analysis
