#include "akde/range_results.h"

#include "platform/file_system.h"
#include "platform/runtime_error.h"

#include <utility>

namespace wxl::akde {

RangeResults::RangeResults(const RangeSettings& settings, const platform::Services& services, IListener& listener,
                           const TimedAnimals& animals)
    : m_services(services), m_listener(listener), m_summary(settings), m_package(settings, services, animals) {
    m_outcome.Summary = settings.Folder / kRangeSummary;
}

RangeRecord RangeResults::Add(RangeRecord record) {
    m_summary.Add(record);
    m_package.Add(record);
    record.Outlines.clear();
    ++m_outcome.Done;
    if (!record.IsDone()) ++m_outcome.Failed;
    if (record.NotWritten) m_outcome.NotWritten = true;
    return record;
}

RangeOutcome RangeResults::Publish(bool stopped) {
    m_outcome.Stopped = stopped;
    platform::PublishFile(*m_services.Files, m_outcome.Summary, m_summary.Text());
    PublishPackage();
    return m_outcome;
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
