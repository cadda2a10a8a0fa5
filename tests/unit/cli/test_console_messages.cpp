#include "apps/cli/console_messages.h"
#include "platform/guarded.h"

#include <algorithm>
#include <CLI/CLI.hpp>
#include <gtest/gtest.h>
#include <sstream>

namespace wxl::cli {
namespace {

using platform::Answer;
using platform::Buttons;
using platform::Icon;
using platform::Topic;

/// Messages over captured streams.
struct Messages {
    explicit Messages(Answers answers = {}) : Boxes(Out, std::move(answers)) {}
    std::ostringstream OutText;
    std::ostringstream ErrText;
    Console Out{OutText, ErrText, false};
    ConsoleMessages Boxes;
};

Answers parse_answers(std::vector<std::string> arguments) {
    CLI::App app;
    Answers answers;
    add_answer_option(app, answers);
    std::reverse(arguments.begin(), arguments.end());
    app.parse(std::move(arguments));
    return answers;
}

TEST(ConsoleMessages, Box_becomes_title_then_text_on_standard_error) {
    Messages m;
    EXPECT_EQ(m.Boxes.Show({.Text = "No layer.", .Title = "User error"}), Answer::kOk);
    EXPECT_EQ(m.ErrText.str(), "User error: No layer.\n");
    EXPECT_EQ(m.OutText.str(), "");
}

TEST(ConsoleMessages, Title_that_the_text_begins_with_is_told_once) {
    Messages m;
    m.Boxes.Show({.Text = "Error: no point layer is chosen.", .Title = "Error"});
    m.Boxes.Show({.Text = "Warning: the prefix is long.", .Title = "Warning"});
    m.Boxes.Show({.Text = "Errors were met.", .Title = "Error"});
    EXPECT_EQ(m.ErrText.str(),
              "Error: no point layer is chosen.\nWarning: the prefix is long.\nError: Errors were met.\n");
}

TEST(ConsoleMessages, Answers_and_topics_are_taken_in_any_case) {
    const Answers answers = parse_answers({"--answer", "YES", "--answer", "Buffer=No"});
    EXPECT_EQ(answers.Any, Answer::kYes);
    EXPECT_EQ(answers.ByTopic.at(Topic::kBuffer), Answer::kNo);
}

TEST(ConsoleMessages, Box_without_title_is_its_text_with_line_feeds) {
    Messages m;
    m.Boxes.Show({.Text = "one\r\ntwo\rthree\r"});
    EXPECT_EQ(m.ErrText.str(), "one\ntwo\nthree\n");
}

TEST(ConsoleMessages, Quiet_keeps_warnings_and_drops_information) {
    Messages m;
    m.Out.SetQuiet(true);
    m.Boxes.Show({.Text = "done", .Sign = Icon::kInformation});
    m.Boxes.Show({.Text = "careful", .Sign = Icon::kExclamation});
    m.Boxes.Show({.Text = "sub Error number: 6", .Kind = platform::BoxKind::kFault});
    EXPECT_EQ(m.ErrText.str(), "careful\nsub Error number: 6\n");
}

TEST(ConsoleMessages, Notices_are_counted_without_questions) {
    Messages m(parse_answers({"--answer", "yes"}));
    m.Boxes.Show({.Text = "Go on?", .Choice = Buttons::kYesNo});
    EXPECT_EQ(m.Boxes.Notices(), 0);
    m.Boxes.Show({.Text = "No layer."});
    m.Boxes.Show({.Text = "sub Error number: 6", .Kind = platform::BoxKind::kFault});
    EXPECT_EQ(m.Boxes.Notices(), 2);
    EXPECT_EQ(m.Boxes.Faults(), 1);
}

TEST(ConsoleMessages, Named_answer_goes_before_the_general_one) {
    Messages m(parse_answers({"--answer", "yes", "--answer", "overlap=no"}));
    EXPECT_EQ(m.Boxes.Show({.Text = "a", .Choice = Buttons::kYesNo, .About = Topic::kBuffer}), Answer::kYes);
    EXPECT_EQ(m.Boxes.Show({.Text = "b", .Choice = Buttons::kYesNoCancel, .About = Topic::kOverlap}), Answer::kNo);
    EXPECT_EQ(m.ErrText.str(), "a\nb\n");
    EXPECT_FALSE(m.Boxes.Stopped());
}

TEST(ConsoleMessages, Every_topic_has_a_name) {
    const Answers answers = parse_answers({"--answer", "buffer=yes", "--answer", "overlap=no", "--answer",
                                           "add-fields=cancel", "--answer", "out-of-sequence=yes"});
    EXPECT_FALSE(answers.Any);
    EXPECT_EQ(answers.ByTopic.at(Topic::kBuffer), Answer::kYes);
    EXPECT_EQ(answers.ByTopic.at(Topic::kOverlap), Answer::kNo);
    EXPECT_EQ(answers.ByTopic.at(Topic::kAddFields), Answer::kCancel);
    EXPECT_EQ(answers.ByTopic.at(Topic::kOutOfSequence), Answer::kYes);
}

TEST(ConsoleMessages, Cancel_means_no_where_the_box_has_no_cancel) {
    Messages m(parse_answers({"--answer=cancel"}));
    EXPECT_EQ(m.Boxes.Show({.Text = "a", .Choice = Buttons::kYesNo}), Answer::kNo);
    EXPECT_EQ(m.Boxes.Show({.Text = "b", .Choice = Buttons::kYesNoCancel}), Answer::kCancel);
}

TEST(ConsoleMessages, Unknown_answers_are_refused_by_the_parser) {
    EXPECT_THROW(parse_answers({"--answer", "maybe"}), CLI::ValidationError);
    EXPECT_THROW(parse_answers({"--answer", "buffer=maybe"}), CLI::ValidationError);
    EXPECT_THROW(parse_answers({"--answer", "weather=yes"}), CLI::ValidationError);
}

TEST(ConsoleMessages, Question_without_answer_stops_the_run_and_names_the_option) {
    Messages m;
    EXPECT_THROW(
        m.Boxes.Show({.Text = "Enlarge?", .Title = "Buffer", .Choice = Buttons::kYesNoCancel, .About = Topic::kBuffer}),
        QuestionUnanswered);
    EXPECT_TRUE(m.Boxes.Stopped());
    EXPECT_EQ(m.ErrText.str(),
              "Buffer: Enlarge?\n"
              "wxl: stopped, because this question has no answer: give --answer buffer=yes or --answer buffer=no or "
              "--answer buffer=cancel\n");
}

TEST(ConsoleMessages, Question_about_nothing_named_is_answered_by_the_general_option) {
    Messages m;
    EXPECT_THROW(m.Boxes.Show({.Text = "Go on?", .Choice = Buttons::kYesNo}), QuestionUnanswered);
    EXPECT_EQ(m.ErrText.str(),
              "Go on?\nwxl: stopped, because this question has no answer: give --answer yes or --answer no\n");
}

TEST(ConsoleMessages, Handlers_on_the_way_up_stay_silent_after_a_stop) {
    Messages m;
    ConsoleHost host(m.Boxes);
    host.Yield();
    bool wentOn = false;
    platform::Guarded(m.Boxes, "inner Error number: ", [&] {
        m.Boxes.Show({.Text = "Go on?", .Choice = Buttons::kYesNo});
        wentOn = true;
    });
    EXPECT_FALSE(wentOn);
    EXPECT_EQ(m.ErrText.str(),
              "Go on?\nwxl: stopped, because this question has no answer: give --answer yes or --answer no\n");
    EXPECT_THROW(host.Yield(), QuestionUnanswered);
    EXPECT_THROW(m.Boxes.Show({.Text = "Next?", .Choice = Buttons::kYesNo}), QuestionUnanswered);
}

}  // namespace
}  // namespace wxl::cli
