#pragma once
#include "analysis/animal_run.h"
#include "analysis/record.h"
#include "kde_tool/result_panel.h"

#include <cstddef>
#include <string>
#include <vector>

namespace wxl::kde_tool {

/// Counts what a run does, for the panel that tells how it ended.
class RunTally final : public analysis::IRunObserver {
public:
    void RunBegins(const analysis::RunFrame& frame, const analysis::GroupedFixes& animals) override;
    void AnimalDone(const analysis::AnimalRecord& record) override;
    void RunEnds(analysis::RunOutcome /*outcome*/) override {}

    /// What is to be told of the last run. A run that failed before its first distribution has computed nothing.
    ResultPanel Panel(analysis::RunOutcome outcome) const;

private:
    /// One animal, whose distributions come one after the other.
    struct Animal {
        std::string NamingId;
        std::size_t Distributions = 0;
        bool Failed = false;
        bool LacksIsopleths = false;
        bool HasRemark = false;
    };

    void TellFailure(const Animal& animal, const analysis::AnimalRecord& record);
    void CountPresent();
    std::string Headline(analysis::RunOutcome outcome) const;
    void AddNotes(const analysis::GroupedFixes& animals);

    analysis::RunFrame m_frame;
    std::size_t m_total = 0;     ///< animals of the run
    std::size_t m_computed = 0;  ///< distributions
    Animal m_present;
    std::size_t m_done = 0;
    std::size_t m_withoutIsopleths = 0;
    std::size_t m_remarks = 0;
    std::vector<std::string> m_failures;
    std::vector<std::string> m_notes;
    platform::Extent m_extent;
};

}  // namespace wxl::kde_tool
