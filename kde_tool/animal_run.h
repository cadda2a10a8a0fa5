#pragma once
#include "kde_tool/animal_fixes.h"
#include "kde_tool/report_writer.h"
#include "kde_tool/run_inputs.h"
#include "kde_tool/run_record.h"
#include "platform/controls.h"
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

namespace wxl::kde_tool {

/// What all distributions of a run share.
struct RunFrame {
    RunInputs Inputs;
    bool TextIds = false;
    std::vector<double> Values;       ///< bandwidths or proportions; one 0 for the other methods
    std::vector<double> Percentages;  ///< isopleths
    double CellSize = 0.0;            ///< map units, as typed; 0 where none was typed
    double ScalingFactor = 0.0;
    double Buffer = 0.0;                                      ///< map units, after the buffer question
    platform::Extent LayerExtent;                             ///< full extent of the point layer
    platform::SpatialReference Reference;                     ///< of the point layer
    std::shared_ptr<platform::IRasterLayer> ReferenceRaster;  ///< extent of a reference layer only
    std::filesystem::path Folder;
    std::string RasterFormat = "GRID";
};

/// Where a run writes the datasets of the animals of a sub-folder; the output folder itself for an empty one.
std::filesystem::path output_folder(const RunFrame& frame, const std::string& subfolder);

/// Where a run is watched: shows its stages (status box, progress bar, a turn for the host).
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
              IReportSink& report, IRunStages& stages, platform::ProgressBar& progress)
        : m_services(services),
          m_geodata(geodata),
          m_frame(frame),
          m_report(report),
          m_stages(stages),
          m_progress(progress) {}

    /// Computes and writes the distribution of `animal` for the value at `index` of the frame's values.
    AnimalRecord Compute(const AnimalFixes& animal, std::size_t index);

private:
    void MakeSubfolder(const std::string& subfolder) const;
    void Configure(engine::clsKernelCalculator& calculator, const AnimalFixes& animal) const;
    void SetFullExtent(engine::clsKernelCalculator& calculator) const;
    static void SetSmallestExtent(engine::clsKernelCalculator& calculator, const AnimalFixes& animal, double margin);
    void ChooseBandwidth(engine::clsKernelCalculator& calculator, double value);
    void ShowWarnings(const AnimalRecord& record) const;
    std::shared_ptr<platform::IRasterDataset> ComputeRaster(const AnimalFixes& animal, std::size_t index,
                                                            AnimalRecord& record);
    void DrawIsopleths(const std::shared_ptr<platform::IRasterDataset>& raster, AnimalRecord& record);
    void TakeIsopleths(const isopleths::clsHISO& isopleths, AnimalRecord& record) const;
    void AddFile(const std::string& name, AnimalRecord& record) const;

    const platform::Services& m_services;
    utilities::Utilities& m_geodata;
    const RunFrame& m_frame;
    IReportSink& m_report;
    IRunStages& m_stages;
    platform::ProgressBar& m_progress;
};

}  // namespace wxl::kde_tool
