#pragma once
#include "analysis/methods_paragraph.h"
#include "analysis/record.h"
#include "apps/cli/console.h"
#include "apps/cli/json_values.h"
#include "kde_tool/frmKDE.h"

#include <filesystem>
#include <string>

namespace wxl::cli {

/// The record as one JSON object. Numbers that are not defined are null.
Json json_of(const analysis::AnimalRecord& record);

/// Writes a run's records as they come, as lines for people or as one JSON object, and counts the failing ones.
class KdeOutput final : public analysis::IRunObserver {
public:
    /// `folder`: the output folder, for the names of report and settings record. `reference`: of the
    /// fixes; areas are told in square kilometres where its map units have a size.
    KdeOutput(Console& console, const std::filesystem::path& folder, bool json, platform::SpatialReference reference);

    /// From now on lines for people tell the days of an animal, its cells, and areas in hectares or square kilometres.
    void TellWhole(const platform::SpatialReference& reference) { m_whole = reference; }

    void RunBegins(const analysis::RunFrame& frame, const analysis::GroupedFixes& animals) override;
    void AnimalDone(const analysis::AnimalRecord& record) override;
    void RunEnds(analysis::RunOutcome) override {}

    /// Ends the output of a run that wrote its report, or of one that broke off.
    void Finish(analysis::RunOutcome outcome);

    std::size_t Done() const { return m_done; }
    std::size_t Failed() const { return m_failed; }

    /// Distributions for which there was no memory.
    std::size_t WithoutMemory() const { return m_withoutMemory; }

    /// Distributions whose isopleths met a fault.
    std::size_t WithoutIsopleths() const { return m_withoutIsopleths; }

private:
    void Count(const analysis::AnimalRecord& record);
    void TellReason(const analysis::AnimalRecord& record) const;
    void DoubtIdField() const;
    void Print(const analysis::AnimalRecord& record);
    std::string Head() const;
    std::string AreasText(const analysis::AnimalRecord& record) const;
    std::string AreaText(double area) const;
    std::string WholeText(const analysis::AnimalRecord& record) const;

    Console& m_console;
    std::filesystem::path m_report;
    std::filesystem::path m_settings;
    bool m_json;
    platform::SpatialReference m_reference;
    std::optional<platform::SpatialReference> m_whole;
    analysis::MethodsParagraph m_methods;
    std::string m_pending;  ///< the JSON line that waits to know whether another follows
    std::string m_idField;
    std::string m_animal;  ///< naming ID of the last distribution
    std::size_t m_animals = 0;
    std::size_t m_sparse = 0;  ///< animals with few fixes
    std::size_t m_done = 0;
    std::size_t m_failed = 0;
    std::size_t m_withoutIsopleths = 0;
    std::size_t m_withoutMemory = 0;
};

}  // namespace wxl::cli
