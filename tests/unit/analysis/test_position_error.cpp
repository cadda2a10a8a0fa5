#include "adapters/memory/memory_map.h"
#include "analysis/animal_fixes.h"
#include "analysis/position_error.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace wxl::analysis {
namespace {

using platform::Field;
using platform::FieldType;
using platform::FieldValue;

/// The error of the positions of one animal whose fixes have the given other cells.
std::optional<PositionError> error_of(const std::vector<Field>& fields,
                                      const std::vector<std::vector<FieldValue>>& rows) {
    std::vector<Field> all = {{.Name = "ID", .Type = FieldType::kInteger}};
    all.insert(all.end(), fields.begin(), fields.end());
    const auto points = std::make_shared<memory::MemoryFeatureClass>(platform::ShapeType::kPoint, all);
    memory::MemoryFeatureLayer layer("fixes", points);
    for (const std::vector<FieldValue>& cells : rows) {
        std::vector<FieldValue> row = {std::int64_t{1}};
        row.insert(row.end(), cells.begin(), cells.end());
        points->Add(platform::Geometry::OfPoint({0, 0}), row);
    }
    return GroupFixes(layer, "ID", false).Animals.at(0).Error;
}

bool is_told_by(const std::string& name, FieldType type = FieldType::kDouble) {
    return tells_position_error({.Name = name, .Type = type});
}

TEST(PositionError, Is_the_median_of_a_column_in_metres) {
    const Field field{.Name = "location-error-numerical", .Type = FieldType::kDouble};
    EXPECT_EQ(error_of({field}, {{30.0}, {2.0}, {5.5}}), (PositionError{5.5, "location-error-numerical", false}));
    EXPECT_EQ(error_of({field}, {{30.0}, {2.0}, {5.0}, {6.0}})->Metres, 5.5);
}

TEST(PositionError, Counts_no_missing_no_impossible_and_no_rare_values) {
    const Field field{.Name = "hacc", .Type = FieldType::kDouble};
    EXPECT_EQ(error_of({field}, {{FieldValue()}, {0.0}, {4.0}, {8.0}})->Metres, 6.0);
    EXPECT_EQ(error_of({field}, {{-1.0}, {4294967.04}, {4.0}, {8.0}})->Metres, 6.0);
    EXPECT_EQ(error_of({field}, {{FieldValue()}, {FieldValue()}, {4.0}}), std::nullopt) << "told for a third of them";
    EXPECT_EQ(error_of({}, {{}, {}}), std::nullopt);
}

TEST(PositionError, Follows_the_classes_of_Argos_where_no_metres_are_told) {
    const Field classes{.Name = "argos:lc", .Type = FieldType::kText};
    const Field metres{.Name = "argos:error-radius", .Type = FieldType::kInteger};
    EXPECT_EQ(error_of({classes}, {{"3"}, {"B"}, {"1"}}), (PositionError{1200.0, "argos:lc", true}));
    EXPECT_EQ(error_of({classes}, {{"Z"}, {"G"}, {"2"}}), std::nullopt);
    EXPECT_EQ(error_of({classes, metres}, {{"3", FieldValue()}, {"3", FieldValue()}, {"3", std::int64_t{700}}})->Metres,
              490.0);
    EXPECT_EQ(error_of({classes, metres}, {{"3", std::int64_t{900}}, {"3", std::int64_t{700}}}),
              (PositionError{800.0, "argos:error-radius", false}));
    EXPECT_EQ(error_of({{.Name = "lc", .Type = FieldType::kInteger}}, {{std::int64_t{2}}})->Metres, 1010.0);
}

// 68th percentiles of Costa et al. 2010.
TEST(PositionError, Of_a_class_is_the_published_one) {
    EXPECT_EQ(argos_error("3"), 490.0);
    EXPECT_EQ(argos_error("2"), 1010.0);
    EXPECT_EQ(argos_error("1"), 1200.0);
    EXPECT_EQ(argos_error("0"), 4180.0);
    EXPECT_EQ(argos_error(" a "), 6190.0);
    EXPECT_EQ(argos_error("B"), 10280.0);
    EXPECT_EQ(argos_error("Z"), std::nullopt);
    EXPECT_EQ(argos_error(""), std::nullopt);
}

TEST(PositionError, Columns_are_known_by_the_names_of_makers_and_stores) {
    for (const char* name : {"location-error-numerical", "eobs:horizontal-accuracy-estimate", "3D_Error [m]",
                             "3D_Error_m", "GPS Horizontal Error", "coordinateUncertaintyInMeters", "Error radius",
                             "h_accuracy", "location_e", "lc", "Loc. quality"})
        EXPECT_TRUE(is_told_by(name)) << name;
    for (const char* name : {"gps:dop", "hdop", "location-error-text", "vertical-error-numerical", "Error radius [km]",
                             "speed-accuracy-estimate", "accuracy", "error", "quality", "class", "elc", ""})
        EXPECT_FALSE(is_told_by(name)) << name;
    EXPECT_FALSE(is_told_by("hacc", FieldType::kText)) << "no number";
    EXPECT_TRUE(is_told_by("lc", FieldType::kText));
}

}  // namespace
}  // namespace wxl::analysis
