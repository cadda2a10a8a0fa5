#include "adapters/memory/memory_map.h"
#include "analysis/animal_fixes.h"
#include "platform/runtime_error.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace wxl::analysis {
namespace {

using memory::MemoryFeatureClass;
using memory::MemoryFeatureLayer;
using platform::FieldType;
using platform::FieldValue;
using platform::Point;
using testing::ElementsAre;

std::shared_ptr<MemoryFeatureLayer> point_layer(FieldType idType) {
    return std::make_shared<MemoryFeatureLayer>(
        "fixes", std::make_shared<MemoryFeatureClass>(platform::ShapeType::kPoint,
                                                      std::vector<platform::Field>{{.Name = "ID", .Type = idType}}));
}

std::vector<std::string> ids(const GroupedFixes& fixes) {
    std::vector<std::string> result;
    for (const AnimalFixes& animal : fixes.Animals) result.push_back(platform::ValueText(animal.Id));
    return result;
}

std::vector<std::string> naming_ids(const GroupedFixes& fixes) {
    std::vector<std::string> result;
    for (const AnimalFixes& animal : fixes.Animals) result.push_back(animal.NamingId);
    return result;
}

TEST(GroupFixes, Groups_by_animal_ascending_with_fixes_in_layer_order) {
    const auto layer = point_layer(FieldType::kInteger);
    auto& points = layer->Features();
    points.AddPoint(1, 1, {std::int64_t{12}});
    points.AddPoint(2, 2, {std::int64_t{3}});
    points.AddPoint(3, 3, {std::int64_t{12}});
    points.AddPoint(0, 0, {std::int64_t{3}});

    const GroupedFixes fixes = GroupFixes(*layer, "id", false);
    EXPECT_THAT(ids(fixes), ElementsAre("3", "12"));
    EXPECT_THAT(naming_ids(fixes), ElementsAre("3", "12"));
    EXPECT_THAT(fixes.Animals[0].Fixes, ElementsAre(Point{2, 2}, Point{0, 0}));
    EXPECT_THAT(fixes.Animals[1].Fixes, ElementsAre(Point{1, 1}, Point{3, 3}));
    EXPECT_FALSE(fixes.TextIds);
    EXPECT_FALSE(fixes.NullGeometry);
    EXPECT_EQ(fixes.WithoutId, 0);
}

/// A layer of the animal 1 with one field of times.
std::shared_ptr<MemoryFeatureLayer> timed_layer(const std::string& field, FieldType type,
                                                const std::vector<FieldValue>& times) {
    auto layer = std::make_shared<MemoryFeatureLayer>(
        "fixes",
        std::make_shared<MemoryFeatureClass>(
            platform::ShapeType::kPoint,
            std::vector<platform::Field>{{.Name = "ID", .Type = FieldType::kInteger}, {.Name = field, .Type = type}}));
    for (const FieldValue& time : times) layer->Features().AddPoint(0, 0, {std::int64_t{1}, time});
    return layer;
}

std::int64_t steps_back(const std::string& field, FieldType type, const std::vector<FieldValue>& times) {
    return GroupFixes(*timed_layer(field, type, times), "ID", false).Animals.at(0).StepsBack;
}

TEST(GroupFixes, Fixes_earlier_than_the_one_before_are_counted_for_each_animal) {
    const auto layer = std::make_shared<MemoryFeatureLayer>(
        "fixes",
        std::make_shared<MemoryFeatureClass>(
            platform::ShapeType::kPoint, std::vector<platform::Field>{{.Name = "ID", .Type = FieldType::kInteger},
                                                                      {.Name = "Time2", .Type = FieldType::kDouble}}));
    auto& points = layer->Features();
    // Animal 1 at 10, 20, 20, 15, 30; animal 2 at 5, 1, 0, between them.
    points.AddPoint(0, 0, {std::int64_t{1}, 10.0});
    points.AddPoint(0, 0, {std::int64_t{2}, 5.0});
    points.AddPoint(0, 0, {std::int64_t{1}, 20.0});
    points.AddPoint(0, 0, {std::int64_t{2}, 1.0});
    points.AddPoint(0, 0, {std::int64_t{1}, 20.0});
    points.AddPoint(0, 0, {std::int64_t{1}, 15.0});
    points.AddPoint(0, 0, {std::int64_t{2}, 0.0});
    points.AddPoint(0, 0, {std::int64_t{1}, 30.0});
    const GroupedFixes fixes = GroupFixes(*layer, "ID", false);
    EXPECT_EQ(fixes.Animals.at(0).StepsBack, 1);
    EXPECT_EQ(fixes.Animals.at(1).StepsBack, 2);
}

TEST(GroupFixes, Times_tell_how_long_and_how_often_an_animal_was_followed) {
    const GroupedFixes fixes =
        GroupFixes(*timed_layer("Time2", FieldType::kDouble, {90000.0, 0.0, 3600.0, {}, 1e300}), "ID", false);
    const tracking_times::TimeFacts& times = fixes.Animals.at(0).Times;
    EXPECT_EQ(times.First, 0);
    EXPECT_EQ(times.Last, 90000);
    EXPECT_EQ(times.WithTime, 3U);
    EXPECT_EQ(times.WithoutTime, 2U);
    EXPECT_EQ(times.DaysWithFix, 2U);
    EXPECT_EQ(times.Intervals->Median, 45000.0);
    const GroupedFixes untimed = GroupFixes(*timed_layer("size", FieldType::kDouble, {90000.0}), "ID", false);
    EXPECT_EQ(untimed.Animals.at(0).Times.First, std::nullopt);
    EXPECT_EQ(untimed.Animals.at(0).Times.WithoutTime, 1U);
}

TEST(GroupFixes, Times_are_read_from_numbers_dates_and_timestamps) {
    const FieldValue missing;
    EXPECT_EQ(steps_back("TIME2", FieldType::kInteger, {std::int64_t{2}, missing, std::int64_t{1}}), 1);
    EXPECT_EQ(steps_back("when", FieldType::kDate, {"2018/05/09 14:00:00", "2018/05/09 13:59:59"}), 1);
    EXPECT_EQ(steps_back("when", FieldType::kDate, {"2018/05/09 14:00:00+02", "2018/05/09 13:00:00+00"}), 0);
    EXPECT_EQ(steps_back("Timestamp", FieldType::kText, {"2018-05-09T14:00:00Z", "9.5.2018 13:59"}), 1);
    EXPECT_EQ(steps_back("Timestamp", FieldType::kText, {"soon", "2018-05-09", "later", "2018-05-10"}), 0);
    // Times of day say nothing of two days, and other fields nothing of time.
    EXPECT_EQ(steps_back("Time1", FieldType::kDate, {"23:00:00", "01:00:00"}), 0);
    EXPECT_EQ(steps_back("note", FieldType::kText, {"2018-05-10", "2018-05-09"}), 0);
    EXPECT_EQ(steps_back("number", FieldType::kDouble, {2.0, 1.0}), 0);
}

TEST(GroupFixes, Text_ids_get_naming_ids_in_the_order_of_their_bytes) {
    const auto layer = point_layer(FieldType::kText);
    for (const char* id : {"wolf", "O'Malley", "12", "Wolf", "\xC3\x84sop"}) layer->Features().AddPoint(0, 0, {id});
    const GroupedFixes fixes = GroupFixes(*layer, "ID", false);
    EXPECT_TRUE(fixes.TextIds);
    EXPECT_THAT(ids(fixes), ElementsAre("12", "O'Malley", "Wolf", "wolf", "\xC3\x84sop"));
    EXPECT_THAT(naming_ids(fixes), ElementsAre("1", "2", "3", "4", "5"));
}

TEST(GroupFixes, Only_the_selected_features_take_part_when_asked) {
    const auto layer = point_layer(FieldType::kInteger);
    auto& points = layer->Features();
    points.AddPoint(1, 1, {std::int64_t{1}});
    const auto second = points.AddPoint(2, 2, {std::int64_t{1}});
    const auto third = points.AddPoint(3, 3, {std::int64_t{2}});
    layer->Select({second, third});
    const GroupedFixes fixes = GroupFixes(*layer, "ID", true);
    EXPECT_THAT(ids(fixes), ElementsAre("1", "2"));
    EXPECT_THAT(fixes.Animals[0].Fixes, ElementsAre(Point{2, 2}));
    EXPECT_EQ(GroupFixes(*layer, "ID", false).Animals[0].Fixes.size(), 2U);
}

TEST(GroupFixes, Points_without_an_id_belong_to_no_animal) {
    const auto layer = point_layer(FieldType::kText);
    layer->Features().AddPoint(1, 1, {FieldValue{}});
    layer->Features().AddPoint(2, 2, {""});
    layer->Features().AddPoint(3, 3, {"a"});
    const GroupedFixes text = GroupFixes(*layer, "ID", false);
    EXPECT_THAT(ids(text), ElementsAre("a"));
    EXPECT_EQ(text.WithoutId, 2);

    const auto numbers = point_layer(FieldType::kDouble);
    numbers->Features().AddPoint(1, 1, {FieldValue{}});
    numbers->Features().AddPoint(1, 1, {0.0});
    EXPECT_THAT(ids(GroupFixes(*numbers, "ID", false)), ElementsAre("0"));
    EXPECT_EQ(GroupFixes(*numbers, "ID", false).WithoutId, 1);
}

TEST(GroupFixes, A_point_without_location_is_told_and_left_out) {
    const auto layer = point_layer(FieldType::kInteger);
    auto& points = layer->Features();
    points.AddPoint(1, 1, {std::int64_t{1}});
    points.Add(platform::Geometry{}, {std::int64_t{1}});
    points.Add(platform::Geometry{}, {std::int64_t{2}});
    const GroupedFixes fixes = GroupFixes(*layer, "ID", false);
    EXPECT_TRUE(fixes.NullGeometry);
    EXPECT_THAT(ids(fixes), ElementsAre("1", "2"));
    EXPECT_EQ(fixes.Animals[0].Fixes.size(), 1U);
    EXPECT_TRUE(fixes.Animals[1].Fixes.empty());

    const auto infinite = point_layer(FieldType::kInteger);
    infinite->Features().AddPoint(std::numeric_limits<double>::infinity(), 1, {std::int64_t{1}});
    EXPECT_TRUE(GroupFixes(*infinite, "ID", false).NullGeometry);
}

TEST(GroupFixes, A_whole_number_and_the_same_decimal_number_are_one_animal) {
    const auto layer = point_layer(FieldType::kDouble);
    layer->Features().AddPoint(1, 1, {std::int64_t{7}});
    layer->Features().AddPoint(2, 2, {7.0});
    layer->Features().AddPoint(3, 3, {-0.0});
    layer->Features().AddPoint(4, 4, {0.0});
    EXPECT_THAT(ids(GroupFixes(*layer, "ID", false)), ElementsAre("0", "7"));
}

TEST(GroupFixes, An_empty_layer_has_no_animals) {
    EXPECT_TRUE(GroupFixes(*point_layer(FieldType::kText), "ID", false).Animals.empty());
}

TEST(GroupFixes, A_layer_whose_data_cannot_be_opened_is_an_object_not_set) {
    MemoryFeatureLayer gone("gone", nullptr);
    for (const bool selectedOnly : {false, true}) {
        try {
            GroupFixes(gone, "ID", selectedOnly);
            FAIL();
        } catch (const platform::RuntimeError& error) {
            EXPECT_EQ(error.Number, 91);
        }
    }
}

TEST(GroupFixes, Dates_get_naming_ids_as_texts_do) {
    EXPECT_TRUE(IsTextId(FieldType::kText));
    EXPECT_TRUE(IsTextId(FieldType::kDate));
    EXPECT_FALSE(IsTextId(FieldType::kInteger));
    EXPECT_FALSE(IsTextId(FieldType::kDouble));
}

TEST(GroupFixes, A_field_that_is_not_there_is_named_in_the_fault) {
    try {
        GroupFixes(*point_layer(FieldType::kText), "Animal", false);
        FAIL();
    } catch (const platform::RuntimeError& error) {
        EXPECT_EQ(error.Number, 9);
        EXPECT_EQ(error.Description, "The layer fixes has no field Animal.");
    }
}

TEST(GroupFixes, Reads_the_layer_once_however_many_animals_there_are) {
    const auto layer = point_layer(FieldType::kInteger);
    for (std::int64_t i = 0; i < 3000; ++i) layer->Features().AddPoint(0, 0, {i % 1000});
    const auto before = layer->Features().Finds();
    EXPECT_EQ(GroupFixes(*layer, "ID", false).Animals.size(), 1000U);
    EXPECT_EQ(layer->Features().Finds() - before, 1);
}

// The plain twin asks the layer once per animal.
TEST(GroupFixes, Agrees_with_one_query_per_animal_on_random_layers) {
    std::mt19937 random(7);
    for (int round = 0; round < 20; ++round) {
        const auto layer = point_layer(FieldType::kText);
        std::uniform_int_distribution<int> animal(0, 15);
        for (int i = 0; i < 200; ++i)
            layer->Features().AddPoint(i, -i, {"a" + std::to_string(animal(random) * (round % 3))});
        const GroupedFixes fixes = GroupFixes(*layer, "ID", false);
        std::size_t total = 0;
        for (const AnimalFixes& group : fixes.Animals) {
            std::vector<Point> expected;
            const auto cursor = layer->Features().Find({.Where = platform::AttributeQuery{"", "ID", group.Id}});
            while (const auto feature = cursor->NextFeature()) expected.push_back(feature->Shape().Location);
            EXPECT_EQ(group.Fixes, expected);
            total += expected.size();
        }
        EXPECT_EQ(total, 200U);
    }
}

}  // namespace
}  // namespace wxl::analysis
