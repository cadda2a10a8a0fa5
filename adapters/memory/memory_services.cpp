#include "adapters/memory/memory_services.h"

#include <cstdio>
#include <cstdlib>

namespace wxl::memory {

using namespace wxl::platform;

Answer MemoryMessages::Show(const MessageBox& box) {
    m_boxes.push_back(box);
    if (m_onShow) m_onShow(box);
    if (box.Choice == Buttons::kOk) return Answer::kOk;
    if (!m_queue.empty()) {
        const Answer answer = m_queue.front();
        m_queue.pop_front();
        return answer;
    }
    if (const auto found = m_always.find(box.About); found != m_always.end()) return found->second;
    if (m_onUnanswered) return m_onUnanswered(box);
    std::fprintf(stderr, "A question was asked that nobody answers: [%s] %s\n", box.Title.c_str(), box.Text.c_str());
    std::abort();
}

void MemoryMessages::WillAnswer(std::initializer_list<Answer> answers) {
    m_queue.insert(m_queue.end(), answers);
}

std::vector<std::string> MemoryMessages::Texts() const {
    std::vector<std::string> texts;
    for (const MessageBox& box : m_boxes) texts.push_back(box.Text);
    return texts;
}

MessageBox MemoryMessages::Last() const {
    return m_boxes.empty() ? MessageBox() : m_boxes.back();
}

std::optional<std::filesystem::path> MemoryFileDialogs::Next() {
    if (m_choices.empty()) return std::nullopt;
    auto choice = std::move(m_choices.front());
    m_choices.pop_front();
    return choice;
}

std::optional<std::filesystem::path> MemoryFileDialogs::OpenFile(const FileDialog& dialog) {
    m_shown.push_back(dialog);
    return Next();
}

std::optional<std::filesystem::path> MemoryFileDialogs::SaveFile(const FileDialog& dialog) {
    m_shown.push_back(dialog);
    return Next();
}

std::optional<std::filesystem::path> MemoryFileDialogs::ChooseFolder(const std::string& title) {
    m_folderTitles.push_back(title);
    return Next();
}

void MemoryHost::Yield() {
    ++m_yields;
    if (m_onYield) m_onYield();
}

void MemoryHost::WaitForEvents(double seconds) {
    m_waits.push_back(seconds);
    Yield();
}

float MemoryClock::SecondsSinceMidnight() const {
    const float reading = m_seconds;
    Advance(m_step);
    return reading;
}

void MemoryClock::Advance(float seconds) const {
    constexpr float kDay = 86400.0F;
    m_seconds += seconds;
    if (m_seconds >= kDay) m_seconds -= kDay;
}

}  // namespace wxl::memory
