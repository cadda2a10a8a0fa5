#pragma once
#include "akde/listener.h"
#include "akde/range_package.h"
#include "akde/range_record.h"
#include "analysis/summary_file.h"
#include "platform/services.h"

namespace wxl::akde {

/// What a run makes of the records of its animals, in their order: the summary, and the package where it is asked for.
class RangeResults {
public:
    /// All outlive the object.
    RangeResults(const RangeSettings& settings, const platform::Services& services, IListener& listener,
                 const TimedAnimals& animals);

    /// Takes the record of the next animal; it comes back without its outlines.
    RangeRecord Add(RangeRecord record);

    /// Writes the files. Rows of earlier runs stay, but for those of rasters that the run made anew. The listener hears
    /// of files that are something else and stay, and what becomes of the package, which stays as it was where files of
    /// an animal could not be written. RuntimeError when the summary cannot be read or written.
    RangeOutcome Publish(bool stopped);

private:
    void PublishSummary();
    void PublishPackage();

    const RangeSettings& m_settings;
    IListener& m_listener;
    analysis::SummaryFile m_summary;
    RangePackage m_package;
    RangeOutcome m_outcome;
};

}  // namespace wxl::akde
