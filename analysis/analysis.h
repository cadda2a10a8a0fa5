#pragma once
#include "analysis/preparation.h"
#include "analysis/record.h"
#include "analysis/run_view.h"

#include <functional>
#include <memory>
#include <span>

namespace wxl::analysis {

/// A run that was prepared and is computed elsewhere: what its distributions need, and the head of its report.
struct PreparedRun {
    const RunFrame& Frame;
    const GroupedFixes& Animals;
    Lines ReportHead;
};

/// A batch analysis: all animals of a layer, from the checks to "Processing complete.".
class Analysis final : private IRunStages {
public:
    /// All but the settings outlive the object; `geodata` is connected to the application.
    Analysis(const platform::Services& services, utilities::Utilities& geodata, Settings settings, IRunView& view);

    /// Computes and tells the observers, in their order. Reports every fault in message boxes and never throws. A run
    /// that an answer cancels and one that fails delete report and settings record of the folder, earlier runs'
    /// included; one whose question nobody answers leaves both as they were.
    RunOutcome Run(std::span<IRunObserver* const> observers);

    /// Prepares the run and hands it over instead of computing it, with the output folder locked: kComplete when `take`
    /// returned. The settings record is written, the report is not. Faults, those of `take` too, are reported as Run
    /// does.
    RunOutcome HandOver(const std::function<void(const PreparedRun&)>& take);

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
    bool Silent() const override { return m_view.Silent(); }
    void ShowProgress(double distributions);
    std::size_t Total() const;

    const platform::Services& m_services;
    utilities::Utilities& m_geodata;
    Settings m_settings;
    IRunView& m_view;
    AnalysisReport m_report;
    std::span<IRunObserver* const> m_observers;
    std::unique_ptr<Preparation> m_preparation;
    bool m_begun = false;     ///< observers were told of the run's begin and wait for its end
    std::size_t m_done = 0;   ///< distributions finished
    std::size_t m_stage = 0;  ///< stages of the present one begun
};

}  // namespace wxl::analysis
