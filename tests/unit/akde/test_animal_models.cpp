#include "akde/animal_models.h"
#include "tests/unit/akde/kept_lines.h"

#include <cmath>
#include <gtest/gtest.h>

namespace wxl::akde {
namespace {

using movement_models::ModelKind;
using movement_models::RangeShape;

TEST(AnimalModels, Given_models_are_spelled_exactly) {
    EXPECT_EQ(parse_given_model("OUf:5")->Model.Kind, ModelKind::kCritical);
    EXPECT_EQ(parse_given_model("OUF:50,5")->Model, (movement_models::Autocorrelation{ModelKind::kOuf, {50, 5}}));
    EXPECT_EQ(parse_given_model("IID")->Shape, RangeShape::kAnisotropic);
    EXPECT_EQ(parse_given_model("OU:ISOTROPIC:1e3")->Shape, RangeShape::kIsotropic);
    for (const char* wrong : {"", "OU", "OU:", "OU:0", "OU:-1", "OU:1,2", "OUF:5", "OUF:5,5", "OUF:5,6", "ouf:5",
                              "IID:5", "OU:isotropic", "OU:1:isotropic", "BM:1", "OU:nan", "OU:1:2"})
        EXPECT_FALSE(parse_given_model(wrong)) << wrong;
}

TEST(TimedAnimals, Moments_keep_their_fractions) {
    const auto moment = moment_of(std::string("1970-01-02T00:00:01.250Z"));
    ASSERT_TRUE(moment);
    EXPECT_EQ(moment->Seconds, 86401);
    EXPECT_NEAR(moment->Fraction, 0.25, 1e-15);
    EXPECT_EQ(moment_of(std::int64_t{77})->Seconds, 77);
    EXPECT_EQ(moment_of(-0.5)->Seconds, -1);
    EXPECT_EQ(moment_of(-0.5)->Fraction, 0.5);
    EXPECT_FALSE(moment_of(std::string("soon")));
    EXPECT_FALSE(moment_of(std::monostate{}));
    EXPECT_FALSE(moment_of(std::nan("")));
}

/// An animal at these places, at these seconds.
TimedAnimal animal_at(const std::vector<platform::Point>& fixes, const std::vector<double>& seconds) {
    TimedAnimal animal;
    animal.Id = std::string("a");
    animal.Fixes = fixes;
    for (const double time : seconds)
        animal.Times.push_back({static_cast<std::int64_t>(std::floor(time)), time - std::floor(time)});
    return animal;
}

struct Fitted {
    AnimalModels Models;
    std::string Verdict;
    std::vector<std::string> Problems;
    std::vector<std::string> Notes;
};

Fitted fitted_of(const TimedAnimal& animal) {
    KeptLines lines;
    AnimalModels models = fit_animal(animal, true, {}, lines);
    report_animal(models, true, lines);
    std::string verdict = models.Verdict.Text;
    return {std::move(models), verdict, lines.Problems, lines.Notes};
}

/// Eleven places around the origin that follow no line.
std::vector<platform::Point> places(std::size_t count) {
    constexpr double kX[] = {0, 120, 180, 60, -90, -140, -20, 75, 200, 130, 40};
    constexpr double kY[] = {0, 40, 150, 210, 30, -60, -150, -80, 10, 90, 170};
    std::vector<platform::Point> fixes;
    for (std::size_t i = 0; i < count; ++i) fixes.push_back({kX[i % 11], kY[i % 11]});
    return fixes;
}

std::vector<double> every(double step, std::size_t count) {
    std::vector<double> times;
    for (std::size_t i = 0; i < count; ++i) times.push_back(step * static_cast<double>(i));
    return times;
}

TEST(DegenerateTracks, Two_fixes_are_too_few) {
    EXPECT_EQ(fitted_of(animal_at(places(2), every(3600, 2))).Verdict,
              "There are 2 fixes of different times: at least 3 are needed.");
}

TEST(DegenerateTracks, Three_and_four_fixes_have_a_model_and_a_warning) {
    for (const std::size_t n : {3U, 4U}) {
        const Fitted fitted = fitted_of(animal_at(places(n), every(3600, n)));
        ASSERT_TRUE(fitted.Models.Chosen) << n;
        EXPECT_TRUE(std::isfinite(fitted.Models.Chosen->Aicc)) << n;
        EXPECT_FALSE(fitted.Problems.empty()) << n;
    }
}

TEST(DegenerateTracks, Equal_times_name_the_first_pair_and_the_remedy) {
    const Fitted fitted = fitted_of(animal_at(places(6), {0, 10, 20, 20, 30, 30}));
    EXPECT_EQ(fitted.Verdict,
              "2 fixes have the time of another fix at another place (the first: 20): no model of movement has a "
              "likelihood. Remove duplicates in time first (wxl remove-duplicates --by time2), or name a field whose "
              "times tell them apart.");
    EXPECT_EQ(fitted.Problems, std::vector<std::string>{"a: " + fitted.Verdict});
}

TEST(DegenerateTracks, Exact_repeats_count_once) {
    std::vector<platform::Point> fixes = places(11);
    std::vector<double> times = every(3600, 11);
    fixes.push_back(fixes[4]);
    times.push_back(times[4]);
    const Fitted fitted = fitted_of(animal_at(fixes, times));
    ASSERT_TRUE(fitted.Models.Chosen);
    EXPECT_EQ(fitted.Models.Track.Fixes.Size(), 11U);
    EXPECT_EQ(fitted.Notes,
              (std::vector<std::string>{"a: The fixes were sorted by time.",
                                        "a: 1 exact repeat of another fix (same time and place) counted once."}));
}

TEST(DegenerateTracks, Equal_places_are_an_animal_that_never_moved) {
    const std::vector<platform::Point> fixes(9, {500000, 5800000});
    EXPECT_EQ(fitted_of(animal_at(fixes, every(3600, 9))).Verdict,
              "All fixes lie at one place: the animal never moved.");
}

TEST(DegenerateTracks, Times_out_of_order_give_the_model_of_the_sorted_track) {
    std::vector<platform::Point> fixes = places(11);
    std::vector<double> times = every(3600, 11);
    const Fitted sorted = fitted_of(animal_at(fixes, times));
    std::swap(fixes[2], fixes[7]);
    std::swap(times[2], times[7]);
    const Fitted mixed = fitted_of(animal_at(fixes, times));
    ASSERT_TRUE(mixed.Models.Chosen);
    EXPECT_EQ(mixed.Models.Chosen->LogLikelihood, sorted.Models.Chosen->LogLikelihood);
    EXPECT_EQ(mixed.Notes.front(), "a: The fixes were sorted by time.");
}

// Two bursts of an hour's steps, ten years apart: the gap tells nothing, and nothing overflows.
TEST(DegenerateTracks, A_gap_of_ten_years) {
    std::vector<platform::Point> fixes = places(22);
    std::vector<double> times = every(3600, 22);
    for (std::size_t i = 11; i < 22; ++i) times[i] += 10 * 365.25 * 86400;
    const Fitted fitted = fitted_of(animal_at(fixes, times));
    ASSERT_TRUE(fitted.Models.Chosen);
    EXPECT_TRUE(std::isfinite(fitted.Models.Chosen->LogLikelihood));
    EXPECT_GT(fitted.Models.Chosen->DofArea, 0.0);
    for (const auto& model : fitted.Models.Models) {
        const bool fits = model.Status == movement_models::FitStatus::kFitted;
        EXPECT_TRUE(!fits || std::isfinite(model.LogLikelihood)) << model_name(model.Model.Kind);
    }
}

// A den: two hundred fixes a minute apart at one place within a track that moves.
TEST(DegenerateTracks, One_position_for_hours) {
    std::vector<platform::Point> fixes = places(11);
    std::vector<double> times = every(3600, 11);
    for (int i = 1; i <= 200; ++i) {
        fixes.push_back(fixes[10]);
        times.push_back(times[10] + 60.0 * i);
    }
    for (int i = 1; i <= 11; ++i) {
        fixes.push_back(places(11)[static_cast<std::size_t>(i - 1)]);
        times.push_back(times[10] + 12000.0 + 3600.0 * i);
    }
    const Fitted fitted = fitted_of(animal_at(fixes, times));
    ASSERT_TRUE(fitted.Models.Chosen);
    EXPECT_TRUE(std::isfinite(fitted.Models.Chosen->Aicc));
    EXPECT_GT(fitted.Models.Chosen->GaussianArea(0.95), 0.0);
}

// A straight walk away: what autocorrelation there is lasts longer than the record.
TEST(DegenerateTracks, A_walk_away_is_not_resolved) {
    std::vector<platform::Point> fixes;
    for (int i = 0; i < 40; ++i) fixes.push_back({250.0 * i + 40.0 * ((i * 7) % 5), 130.0 * i + 35.0 * ((i * 3) % 7)});
    const Fitted fitted = fitted_of(animal_at(fixes, every(3600, 40)));
    ASSERT_TRUE(fitted.Models.Chosen);
    EXPECT_FALSE(fitted.Models.Verdict.Resident);
    EXPECT_EQ(fitted.Verdict.substr(0, 26), "Not shown to be resident. ");
    EXPECT_FALSE(fitted.Problems.empty());
}

// Places that have nothing to do with each other: OU's best time scale is the lower limit, so that it collapses.
TEST(DegenerateTracks, An_optimum_at_an_edge_has_collapsed) {
    std::vector<platform::Point> fixes;
    for (int i = 0; i < 40; ++i)
        fixes.push_back({static_cast<double>((i * 37) % 101), static_cast<double>((i * 53) % 97)});
    const Fitted fitted = fitted_of(animal_at(fixes, every(3600, 40)));
    ASSERT_TRUE(fitted.Models.Chosen);
    EXPECT_EQ(fitted.Models.Chosen->Model.Kind, ModelKind::kIid);
    for (const auto& model : fitted.Models.Models) {
        const bool collapsed = model.Status == movement_models::FitStatus::kCollapsed;
        EXPECT_EQ(collapsed, model.Model.Kind != ModelKind::kIid) << model_name(model.Model.Kind);
    }
}

TEST(DegenerateTracks, Fixes_without_a_time_are_told) {
    TimedAnimal animal = animal_at(places(11), every(3600, 11));
    animal.WithoutTime = 2;
    EXPECT_EQ(fitted_of(animal).Problems.front(), "a: 2 fixes without a time left out");
    animal.FirstUnreadable = "noon";
    EXPECT_EQ(fitted_of(animal).Problems.front(),
              "a: 2 fixes whose time cannot be read left out (the first: \"noon\")");
}

}  // namespace
}  // namespace wxl::akde
