#pragma once
#include "analysis/animal_run.h"
#include "analysis/report_lines.h"
#include "batch/task_packing.h"
#include "platform/file_system.h"
#include "platform/values.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace wxl::batch {

/// The folder of a batch, inside the output folder.
inline constexpr const char* kBatchFolder = "wxl_batch";

/// The files of a batch.
struct BatchFiles {
    explicit BatchFiles(const std::filesystem::path& output) : Folder(output / kBatchFolder) {}

    std::filesystem::path Plan() const { return Folder / "plan.json"; }
    std::filesystem::path Points() const { return Folder / "points.bin"; }
    std::filesystem::path Times() const { return Folder / "times.bin"; }  ///< of the points, where they count
    std::filesystem::path Merge() const { return Folder / "merge.json"; }
    std::filesystem::path Tasks() const { return Folder / "tasks"; }
    std::filesystem::path Logs() const { return Folder / "logs"; }

    /// Of the task `number`, from 1.
    std::filesystem::path Task(std::size_t number) const { return Tasks() / std::to_string(number); }
    std::filesystem::path Started(std::size_t number) const { return Task(number) / "started.json"; }
    std::filesystem::path Result(std::size_t number) const { return Task(number) / "result.json"; }
    std::filesystem::path Failure(std::size_t number) const { return Task(number) / "failed.json"; }

    std::filesystem::path Folder;
};

/// A file that the input consists of, as it was when the batch was planned.
struct InputFile {
    std::string Path;
    std::uint64_t Bytes = 0;
    std::int64_t Modified = 0;  ///< seconds since 1970
    std::string Sha256;         ///< as sha256sum prints it
    friend bool operator==(const InputFile&, const InputFile&) = default;
};

struct PlannedAnimal {
    platform::FieldValue Id;
    std::string NamingId;
    std::string Subfolder;
    std::int64_t StepsBack = 0;                         ///< as AnimalFixes::StepsBack
    tracking_times::TimeFacts Times = {};               ///< as AnimalFixes::Times
    std::optional<analysis::PositionError> Error = {};  ///< as AnimalFixes::Error
    friend bool operator==(const PlannedAnimal&, const PlannedAnimal&) = default;
};

struct PlannedTask {
    TaskWork Work;
    double Seconds = 0.0;    ///< estimated, on one core of 2020
    double Megabytes = 0.0;  ///< estimated, of its largest grid or search, and sample
    friend bool operator==(const PlannedTask&, const PlannedTask&) = default;
};

/// What the plan of every batch tells, whatever its tasks compute.
struct PlanHead {
    std::string Id;                ///< tells this batch from every other
    std::string Program;           ///< version of the program that planned it
    std::string Planned;           ///< date and time
    std::filesystem::path Folder;  ///< the output folder
    std::vector<InputFile> Input;
    std::vector<PlannedTask> Tasks;

    /// The distributions of all tasks.
    std::size_t Distributions() const;
    friend bool operator==(const PlanHead&, const PlanHead&) = default;
};

/// A prepared run of kernel densities, with its animals as they stand in the store of points.
struct PlannedRun {
    analysis::RunFrame Frame;            ///< writes into the plan's Folder
    std::vector<PlannedAnimal> Animals;  ///< in the order of the run and of the store
    bool NullGeometry = false;           ///< as GroupedFixes::NullGeometry
    std::int64_t WithoutId = 0;          ///< as GroupedFixes::WithoutId
    analysis::Lines ReportHead;
    bool ToldWhole = false;  ///< people are told days, cells and areas with their units
};

/// All that is decided once of a run of kernel densities, so that tasks need neither the input nor a question answered.
struct Plan : PlanHead, PlannedRun {
    std::size_t ValueCount() const { return Frame.Values.size(); }
    std::size_t DistributionCount() const { return Animals.size() * ValueCount(); }
};

PlannedAnimal planned(const analysis::AnimalFixes& animal);

/// The animal as it was before it was planned, with its fixes.
analysis::AnimalFixes unplanned(const PlannedAnimal& animal, std::vector<platform::Point> fixes);

/// Publishes the plan.
void write_plan(platform::IFileSystem& files, const BatchFiles& batch, const Plan& plan);

/// The plan of the batch in `output`, whose frame writes into that folder. RuntimeError 53 when there is none, 57 for
/// one that cannot be used, or that another version of the program wrote.
Plan read_plan(const platform::IFileSystem& files, const std::filesystem::path& output);

/// RuntimeError 70 when a link stands where the batch or its animals have a folder in the output folder, so that what
/// is written there would go elsewhere.
void refuse_links(const platform::IFolders& folders, const PlanHead& plan, const std::vector<std::string>& subfolders);
void refuse_links(const platform::IFolders& folders, const Plan& plan);

/// The distinct sub-folders of the output folder, in the order of the animals.
std::vector<std::string> subfolders_of(const Plan& plan);

}  // namespace wxl::batch
