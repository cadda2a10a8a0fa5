#pragma once
#include "analysis/record.h"
#include "analysis/summary_file.h"
#include "analysis/summary_rows.h"
#include "platform/services.h"

#include <string>

namespace wxl::analysis {

/// Name of the summary, joined to the output folder as a file in it.
inline constexpr const char* kSummaryFile = "\\WXL_KDE_SUMMARY.csv";

/// Writes the summary of a run at its end, complete or stopped. Rows of earlier runs whose rasters the run did not
/// replace are kept. The file appears whole or not at all; a file of that name that is no summary stays as it is, and a
/// message box says so. A run that was cancelled or failed leaves the summary as it was.
class SummaryTable final : public IRunObserver {
public:
    /// The services outlive the object.
    explicit SummaryTable(const platform::Services& services)
        : m_services(services), m_summary(services, kSummaryColumns) {}

    void RunBegins(const RunFrame& frame, const GroupedFixes& animals) override;
    void AnimalDone(const AnimalRecord& record) override;

    /// RuntimeError when the file cannot be read or written.
    void RunEnds(RunOutcome outcome) override;

    /// Whether the summary of the last run could not be written.
    bool Failed() const { return m_failed; }

private:
    const platform::Services& m_services;
    SummaryFile m_summary;
    platform::SpatialReference m_reference;
    std::string m_prefix;
    std::string m_animal;  ///< naming ID of the last distribution
    bool m_failed = false;
};

}  // namespace wxl::analysis
