#include "apps/cli/console_messages.h"

#include "platform/message_text.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <string_view>
#include <utility>
#include <vector>

namespace wxl::cli {

namespace {

using platform::Answer;
using platform::Buttons;
using platform::Topic;

constexpr std::array<std::pair<std::string_view, Answer>, 3> kAnswers{
    {{"yes", Answer::kYes}, {"no", Answer::kNo}, {"cancel", Answer::kCancel}}};
constexpr std::array<std::pair<std::string_view, Topic>, 5> kTopics{{{"buffer", Topic::kBuffer},
                                                                     {"overlap", Topic::kOverlap},
                                                                     {"add-fields", Topic::kAddFields},
                                                                     {"out-of-sequence", Topic::kOutOfSequence},
                                                                     {"animals", Topic::kAnimals}}};

template <class Pairs>
auto find_name(const Pairs& pairs, std::string_view name) {
    return std::find_if(pairs.begin(), pairs.end(),
                        [&](const auto& pair) { return platform::EqualNoCase(pair.first, name); });
}

Answer answer_named(std::string_view name, const std::string& given) {
    const auto found = find_name(kAnswers, name);
    if (found == kAnswers.end())
        throw CLI::ValidationError("--answer",
                                   fmt::format("\"{}\" is not yes, no, cancel or TOPIC=yes|no|cancel", given));
    return found->second;
}

void add_answer(Answers& answers, const std::string& given) {
    const std::size_t equals = given.find('=');
    if (equals == std::string::npos) {
        answers.Any = answer_named(given, given);
        return;
    }
    const auto topic = find_name(kTopics, std::string_view(given).substr(0, equals));
    if (topic == kTopics.end())
        throw CLI::ValidationError(
            "--answer", fmt::format("\"{}\" names no question; there are buffer, overlap, add-fields, out-of-sequence "
                                    "and animals",
                                    given.substr(0, equals)));
    answers.ByTopic[topic->second] = answer_named(std::string_view(given).substr(equals + 1), given);
}

std::string option_that_answers(const platform::MessageBox& box) {
    const auto topic =
        std::find_if(kTopics.begin(), kTopics.end(), [&](const auto& pair) { return pair.second == box.About; });
    const std::string prefix = topic == kTopics.end() ? "" : std::string(topic->first) + "=";
    std::string line = fmt::format(
        "wxl: stopped, because this question has no answer: give --answer {0}yes or --answer {0}no", prefix);
    if (box.Choice == Buttons::kYesNoCancel) line += fmt::format(" or --answer {}cancel", prefix);
    if (box.Advised == Answer::kYes) line += fmt::format("; --answer {}yes is advised here", prefix);
    return line;
}

}  // namespace

void add_answer_option(CLI::App& app, Answers& answers) {
    app.add_option_function<std::vector<std::string>>(
           "--answer",
           [&answers](const std::vector<std::string>& given) {
               for (const std::string& one : given) add_answer(answers, one);
           },
           "Answer to every question (yes, no, cancel), or to one kind of question (buffer=yes, overlap=no, "
           "add-fields=yes, out-of-sequence=no, animals=yes)")
        ->type_name("[TOPIC=]ANSWER")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

QuestionUnanswered::QuestionUnanswered()
    : platform::QuestionUnanswered(platform::error_number::kInvalidCall,
                                   "a question has no answer on the command line") {}

ConsoleMessages::ConsoleMessages(Console& console, Answers answers)
    : m_console(console), m_answers(std::move(answers)) {}

Answer ConsoleMessages::Show(const platform::MessageBox& box) {
    if (box.Kind == platform::BoxKind::kFault) ++m_faults;
    const bool question = box.Choice != Buttons::kOk;
    if (!question) ++m_notices;
    if (m_stopped && question) throw QuestionUnanswered();
    if (m_stopped) return Answer::kOk;

    const bool isNote = !question && box.Sign == platform::Icon::kInformation;
    for (const std::string& line : platform::Split(platform::PlainText(box), '\n'))
        isNote ? m_console.Note(line) : m_console.Problem(line);
    if (!question) return Answer::kOk;

    const auto named = m_answers.ByTopic.find(box.About);
    const std::optional<Answer> answer = named == m_answers.ByTopic.end() ? m_answers.Any : named->second;
    if (!answer) {
        m_stopped = true;
        m_console.Problem(option_that_answers(box));
        throw QuestionUnanswered();
    }
    return *answer == Answer::kCancel && box.Choice == Buttons::kYesNo ? Answer::kNo : *answer;
}

void ConsoleHost::Yield() {
    if (m_messages.Stopped()) throw QuestionUnanswered();
}

}  // namespace wxl::cli
