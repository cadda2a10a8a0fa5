#pragma once
#include "analysis/animal_fixes.h"
#include "analysis/record.h"
#include "analysis/report_writer.h"
#include "analysis/settings.h"
#include "platform/map.h"
#include "platform/services.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace wxl::engine {
class clsKernelCalculator;
}
namespace wxl::isopleths {
class clsHISO;
}
namespace wxl::utilities {
class Utilities;
}

namespace wxl::analysis {

/// What all distributions of a run share: its settings, and what was decided before the first of them.
struct RunFrame {
    Settings Wanted;                         ///< with the buffer after its question
    std::string Source;                      ///< of the point layer, PATH or PATH:LAYER; empty: no file that is known
    std::vector<std::string> SourceOptions;  ///< that make the layer of a tracking file
    bool TextIds = false;
    std::vector<double> Values;            ///< bandwidths or proportions; one 0 for the other methods
    platform::Extent LayerExtent;          ///< of the points of the layer; full extent only
    platform::SpatialReference Reference;  ///< of the point layer
    std::shared_ptr<platform::IRasterLayer> ReferenceRaster;  ///< extent of a reference layer only
    std::filesystem::path Folder;

    double ScalingFactor() const { return Wanted.ScalingFactor.Value.value_or(0.0); }
};

/// Where a run is watched: shows its stages, with a turn for the host.
class IRunStages {
public:
    virtual ~IRunStages() = default;
    virtual void Stage(const std::string& status) = 0;

    /// Whether the warnings of single animals stay out of message boxes; asked for each animal.
    virtual bool Silent() const = 0;
};

/// One distribution of one animal: bandwidth, kernel, raster, report block, isopleths.
///
/// What the calculator or the isopleth object cannot do is told in the report and the record, and the batch goes on;
/// a raster or report that cannot be written throws RuntimeError.
class AnimalRun {
public:
    /// All outlive the object.
    AnimalRun(const platform::Services& services, utilities::Utilities& geodata, const RunFrame& frame,
              IReportSink& report, IRunStages& stages)
        : m_services(services), m_geodata(geodata), m_frame(frame), m_report(report), m_stages(stages) {}

    /// Computes and writes the distribution of `animal` for the value at `index` of the frame's values.
    AnimalRecord Compute(const AnimalFixes& animal, std::size_t index);

private:
    void MakeSubfolder(const std::string& subfolder) const;
    void Configure(engine::clsKernelCalculator& calculator, const AnimalFixes& animal) const;
    void FitCells(engine::clsKernelCalculator& calculator, const AnimalFixes& animal, double value,
                  double radius) const;
    void SetFullExtent(engine::clsKernelCalculator& calculator) const;
    static void SetSmallestExtent(engine::clsKernelCalculator& calculator, const AnimalFixes& animal, double margin);
    void ChooseBandwidth(engine::clsKernelCalculator& calculator, double value);
    comparison::AdHocBandwidth ShrinkWhileWhole(engine::clsKernelCalculator& calculator, const AnimalFixes& animal);
    void ShowWarnings(const AnimalRecord& record) const;
    std::shared_ptr<platform::IRasterDataset> ComputeRaster(const AnimalFixes& animal, std::size_t index,
                                                            AnimalRecord& record);
    void DrawIsopleths(const std::shared_ptr<platform::IRasterDataset>& raster, AnimalRecord& record);
    void TakeIsopleths(const isopleths::clsHISO& isopleths, AnimalRecord& record) const;
    std::filesystem::path Folder(const AnimalRecord& record) const;

    const platform::Services& m_services;
    utilities::Utilities& m_geodata;
    const RunFrame& m_frame;
    IReportSink& m_report;
    IRunStages& m_stages;
};

}  // namespace wxl::analysis
