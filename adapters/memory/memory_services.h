#pragma once
// Message boxes, dialogs, host and clock that a test scripts and reads back.

#include "platform/clock.h"
#include "platform/messages.h"

#include <deque>
#include <functional>
#include <map>
#include <vector>

namespace wxl::memory {

/// Records every box and gives scripted answers. A question nobody answered ends the program with the box on standard
/// error, so that no test passes by accident; SetOnUnanswered puts something milder in its place.
class MemoryMessages final : public platform::IMessages {
public:
    platform::Answer Show(const platform::MessageBox& box) override;

    /// Answers to the next questions, in this order.
    void WillAnswer(std::initializer_list<platform::Answer> answers);

    /// The answer to every question about `topic` that no queued answer meets.
    void AlwaysAnswer(platform::Topic topic, platform::Answer answer) { m_always[topic] = answer; }

    void SetOnUnanswered(std::function<platform::Answer(const platform::MessageBox&)> action) {
        m_onUnanswered = std::move(action);
    }

    /// Called with every box before it is answered.
    void SetOnShow(std::function<void(const platform::MessageBox&)> action) { m_onShow = std::move(action); }

    const std::vector<platform::MessageBox>& Boxes() const { return m_boxes; }

    /// The texts of all boxes, in order.
    std::vector<std::string> Texts() const;

    /// The last box; an empty one when there was none.
    platform::MessageBox Last() const;

    /// Queued answers that no question has taken yet.
    std::size_t AnswersLeft() const { return m_queue.size(); }
    void Clear() { m_boxes.clear(); }

private:
    std::vector<platform::MessageBox> m_boxes;
    std::deque<platform::Answer> m_queue;
    std::map<platform::Topic, platform::Answer> m_always;
    std::function<platform::Answer(const platform::MessageBox&)> m_onUnanswered;
    std::function<void(const platform::MessageBox&)> m_onShow;
};

/// Gives scripted files and folders, one per dialog; a dialog without one is cancelled.
class MemoryFileDialogs final : public platform::IFileDialogs {
public:
    std::optional<std::filesystem::path> OpenFile(const platform::FileDialog& dialog) override;
    std::optional<std::filesystem::path> SaveFile(const platform::FileDialog& dialog) override;
    std::optional<std::filesystem::path> ChooseFolder(const std::string& title) override;

    /// What the next dialogs return, in this order; nothing means Cancel.
    void WillChoose(std::optional<std::filesystem::path> choice) { m_choices.push_back(std::move(choice)); }

    /// File dialogs shown, and titles of folder dialogs shown.
    const std::vector<platform::FileDialog>& Shown() const { return m_shown; }
    const std::vector<std::string>& FolderTitles() const { return m_folderTitles; }

private:
    std::optional<std::filesystem::path> Next();

    std::deque<std::optional<std::filesystem::path>> m_choices;
    std::vector<platform::FileDialog> m_shown;
    std::vector<std::string> m_folderTitles;
};

/// Counts turns of the message loop and keeps the status texts.
class MemoryHost final : public platform::IHost {
public:
    void Yield() override;
    void WaitForEvents(double seconds) override;
    void SetStatus(std::string_view text) override { m_statuses.emplace_back(text); }

    /// Called at every Yield, after it was counted: press a Stop button, let the clock run, throw.
    void SetOnYield(std::function<void()> action) { m_onYield = std::move(action); }

    int Yields() const { return m_yields; }

    /// How long each wait for events might have been, in seconds.
    const std::vector<double>& Waits() const { return m_waits; }
    const std::vector<std::string>& Statuses() const { return m_statuses; }
    std::string LastStatus() const { return m_statuses.empty() ? std::string() : m_statuses.back(); }

private:
    int m_yields = 0;
    std::vector<double> m_waits;
    std::vector<std::string> m_statuses;
    std::function<void()> m_onYield;
};

/// A clock that stands still unless it is told to step.
class MemoryClock final : public platform::IClock {
public:
    platform::DateTime Now() const override { return m_now; }
    float SecondsSinceMidnight() const override;

    /// As much as was waited for.
    std::chrono::nanoseconds Steady() const override { return m_waited; }
    void Wait(std::chrono::milliseconds time) const override { m_waited += time; }

    void SetSecondsSinceMidnight(float seconds) { m_seconds = seconds; }

    /// Every reading of SecondsSinceMidnight moves the clock on by this much, past midnight to 0.
    void SetStepPerReading(float seconds) { m_step = seconds; }

    /// Moves the seconds on, past midnight to 0.
    void Advance(float seconds) const;

private:
    platform::DateTime m_now{2026, 11, 20, 15, 4, 5};
    mutable float m_seconds = 0.0F;
    mutable std::chrono::nanoseconds m_waited{0};
    float m_step = 0.0F;
};

}  // namespace wxl::memory
