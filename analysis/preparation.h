#pragma once
#include "analysis/animal_fixes.h"
#include "analysis/animal_run.h"
#include "analysis/report_writer.h"
#include "analysis/run_view.h"
#include "platform/folder_lock.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace wxl::analysis {

/// The first layer of this name, with points. RuntimeError 91 where it has none, or the map has no such layer.
platform::Layer point_layer(utilities::Utilities& geodata, const std::string& name);

/// The raster layer of this name. RuntimeError 91 where the map's first layer of the name is none.
std::shared_ptr<platform::IRasterLayer> reference_raster(utilities::Utilities& geodata, const std::string& name);

/// What a run decides once, before its first animal: checks, grouping, names, the head of the report, the settings
/// record, the questions.
///
/// Afterwards frame and animals are all that the distributions need: neither the view nor the point layer is asked any
/// more.
class Preparation {
public:
    enum class Outcome { kGoOn, kRefused, kCancelled };

    /// All outlive the object. The head of the report goes to `report`.
    Preparation(const platform::Services& services, utilities::Utilities& geodata, Settings settings, IRunView& view,
                IReportSink& report, IRunStages& stages);

    /// Shows refusals and questions; RuntimeError where the run cannot be prepared.
    Outcome Prepare();

    const RunFrame& Frame() const { return m_frame; }
    const GroupedFixes& Animals() const { return m_animals; }

    /// Puts the settings record of an earlier run back into its place, or deletes this run's where there was none;
    /// nothing before this run wrote its own.
    void TakeBackRecord();

    /// The lock of the output folder, held until it is given up; null before Prepare came to it.
    std::unique_ptr<platform::IFolderLock>& Lock() { return m_lock; }

private:
    bool SettingsAreUsable();
    bool GroupAnimals();
    bool DescribeLayer();
    void WarnOfMissingIds() const;
    bool TakeFolder();
    bool NamesAreFree();
    void OpenReport();
    void WriteRecord();
    Outcome AgreeOnBuffer();
    Outcome AgreeOnOverlaps();
    void Refuse(const std::string& text, const std::string& title = "Error") const;

    const platform::Services& m_services;
    utilities::Utilities& m_geodata;
    IRunView& m_view;
    IReportSink& m_report;
    IRunStages& m_stages;
    RunFrame m_frame;
    GroupedFixes m_animals;
    bool m_recordWritten = false;
    std::optional<std::string> m_earlierRecord;  ///< the settings record that stood before this run's
    std::unique_ptr<platform::IFolderLock> m_lock;
};

}  // namespace wxl::analysis
