#pragma once
#include "kde_tool/animal_fixes.h"
#include "kde_tool/animal_run.h"
#include "kde_tool/report_writer.h"
#include "kde_tool/standing_outputs.h"
#include "platform/folder_lock.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace wxl::kde_tool {

class frmKDE;

/// Names of the two text files of a run, joined to the output folder as files in it.
inline constexpr const char* kReportFile = "\\WXL_KDE_ANALYSIS.txt";
inline constexpr const char* kSettingsRecordFile = "\\WXL_KERNEL_SETTINGS.txt";

/// "\NAME" in `folder`, with the system's separator.
std::filesystem::path file_in_folder(const std::filesystem::path& folder, const char* name);

/// The form's choices as they stand now.
RunInputs inputs_of(const frmKDE& form);

/// The raster layer of this name. RuntimeError 91 where the map's first layer of the name is none.
std::shared_ptr<platform::IRasterLayer> reference_raster(const frmKDE& form, const std::string& name);

/// What in the output folder keeps a run from starting, each with its sub-folder before it: rasters named prefix and
/// naming ID, and whatever stands under a name that the run is to give, lone side files among them.
std::vector<std::string> taken_names(const platform::Services& services, const OutputPlace& place,
                                     const RunInputs& inputs, std::span<const AnimalFixes> animals);

/// What a run decides once, before its first animal: checks, grouping, names, the head of the report, the settings
/// record, the questions.
///
/// Afterwards frame and animals are all that the distributions need: the form and the point layer are no longer asked.
class RunPreparation {
public:
    enum class Outcome { kGoOn, kRefused, kCancelled };

    /// All outlive the object. The head of the report goes to `report`.
    RunPreparation(frmKDE& form, IReportSink& report, IRunStages& stages);

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
    bool ParseLists();
    bool GroupAnimals();
    void WarnOfMissingIds() const;
    bool TakeFolder();
    bool NamesAreFree();
    void OpenReport();
    void WriteRecord();
    Outcome AgreeOnBuffer();
    Outcome AgreeOnOverlaps();
    void Refuse(const std::string& text, const std::string& title = "Error") const;

    frmKDE& m_form;
    const platform::Services& m_services;
    IReportSink& m_report;
    IRunStages& m_stages;
    RunFrame m_frame;
    GroupedFixes m_animals;
    bool m_recordWritten = false;
    std::optional<std::string> m_earlierRecord;  ///< the settings record that stood before this run's
    std::unique_ptr<platform::IFolderLock> m_lock;
};

}  // namespace wxl::kde_tool
