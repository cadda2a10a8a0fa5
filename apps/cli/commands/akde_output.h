#pragma once
#include "akde/range_record.h"
#include "apps/cli/console.h"
#include "apps/cli/json_values.h"
#include "results_page/range_page.h"

namespace wxl::cli {

/// The record as one JSON object, with the keys of wxl kde (null where they say nothing of this estimator) and those of
/// its own.
Json json_of(const akde::RangeRecord& record, const akde::RangeSettings& settings);

/// A line for the animal, and one for each percentage. Areas are told in square kilometres where the map units of
/// `reference` have a size.
void print_range(const akde::RangeRecord& record, const platform::SpatialReference& reference, Console& console);

/// The first of these lines.
std::string range_line(const akde::RangeRecord& record);

/// Tells of a run, animal by animal and at its end, and makes its page.
class AkdeOutput {
public:
    /// All outlive the object. `reference`: coordinate system of the animals.
    AkdeOutput(const akde::RangeSettings& settings, const platform::SpatialReference& reference,
               const platform::Services& services, bool json, Console& console);

    void Add(const akde::RangeRecord& record);

    /// The exit code.
    int Finish(const akde::RangeOutcome& outcome);

private:
    std::string WritePage(const akde::RangeOutcome& outcome);
    void PrintPlaces(const akde::RangeOutcome& outcome, const std::string& page);

    const akde::RangeSettings& m_settings;
    Console& m_console;
    bool m_asJson;
    platform::SpatialReference m_reference;
    Json m_animals = Json::array();
    results_page::RangePage m_page;
};

}  // namespace wxl::cli
