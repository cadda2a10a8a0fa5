#pragma once
#include "akde/listener.h"
#include "akde/range_package.h"
#include "akde/range_record.h"
#include "akde/range_summary.h"
#include "platform/services.h"

#include <filesystem>

namespace wxl::akde {

/// What a run makes of the records of its animals, in their order: the summary, and the package where it is asked for.
class RangeResults {
public:
    /// All outlive the object.
    RangeResults(const RangeSettings& settings, const platform::Services& services, IListener& listener,
                 const TimedAnimals& animals);

    /// Takes the record of the next animal; it comes back without its outlines.
    RangeRecord Add(RangeRecord record);

    /// Writes the files; the listener hears what becomes of the package, which stays as it was where files of an animal
    /// could not be written. RuntimeError when the summary cannot be written.
    RangeOutcome Publish(bool stopped);

private:
    void PublishPackage();

    const platform::Services& m_services;
    IListener& m_listener;
    RangeSummary m_summary;
    RangePackage m_package;
    RangeOutcome m_outcome;
};

}  // namespace wxl::akde
