#include "analysis/summary_table.h"

#include "analysis/animal_run.h"
#include "analysis/output_names.h"
#include "platform/boxes.h"

namespace wxl::analysis {

void SummaryTable::RunBegins(const RunFrame& frame, const GroupedFixes& /*animals*/) {
    m_summary.Begin(file_in_folder(frame.Folder, kSummaryFile));
    m_reference = frame.Reference;
    m_prefix = frame.Wanted.Prefix;
    m_animal.clear();
    m_failed = false;
}

void SummaryTable::AnimalDone(const AnimalRecord& record) {
    std::string rows = summary_rows(record, m_reference);
    if (record.NamingId != m_animal) rows += polygon_rows(record, m_reference);
    m_animal = record.NamingId;
    m_summary.Add(rows, raster_place(record));
    m_summary.Add({}, plain_raster_place(record, m_prefix));
}

void SummaryTable::RunEnds(RunOutcome outcome) {
    if (outcome != RunOutcome::kComplete && outcome != RunOutcome::kStopped) return;
    m_failed = true;
    if (!m_summary.Publish()) platform::ShowWarning(*m_services.Messages, m_summary.ForeignText());
    m_failed = false;
}

}  // namespace wxl::analysis
