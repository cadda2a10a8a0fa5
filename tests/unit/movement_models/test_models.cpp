#include "movement_models/models.h"

#include <cmath>
#include <gtest/gtest.h>

namespace wxl::movement_models {
namespace {

TEST(Models, Names_and_numbers_of_parameters) {
    using enum RangeShape;
    EXPECT_EQ(model_name(ModelKind::kCritical), "OUf");
    EXPECT_EQ(model_title(ModelKind::kOuf, kAnisotropic), "OUF anisotropic");
    EXPECT_EQ(parameter_count(ModelKind::kIid, kIsotropic), 1);
    EXPECT_EQ(parameter_count(ModelKind::kIid, kAnisotropic), 3);
    EXPECT_EQ(parameter_count(ModelKind::kOu, kIsotropic), 2);
    EXPECT_EQ(parameter_count(ModelKind::kCritical, kAnisotropic), 4);
    EXPECT_EQ(parameter_count(ModelKind::kOuf, kAnisotropic), 5);
}

/// The correlations of the models as they are defined; they cancel in OUF where the scales are near.
double correlation(const Autocorrelation& model, double lag) {
    const auto [tau1, tau2] = model.Scales;
    switch (model.Kind) {
        case ModelKind::kIid:
            return 0.0;
        case ModelKind::kOu:
            return std::exp(-lag / tau1);
        case ModelKind::kCritical:
            return (1.0 + lag / tau1) * std::exp(-lag / tau1);
        case ModelKind::kOuf:
            break;
    }
    return (tau1 * std::exp(-lag / tau1) - tau2 * std::exp(-lag / tau2)) / (tau1 - tau2);
}

// e^-1 = 0.36787944117144233; OUF (2, 1) at lag 2: 2 e^-1 - e^-2 = 0.6004235991062720.
TEST(Models, Semivariance_by_its_definition) {
    EXPECT_NEAR((Autocorrelation{ModelKind::kOu, {3, 0}}).Semivariance(3), 1 - 0.36787944117144233, 1e-15);
    EXPECT_NEAR((Autocorrelation{ModelKind::kCritical, {3, 0}}).Semivariance(3), 1 - 0.73575888234288467, 1e-15);
    EXPECT_NEAR((Autocorrelation{ModelKind::kOuf, {2, 1}}).Semivariance(2), 1 - 0.60042359910627195, 1e-15);
}

TEST(Models, Semivariance_keeps_its_digits_at_short_lags) {
    const double z = 1e-9;
    EXPECT_NEAR((Autocorrelation{ModelKind::kOu, {1, 0}}).Semivariance(z) / 9.999999995e-10, 1.0, 1e-15);
    // z^2/2 - z^3/3, and z^2/(2 tau1 tau2) for OUF.
    EXPECT_NEAR((Autocorrelation{ModelKind::kCritical, {1, 0}}).Semivariance(1e-4) / 4.99966667916650e-9, 1.0, 1e-7);
    EXPECT_NEAR((Autocorrelation{ModelKind::kOuf, {4, 1}}).Semivariance(1e-4) / 1.25e-9, 1.0, 1e-4);
    EXPECT_EQ((Autocorrelation{ModelKind::kOuf, {4, 1}}).Semivariance(0), 0.0);
    EXPECT_EQ((Autocorrelation{}).Semivariance(1), 1.0);
}

TEST(Models, Semivariance_and_correlation_add_up_to_one) {
    for (const Autocorrelation& model :
         {Autocorrelation{ModelKind::kOu, {5, 0}}, Autocorrelation{ModelKind::kCritical, {5, 0}},
          Autocorrelation{ModelKind::kOuf, {5, 3}}, Autocorrelation{ModelKind::kOuf, {5, 4.999}}})
        for (const double lag : {0.1, 1.0, 7.0, 40.0})
            EXPECT_NEAR(correlation(model, lag) + model.Semivariance(lag), 1.0, 1e-12) << lag;
}

// Semi-axes 5 and 1 along the direction (3, 4)/5: 25 uu' + vv'.
TEST(Models, Ellipse_of_a_covariance) {
    const Ellipse ellipse = ellipse_of({25 * 0.36 + 0.64, 24 * 0.48, 25 * 0.64 + 0.36});
    EXPECT_NEAR(ellipse.Major, 5.0, 1e-12);
    EXPECT_NEAR(ellipse.Minor, 1.0, 1e-12);
    EXPECT_NEAR(ellipse.Angle, 53.13010235415598, 1e-12);
    EXPECT_EQ(ellipse_of({1, 0, 4}).Angle, 90.0);
    EXPECT_EQ(ellipse_of({4, 0, 1}).Angle, 0.0);
    EXPECT_EQ(ellipse_of({4, -0.0, 4}).Major, 2.0);
}

}  // namespace
}  // namespace wxl::movement_models
