#pragma once
#include "analysis/record.h"
#include "kde_tool/form_advice.h"

namespace wxl::qgis {

/// Keeps the settings of a run in the QGIS project, from when its questions are answered, and gives them back later,
/// also when the project was saved and opened in between. The layer is known by its ID, so that it may be renamed.
class ProjectMemory final : public kde_tool::IFormAdvice, public analysis::IRunObserver {
public:
    std::optional<std::size_t> AnimalField(const std::vector<std::string>& fields) const override;
    bool CanWrite(const std::filesystem::path& folder) const override;
    std::optional<analysis::Settings> LastSettings() const override;

    void RunBegins(const analysis::RunFrame& frame, const analysis::GroupedFixes& animals) override;
    void AnimalDone(const analysis::AnimalRecord&) override {}
    void RunEnds(analysis::RunOutcome) override {}
};

}  // namespace wxl::qgis
