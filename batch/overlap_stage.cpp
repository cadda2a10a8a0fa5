#include "batch/overlap_stage.h"

#include "batch/json_codec.h"
#include "batch/plan_codec.h"
#include "batch/sha256.h"
#include "platform/clock.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <array>
#include <bit>
#include <chrono>
#include <cstring>
#include <limits>
#include <memory>
#include <string_view>
#include <utility>

namespace wxl::batch {
namespace {

namespace error_number = platform::error_number;
using comparison::PairTotals;
using comparison::RangeTotals;
using comparison::RowSums;

constexpr std::string_view kMagic = "WXLROWS1";
constexpr std::uint64_t kLargestSums = 1ULL << 40U;
constexpr int kLockAttempts = 40;
constexpr std::chrono::milliseconds kLockPause{50};
constexpr std::int64_t kMostTasks = 1'000'000;
constexpr const char* kPlanAnew = "Plan the comparison anew: wxl batch overlap DIR --tasks N.";

std::filesystem::path sums_of(const BatchFiles& stage, std::size_t number) {
    return stage.Task(number) / "sums.bin";
}

std::filesystem::path wish_of(const BatchFiles& stage) {
    return stage.Folder / "wish.json";
}

std::string advice_for(std::size_t number) {
    return "Run the task again: wxl batch overlap DIR --task " + std::to_string(number) + " --again.";
}

[[noreturn]] void refuse_sums(const BatchFiles& stage, std::size_t number) {
    platform::Raise(error_number::kDeviceIo,
                    sums_of(stage, number).string() + " cannot be used. " + advice_for(number));
}

/// Numbers one after another, as the machine has them.
class Bytes {
public:
    template <class Number>
    void Put(Number number) {
        static_assert(std::endian::native == std::endian::little);
        const std::size_t at = m_text.size();
        m_text.resize(at + sizeof number);
        std::memcpy(m_text.data() + at, &number, sizeof number);
    }
    void Put(const PairTotals& totals) {
        const auto& [agreement, volumeI, volumeJ] = totals;
        const auto& [affinity, shared, product, distance] = agreement;
        for (const double value : {affinity, shared, product, distance, volumeI, volumeJ}) Put(value);
    }
    void Put(const RangeTotals& range) {
        const auto& [commonCells, jInRangeOfI, iInRangeOfJ, conditional, jInBoth, iInBoth] = range;
        Put(commonCells);
        Put(jInRangeOfI);
        Put(iInRangeOfJ);
        Put(conditional);
        Put(jInBoth);
        Put(iInBoth);
    }
    void Put(const RowSums& row) {
        const auto& [place, sums] = row;
        const auto& [i, j, whole, ranges] = sums;
        for (const std::uint32_t number : {place, i, j}) Put(number);
        Put(whole);
        for (const RangeTotals& range : ranges) Put(range);
    }

    std::string Taken() { return std::move(m_text); }

private:
    std::string m_text = std::string(kMagic);
};

/// And back; Good turns false where they end too early.
class Reader {
public:
    explicit Reader(std::string_view text) : m_text(text), m_good(text.starts_with(kMagic)) {
        m_text.remove_prefix(std::min(m_text.size(), kMagic.size()));
    }

    template <class Number>
    void Get(Number& number) {
        m_good = m_good && m_text.size() >= sizeof number;
        if (!m_good) return;
        std::memcpy(&number, m_text.data(), sizeof number);
        m_text.remove_prefix(sizeof number);
    }
    void Get(PairTotals& totals) {
        auto& [agreement, volumeI, volumeJ] = totals;
        auto& [affinity, shared, product, distance] = agreement;
        for (double* value : {&affinity, &shared, &product, &distance, &volumeI, &volumeJ}) Get(*value);
    }
    void Get(RangeTotals& range) {
        auto& [commonCells, jInRangeOfI, iInRangeOfJ, conditional, jInBoth, iInBoth] = range;
        Get(commonCells);
        Get(jInRangeOfI);
        Get(iInRangeOfJ);
        Get(conditional);
        Get(jInBoth);
        Get(iInBoth);
    }
    RowSums Row(std::size_t percents) {
        RowSums row;
        auto& [place, sums] = row;
        auto& [i, j, whole, ranges] = sums;
        for (std::uint32_t* number : {&place, &i, &j}) Get(*number);
        Get(whole);
        ranges.resize(percents);
        for (RangeTotals& range : ranges) Get(range);
        return row;
    }

