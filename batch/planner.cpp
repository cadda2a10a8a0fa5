#include "batch/planner.h"

#include "analysis/dry_run.h"
#include "analysis/output_names.h"
#include "batch/point_store.h"
#include "batch/sha256.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace wxl::batch {
namespace {

constexpr double kMegabytesPerFix = 64e-6;  ///< a sample, its copies and its search

std::vector<analysis::ComingDistribution> distributions_of(const analysis::PreparedRun& run) {
    const analysis::RunFrame& frame = run.Frame;
    const auto reference = frame.ReferenceRaster ? frame.ReferenceRaster->Geometry() : platform::RasterGeometry();
    return analysis::dry_run(analysis::estimate_frame(frame.Wanted, frame.LayerExtent, reference), run.Animals.Animals);
}

/// A distribution of too many cells fails at once.
double seconds_of(const analysis::DistributionEstimate& estimate) {
    return analysis::is_too_large(estimate) ? 0.0 : estimate.Seconds;
}

double megabytes_of(const analysis::DistributionEstimate& estimate) {
    return analysis::is_too_large(estimate) ? 0.0 : estimate.Megabytes;
}

std::vector<PlannedTask> tasks_of(const analysis::PreparedRun& run, std::size_t wanted) {
    const auto distributions = distributions_of(run);
    std::vector<double> seconds;
    double total = 0.0;
    for (const auto& distribution : distributions) {
        seconds.push_back(seconds_of(distribution.Cost));
        total += seconds.back();
    }
    std::vector<PlannedTask> tasks;
    for (TaskWork& work : pack_tasks(seconds, wanted == 0 ? usual_task_count(total) : wanted)) {
        PlannedTask task;
        for (const std::size_t distribution : work) {
            const auto& animal = run.Animals.Animals[distribution / run.Frame.Values.size()];
            task.Seconds += seconds[distribution];
            task.Megabytes = std::max(task.Megabytes, megabytes_of(distributions[distribution].Cost) +
                                                          static_cast<double>(animal.Fixes.size()) * kMegabytesPerFix);
        }
        task.Work = std::move(work);
        tasks.push_back(std::move(task));
    }
    return tasks;
}

/// Digest over when, where and what, so that results of another plan are recognised.
std::string id_of(const PlanHead& plan, const platform::IClock& clock) {
    Sha256 hash;
    hash.Add(plan.Folder.string() + plan.Planned);
    hash.Add(std::to_string(clock.Steady().count()));
    for (const InputFile& file : plan.Input) hash.Add(file.Sha256);
    return hash.Digest().substr(0, 16);
}

/// Bound by name and number: what is new in a prepared run does not compile until the plan keeps it too.
PlannedRun planned(const analysis::PreparedRun& run, bool toldWhole) {
    const auto& [frame, grouped, reportHead] = run;
    const auto& [animals, textIds, nullGeometry, withoutId] = grouped;
    PlannedRun kept{.Frame = frame,
                    .Animals = {},
                    .NullGeometry = nullGeometry,
                    .WithoutId = withoutId,
                    .ReportHead = reportHead,
                    .ToldWhole = toldWhole};
    for (const analysis::AnimalFixes& animal : animals) kept.Animals.push_back(batch::planned(animal));
    return kept;
}

/// A task may replace what it wrote before, and nothing else: nothing of these names may stand when the batch begins.
void check_names_are_free(const platform::Services& services, const analysis::PreparedRun& run) {
    const auto standing =
        analysis::standing_outputs(*services.Files, run.Frame.Wanted, run.Frame.Folder, run.Animals.Animals);
    if (!standing.empty())
        platform::Raise(platform::error_number::kFileExists,
                        standing.front().front().string() +
                            " stands in the output folder already. Please use a new, empty folder.");
}

void make_folder(const platform::Services& services, const std::filesystem::path& folder) {
    platform::MakeOwnFolder(*services.Files, *services.Folders, folder);
}

InputFile described(const platform::IFileSystem& files, const std::filesystem::path& file,
                    const platform::FileFacts& facts) {
    try {
        return {.Path = facts.Place.string(),
                .Bytes = facts.Bytes,
                .Modified = facts.Modified,
                .Sha256 = sha256_of(*files.OpenForReading(file))};
    } catch (const platform::RuntimeError&) {
        platform::Raise(platform::error_number::kDeviceIo, file.string() + " cannot be read.");
    }
}

/// The files of the folder, or the file and what stands beside it as parts of a shapefile.
std::vector<std::filesystem::path> candidates(const platform::IFileSystem& files, const std::filesystem::path& input) {
    std::vector<std::filesystem::path> found;
    if (files.FolderExists(input)) {
        for (const std::string& name : files.List(input)) found.push_back(input / name);
        return found;
    }
    found.push_back(input);
    static constexpr std::array<std::string_view, 4> kParts = {".dbf", ".shx", ".prj", ".cpg"};
    if (input.extension() == ".shp")
        for (const std::string_view part : kParts)
            found.push_back(std::filesystem::path(input).replace_extension(part));
    std::sort(found.begin(), found.end());
    return found;
}

}  // namespace

