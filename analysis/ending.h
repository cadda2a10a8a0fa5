#pragma once
#include "analysis/record.h"
#include "analysis/report_writer.h"
#include "platform/clock.h"
#include "platform/messages.h"

#include <span>

namespace wxl::analysis {

/// Writes the last lines of a run's report and closes it. `stopped`: by the user, before the last distribution.
void end_report(AnalysisReport& report, const platform::DateTime& finish, bool stopped);

/// Tells the observers of a run that began how it ended. What an observer makes of a run is an extra: one that fails is
/// shown in a message box, and the run's own results stay.
void report_end(std::span<IRunObserver* const> observers, RunOutcome outcome, platform::IMessages& messages);

/// Tells the user that the run is over.
void show_ending(platform::IMessages& messages, bool stopped);

}  // namespace wxl::analysis
