#pragma once
#include "kde_tool/run_preparation.h"

#include <filesystem>
#include <functional>
#include <string>

namespace wxl::kde_tool {

/// A run that was prepared and is computed elsewhere: what its distributions need, and the head of its report.
struct PreparedRun {
    const RunFrame& Frame;
    const GroupedFixes& Animals;
    Lines ReportHead;
};

/// One press of the form's OK button: the whole batch, from the checks to "Processing complete.".
class AnalysisRun final : private IRunStages {
public:
    explicit AnalysisRun(frmKDE& form);

    /// Reports every fault in message boxes and never throws. A run that an answer cancels and one that fails delete
    /// report and settings record of the folder, earlier runs' included; one whose question nobody answers leaves both
    /// as they were.
    RunOutcome Run();

    /// Prepares the run and hands it over instead of computing it, with the output folder locked: kComplete when `take`
    /// returned. The settings record is written, the report is not. Faults, those of `take` too, are reported as Run
    /// does.
    RunOutcome Plan(const std::function<void(const PreparedRun&)>& take);

private:
    RunOutcome Guarded(IReportSink& head, const std::function<RunOutcome()>& work);
    void RunAnimals();
    RunOutcome Finish();
    void TellBegin();
    void TellEnd(RunOutcome outcome);
    void Cancel();
    void TakeBack();
    void Leave(const std::function<void()>& cleanUp);
    std::filesystem::path Folder() const;
    void DeleteRunFiles();
    void Stage(const std::string& status) override;
    bool Silent() const override;
    void ShowProgress(double distributions);
    std::size_t Total() const;

    frmKDE& m_form;
    const platform::Services& m_services;
    AnalysisReport m_report;
    std::unique_ptr<RunPreparation> m_preparation;
    bool m_begun = false;     ///< observers were told of the run's begin and wait for its end
    std::size_t m_done = 0;   ///< distributions finished
    std::size_t m_stage = 0;  ///< stages of the present one begun
};

}  // namespace wxl::kde_tool
