#include "movement_models/track.h"

#include <gtest/gtest.h>
#include <vector>

namespace wxl::movement_models {
namespace {

using platform::Point;

PreparedTrack prepared(const std::vector<double>& times, const std::vector<Point>& fixes) {
    return prepare_track(times, fixes);
}

TEST(Track, Fixes_are_ordered_and_counted_from_the_first) {
    const PreparedTrack track = prepared({500, 100, 300}, {{30, 1}, {10, 5}, {20, 0}});
    EXPECT_EQ(track.Problem, TrackProblem::kNone);
    EXPECT_FALSE(track.Sorted);
    EXPECT_EQ(track.Fixes.Times, (std::vector<double>{0, 200, 400}));
    EXPECT_EQ(track.Fixes.X, (std::vector<double>{-10, 0, 10}));
    EXPECT_EQ(track.Fixes.Y, (std::vector<double>{3, -2, -1}));
    EXPECT_EQ(track.Fixes.Origin, (Point{20, 2}));
    EXPECT_EQ(track.Order, (std::vector<std::size_t>{1, 2, 0}));
}

TEST(Track, Exact_repeats_count_once) {
    const PreparedTrack track = prepared({0, 60, 60, 120, 60}, {{0, 0}, {1, 1}, {1, 1}, {5, 2}, {1, 1}});
    EXPECT_EQ(track.Problem, TrackProblem::kNone);
    EXPECT_EQ(track.Given, 5U);
    EXPECT_EQ(track.Repeats, 2U);
    EXPECT_EQ(track.Fixes.Size(), 3U);
}

TEST(Track, Two_places_at_one_time_are_named) {
    const PreparedTrack track = prepared({0, 60, 60, 120, 60}, {{0, 0}, {1, 1}, {1, 2}, {5, 2}, {1, 3}});
    EXPECT_EQ(track.Problem, TrackProblem::kTwoPlacesAtOneTime);
    EXPECT_EQ(track.Conflicts, 2U);
    EXPECT_EQ(track.FirstConflict[0], 1U);
    EXPECT_EQ(track.FirstConflict[1], 2U);
}

TEST(Track, Too_few_fixes) {
    EXPECT_EQ(prepared({}, {}).Problem, TrackProblem::kTooFewFixes);
    EXPECT_EQ(prepared({0, 0, 1}, {{1, 1}, {1, 1}, {2, 2}}).Problem, TrackProblem::kTooFewFixes);
}

TEST(Track, An_animal_that_never_moved) {
    EXPECT_EQ(prepared({0, 1, 2}, {{1, 1}, {1, 1}, {1, 1}}).Problem, TrackProblem::kNeverMoved);
}

TEST(Track, Fixes_on_a_line_are_told) {
    EXPECT_TRUE(prepared({0, 1, 2}, {{5e5, 1}, {5e5, 4}, {5e5, 2}}).OnALine);
    EXPECT_TRUE(prepared({0, 1, 2}, {{500000, 5800000}, {500010, 5800020}, {500040, 5800080}}).OnALine);
    EXPECT_FALSE(prepared({0, 1, 2}, {{500000, 5800000}, {500010, 5800020}, {500040, 5800081}}).OnALine);
}

TEST(Track, Steps) {
    const Track odd = prepared({0, 10, 12, 42}, {{0, 0}, {1, 0}, {2, 5}, {3, 0}}).Fixes;
    EXPECT_EQ(odd.MedianStep(), 10.0);
    EXPECT_EQ(odd.ShortestStep(), 2.0);
    EXPECT_EQ(odd.Duration(), 42.0);
    const Track even = prepared({0, 10, 12}, {{0, 0}, {1, 0}, {2, 5}}).Fixes;
    EXPECT_EQ(even.MedianStep(), 6.0);
}

}  // namespace
}  // namespace wxl::movement_models
