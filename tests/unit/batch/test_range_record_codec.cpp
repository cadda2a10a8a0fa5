#include "batch/range_record_codec.h"
#include "platform/runtime_error.h"
#include "tests/unit/batch/equal_leaves.h"

#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

namespace wxl::batch {
namespace {

using akde::RangeRecord;
using movement_models::FittedModel;
using movement_models::ModelKind;
using testing::IsEmpty;

FittedModel full_model() {
    FittedModel model;
    model.Model = {ModelKind::kOuf, {86400.1, 3600.7}};
    model.Shape = movement_models::RangeShape::kAnisotropic;
    model.Status = movement_models::FitStatus::kCollapsed;
    model.CollapsedTo = ModelKind::kCritical;
    model.Used = movement_models::Estimation::kHreml;
    model.Deviations = {0.1, 0.2};
    model.Covariance = {1.0 / 3.0, -0.1, 7.5};
    model.Mean = {500000.25, 6e6};
    model.LogLikelihood = -123.456;
    model.Aicc = 254.2;
    model.DofArea = 0.3;
    model.DofMean = 1e-300;
    return model;
}

RangeRecord full_record() {
    RangeRecord record;
    record.Id = std::int64_t{12};
    record.NamingId = "12";
    record.Given = 16;
    record.Used = 14;
    record.First = "2020-01-01T00:00:00Z";
    record.Last = "2020-01-02T02:00:00Z";
    record.Duration = 93600.5;
    record.Models = {full_model()};
    record.Chosen = full_model();
    record.GivenModel = true;
    record.Variogram = {{0.1, 0.2, 3.0}};
    record.Verdict = {true, "Resident.", {"One."}};
    record.Notes = {"Sorted."};
    record.Reason = "Why \"not\".";
    record.NotWritten = true;
    record.Matrix = {4.0, 0.5, 1.0 / 7.0};
    record.H = 0.95;
    record.DofBandwidth = 3.5;
    record.Bias = 1.6;
    record.EffectiveWeights = 13.9;
    record.ZeroWeights = 3;
    record.Grid = {-100.5, 6e6, 20.0, 33, 44};
    record.Volume = 0.99999;
    record.HighestAtEdge = 1e-12;
    record.Isopleths = {{95.0, "est", 2769916.2, 1e-7}};
    record.Subfolder = "animals_01-12";
    record.RasterName = "K12";
    record.Files = {"K12"};
    record.Outlines = {{platform::ShapeType::kPolygon, {}, {{{0.1, 0.2}, {1e6, 0.3}, {0.5, 7e6}}}}};
    return record;
}

/// A record as it begins, with one element in every list.
RangeRecord fresh_record() {
    RangeRecord record;
    record.Models = {{}};
    record.Chosen = FittedModel();
    record.Variogram = {{}};
    record.Verdict.Warnings = {""};
    record.Notes = {""};
    record.Isopleths = {{}};
    record.Files = {""};
    record.Outlines = {{}};
    return record;
}

RangeRecord back(const RangeRecord& record) {
    return range_record_of(Json::parse(json_of_record(record).dump()));
}

TEST(RangeRecordCodec, A_full_record_comes_back_equal) {
    EXPECT_THAT(equal_leaves(json_of_record(full_record()), json_of_record(fresh_record())), IsEmpty());
    EXPECT_TRUE(back(full_record()) == full_record());
}

TEST(RangeRecordCodec, Lists_of_several_elements_and_endless_numbers_come_back_equal) {
    RangeRecord record = full_record();
    record.Models.emplace_back();
    EXPECT_EQ(record.Models.at(1).Aicc, std::numeric_limits<double>::infinity());
    record.Variogram.push_back({});
    record.Isopleths.push_back({95.0, "low", 627897.1, std::nullopt});
    record.Outlines.emplace_back();
    EXPECT_TRUE(back(record) == record);
    record.Variogram.at(1).Semivariance = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(std::isnan(back(record).Variogram.at(1).Semivariance));
}

TEST(RangeRecordCodec, A_record_without_a_range_comes_back) {
    RangeRecord record;
    record.Id = std::string("B\xC3\xA4r");
    record.Reason = "There is 1 fix.";
    EXPECT_TRUE(back(record) == record);
    EXPECT_TRUE(back({}) == RangeRecord());
}

TEST(RangeRecordCodec, An_entry_comes_back_with_what_was_told) {
    const RangeEntry entry{7, full_record(), {{true, "a: no"}, {false, "a: sorted"}}};
    EXPECT_TRUE(range_entry_of(json_of_entry(entry)) == entry);
}

TEST(RangeRecordCodec, What_is_missing_or_of_another_type_is_refused) {
    const Json whole = json_of_record(full_record());
    for (const auto& [key, value] : whole.items()) {
        Json without = whole;
        without.erase(key);
        EXPECT_ANY_THROW(range_record_of(without)) << key;
    }
    Json model = whole;
    model["chosen"][0] = 9;
    EXPECT_THROW(range_record_of(model), platform::RuntimeError);
}

}  // namespace
}  // namespace wxl::batch