std::vector<InputFile> input_files(const platform::IFileSystem& files, const std::filesystem::path& input) {
    std::vector<InputFile> found;
    for (const std::filesystem::path& file : candidates(files, input))
        if (const auto facts = files.FactsOf(file)) found.push_back(described(files, file, *facts));
    return found;
}

std::vector<analysis::Dataset> datasets_of(const Plan& plan, std::size_t distribution) {
    const analysis::Settings& settings = plan.Frame.Wanted;
    const PlannedAnimal& animal = plan.Animals.at(distribution / plan.ValueCount());
    return analysis::datasets_of(
        settings, analysis::raster_name(settings, animal.NamingId, distribution % plan.ValueCount() + 1));
}

void remove_batch(const platform::Services& services, const std::filesystem::path& output) {
    const BatchFiles batch(output);
    // What a link of that name leads to is no batch of this folder.
    if (services.Folders->IsLink(batch.Folder)) return services.Files->DeleteFile(batch.Folder, true);
    // Without its plan the rest is no batch any more.
    if (services.Files->FileExists(batch.Plan())) services.Files->DeleteFile(batch.Plan(), true);
    if (services.Files->FolderExists(batch.Folder)) services.Folders->DeleteTree(batch.Folder);
}

void begin_plan(const platform::Services& services, const std::filesystem::path& folder, const PlanWishes& wishes,
                PlanHead& plan) {
    plan.Folder = folder;
    plan.Program = wishes.Program;
    plan.Planned = platform::DateTimeText(services.Clock->Now());
    plan.Input = input_files(*services.Files, wishes.Input);
    plan.Id = id_of(plan, *services.Clock);
}

void make_folders(const platform::Services& services, const PlanHead& plan,
                  const std::vector<std::string>& subfolders) {
    const BatchFiles batch(plan.Folder);
    make_folder(services, batch.Folder);
    make_folder(services, batch.Tasks());
    make_folder(services, batch.Logs());
    for (const std::string& subfolder : subfolders) make_folder(services, plan.Folder / subfolder);
}

Plan plan_batch(const platform::Services& services, const analysis::PreparedRun& run, const PlanWishes& wishes) {
    const BatchFiles batch(run.Frame.Folder);
    Plan plan;
    begin_plan(services, run.Frame.Folder, wishes, plan);
    static_cast<PlannedRun&>(plan) = planned(run, wishes.ToldWhole);
    check_names_are_free(services, run);
    plan.Tasks = tasks_of(run, wishes.Tasks);
    remove_batch(services, run.Frame.Folder);
    make_folders(services, plan, subfolders_of(plan));
    write_point_store(*services.Files, batch.Points(), run.Animals.Animals);
    write_plan(*services.Files, batch, plan);
    return plan;
}

}  // namespace wxl::batch
