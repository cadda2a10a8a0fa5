#include "platform/guarded.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <new>
#include <optional>
#include <stdexcept>
#include <variant>
#include <vector>

using testing::IsEmpty;
using testing::SizeIs;

namespace wxl::platform {
namespace {

class RecordedMessages final : public IMessages {
public:
    Answer Show(const MessageBox& box) override {
        Boxes.push_back(box);
        return Answer::kOk;
    }
    std::vector<MessageBox> Boxes;
};

template <class Thrown>
RuntimeError error_from(const Thrown& thrown) {
    try {
        throw thrown;
    } catch (...) {
        return CurrentError();
    }
}

}  // namespace

TEST(Guarded, A_procedure_that_ends_well_shows_nothing_and_returns_its_result) {
    RecordedMessages messages;
    EXPECT_EQ(Guarded(messages, "sub Error number: ", [] { return 7; }), 7);
    EXPECT_THAT(messages.Boxes, IsEmpty());
}

TEST(Guarded, A_fault_shows_label_and_number_in_a_plain_box) {
    RecordedMessages messages;
    const int result = Guarded(messages, "calcobsfields sub Error number: ", []() -> int { Raise(6); });
    EXPECT_EQ(result, 0);
    ASSERT_THAT(messages.Boxes, SizeIs(1));
    EXPECT_EQ(messages.Boxes[0].Text, "calcobsfields sub Error number: 6");
    EXPECT_EQ(messages.Boxes[0].Title, "");
    EXPECT_EQ(messages.Boxes[0].Sign, Icon::kNone);
    EXPECT_EQ(messages.Boxes[0].Choice, Buttons::kOk);
}

TEST(Guarded, Nothing_is_rolled_back_and_nothing_after_the_fault_runs) {
    RecordedMessages messages;
    int steps = 0;
    Guarded(messages, "x", [&] {
        ++steps;
        Raise(13, "a text of its own");
    });
    EXPECT_EQ(steps, 1);
    EXPECT_EQ(messages.Boxes.at(0).Text, "x13");
}

TEST(Guarded, Stops_foreign_exceptions_too) {
    RecordedMessages messages;
    Guarded(messages, "x", [] { throw std::bad_alloc(); });
    Guarded(messages, "x", [] { throw 5; });
    ASSERT_THAT(messages.Boxes, SizeIs(2));
    EXPECT_EQ(messages.Boxes[0].Text, "x7");
    EXPECT_EQ(messages.Boxes[1].Text, "x5");
}

TEST(Guarded, Returns_an_empty_result_of_any_type) {
    RecordedMessages messages;
    EXPECT_FALSE(Guarded(messages, "x", []() -> std::optional<int> { Raise(91); }));
    EXPECT_EQ(Guarded(messages, "x", []() -> std::string { Raise(91); }), "");
}

TEST(GuardedWithAdvice, Puts_its_suffix_into_the_same_box) {
    RecordedMessages messages;
    GuardedWithAdvice(messages, "Error number: ", " Please try again.", [] { Raise(70); });
    ASSERT_THAT(messages.Boxes, SizeIs(1));
    EXPECT_EQ(messages.Boxes[0].Text, "Error number: 70 Please try again.");
    EXPECT_EQ(GuardedWithAdvice(messages, "", "", [] { return 3; }), 3);
    EXPECT_THAT(messages.Boxes, SizeIs(1));
}

TEST(GuardedWithDetail, Shows_the_detail_as_it_stands_at_the_fault) {
    RecordedMessages messages;
    std::string detail = "before";
    GuardedWithDetail(messages, "label ", detail, [&] {
        detail = "row 7";
        Raise(9);
    });
    ASSERT_THAT(messages.Boxes, SizeIs(1));
    EXPECT_EQ(messages.Boxes[0].Text, "label row 7,9");
    EXPECT_TRUE(GuardedWithDetail(messages, "", detail, [] { return true; }));
    EXPECT_THAT(messages.Boxes, SizeIs(1));
}

TEST(RuntimeError, Raise_carries_number_and_text) {
    try {
        Raise(61, "Disk full: /out/a");
    } catch (const RuntimeError& error) {
        EXPECT_EQ(error.Number, 61);
        EXPECT_EQ(error.Description, "Disk full: /out/a");
        EXPECT_STREQ(error.what(), "Disk full: /out/a");
    }
    try {
        Raise(11);
    } catch (const RuntimeError& error) {
        EXPECT_EQ(error.Number, 11);
        EXPECT_EQ(error.Description, "Division by zero");
    }
}

TEST(RuntimeError, Usual_descriptions_are_known) {
    EXPECT_EQ(DescriptionOf(5), "Invalid procedure call or argument");
    EXPECT_EQ(DescriptionOf(6), "Overflow");
    EXPECT_EQ(DescriptionOf(7), "Out of memory");
    EXPECT_EQ(DescriptionOf(9), "Subscript out of range");
    EXPECT_EQ(DescriptionOf(11), "Division by zero");
    EXPECT_EQ(DescriptionOf(13), "Type mismatch");
    EXPECT_EQ(DescriptionOf(53), "File not found");
    EXPECT_EQ(DescriptionOf(57), "Device I/O error");
    EXPECT_EQ(DescriptionOf(58), "File already exists");
    EXPECT_EQ(DescriptionOf(61), "Disk full");
    EXPECT_EQ(DescriptionOf(70), "Permission denied");
    EXPECT_EQ(DescriptionOf(76), "Path not found");
    EXPECT_EQ(DescriptionOf(91), "Object not set");
    EXPECT_EQ(DescriptionOf(1234), "Run-time error 1234");
}

TEST(CurrentError, Foreign_exceptions_become_the_nearest_number) {
    EXPECT_EQ(error_from(RuntimeError(76, "gone")).Number, 76);
    EXPECT_EQ(error_from(RuntimeError(76, "gone")).Description, "gone");
    EXPECT_EQ(error_from(std::bad_alloc()).Number, 7);
    EXPECT_EQ(error_from(std::length_error("too long")).Number, 7);
    EXPECT_EQ(error_from(std::out_of_range("at")).Number, 9);
    EXPECT_EQ(error_from(std::bad_variant_access()).Number, 13);
    EXPECT_EQ(error_from(std::filesystem::filesystem_error("x", std::error_code())).Number, 57);
    EXPECT_EQ(error_from(std::runtime_error("odd")).Number, 5);
    EXPECT_EQ(error_from(std::runtime_error("odd")).Description, "odd");
    EXPECT_EQ(error_from(42).Number, 5);
}

}  // namespace wxl::platform
