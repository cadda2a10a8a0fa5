#include "movement_models/verdict.h"

#include <gtest/gtest.h>

namespace wxl::movement_models {
namespace {

PreparedTrack of_ten_days() {
    PreparedTrack track;
    track.Fixes.Times = {0, 100, 864000};
    return track;
}

FittedModel with(double dof, double tau) {
    FittedModel fit;
    fit.Model = {tau > 0 ? ModelKind::kOu : ModelKind::kIid, {tau, 0}};
    fit.DofArea = dof;
    return fit;
}

TEST(Verdict, Resident) {
    const Verdict verdict = verdict_of(of_ten_days(), with(31.4159, 5400), false);
    EXPECT_TRUE(verdict.Resident);
    EXPECT_EQ(verdict.Text,
              "Resident: the range is crossed in about 1.5 h, and the record is worth 31.4 effective fixes.");
    EXPECT_EQ(verdict_of(of_ten_days(), with(2000, 0), false).Text,
              "Resident: the fixes are independent and worth 2000 effective fixes.");
}

TEST(Verdict, Few_data_and_a_rising_variogram) {
    const Verdict verdict = verdict_of(of_ten_days(), with(3.5, 86400), true);
    EXPECT_FALSE(verdict.Resident);
    EXPECT_EQ(verdict.Text,
              "Not shown to be resident. The data are few: the record is worth 3.5 effective fixes. The variogram does "
              "not level off: within this record positions still drift apart.");
}

TEST(Verdict, A_range_that_was_not_resolved) {
    EXPECT_EQ(verdict_of(of_ten_days(), with(1.2, 1.728e6), false).Text,
              "Not shown to be resident. The range is hardly crossed: the record is worth 1.2 effective fixes. Look at "
              "the variogram before using the area. The range was not resolved: crossing it takes 20 days, longer than "
              "the record of 10 days.");
}

TEST(Verdict, No_limits) {
    EXPECT_EQ(verdict_of(of_ten_days(), with(0, 100), false).Text,
              "Not shown to be resident. The effective sample size is not defined, so that the area has no limits.");
}

TEST(Verdict, Durations_in_the_unit_that_suits) {
    EXPECT_EQ(duration_text(35.04), "35 s");
    EXPECT_EQ(duration_text(753), "12.6 min");
    EXPECT_EQ(duration_text(33480), "9.3 h");
    EXPECT_EQ(duration_text(86400 * 21.4), "21.4 days");
}

TEST(Verdict, Notes_tell_what_was_done) {
    PreparedTrack track = of_ten_days();
    track.Sorted = false;
    track.Repeats = 2;
    FittedModel fit = with(5, 100);
    fit.Used = Estimation::kHreml;
    EXPECT_EQ(notes_on(track, fit, Estimation::kPhreml),
              (std::vector<std::string>{"The fixes were sorted by time.",
                                        "2 exact repeats of another fix (same time and place) counted once.",
                                        "The estimate by pHREML is not defined here: it is by HREML."}));
}

}  // namespace
}  // namespace wxl::movement_models
