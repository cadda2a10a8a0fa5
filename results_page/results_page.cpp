#include "results_page/results_page.h"

#include "analysis/animal_run.h"
#include "analysis/output_names.h"
#include "platform/boxes.h"
#include "results_page/animal_section.h"
#include "results_page/animal_table.h"
#include "results_page/document.h"
#include "results_page/page_parts.h"
#include "results_page/repeat_command.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace wxl::results_page {
namespace {

using analysis::RunOutcome;

}  // namespace

void ResultsPage::RunBegins(const analysis::RunFrame& frame, const analysis::GroupedFixes& animals) {
    m_run = {};
    m_written.clear();
    m_failed = false;
    m_run.Wanted = frame.Wanted;
    m_run.Source = frame.Source;
    m_run.SourceOptions = frame.SourceOptions;
    m_run.ManyValues = frame.Values.size() > 1;
    m_run.Reference = frame.Reference;
    m_run.Animals = &animals;
    m_run.Folder = frame.Folder;
    m_run.Methods = analysis::MethodsParagraph(frame, animals, "WXL Tools " WXL_VERSION);
    m_run.Start = m_services.Clock->Now();
}

void ResultsPage::AnimalDone(const analysis::AnimalRecord& record) {
    if (!m_run.Wanted.Html) return;
    m_run.Records.push_back(record);
    m_run.Methods.Add(record);
    // The map draws the raster's contours anew: shapes of thousands of animals need not wait in memory.
    for (analysis::IsoplethRecord& isopleth : m_run.Records.back().Isopleths) isopleth.Shape = {};
}

void ResultsPage::RunEnds(RunOutcome outcome) {
    const bool kept = outcome == RunOutcome::kComplete || outcome == RunOutcome::kStopped;
    if (!kept || !m_run.Wanted.Html) return;
    m_failed = true;
    m_run.Stopped = outcome == RunOutcome::kStopped;
    m_run.Finish = m_services.Clock->Now();
    const std::filesystem::path file = analysis::file_in_folder(m_run.Folder, kPageFile);
    if (!may_replace_page(*m_services.Files, file)) {
        m_failed = false;
        return platform::ShowWarning(
            *m_services.Messages,
            "Warning: " + file.string() + " is not a page of this tool and was left as it is; no page was written.");
    }
    PendingFile pending(*m_services.Files, file);
    Write(pending.File());
    pending.Publish();
    m_written = file;
    m_failed = false;
    m_run.Records.clear();
    m_run.Animals = nullptr;
}

void ResultsPage::Write(platform::IOutputFile& file) const {
    file.Write(page_opening(m_run));
    file.Write("<section id=\"results\" aria-labelledby=\"results-name\">\n<h2 id=\"results-name\">Results</h2>\n" +
               problems(m_run) + animal_table(m_run) + "</section>\n");
    file.Write("<section id=\"animals\" aria-labelledby=\"animals-name\">\n<h2 id=\"animals-name\">Animals</h2>\n");
    const PictureSize size = picture_size(m_run.Records.size());
    for (std::size_t i = 0; i < m_run.Records.size(); ++i) {
        file.Write(animal_section(m_run, i, size, m_services));
        m_services.Host->Yield();
    }
    file.Write("</section>\n");
    file.Write(reading_notes(m_run) + settings_section(m_run) + repeat_section(m_run, shell_text(repeat_words(m_run))) +
               methods_section(m_run) + page_closing(m_run));
}

}  // namespace wxl::results_page
