#pragma once
// A run: home ranges of all animals of a layer.

#include "akde/listener.h"
#include "akde/range_record.h"
#include "platform/services.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace wxl::akde {

/// What stands in the output folder under the names of the files that a run would write for these animals. Not what
/// all runs in it add to.
std::vector<std::filesystem::path> standing_outputs(const RangeSettings& settings, const TimedAnimals& animals,
                                                    const platform::Services& services);

/// Takes the output folder for a run, and sweeps what killed runs left half-written. RuntimeError 70 while another run
/// writes into it, and where a link stands in the place of a sub-folder.
std::unique_ptr<platform::IFolderLock> lock_output(const RangeSettings& settings, const TimedAnimals& animals,
                                                   const platform::Services& services);

/// Fits, smooths and writes animal by animal, and the summary at the end, of a stopped run too.
class RangeRun {
public:
    /// All outlive the object.
    RangeRun(const RangeSettings& settings, const platform::Services& services, IListener& listener)
        : m_settings(settings), m_services(services), m_listener(listener) {}

    /// `met` is told of every animal. RuntimeError 58 when a name is taken (and Overwrite is not set), 70 while another
    /// run writes into the folder; nothing is written then. A fault of one animal is its Reason.
    RangeOutcome Run(const TimedAnimals& animals, const std::function<void(const RangeRecord&)>& met);

    /// The grid of the full extent, which is that of all animals together: fits them all. One cell where none has a
    /// range.
    platform::RasterGeometry CommonGrid(const TimedAnimals& animals);

    /// Fits, smooths and writes one of the animals alone, of the full extent on the grid of the settings. With the
    /// outlines where the settings ask for a package.
    RangeRecord Compute(const TimedAnimal& animal, const TimedAnimals& animals);

private:
    /// An animal that waits for its grid.
    struct Prepared {
        RangeRecord Record;
        Smoothing Kernels;
    };
    Prepared Prepare(const TimedAnimal& animal, bool numberTimes) const;
    AnimalRange Smooth(const Prepared& prepared, const platform::RasterGeometry* grid) const;
    void Fail(RangeRecord& record, const std::string& reason) const;
    void Write(AnimalRange& range, RangeRecord& record, const platform::SpatialReference& reference) const;
    void Finish(Prepared& prepared, const platform::RasterGeometry* grid,
                const platform::SpatialReference& reference) const;
    const platform::RasterGeometry* GivenGrid() const;
    void ReportGrid(const RangeRecord& record) const;
    platform::RasterGeometry GridOf(const std::vector<Prepared>& all) const;
    std::vector<Prepared> PrepareAll(const TimedAnimals& animals, bool& stopped) const;

    const RangeSettings& m_settings;
    const platform::Services& m_services;
    IListener& m_listener;
};

}  // namespace wxl::akde
