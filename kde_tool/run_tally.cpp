#include "kde_tool/run_tally.h"

#include "analysis/animal_fixes.h"
#include "analysis/diagnosis.h"
#include "analysis/isopleth_failure.h"
#include "analysis/report_lines.h"

namespace wxl::kde_tool {
namespace {

using analysis::AnimalRecord;
using analysis::RunOutcome;

std::string count_text(std::size_t count, const char* one, const char* many) {
    return std::to_string(count) + (count == 1 ? one : many);
}

/// "Freja", and which of several distributions: "Freja (b2)".
std::string name_of(const AnimalRecord& record, std::size_t number, std::size_t values) {
    const std::string id = platform::ValueText(record.Id);
    return values > 1 ? id + " (b" + std::to_string(number) + ")" : id;
}

}  // namespace

void RunTally::RunBegins(const analysis::RunFrame& frame, const analysis::GroupedFixes& animals) {
    *this = {};
    m_frame = frame;
    m_total = animals.Animals.size();
    AddNotes(animals);
}

void RunTally::AddNotes(const analysis::GroupedFixes& animals) {
    for (const std::string& remark :
         analysis::remarks_of(m_frame.Wanted.IdField, animals.WithoutId, m_frame.Reference.IsGeographic))
        m_notes.push_back(remark + ".");
}

void RunTally::AnimalDone(const AnimalRecord& record) {
    if (m_present.Distributions == 0 || m_present.NamingId != record.NamingId) {
        CountPresent();
        m_present = {.NamingId = record.NamingId};
    }
    ++m_present.Distributions;
    if (record.Status != 0 || analysis::lacks_isopleths(record)) TellFailure(m_present, record);
    if (record.Status != 0) {
        m_present.Failed = true;
        return;
    }
    ++m_computed;
    const platform::RasterGeometry& grid = record.Grid;
    m_extent.Include({grid.OriginX, grid.OriginY});
    m_extent.Include({grid.OriginX + grid.CellSize * grid.Columns, grid.OriginY + grid.CellSize * grid.Rows});
    m_present.LacksIsopleths |= analysis::lacks_isopleths(record);
    m_present.HasRemark |= !record.Reason.empty();
}

/// One line for each animal, of its first distribution that failed.
void RunTally::TellFailure(const Animal& animal, const AnimalRecord& record) {
    if (animal.Failed || animal.LacksIsopleths) return;
    const std::string name = name_of(record, animal.Distributions, m_frame.Values.size());
    m_failures.push_back(name + ": " +
                         (record.Status != 0
                              ? analysis::failure_reason(record) + ". " + analysis::failure_remedy(record)
                              : analysis::isopleth_failure(record, m_frame.Wanted)));
}

void RunTally::CountPresent() {
    if (m_present.Distributions == 0) return;
    if (!m_present.Failed && m_present.Distributions >= m_frame.Values.size()) ++m_done;
    if (m_present.LacksIsopleths) ++m_withoutIsopleths;
    if (m_present.HasRemark && !m_present.Failed && !m_present.LacksIsopleths) ++m_remarks;
}

std::string RunTally::Headline(RunOutcome outcome) const {
    if (m_total == 0) return "Nothing was computed: the analysis ended by an error";
    const char* start = outcome == RunOutcome::kFailed    ? "Ended by an error: "
                        : outcome == RunOutcome::kStopped ? "Stopped: "
                        : m_computed == 0                 ? "Nothing was computed: "
                                                          : "";
    std::string text = start + std::to_string(m_done) + " of " + count_text(m_total, " animal", " animals") + " done";
    if (m_withoutIsopleths > 0) text += ", " + std::to_string(m_withoutIsopleths) + " without isopleths";
    return text;
}

ResultPanel RunTally::Panel(RunOutcome outcome) const {
    RunTally whole = *this;
    whole.CountPresent();
    ResultPanel panel;
    panel.Headline = whole.Headline(outcome);
    const bool isWhole = whole.m_done == m_total && whole.m_withoutIsopleths == 0 && outcome == RunOutcome::kComplete;
    panel.Kind = m_computed == 0 || outcome == RunOutcome::kFailed ? ResultPanel::Look::kFailure
                 : isWhole                                         ? ResultPanel::Look::kDone
                                                                   : ResultPanel::Look::kPartly;
    panel.Lines = m_failures;
    if (whole.m_remarks > 0)
        panel.Lines.push_back("Remarks on " + count_text(whole.m_remarks, " animal", " animals") +
                              " are in the summary of the folder.");
    panel.Lines.insert(panel.Lines.end(), m_notes.begin(), m_notes.end());
    panel.Folder = m_frame.Folder;
    panel.Extent = m_extent;
    panel.Reference = m_frame.Reference;
    return panel;
}

}  // namespace wxl::kde_tool
