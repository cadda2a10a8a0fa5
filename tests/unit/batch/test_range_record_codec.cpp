#include "batch/range_record_codec.h"
#include "platform/runtime_error.h"

#include <gtest/gtest.h>
#include <limits>

namespace wxl::batch {
namespace {

using akde::RangeRecord;
using movement_models::FittedModel;
using movement_models::ModelKind;

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
    model.DofArea = 0.3;
    model.DofMean = 1e-300;
    return model;  // its AICc stays infinite
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
    record.Models = {full_model(), FittedModel{}};
    record.Chosen = full_model();
    record.GivenModel = true;
    record.Variogram = {{0.1, 0.2, 3.0}, {0.0, std::numeric_limits<double>::quiet_NaN(), 0.0}};
    record.Verdict = {true, "Resident.", {"One.", "Two."}};
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
    record.Isopleths = {{95.0, "low", 627897.1, std::nullopt}, {95.0, "est", 2769916.2, 1e-7}};
    record.Subfolder = "animals_01-12";
    record.RasterName = "K12";
    record.Files = {"K12", "K12_poly.shp"};
    record.Outlines = {{}, {platform::ShapeType::kPolygon, {}, {{{0.1, 0.2}, {1e6, 0.3}, {0.5, 7e6}}}}};
    return record;
}

TEST(RangeRecordCodec, A_record_comes_back_in_every_member) {
    const Json json = json_of_record(full_record());
    EXPECT_EQ(json_of_record(range_record_of(json)).dump(), json.dump());
    const RangeRecord back = range_record_of(Json::parse(json.dump()));
    EXPECT_EQ(back.Models.at(0).Covariance, full_model().Covariance);
    EXPECT_EQ(back.Models.at(0).Aicc, std::numeric_limits<double>::infinity());
    EXPECT_EQ(back.Chosen->Model, full_model().Model);
    EXPECT_EQ(back.Chosen->Used, movement_models::Estimation::kHreml);
    EXPECT_TRUE(back.Outlines.at(0).IsNull());
    EXPECT_EQ(back.Outlines.at(1).Parts.at(0).at(2).Y, 7e6);
    EXPECT_FALSE(back.Isopleths.at(0).Level);
    EXPECT_EQ(*back.AreaAt(95.0, "est"), 2769916.2);
}

TEST(RangeRecordCodec, A_record_without_a_range_comes_back) {
    RangeRecord record;
    record.Id = std::string("B\xC3\xA4r");
    record.Reason = "There is 1 fix.";
    const RangeRecord back = range_record_of(json_of_record(record));
    EXPECT_EQ(platform::ValueText(back.Id), "B\xC3\xA4r");
    EXPECT_FALSE(back.IsDone());
    EXPECT_FALSE(back.Chosen);
}

TEST(RangeRecordCodec, An_entry_comes_back_with_what_was_told) {
    const RangeEntry back = range_entry_of(json_of_entry({7, full_record(), {{true, "a: no"}, {false, "a: sorted"}}}));
    EXPECT_EQ(back.Animal, 7U);
    EXPECT_EQ(back.Lines, (std::vector<ToldLine>{{true, "a: no"}, {false, "a: sorted"}}));
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
