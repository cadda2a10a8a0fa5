#pragma once
#include "analysis/record.h"
#include "platform/services.h"
#include "results_page/page_run.h"

#include <string>

namespace wxl::results_page {

/// Name of the page, joined to the output folder as a file in it.
inline constexpr const char* kPageFile = "\\WXL_KDE_ANALYSIS.html";

/// Writes a page of the results beside the report at the end of a run that asked for one, complete or stopped.
///
/// One file that needs nothing else: valid HTML 5, no network. It is made from the run's records and the datasets in
/// its folder, however the run was computed. It appears whole or not at all and replaces the page of an earlier run; a
/// file of that name that is something else stays, and a message box says so. Sections are written as they are made, so
/// that memory holds the records and one map at a time.
class ResultsPage final : public analysis::IRunObserver {
public:
    /// The services outlive the object.
    explicit ResultsPage(const platform::Services& services) : m_services(services) {}

    void RunBegins(const analysis::RunFrame& frame, const analysis::GroupedFixes& animals) override;
    void AnimalDone(const analysis::AnimalRecord& record) override;

    /// RuntimeError when the page cannot be written.
    void RunEnds(analysis::RunOutcome outcome) override;

    /// Whether the page of the last run was asked for and could not be written.
    bool Failed() const { return m_failed; }

    /// The page of the last run; empty when there is none.
    const std::filesystem::path& Written() const { return m_written; }

private:
    void Write(platform::IOutputFile& file) const;

    const platform::Services& m_services;
    PageRun m_run;
    std::filesystem::path m_written;
    bool m_failed = false;
};

}  // namespace wxl::results_page
