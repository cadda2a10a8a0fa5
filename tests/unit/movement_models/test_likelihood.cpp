#include "dense_twin.h"
#include "movement_models/likelihood.h"
#include "movement_models/step_coefficients.h"
#include "tests/unit/movement_models/worked_tracks.h"

#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace wxl::movement_models {
namespace {

using tests::dense_sums;
using tests::track_of;

constexpr double kDigits = 1e-10;  // the worked numbers have this many

Track five_fixes() {
    return track_of({0, 3600, 7200, 14400, 25200}, {0, 120, 180, 60, -90}, {0, 40, 150, 210, 30});
}

constexpr Autocorrelation kOu{ModelKind::kOu, {10800, 0}};
constexpr Autocorrelation kOuf{ModelKind::kOuf, {10800, 1800}};

double profiled(const Autocorrelation& model, RangeShape shape, Criterion criterion) {
    const Track track = five_fixes();
    return profiled_log_likelihood(filter(track, model), track.Size(), shape, criterion);
}

TEST(Likelihood, Sums_of_five_fixes_under_ou) {
    const Track track = five_fixes();
    const FilterSums<double> sums = filter(track, kOu);
    EXPECT_NEAR(sums.LogDeterminant, -1.892087461513, 1e-12);
    EXPECT_NEAR(sums.Weight, 2.113910720641, 1e-12);
    EXPECT_NEAR(sums.MeanX + track.Origin.X, 10.089952073568, 1e-11);
    EXPECT_NEAR(sums.MeanY + track.Origin.Y, 69.689555795698, 1e-11);
    EXPECT_NEAR(sums.XX, 63497.557625933, 1e-8);
    EXPECT_NEAR(sums.YY, 49878.673082317, 1e-8);
    EXPECT_NEAR(sums.XY, 32094.049538067, 1e-8);
}

TEST(Likelihood, Profiled_values_of_five_fixes) {
    using enum RangeShape;
    using enum Criterion;
    EXPECT_NEAR(profiled(kOu, kIsotropic, kMl), -58.9767076184, kDigits);
    EXPECT_NEAR(profiled(kOu, kAnisotropic, kMl), -57.9569510220, kDigits);
    EXPECT_NEAR(profiled(kOu, kIsotropic, kReml), -50.2819395282, kDigits);
    EXPECT_NEAR(profiled(kOu, kAnisotropic, kReml), -49.4661342511, kDigits);
    EXPECT_NEAR(profiled({}, kIsotropic, kMl), -58.8715338501, kDigits);
    EXPECT_NEAR(profiled({}, kIsotropic, kReml), -51.4371162642, kDigits);
    EXPECT_NEAR(profiled(kOuf, kIsotropic, kMl), -58.5548830975, kDigits);
    EXPECT_NEAR(profiled(kOuf, kAnisotropic, kMl), -57.6647305707, kDigits);
    EXPECT_NEAR(profiled(kOuf, kIsotropic, kReml), -49.6129643326, kDigits);
    EXPECT_NEAR(profiled(kOuf, kAnisotropic, kReml), -48.9008423112, kDigits);
    EXPECT_NEAR(profiled({ModelKind::kCritical, {3600, 0}}, kIsotropic, kMl), -57.7647512768, kDigits);
}

TEST(Likelihood, Sums_of_five_fixes_under_ouf) {
    const FilterSums<double> sums = filter(five_fixes(), kOuf);
    EXPECT_NEAR(sums.LogDeterminant, -3.154301831026, 1e-12);
    EXPECT_NEAR(sums.Weight, 1.953195890459, 1e-12);
}

TEST(Likelihood, At_the_profiled_covariance_the_general_form_agrees) {
    const Track track = five_fixes();
    const FilterSums<double> sums = filter(track, kOuf);
    for (const RangeShape shape : tests::kRangeShapes)
        for (const Criterion criterion : {Criterion::kMl, Criterion::kReml}) {
            const Matrix2 covariance = profiled_covariance(sums, track.Size(), shape, criterion);
            EXPECT_NEAR(log_likelihood(sums, track.Size(), covariance, criterion),
                        profiled_log_likelihood(sums, track.Size(), shape, criterion), 1e-11);
        }
}

TEST(StepModel, Step_of_an_hour) {
    const StepCoefficients<double> step = StepModel<double>(10800.0, 1800.0).Step(3600.0);
    EXPECT_NEAR(step.C0, 0.832770516041, 1e-12);
    EXPECT_NEAR(step.G, 1255.383419048, 1e-9);
    EXPECT_NEAR(step.GPrime, 0.0190960777692, 1e-13);
    EXPECT_NEAR(step.Q11, 0.225423950286, 1e-12);
    EXPECT_NEAR(step.Q12, 5.25449278966e-5, 1e-16);
    EXPECT_NEAR(step.Q22, 4.72513386053e-8, 1e-19);
}

/// Both integrals by the Gauss-Legendre rule of ten points on 64 pieces, in 80 bits.
StepCoefficients<long double> integrated(long double tau1, long double tau2, long double seconds) {
    constexpr long double kNodes[5] = {0.148874338981631210884826001129719984L, 0.433395394129247190799265943165784162L,
                                       0.679409568299024406234327365114873576L, 0.865063366688984510732096688423493049L,
                                       0.973906528517171720077964012084452053L};
    constexpr long double kWeights[5] = {
        0.295524224714752870173815619188769366L, 0.269266719309996355091226921569469353L,
        0.219086362515982043995534934228163192L, 0.149451349150580593145863396957697720L,
        0.066671344308688137593568809893331793L};
    constexpr int kPieces = 64;
    const long double f = (1.0L / tau1 + 1.0L / tau2) / 2.0L;
    const long double c = (1.0L / tau2 - 1.0L / tau1) / 2.0L;
    const auto g = [&](long double s) {
        return std::exp(-s / tau1) * (c == 0.0L ? s : -std::expm1(-2.0L * c * s) / (2.0L * c));
    };
    const auto slope = [&](long double s) { return (std::exp(-s / tau1) + std::exp(-s / tau2)) / 2.0L - f * g(s); };
    StepCoefficients<long double> sums{};
    const long double half = seconds / kPieces / 2.0L;
    for (int piece = 0; piece < kPieces; ++piece)
        for (int k = 0; k < 10; ++k) {
            const long double node = k < 5 ? kNodes[k] : -kNodes[k - 5];
            const long double s = half * (2.0L * piece + 1.0L + node);
            sums.Q11 += half * kWeights[k % 5] * g(s) * g(s);
            sums.Q22 += half * kWeights[k % 5] * slope(s) * slope(s);
        }
    const long double scale = 4.0L * f / (tau1 * tau2);
    sums.Q11 *= scale;
    sums.Q22 *= scale;
    return sums;
}

// The forms for steps beyond half the shorter scale lose a few digits to differences; short steps none.
TEST(StepModel, Noise_is_the_integral_of_the_responses) {
    for (const double tau2 : {1.0, 1800.0})
        for (const double ratio : {1.0, 1.0002, 1.5, 9.0, 30.0, 1e4})
            for (const double share : {1e-5, 1e-2, 0.3, 0.499, 0.501, 0.9, 2.0, 5.0}) {
                const double seconds = share * tau2;
                const StepModel<double> model =
                    ratio == 1.0 ? StepModel<double>(tau2) : StepModel<double>(tau2 * ratio, tau2);
                const StepCoefficients<double> step = model.Step(seconds);
                const StepCoefficients<long double> wanted = integrated(tau2 * ratio, tau2, seconds);
                const double tolerance = share < 0.5 ? 4e-15 : 5e-13;
                EXPECT_NEAR(step.Q11 / static_cast<double>(wanted.Q11), 1.0, tolerance) << ratio << ' ' << share;
                EXPECT_NEAR(step.Q22 / static_cast<double>(wanted.Q22), 1.0, tolerance) << ratio << ' ' << share;
            }
}

struct RandomTrack {
    std::mt19937_64 Source{20260101};
    double Uniform() { return static_cast<double>(Source() >> 11) * 0x1p-53; }

