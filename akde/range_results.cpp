#include "akde/range_results.h"

#include "akde/range_summary.h"
#include "platform/runtime_error.h"

#include <utility>

namespace wxl::akde {

RangeResults::RangeResults(const RangeSettings& settings, const platform::Services& services, IListener& listener,
                           const TimedAnimals& animals)
    : m_settings(settings),
      m_listener(listener),
      m_summary(services, kSummaryColumns),
      m_package(settings, services, animals) {
    m_summary.Begin(settings.Folder / kRangeSummary);
}

RangeRecord RangeResults::Add(RangeRecord record) {
    m_summary.Add(summary_rows(record, m_settings), record.RasterPlace());
    m_package.Add(record);
    record.Outlines.clear();
    ++m_outcome.Done;
    if (!record.IsDone()) ++m_outcome.Failed;
    if (record.NotWritten) m_outcome.NotWritten = true;
    return record;
}

RangeOutcome RangeResults::Publish(bool stopped) {
    m_outcome.Stopped = stopped;
    PublishSummary();
    PublishPackage();
    return m_outcome;
}

void RangeResults::PublishSummary() {
    if (!m_summary.Publish()) return m_listener.Problem(m_summary.ForeignText());
    m_outcome.Summary = m_summary.File();
}

/// A package that lacks what could not be written would not be whole.
void RangeResults::PublishPackage() {
    if (m_outcome.NotWritten) return;
    if (m_package.IsForeign()) return m_listener.Problem(m_package.ForeignText());
    try {
        m_outcome.Package = m_package.Publish();
    } catch (...) {
        m_outcome.NotWritten = true;
        m_listener.Problem(platform::CurrentError().Description);
    }
}

}  // namespace wxl::akde
