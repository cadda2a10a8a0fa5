#include "adapters/tracking/odd_times.h"
#include "tracking_times/timestamps.h"

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <tuple>
#include <vector>

namespace wxl::tracking {
namespace {

constexpr std::int64_t kDay = 86400;

std::int64_t at(const std::string& text) {
    return tracking_times::seconds_from_timestamp(text).value();
}

/// Fixes of animals, in the order in which they are added.
class Fixes {
public:
    Fixes& Add(std::uint32_t animal, std::int64_t seconds) {
        TrackingFix fix;
        fix.Animal = animal;
        fix.Seconds = seconds;
        fix.Place = m_fixes.size();
        m_fixes.push_back(fix);
        return *this;
    }
    Fixes& Add(const std::string& time) { return Add(0, at(time)); }

    Fixes& Every(std::int64_t step, const std::string& first, int count, std::uint32_t animal = 0) {
        for (int i = 0; i < count; ++i) Add(animal, at(first) + step * i);
        return *this;
    }

    /// Counts by OddTime, and the place of the first of all.
    std::tuple<std::int64_t, std::int64_t, std::int64_t> Counts(bool haveClock = true) {
        Sort();
        const auto odd = find_odd_times(m_fixes, haveClock);
        return {odd[0].Count, odd[1].Count, odd[2].Count};
    }

    std::uint64_t FirstPlace(OddTime why) {
        Sort();
        return m_fixes.at(find_odd_times(m_fixes, true).at(static_cast<std::size_t>(why)).First).Place;
    }

private:
    void Sort() {
        std::ranges::sort(m_fixes, {}, [](const TrackingFix& fix) { return std::pair(fix.Animal, fix.Seconds); });
    }
    std::vector<TrackingFix> m_fixes;
};

using Counts = std::tuple<std::int64_t, std::int64_t, std::int64_t>;
constexpr Counts kNone{0, 0, 0};

/// Thirty fixes of a week of May 2018, six hours apart.
Fixes spring() {
    return Fixes().Every(kDay / 4, "2018-05-09 14:59:05", 30);
}

TEST(OddTimes, Starts_of_clocks_are_told) {
    for (const char* start : {"1970-01-01", "1980-01-06", "1899-12-30", "2000-01-01", "1970-01-01 00:14:22",
                              "1969-12-31 23:00", "1999-08-22 00:00:07", "1904-01-01", "2001-01-01 05:00"})
        EXPECT_EQ(spring().Add(start).Counts(), (Counts{1, 0, 0})) << start;
    EXPECT_EQ(spring().Add("1970-01-01").Add("1970-01-01").Add("2000-01-01").Counts(), (Counts{3, 0, 0}));
    EXPECT_EQ(spring().Add("1970-01-01").Add("1969-12-31 23:00").FirstPlace(OddTime::kClockStart), 30U);
}

TEST(OddTimes, Fixes_near_the_start_of_a_clock_are_honest) {
    EXPECT_EQ(Fixes().Every(kDay, "1999-12-01 10:00", 60).Counts(), kNone);
    EXPECT_EQ(Fixes().Every(kDay, "2000-06-01 10:00", 60).Add("2000-01-01").Counts(), kNone);
    EXPECT_EQ(Fixes().Every(kDay, "2000-01-01", 60).Counts(), kNone);
    EXPECT_EQ(Fixes().Every(kDay, "2000-01-01", 7).Every(kDay, "2003-06-01", 30).Counts(), kNone) << "over a fifth";
}

TEST(OddTimes, Clocks_of_a_whole_animal_are_compared_with_the_others) {
    EXPECT_EQ(spring().Every(600, "1970-01-01 00:05", 6, 1).Counts(), (Counts{6, 0, 0}));
    EXPECT_EQ(spring().Every(600, "1970-01-01 00:05", 7, 1).Counts(), kNone);
    EXPECT_EQ(spring().Every(600, "1970-01-01 00:05", 6, 1).Every(kDay, "1970-05-01", 60, 2).Counts(), kNone);
}

// 2018-05-12 12:00 is 7,168 days after 1998-09-26 12:00 and as many before 2037-12-27 12:00.
TEST(OddTimes, Weeks_that_are_counted_anew_are_told) {
    EXPECT_EQ(spring().Add("1998-09-26 12:00").Counts(), (Counts{0, 1, 0}));
    EXPECT_EQ(spring().Add("2037-12-27 12:00").Counts(), (Counts{0, 1, 0}));
    EXPECT_EQ(spring().Add("1998-10-26 12:00").Counts(), kNone) << "moved, it lies in June";
    EXPECT_EQ(spring().Add("1998-09-26 12:00").Counts(false), kNone) << "dates alone";
    EXPECT_EQ(spring().Add("1998-09-26 12:00").Add("1998-09-26 18:00").Counts(), kNone) << "over a twentieth";
    EXPECT_EQ(Fixes().Every(30 * kDay, "2012-05-09 12:00", 80).Add("1998-09-26 12:00").Counts(), kNone)
        << "in over five years many days lie";
}

TEST(OddTimes, Years_that_cannot_be_are_told) {
    for (const char* year : {"2080-01-01 12:00", "2099-12-31 23:59", "1018-05-09 12:00", "1996-01-01 12:00"})
        EXPECT_EQ(spring().Add(year).Counts(), (Counts{0, 0, 1})) << year;
    EXPECT_EQ(spring().Add("2080-01-01 12:00").Counts(false), kNone);
    EXPECT_EQ(spring().Add("2036-05-09 12:00").Counts(), kNone) << "18 years";
}

TEST(OddTimes, Long_and_sparse_data_are_left_alone) {
    Fixes vhf;
    for (int year = 1962; year < 2012; ++year) vhf.Every(9 * kDay, std::to_string(year) + "-05-01 09:30", 12);
    EXPECT_EQ(vhf.Counts(), kNone);
    Fixes withPause;
    withPause.Every(7 * kDay, "1964-04-01 09:30", 3).Every(7 * kDay, "1979-06-01 09:30", 200);
    EXPECT_EQ(withPause.Counts(), kNone);
    Fixes specimens;
    for (const char* day : {"1889-06-01", "1905-01-01", "1923-05-17", "1950-07-01", "1970-01-01", "1980-01-06"})
        specimens.Add(day);
    specimens.Every(90 * kDay, "1985-03-01", 30);
    EXPECT_EQ(specimens.Counts(false), kNone);
    EXPECT_EQ(Fixes().Add("1970-01-01").Add("2018-05-09").Counts(), kNone) << "two fixes show nothing";
    EXPECT_EQ(Fixes().Counts(), kNone);
}

TEST(OddTimes, Fixes_without_a_time_are_passed_over) {
    EXPECT_EQ(spring().Add(1, TrackingFix::kNoTime).Add(0, at("1970-01-01")).Counts(), (Counts{1, 0, 0}));
}

}  // namespace
}  // namespace wxl::tracking
