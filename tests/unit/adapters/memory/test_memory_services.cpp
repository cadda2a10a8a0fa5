#include "adapters/memory/memory_map.h"
#include "adapters/memory/memory_services.h"
#include "adapters/memory/memory_shapefile_workspace.h"
#include "platform/runtime_error.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdexcept>

namespace wxl::memory {
namespace {

using namespace platform;
using testing::ElementsAre;

TEST(MemoryMessages, Boxes_are_recorded_and_questions_answered_in_order) {
    MemoryMessages messages;
    messages.WillAnswer({Answer::kYes, Answer::kCancel});
    messages.AlwaysAnswer(Topic::kOverlap, Answer::kNo);
    EXPECT_EQ(messages.Show({.Text = "done"}), Answer::kOk);
    EXPECT_EQ(messages.Show({.Text = "a?", .Choice = Buttons::kYesNo}), Answer::kYes);
    EXPECT_EQ(messages.Show({.Text = "b?", .Choice = Buttons::kYesNoCancel}), Answer::kCancel);
    EXPECT_EQ(messages.Show({.Text = "c?", .Choice = Buttons::kYesNo, .About = Topic::kOverlap}), Answer::kNo);
    EXPECT_THAT(messages.Texts(), ElementsAre("done", "a?", "b?", "c?"));
    EXPECT_EQ(messages.Last().About, Topic::kOverlap);
    EXPECT_EQ(messages.AnswersLeft(), 0U);
}

TEST(MemoryMessagesDeathTest, A_question_that_nobody_answers_ends_the_program) {
    MemoryMessages messages;
    EXPECT_DEATH(messages.Show({.Text = "why?", .Title = "Warning", .Choice = Buttons::kYesNo}),
                 "\\[Warning\\] why\\?");
}

TEST(MemoryFileDialogs, Choices_come_in_order_and_then_cancel) {
    MemoryFileDialogs dialogs;
    dialogs.WillChoose("/a/settings.txt");
    dialogs.WillChoose(std::nullopt);
    dialogs.WillChoose("/out");
    EXPECT_EQ(dialogs.OpenFile({.Title = "Open"}), std::filesystem::path("/a/settings.txt"));
    EXPECT_EQ(dialogs.SaveFile({.Title = "Save"}), std::nullopt);
    EXPECT_EQ(dialogs.ChooseFolder("Folder"), std::filesystem::path("/out"));
    EXPECT_EQ(dialogs.ChooseFolder("Folder"), std::nullopt);
    EXPECT_EQ(dialogs.Shown().size(), 2U);
    EXPECT_THAT(dialogs.FolderTitles(), ElementsAre("Folder", "Folder"));
}

TEST(MemoryHost, A_yield_can_press_stop) {
    MemoryHost host;
    int pressedAt = 0;
    host.SetOnYield([&] {
        if (host.Yields() == 2) pressedAt = host.Yields();
    });
    host.Yield();
    host.Yield();
    host.SetStatus("Calculating areas...");
    EXPECT_EQ(pressedAt, 2);
    EXPECT_EQ(host.LastStatus(), "Calculating areas...");
}

TEST(MemoryClock, Readings_step_on_and_wrap_at_midnight) {
    MemoryClock clock;
    clock.SetSecondsSinceMidnight(86399.5F);
    clock.SetStepPerReading(0.25F);
    EXPECT_EQ(clock.SecondsSinceMidnight(), 86399.5F);
    EXPECT_EQ(clock.SecondsSinceMidnight(), 86399.75F);
    EXPECT_EQ(clock.SecondsSinceMidnight(), 0.0F);
}

TEST(MemoryFeatureClass, A_cursor_can_meet_rows_deleted_after_it_was_opened) {
    MemoryFeatureClass features(ShapeType::kPoint, {}, {}, 7);
    features.AddPoint(0, 0);
    features.AddPoint(1, 1);
    features.LetCursorsMeetDeletedRows(true);
    const auto cursor = features.Find({});
    features.Find({})->NextFeature()->Delete();
    EXPECT_EQ(cursor->NextFeature()->OID(), 7);
    EXPECT_EQ(cursor->NextFeature()->OID(), 8);
    EXPECT_THAT(features.OIDs(), ElementsAre(8));
}

TEST(MemoryFeatureClass, A_store_can_be_made_to_fail) {
    MemoryFeatureClass features(ShapeType::kPoint, {{"V", FieldType::kDouble, 0, 0}});
    features.AddPoint(0, 0, {1.0});
    features.SetBeforeStore([](std::int64_t) { Raise(error_number::kDiskFull); });
    const auto feature = features.Find({})->NextFeature();
    feature->SetValue(0, 2.0);
    EXPECT_THROW(feature->Store(), RuntimeError);
    EXPECT_EQ(features.ValueOf(0, "v"), FieldValue(1.0));
}

TEST(MemoryMap, Groups_stand_before_their_layers_and_graphics_are_recorded) {
    MemoryApplication application;
    MemoryMap& map = application.Doc().Map();
    const auto layer = std::make_shared<MemoryFeatureLayer>(
        "fixes", std::make_shared<MemoryFeatureClass>(ShapeType::kPoint, std::vector<Field>()));
    map.AddGroup("Animals", {layer_of(layer)});
    ASSERT_EQ(map.Layers().size(), 2U);
    EXPECT_EQ(map.Layers()[0].Class, LayerClass::kGroup);
    EXPECT_EQ(map.Layers()[1].Feature, layer);
    const auto graphics = map.NewGraphics({});
    graphics->AddLeg({{0, 0}, {1, 1}});
    EXPECT_EQ(map.Graphics()[0]->Legs.size(), 1U);
    graphics->DeleteLegs();
    EXPECT_EQ(map.Graphics()[0]->Legs.size(), 0U);
    map.SetView({0, 0, 10, 20});
    graphics->PanTo({100, 100});
    EXPECT_EQ(map.View(), (Extent{95, 90, 105, 110}));
}

TEST(MemoryApplication, Only_known_extensions_are_found) {
    MemoryApplication application;
    EXPECT_FALSE(application.FindExtension("OVI9.clsKDE"));
    application.AddExtension("OVI9.clsKDE");
    EXPECT_TRUE(application.FindExtension("OVI9.clsKDE"));
}

}  // namespace
}  // namespace wxl::memory
