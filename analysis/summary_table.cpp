#include "analysis/summary_table.h"

#include "analysis/animal_run.h"
#include "analysis/output_names.h"
#include "analysis/summary_rows.h"
#include "platform/boxes.h"

namespace wxl::analysis {
namespace {

constexpr std::uint64_t kLargestSummary = 256ULL << 20U;

}  // namespace

void SummaryTable::RunBegins(const RunFrame& frame, const GroupedFixes& /*animals*/) {
    m_file = file_in_folder(frame.Folder, kSummaryFile);
    m_reference = frame.Reference;
    m_rows.clear();
    m_animal.clear();
    m_rasters.clear();
    m_failed = false;
}

void SummaryTable::AnimalDone(const AnimalRecord& record) {
    m_rows += summary_rows(record, m_reference);
    if (record.NamingId != m_animal) m_rows += polygon_rows(record, m_reference);
    m_animal = record.NamingId;
    m_rasters.insert(raster_place(record));
}

void SummaryTable::RunEnds(RunOutcome outcome) {
    if (outcome != RunOutcome::kComplete && outcome != RunOutcome::kStopped) return;
    m_failed = true;
    const auto kept = kept_summary(Earlier(), m_rasters);
    if (!kept) {
        m_failed = false;
        return platform::ShowWarning(
            *m_services.Messages, "Warning: " + m_file.string() +
                                      " is not a summary of this tool and was left as it is; no summary was written.");
    }
    platform::PublishFile(*m_services.Files, m_file, *kept + m_rows);
    m_failed = false;
    m_rows.clear();
}

std::string SummaryTable::Earlier() const {
    return m_services.Files->FileExists(m_file) ? m_services.Files->ReadFile(m_file, kLargestSummary) : std::string();
}

}  // namespace wxl::analysis