    bool Good() const { return m_good; }
    bool AtEnd() const { return m_text.empty(); }

private:
    std::string_view m_text;
    bool m_good;
};

Json json_of_plan(const OverlapPlan& plan) {
    const auto& [program, planned, percents, conditional, normalise, scaling, typedPercents, typedScaling, grid,
                 animals, volumes, tasks] = plan;
    Json rows = Json::array();
    for (const auto& [first, end] : tasks) rows.push_back({first, end});
    return {{"program", program},
            {"planned", planned},
            {"percents", json_of_doubles(percents)},
            {"conditional", conditional},
            {"normalise", normalise},
            {"scaling", json_of_double(scaling)},
            {"typed_percents", json_of_text(typedPercents)},
            {"typed_scaling", json_of_text(typedScaling)},
            {"grid", json_of_grid(grid)},
            {"animals", json_of_texts(animals)},
            {"volumes", json_of_doubles(volumes)},
            {"tasks", std::move(rows)}};
}

std::vector<TileRowTask> tasks_of(const Json& json) {
    constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
    std::vector<TileRowTask> tasks;
    for (const Json& task : json)
        tasks.push_back({.First = static_cast<std::uint32_t>(whole_of(task.at(0), 0, kMost)),
                         .End = static_cast<std::uint32_t>(whole_of(task.at(1), 0, kMost))});
    return tasks;
}

OverlapPlan plan_of(const Json& json) {
    OverlapPlan plan{.Program = json.at("program").get<std::string>(),
                     .Planned = json.at("planned").get<std::string>(),
                     .Percents = doubles_of(json.at("percents")),
                     .Conditional = json.at("conditional").get<bool>(),
                     .Normalise = json.at("normalise").get<bool>(),
                     .Scaling = double_of(json.at("scaling")),
                     .TypedPercents = text_of(json.at("typed_percents")),
                     .TypedScaling = text_of(json.at("typed_scaling")),
                     .Grid = grid_of(json.at("grid")),
                     .Animals = texts_of(json.at("animals")),
                     .Volumes = doubles_of(json.at("volumes")),
                     .Tasks = tasks_of(json.at("tasks"))};
    if (plan.Volumes.size() != plan.Animals.size() || plan.Percents.empty())
        platform::Raise(error_number::kInvalidCall, "other values");
    return plan;
}

std::unique_ptr<platform::IFolderLock> lock_task(const platform::Services& services, const BatchFiles& stage,
                                                 std::size_t number) {
    std::string holder;
    for (int attempt = 0; attempt < kLockAttempts; ++attempt) {
        if (auto lock = services.Locks->Take(stage.Task(number), holder)) return lock;
        services.Clock->Wait(kLockPause);
    }
    platform::Raise(error_number::kPermissionDenied,
                    "task " + std::to_string(number) + " runs already (" + holder + ")");
}

/// The digest that the result of a task names; nothing where it belongs to another plan.
std::string digest_of_result(const platform::IFileSystem& files, const BatchFiles& stage, const OverlapPlan& plan,
                             std::size_t number) {
    std::string digest;
    read_json(files, stage.Result(number), advice_for(number), [&](const Json& json) {
        if (json.at("batch").get<std::string>() != plan.Id())
            platform::Raise(error_number::kInvalidCall, "it belongs to another plan");
        digest = json.at("sha256").get<std::string>();
    });
    return digest;
}

std::vector<RowSums> read_sums(const platform::IFileSystem& files, const BatchFiles& stage, const OverlapPlan& plan,
                               std::size_t number) {
    const std::string digest = digest_of_result(files, stage, plan, number);
    if (!files.FileExists(sums_of(stage, number))) refuse_sums(stage, number);
    const std::string bytes = files.ReadFile(sums_of(stage, number), kLargestSums);
    Sha256 sum;
    sum.Add(bytes);
    Reader reader(bytes);
    if (sum.Digest() != digest || !reader.Good()) refuse_sums(stage, number);
    std::vector<RowSums> rows;
    while (reader.Good() && !reader.AtEnd()) rows.push_back(reader.Row(plan.Percents.size()));
    const auto fits = [&](const RowSums& row) {
        return row.Row >= plan.Tasks[number - 1].First && row.Row < plan.Tasks[number - 1].End &&
               row.Sums.I <= row.Sums.J && row.Sums.J < plan.Animals.size();
    };
    if (!reader.Good() || !std::ranges::all_of(rows, fits)) refuse_sums(stage, number);
    return rows;
}

bool is_done(const platform::IFileSystem& files, const BatchFiles& stage, const OverlapPlan& plan, std::size_t number) {
    if (!files.FileExists(stage.Result(number))) return false;
    try {
        read_sums(files, stage, plan, number);
    } catch (const platform::RuntimeError&) {
        return false;
    }
    return true;
}

/// Whether a result that stands is one of this plan.
bool is_of_plan(const platform::IFileSystem& files, const BatchFiles& stage, const OverlapPlan& plan,
                std::size_t number) {
    try {
        digest_of_result(files, stage, plan, number);
    } catch (const platform::RuntimeError&) {
        return false;
    }
    return true;
}

}  // namespace

std::string OverlapPlan::Id() const {
    OverlapPlan timeless = *this;
    timeless.Planned.clear();
    Sha256 sum;
    sum.Add(json_of_plan(timeless).dump());
    return sum.Digest();
}

BatchFiles overlap_files(const std::filesystem::path& output) {
    BatchFiles stage(output);
    stage.Folder /= "overlap";
    return stage;
}

std::vector<TileRowTask> row_tasks(const platform::RasterGeometry& grid, std::size_t tasks) {
    const std::size_t rows = comparison::tile_rows(grid);
    const std::size_t count = std::clamp<std::size_t>(tasks, 1, std::max<std::size_t>(rows, 1));
    std::vector<TileRowTask> cut;
    for (std::size_t i = 0; i < count; ++i)
        cut.push_back(
            {static_cast<std::uint32_t>(rows * i / count), static_cast<std::uint32_t>(rows * (i + 1) / count)});
    return cut;
}

void write_wish(const platform::Services& services, const BatchFiles& stage, const OverlapWish& wish) {
    for (const std::filesystem::path& folder : {stage.Folder.parent_path(), stage.Folder, stage.Tasks(), stage.Logs()})
        platform::MakeOwnFolder(*services.Files, *services.Folders, folder);
    for (const std::filesystem::path& before : {stage.Merge(), stage.Plan()})
        if (services.Files->FileExists(before)) services.Files->DeleteFile(before, true);
    const auto& [tasks, words] = wish;
    write_json(*services.Files, wish_of(stage), {{"tasks", tasks}, {"words", json_of_texts(words)}});
}

std::optional<OverlapWish> read_wish(const platform::IFileSystem& files, const BatchFiles& stage) {
    if (!files.FileExists(wish_of(stage))) return std::nullopt;
    OverlapWish wish;
    read_json(files, wish_of(stage), kPlanAnew, [&](const Json& json) {
        wish = {.Tasks = static_cast<std::size_t>(whole_of(json.at("tasks"), 1, kMostTasks)),
                .Words = texts_of(json.at("words"))};
    });
    return wish;
}

void write_plan(const platform::Services& services, const BatchFiles& stage, const OverlapPlan& plan) {
    for (const std::filesystem::path& folder : {stage.Folder.parent_path(), stage.Folder, stage.Tasks()})
        platform::MakeOwnFolder(*services.Files, *services.Folders, folder);
    write_json(*services.Files, stage.Plan(), json_of_plan(plan));
}

OverlapPlan read_overlap_plan(const platform::IFileSystem& files, const BatchFiles& stage, const std::string& program) {
    if (!files.FileExists(stage.Plan()))
        platform::Raise(error_number::kFileNotFound,
                        stage.Plan().string() + " is missing: no comparison is planned there. " + kPlanAnew);
    OverlapPlan plan;
    read_json(files, stage.Plan(), kPlanAnew, [&](const Json& json) {
        plan = plan_of(json);
        if (plan.Program != program) platform::Raise(error_number::kInvalidCall, "another version of wxl wrote it");
    });
    return plan;
}

void check_rasters(const OverlapPlan& plan, const comparison::ComparedRanges& ranges) {
    bool same = ranges.Densities.Grid == plan.Grid && ranges.Animals.size() == plan.Animals.size();
    for (std::size_t i = 0; same && i < plan.Animals.size(); ++i)
        same = ranges.Animals[i].Name == plan.Animals[i] && ranges.Animals[i].Volume == plan.Volumes[i];
    if (!same)
        platform::Raise(error_number::kDeviceIo,
                        std::string("The rasters were changed since the comparison was planned. ") + kPlanAnew);
}

TaskOutcome run_overlap_task(const platform::Services& services, const BatchFiles& stage, const OverlapPlan& plan,
                             std::size_t number, bool again, const std::string& host,
                             const std::function<comparison::ComparedRanges()>& ranges,
                             const std::function<void(double)>& progress) {
    if (number == 0 || number > plan.Tasks.size())
        platform::Raise(error_number::kSubscript, "the comparison has the tasks 1 to " +
                                                      std::to_string(plan.Tasks.size()) + ", not " +
                                                      std::to_string(number));
    platform::IFileSystem& files = *services.Files;
    platform::MakeOwnFolder(files, *services.Folders, stage.Task(number));
    const auto own = lock_task(services, stage, number);
    if (!again && is_done(files, stage, plan, number)) return TaskOutcome::kWasDone;
    const std::string started = platform::DateTimeText(services.Clock->Now());
    const auto begin = services.Clock->Steady();
    for (const std::filesystem::path& mark : {stage.Result(number), stage.Failure(number)})
        if (files.FileExists(mark)) files.DeleteFile(mark, true);
    write_json(files, stage.Started(number), {{"started", started}, {"host", json_of_text(host)}});
    try {
        const comparison::ComparedRanges compared = ranges();
        check_rasters(plan, compared);
        const TileRowTask& rows = plan.Tasks[number - 1];
        Bytes bytes;
        for (const RowSums& row :
             comparison::row_sums(compared.Densities, plan.Conditional, rows.First, rows.End, progress))
            bytes.Put(row);
        const std::string text = bytes.Taken();
        Sha256 sum;
        sum.Add(text);
        platform::PublishFile(files, sums_of(stage, number), text);
        const double seconds = std::chrono::duration<double>(services.Clock->Steady() - begin).count();
        write_json(files, stage.Result(number),
                   {{"batch", plan.Id()},
                    {"started", started},
                    {"finished", platform::DateTimeText(services.Clock->Now())},
                    {"seconds", json_of_double(seconds)},
                    {"host", json_of_text(host)},
                    {"sha256", sum.Digest()}});
    } catch (...) {
        const platform::RuntimeError fault = platform::CurrentError();
        write_json(
            files, stage.Failure(number),
            {{"finished", platform::DateTimeText(services.Clock->Now())}, {"fault", json_of_text(fault.Description)}});
        throw platform::RuntimeError(fault);
    }
    return TaskOutcome::kDone;
}

TaskState overlap_task_state(const platform::Services& services, const BatchFiles& stage, const OverlapPlan& plan,
                             std::size_t number) {
    const TaskState state = state_of(*services.Files, *services.Locks, stage, number);
    const bool foreign = state.Stage == TaskStage::kDone && !is_of_plan(*services.Files, stage, plan, number);
    return foreign ? TaskState() : state;
}

std::vector<std::size_t> open_overlap_tasks(const platform::Services& services, const BatchFiles& stage,
                                            const OverlapPlan& plan) {
    std::vector<std::size_t> open;
    for (std::size_t task = 1; task <= plan.Tasks.size(); ++task) {
        const TaskStage state = overlap_task_state(services, stage, plan, task).Stage;
        if (state == TaskStage::kMissing || state == TaskStage::kFailed) open.push_back(task);
    }
    return open;
}

std::string unfinished_overlap(const platform::Services& services, const BatchFiles& stage, const OverlapPlan& plan) {
    std::vector<std::size_t> missing;
    std::vector<std::size_t> running;
    std::string failed;
    for (std::size_t task = 1; task <= plan.Tasks.size(); ++task) {
        const TaskState state = overlap_task_state(services, stage, plan, task);
        if (state.Stage == TaskStage::kMissing) missing.push_back(task);
        if (state.Stage == TaskStage::kRunning) running.push_back(task);
        if (state.Stage == TaskStage::kFailed)
            failed += (failed.empty() ? "failed " : ", failed ") + std::to_string(task) + " (" + state.Fault + ")";
    }
    std::string text;
    const auto add = [&](const std::string& part) { text += (text.empty() ? "" : ", ") + part; };
    if (!missing.empty()) add("missing " + number_ranges(missing));
    if (!running.empty()) add("running " + number_ranges(running));
    if (!failed.empty()) add(failed);
    return text;
}

std::vector<comparison::PairSums> added_tasks(const platform::IFileSystem& files, const BatchFiles& stage,
                                              const OverlapPlan& plan) {
    std::vector<RowSums> rows;
    for (std::size_t task = 1; task <= plan.Tasks.size(); ++task)
        for (RowSums& row : read_sums(files, stage, plan, task)) rows.push_back(std::move(row));
    return comparison::added_rows(std::move(rows));
}

}  // namespace wxl::batch