    /// Steps between `shortest` and `longest` seconds, uniform in the logarithm.
    Track Make(std::size_t fixes, double shortest, double longest) {
        std::vector<double> times{0.0};
        std::vector<double> x{500000.0};
        std::vector<double> y{5800000.0};
        while (times.size() < fixes) {
            times.push_back(times.back() + std::round(shortest * std::pow(longest / shortest, Uniform())));
            x.push_back(x.back() + 300.0 * (Uniform() - 0.5));
            y.push_back(0.98 * (y.back() - 5800000.0) + 5800000.0 + 500.0 * (Uniform() - 0.5));
        }
        return track_of(times, x, y);
    }
};

TEST(Likelihood, Filter_agrees_with_the_dense_matrix) {
    RandomTrack random;
    const Track tracks[] = {random.Make(120, 60, 7200), random.Make(120, 60, 90000), random.Make(60, 3600, 3600),
                            random.Make(3, 60, 60)};
    const Autocorrelation models[] = {{},
                                      {ModelKind::kOu, {20, 0}},
                                      {ModelKind::kOu, {86400, 0}},
                                      {ModelKind::kCritical, {5000, 0}},
                                      {ModelKind::kOuf, {50000, 900}},
                                      {ModelKind::kOuf, {4000, 3900}},
                                      {ModelKind::kOuf, {3600, 1}}};
    for (const Track& track : tracks)
        for (const Autocorrelation& model : models) {
            const FilterSums<double> fast = filter(track, model);
            const FilterSums<double> slow = dense_sums(track, model);
            for (const RangeShape shape : tests::kRangeShapes)
                for (const Criterion criterion : {Criterion::kMl, Criterion::kReml}) {
                    const double wanted = profiled_log_likelihood(slow, track.Size(), shape, criterion);
                    EXPECT_NEAR(profiled_log_likelihood(fast, track.Size(), shape, criterion), wanted,
                                1e-10 * std::abs(wanted))
                        << model_name(model.Kind) << ' ' << track.Size();
                }
            EXPECT_NEAR(fast.Weight, slow.Weight, 1e-9 * slow.Weight);
        }
}

// Where fixes lie much closer than the scales, the matrix is all but singular and 80 bits lose half their digits: the
// numbers are those of 50-digit arithmetic.
TEST(Likelihood, Keeps_its_digits_where_the_matrix_is_all_but_singular) {
    const Track track = track_of({0, 1, 2, 62, 65, 3000, 3001, 9000, 9060, 20000, 20001, 86400},
                                 {0, 3, 5, 40, 44, -200, -198, 310, 330, 15, 14, 90},
                                 {0, -1, -1, 22, 20, 150, 153, -80, -99, 70, 71, -35});
    const auto check = [&](const TimeScales& scales, double d, double w, double ml, double reml) {
        const FilterSums<double> sums = filter(track, {ModelKind::kOuf, scales});
        using enum RangeShape;
        EXPECT_NEAR(sums.LogDeterminant / d, 1.0, 2e-15);
        EXPECT_NEAR(sums.Weight / w, 1.0, 1e-13);
        EXPECT_NEAR(profiled_log_likelihood(sums, 12, kAnisotropic, Criterion::kMl) / ml, 1.0, 1e-12);
        EXPECT_NEAR(profiled_log_likelihood(sums, 12, kAnisotropic, Criterion::kReml) / reml, 1.0, 1e-12);
    };
    check({86400, 3600}, -147.439554778138102, 1.46342212253543438, -170.746153881254494, -147.406457985504298);
    check({1e9, 1e6}, -358.537707795797468, 1.00003500178257465, -207.264737925699036, -162.909571330039627);
}

TEST(Likelihood, Nearly_equal_scales_are_taken_for_equal) {
    RandomTrack random;
    const Track track = random.Make(50, 60, 7200);
    EXPECT_EQ(filter(track, {ModelKind::kOuf, {5000.0, 4999.9}}).LogDeterminant,
              filter(track, {ModelKind::kCritical, {5000.0, 0}}).LogDeterminant);
}

/// Central differences of fourth order in ln tau.
double slope(const std::function<double(double)>& f) {
    constexpr double h = 2e-3;
    return (8.0 * (f(h) - f(-h)) - (f(2.0 * h) - f(-2.0 * h))) / (12.0 * h);
}

TEST(Likelihood, Slopes_are_those_of_the_sums) {
    RandomTrack random;
    const Track track = random.Make(80, 60, 7200);
    using enum RangeShape;
    for (const TimeScales scales : {TimeScales{40000, 900}, TimeScales{40000, 30000}, TimeScales{40000, 10}}) {
        const auto at = [&](double a, double b) {
            return penalty(
                filter(track, {ModelKind::kOuf, {scales.Position * std::exp(a), scales.Velocity * std::exp(b)}}),
                track.Size(), kAnisotropic, Criterion::kReml);
        };
        const Taylor<2> p = penalty(filter_with_slopes(track, scales), track.Size(), kAnisotropic, Criterion::kReml);
        EXPECT_NEAR(p.Value, at(0, 0), 1e-9);
        EXPECT_NEAR(p.First[0], slope([&](double h) { return at(h, 0); }), 1e-6);
        EXPECT_NEAR(p.First[1], slope([&](double h) { return at(0, h); }), 1e-6);
        EXPECT_NEAR(p.Second[0], slope([&](double h) { return slope([&](double k) { return at(h + k, 0); }); }), 1e-4);
        EXPECT_NEAR(p.Second[1], slope([&](double h) { return slope([&](double k) { return at(h, k); }); }), 1e-4);
        EXPECT_NEAR(p.Second[2], slope([&](double h) { return slope([&](double k) { return at(0, h + k); }); }), 1e-4);
    }
    for (const ModelKind kind : {ModelKind::kOu, ModelKind::kCritical}) {
        const auto at = [&](double a) {
            return penalty(filter(track, {kind, {7000 * std::exp(a), 0}}), track.Size(), kIsotropic, Criterion::kMl);
        };
        const Taylor<1> p = penalty(filter_with_slopes(track, kind, 7000), track.Size(), kIsotropic, Criterion::kMl);
        EXPECT_NEAR(p.Value, at(0), 1e-9);
        EXPECT_NEAR(p.First[0], slope(at), 1e-6);
        EXPECT_NEAR(p.Second[0], slope([&](double h) { return slope([&](double k) { return at(h + k); }); }), 1e-4);
    }
}

// D and W do not see the places; a shift and a rotation leave the determinant of S alone.
TEST(Likelihood, Does_not_depend_on_the_origin) {
    const Track near = track_of({0, 60, 200, 260}, {0, 3, 5, -2}, {1, 1, 7, 0});
    const Track far = track_of({1e9, 1e9 + 60, 1e9 + 200, 1e9 + 260}, {4e6, 4e6 + 3, 4e6 + 5, 4e6 - 2},
                               {7e6 + 1, 7e6 + 1, 7e6 + 7, 7e6});
    EXPECT_EQ(filter(near, kOuf).Determinant(), filter(far, kOuf).Determinant());
}

}  // namespace
}  // namespace wxl::movement_models
