#pragma once
#include "apps/cli/console.h"
#include "platform/messages.h"
#include "platform/question_unanswered.h"

#include <map>
#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace wxl::cli {

/// Answers given on the command line to the questions that a run may ask.
struct Answers {
    std::optional<platform::Answer> Any;                  ///< --answer yes: every question not named below
    std::map<platform::Topic, platform::Answer> ByTopic;  ///< --answer buffer=yes
};

/// Gives `app` the option --answer, which may be repeated: yes|no|cancel, or TOPIC=yes|no|cancel with the topics
/// buffer, overlap, add-fields, out-of-sequence and animals. The last answer to a topic counts.
void add_answer_option(CLI::App& app, Answers& answers);

/// Thrown out of a message box whose question has no answer on the command line. Handlers on the way up end their work
/// as for any fault, and take back what they changed where earlier work would be lost.
class QuestionUnanswered : public platform::QuestionUnanswered {
public:
    QuestionUnanswered();
};

/// Message boxes as lines on standard error: "TITLE: TEXT", the text alone where the box has no title. Questions are
/// answered by `answers`; "cancel" to a question without Cancel means No.
///
/// A question without an answer stops the run: its text and a line that names the option that answers it are shown,
/// QuestionUnanswered is thrown, and from then on Stopped() is true, further boxes stay silent (they are the handlers'
/// reports of the stop itself) and further questions throw again.
class ConsoleMessages final : public platform::IMessages {
public:
    ConsoleMessages(Console& console, Answers answers);
    platform::Answer Show(const platform::MessageBox& box) override;

    /// Whether an unanswered question stopped the run: the command must then end with exit code 1.
    bool Stopped() const { return m_stopped; }

    /// How many boxes reported a fault. A command whose work ended in such a box has failed.
    int Faults() const { return m_faults; }

    /// How many boxes told something without asking, reports of faults included.
    int Notices() const { return m_notices; }

private:
    Console& m_console;
    Answers m_answers;
    bool m_stopped = false;
    int m_faults = 0;
    int m_notices = 0;
};

/// The host of a run without a window: nothing to repaint, status texts are not shown. After an unanswered question
/// Yield throws QuestionUnanswered, so that no long loop goes on.
class ConsoleHost final : public platform::IHost {
public:
    explicit ConsoleHost(const ConsoleMessages& messages) : m_messages(messages) {}
    void Yield() override;
    void SetStatus(std::string_view) override {}

private:
    const ConsoleMessages& m_messages;
};

}  // namespace wxl::cli
