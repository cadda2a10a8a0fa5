#pragma once
#include "kde_tool/animal_fixes.h"
#include "kde_tool/animal_run.h"
#include "kde_tool/report_writer.h"
#include "platform/folder_lock.h"

#include <filesystem>
#include <memory>
#include <optional>
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

/// One press of the form's OK button: the whole batch, from the checks to "Processing complete.".
class AnalysisRun final : private IRunStages {
public:
    explicit AnalysisRun(frmKDE& form);

    /// Reports every fault in message boxes and never throws.
    RunOutcome Run();

private:
    enum class Outcome { kGoOn, kRefused, kCancelled };

    Outcome Start();
    bool SettingsAreUsable();
    bool ParseLists();
    bool GroupAnimals();
    void WarnOfMissingIds();
    bool TakeFolder();
    bool NamesAreFree();
    void OpenReport();
    Outcome AgreeOnBuffer();
    Outcome AgreeOnOverlaps();
    void RunAnimals();
    RunOutcome Finish();
    void TellBegin();
    void TellEnd(RunOutcome outcome);
    void Cancel();
    void DeleteRunFiles();
    void Stage(const std::string& status) override;
    void ShowProgress(double distributions);
    void Refuse(const std::string& text, const std::string& title = "Error");

    frmKDE& m_form;
    const platform::Services& m_services;
    RunFrame m_frame;
    GroupedFixes m_animals;
    AnalysisReport m_report;
    std::unique_ptr<platform::IFolderLock> m_lock;
    bool m_begun = false;     ///< observers were told of the run's begin and wait for its end
    std::size_t m_done = 0;   ///< distributions finished
    std::size_t m_stage = 0;  ///< stages of the present one begun
};

}  // namespace wxl::kde_tool
