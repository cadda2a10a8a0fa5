#include "batch/task_state.h"

#include "platform/runtime_error.h"

#include <utility>

namespace wxl::batch {
namespace {

std::string advice_for(std::size_t task) {
    return "Run the task again: wxl batch run DIR --task " + std::to_string(task) + " --again.";
}

/// What is read of a mark for a list; a mark that cannot be read leaves its members empty.
void read_mark(const platform::IFileSystem& files, const std::filesystem::path& file,
               const std::function<void(const Json&)>& read) {
    try {
        read_json(files, file, {}, read);
    } catch (const platform::RuntimeError&) {
        return;
    }
}

bool is_held(platform::IFolderLocks& locks, const std::filesystem::path& folder) {
    std::string holder;
    try {
        return locks.Take(folder, holder) == nullptr;
    } catch (const platform::RuntimeError&) {
        return false;
    }
}

}  // namespace

void write_entries(platform::IFileSystem& files, const BatchFiles& batch, std::size_t task, const TaskHead& head,
                   Json entries) {
    const auto& [plan, started, finished, seconds, host] = head;
    write_json(files, batch.Result(task),
               {{"batch", plan},
                {"started", started},
                {"finished", finished},
                {"seconds", json_of_double(seconds)},
                {"host", json_of_text(host)},
                {"entries", std::move(entries)}});
}

TaskHead read_entries(const platform::IFileSystem& files, const BatchFiles& batch, const PlanHead& plan,
                      std::size_t task, const std::function<std::size_t(const Json&)>& take) {
    TaskHead head;
    read_json(files, batch.Result(task), advice_for(task), [&](const Json& json) {
        head = {.Batch = json.at("batch").get<std::string>(),
                .Started = json.at("started").get<std::string>(),
                .Finished = json.at("finished").get<std::string>(),
                .Seconds = double_of(json.at("seconds")),
                .Host = text_of(json.at("host"))};
        TaskWork work;
        for (const Json& entry : json.at("entries")) work.push_back(take(entry));
        if (head.Batch != plan.Id || work != plan.Tasks.at(task - 1).Work)
            platform::Raise(platform::error_number::kInvalidCall, "it belongs to another plan");
    });
    return head;
}

void write_result(platform::IFileSystem& files, const BatchFiles& batch, std::size_t task, const TaskResult& result) {
    Json entries = Json::array();
    for (const TaskEntry& entry : result.Entries) entries.push_back(json_of_entry(entry));
    write_entries(files, batch, task, result, std::move(entries));
}

TaskResult read_result(const platform::IFileSystem& files, const BatchFiles& batch, const Plan& plan,
                       std::size_t task) {
    TaskResult result;
    static_cast<TaskHead&>(result) = read_entries(files, batch, plan, task, [&](const Json& json) {
        return result.Entries.emplace_back(entry_of(json)).Distribution;
    });
    return result;
}

TaskState state_of(const platform::IFileSystem& files, platform::IFolderLocks& locks, const BatchFiles& batch,
                   std::size_t number) {
    TaskState state;
    if (files.FileExists(batch.Started(number)))
        read_mark(files, batch.Started(number), [&](const Json& json) {
            state.Started = json.at("started").get<std::string>();
            state.Host = text_of(json.at("host"));
        });
    if (files.FileExists(batch.Result(number))) {
        state.Stage = TaskStage::kDone;
        read_mark(files, batch.Result(number), [&](const Json& json) {
            state.Finished = json.at("finished").get<std::string>();
            state.Seconds = double_of(json.at("seconds"));
        });
    } else if (files.FileExists(batch.Failure(number))) {
        state.Stage = TaskStage::kFailed;
        read_mark(files, batch.Failure(number), [&](const Json& json) {
            state.Finished = json.at("finished").get<std::string>();
            state.Fault = text_of(json.at("fault"));
        });
    } else if (files.FileExists(batch.Started(number)) && is_held(locks, batch.Task(number))) {
        state.Stage = TaskStage::kRunning;
    }
    return state;
}

bool is_merged(const platform::IFileSystem& files, const BatchFiles& batch) {
    bool done = false;
    if (files.FileExists(batch.Merge()))
        read_mark(files, batch.Merge(), [&](const Json& json) { done = json.at("done").get<bool>(); });
    return done;
}

bool has_open_batch(const platform::IFileSystem& files, const std::filesystem::path& output) {
    const BatchFiles batch(output);
    return files.FileExists(batch.Plan()) && !is_merged(files, batch);
}

std::string number_ranges(const std::vector<std::size_t>& numbers) {
    std::string text;
    for (std::size_t i = 0; i < numbers.size();) {
        std::size_t end = i + 1;
        while (end < numbers.size() && numbers[end] == numbers[end - 1] + 1) ++end;
        text += (text.empty() ? "" : ",") + std::to_string(numbers[i]);
        if (end - i > 1) text += "-" + std::to_string(numbers[end - 1]);
        i = end;
    }
    return text;
}

}  // namespace wxl::batch
