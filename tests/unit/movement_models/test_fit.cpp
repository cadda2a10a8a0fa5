#include "dense_twin.h"
#include "movement_models/chi_square.h"
#include "movement_models/fit.h"
#include "worked_tracks.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <stdexcept>
#include <vector>

namespace wxl::movement_models {
namespace {

const FittedModel& find(const ModelChoice& choice, ModelKind kind, RangeShape shape) {
    for (const FittedModel& model : choice.Models)
        if (model.Model.Kind == kind && model.Shape == shape) return model;
    throw std::logic_error("all eight models are listed");
}

using enum RangeShape;

// Median of chi-square with 2 degrees: 2 ln 2. The others by 30-digit arithmetic.
TEST(ChiSquare, Quantiles) {
    EXPECT_NEAR(chi_square_quantile(0.5, 2.0), 2.0 * std::log(2.0), 1e-13);
    EXPECT_NEAR(chi_square_quantile(0.025, 1.0), 0.000982069117175255534, 1e-16);
    EXPECT_NEAR(chi_square_quantile(0.975, 1.0), 5.02388618731488870, 1e-12);
    EXPECT_NEAR(chi_square_quantile(0.975, 3.7), 10.6180552483524615, 1e-11);
    EXPECT_NEAR(chi_square_quantile(0.025, 200.0), 162.727982501846281, 1e-10);
    EXPECT_NEAR(chi_square_quantile(0.975, 2e6), 2003921.82, 0.01);
}

TEST(Fit, Maximum_likelihood_of_fourteen_fixes) {
    const ModelChoice choice = choose_model(tests::fourteen_fixes(), Estimation::kMl, false);
    const FittedModel& ou = find(choice, ModelKind::kOu, kIsotropic);
    EXPECT_NEAR(ou.Model.Scales.Position, 15900.5450, 1e-4);
    EXPECT_NEAR(ou.LogLikelihood, -196.569758310, 1e-9);
    EXPECT_NEAR(ou.DofArea, 5.871651, 1e-6);
    EXPECT_NEAR(ou.Aicc, 403.321335, 1e-6);
    EXPECT_EQ(ou.Used, Estimation::kMl);
}

TEST(Fit, Restricted_maximum_likelihood_of_fourteen_fixes) {
    const ModelChoice choice = choose_model(tests::fourteen_fixes(), Estimation::kReml, false);
    EXPECT_NEAR(find(choice, ModelKind::kOu, kIsotropic).Model.Scales.Position, 35360.8395, 1e-4);
}

// Of a track that drifts through the whole record: by dense matrices p of REML falls from 158.96 (IID) to 135.06 at 100
// durations of OU, without end, and has a minimum of about 138.3 of OUf. ML and one Newton step give the numbers below.
TEST(Fit, Restricted_likelihood_without_end_gives_way_to_the_step_from_maximum_likelihood) {
    std::vector<double> times;
    for (int i = 0; i < 12; ++i) times.push_back(3600.0 * i);
    const Track track = tests::track_of(times, {0, 130, 210, 350, 330, 470, 610, 650, 800, 890, 930, 1100},
                                        {0, -60, 20, -10, 90, 150, 60, 120, 240, 200, 330, 310});
    const ModelChoice choice = choose_model(track, Estimation::kReml, false);
    const FittedModel& ou = find(choice, ModelKind::kOu, kIsotropic);
    EXPECT_EQ(ou.Status, FitStatus::kFitted);
    EXPECT_EQ(ou.Used, Estimation::kPhreml);
    EXPECT_NEAR(ou.Model.Scales.Position, 191788.5, 1.0);
    EXPECT_NEAR(ou.LogLikelihood, -147.050304, 1e-6);
    EXPECT_NEAR(ou.Aicc, 303.878386, 1e-6);
    EXPECT_NEAR(ou.DofArea, 1.055681, 1e-5);
    EXPECT_EQ(find(choice, ModelKind::kOu, kAnisotropic).Used, Estimation::kPhreml);
    EXPECT_EQ(find(choice, ModelKind::kCritical, kIsotropic).Used, Estimation::kReml);
    ASSERT_NE(choice.Chosen(), nullptr);
    EXPECT_EQ(choice.Chosen()->Model.Kind, ModelKind::kOu);
    EXPECT_EQ(choice.Chosen()->Shape, kIsotropic);
}

TEST(Fit, Default_method_and_choice_of_fourteen_fixes) {
    const ModelChoice choice = choose_model(tests::fourteen_fixes(), Estimation::kPhreml, false);
    ASSERT_EQ(choice.Models.size(), 8U);
    const FittedModel* chosen = choice.Chosen();
    ASSERT_NE(chosen, nullptr);
    EXPECT_EQ(chosen->Model.Kind, ModelKind::kOu);
    EXPECT_EQ(chosen->Shape, kIsotropic);
    EXPECT_EQ(chosen->Used, Estimation::kPhreml);
    EXPECT_NEAR(chosen->Model.Scales.Position, 22123.2171, 1e-4);
    EXPECT_NEAR(chosen->Covariance.XX, 158353.7138, 1e-4);
    EXPECT_EQ(chosen->Covariance.XX, chosen->Covariance.YY);
    EXPECT_NEAR(chosen->LogLikelihood, -196.762131865, 1e-9);
    EXPECT_NEAR(chosen->Aicc, 402.978809, 1e-6);
    EXPECT_NEAR(chosen->DofArea, 3.282965, 1e-6);
    EXPECT_NEAR(find(choice, ModelKind::kCritical, kIsotropic).Aicc, 404.573578, 1e-6);
    EXPECT_NEAR(find(choice, ModelKind::kOu, kAnisotropic).Aicc, 409.062346, 1e-6);
    EXPECT_NEAR(find(choice, ModelKind::kIid, kAnisotropic).Aicc, 410.302220, 1e-6);
    EXPECT_NEAR(find(choice, ModelKind::kIid, kIsotropic).Aicc, 411.107783, 1e-6);
    for (const RangeShape shape : tests::kRangeShapes)
        EXPECT_EQ(find(choice, ModelKind::kOuf, shape).Status, FitStatus::kCollapsed);
}

TEST(Fit, Gaussian_area_of_fourteen_fixes_with_its_limits) {
    const ModelChoice choice = choose_model(tests::fourteen_fixes(), Estimation::kPhreml, false);
    const double area = choice.Chosen()->GaussianArea(0.95);
    const auto limits = area_interval(area, choice.Chosen()->DofArea);
    ASSERT_TRUE(limits);
    EXPECT_NEAR(limits->Estimate, 2980651.0, 0.5);
    EXPECT_NEAR(limits->Low, 675667.0, 0.5);
    EXPECT_NEAR(limits->High, 6963630.0, 0.5);
}

TEST(Fit, Models_stand_by_their_aicc) {
    const ModelChoice choice = choose_model(tests::fourteen_fixes(), Estimation::kPhreml, false);
    for (std::size_t i = 1; i < choice.Models.size(); ++i)
        if (choice.Models[i].Status == FitStatus::kFitted) {
            EXPECT_LE(choice.Models[i - 1].Aicc, choice.Models[i].Aicc);
        }
}

TEST(Fit, Three_fixes_have_one_model) {
    const ModelChoice choice =
        choose_model(tests::track_of({0, 60, 150}, {0, 10, 4}, {0, 3, 9}), Estimation::kPhreml, false);
    ASSERT_NE(choice.Chosen(), nullptr);
    EXPECT_EQ(choice.Chosen()->Model.Kind, ModelKind::kIid);
    EXPECT_EQ(choice.Chosen()->Shape, kIsotropic);
    EXPECT_EQ(choice.Chosen()->DofArea, 2.0);
    EXPECT_EQ(choice.Chosen()->DofMean, 3.0);
}

// Two contrasts on two axes: by 60-digit arithmetic the restricted criterion of an elliptic range has no curvature at
// any scale (below 1e-43), and so no effective sample size. That of a round one has.
TEST(Fit, Three_fixes_have_no_effective_sample_size_of_an_elliptic_range) {
    const double steps[][2] = {{1528, 1596}, {3600, 3600}, {624, 612}, {60, 90}, {86400, 86400}};
    for (const auto& [first, second] : steps) {
        const Track track = tests::track_of({0, first, first + second}, {0, 10, 4}, {0, 3, 9});
        for (const double tau : {600.0, 7200.0, 50000.0}) {
            EXPECT_EQ(model_at(track, {ModelKind::kOu, {tau, 0}}, kAnisotropic).DofArea, 0.0) << first << ' ' << tau;
            EXPECT_EQ(model_at(track, {ModelKind::kCritical, {tau, 0}}, kAnisotropic).DofArea, 0.0);
            EXPECT_EQ(model_at(track, {ModelKind::kOuf, {tau, 60}}, kAnisotropic).DofArea, 0.0);
        }
    }
}

TEST(Fit, Fixes_on_a_line_have_isotropic_models_only) {
    const Track track = tests::track_of({0, 1, 2, 4, 7, 8}, {5, 3, 8, 1, 4, 4.5}, {7, 7, 7, 7, 7, 7});
    const ModelChoice choice = choose_model(track, Estimation::kPhreml, true);
    ASSERT_EQ(choice.Models.size(), 8U);
    EXPECT_EQ(choice.Chosen()->Shape, kIsotropic);
    EXPECT_EQ(find(choice, ModelKind::kOuf, kAnisotropic).Status, FitStatus::kOnALine);
}

TEST(Fit, Coordinates_beyond_all_squares_have_no_likelihood) {
    const Track track = tests::track_of({0, 1, 2, 4}, {0, 1e200, -1e200, 3e200}, {0, 1e200, 5e200, 0});
    EXPECT_EQ(choose_model(track, Estimation::kPhreml, false).Chosen(), nullptr);
}

// Three fixes all but on a line: the determinant of S vanishes by rounding at some scales.
TEST(Fit, Fixes_almost_on_a_line_keep_the_isotropic_models) {
    const Track track = tests::track_of({0, 1, 2, 5}, {0, 1e6, 2e6, 3e6}, {0, 1e6, 2e6, 3e6 + 0.06});
    const ModelChoice choice = choose_model(track, Estimation::kPhreml, false);
    ASSERT_NE(choice.Chosen(), nullptr);
    EXPECT_GT(choice.Chosen()->Covariance.Determinant(), 0.0);
}

TEST(Taylor, Logarithm_of_nothing_is_no_number) {
    EXPECT_TRUE(std::isnan(log(Taylor<2>(0.0)).Value));
    EXPECT_TRUE(std::isnan(log(Taylor<1>(-1.0)).Value));
}

TEST(Fit, Model_at_given_scales) {
    const FittedModel fit = model_at(tests::fourteen_fixes(), {ModelKind::kOu, {22123.2171, 0}}, kIsotropic);
    EXPECT_NEAR(fit.Covariance.XX, 158353.7138, 1e-3);
    EXPECT_NEAR(fit.DofArea, 3.282965, 1e-6);
}

// The root of (s_xx + s_yy)/(tau1 tau2): sqrt(5000/(100 * 2)) = 5; OUf with tau 10: sqrt(5000/100).
TEST(Fit, Speed_of_the_models_that_have_one) {
    FittedModel fit;
    fit.Covariance = {3000, 10, 2000};
    EXPECT_FALSE(fit.Speed());
    fit.Model = {ModelKind::kOuf, {100, 2}};
    EXPECT_NEAR(*fit.Speed(), 5.0, 1e-14);
    fit.Model = {ModelKind::kCritical, {10, 0}};
    EXPECT_NEAR(*fit.Speed(), std::sqrt(50.0), 1e-14);
}

// With many fixes the estimates come near the truth that drew them.
TEST(Fit, Finds_the_model_that_drew_the_track) {
    const Track track = tests::drawn_track({ModelKind::kOuf, {20000, 2000}}, {4e6, 1e6, 1e6}, 4000, 600.0, 7);
    const ModelChoice choice = choose_model(track, Estimation::kPhreml, false);
    const FittedModel& best = *choice.Chosen();
    EXPECT_EQ(best.Model.Kind, ModelKind::kOuf);
    EXPECT_EQ(best.Shape, kAnisotropic);
    EXPECT_NEAR(best.Model.Scales.Position / 20000, 1.0, 4.0 * best.Deviations.Position / 20000);
    EXPECT_NEAR(best.Model.Scales.Velocity / 2000, 1.0, 4.0 * best.Deviations.Velocity / 2000);
    EXPECT_LT(best.Deviations.Velocity, 200.0);
    // 4000 steps of 600 s are 120 crossings or some more.
    EXPECT_GT(best.DofArea, 40.0);
    EXPECT_LT(best.DofArea, 240.0);
}

}  // namespace
}  // namespace wxl::movement_models
