#pragma once
#include "akde/range_run.h"
#include "platform/services.h"
#include "results_page/page_run.h"

#include <filesystem>
#include <string>
#include <vector>

namespace wxl::results_page {

/// Name of the page in the output folder.
inline constexpr const char* kRangePageFile = "WXL_AKDE_ANALYSIS.html";

/// What the page of home ranges with limits is made from.
struct RangePageRun {
    akde::RangeSettings Wanted;
    PageRun Units;  ///< the coordinate system, in which lengths and areas are told
    platform::DateTime Start;
    platform::DateTime Finish;
    bool Stopped = false;
    std::vector<akde::RangeRecord> Records;
};

/// A page of the results of a run: as ResultsPage in all respects, for home ranges of autocorrelated fixes: models, map
/// with the outlines of estimate and limits, areas, variogram of every animal.
class RangePage {
public:
    /// The services outlive the object.
    RangePage(const platform::Services& services, const akde::RangeSettings& settings,
              const platform::SpatialReference& reference);

    void Add(const akde::RangeRecord& record) { m_run.Records.push_back(record); }

    /// Writes the page beside the summary. Where something else has its name, that stays, and an empty path is
    /// returned. RuntimeError when the page cannot be written.
    std::filesystem::path Write(const akde::RangeOutcome& outcome);

private:
    const platform::Services& m_services;
    RangePageRun m_run;
};

/// The call that makes the run again.
std::vector<std::string> range_words(const RangePageRun& run);

}  // namespace wxl::results_page
