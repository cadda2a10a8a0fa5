#include "adapters/tracking/time_zone.h"
#include "platform/runtime_error.h"
#include "tracking_times/timestamps.h"

#include <gtest/gtest.h>

namespace wxl::tracking {
namespace {

std::string utc(const TimeZone& zone, const char* clock, UtcTime::Clock said = UtcTime::Clock::kPlain) {
    const UtcTime time = zone.ToUtc(tracking_times::seconds_from_timestamp(clock).value());
    EXPECT_EQ(time.Said, said) << clock;
    return tracking_times::instant_text(time.Seconds);
}

// Clocks in Berlin went forward on 2019-03-31 from 2:00 to 3:00, and back on 2019-10-27 from 3:00 to 2:00.
TEST(TimeZone, Changes_of_the_clock) {
    const TimeZone berlin("europe/berlin");
    EXPECT_EQ(utc(berlin, "2019-03-31 01:59:59"), "2019-03-31T00:59:59Z");
    EXPECT_EQ(utc(berlin, "2019-03-31 02:30", UtcTime::Clock::kNever), "2019-03-31T01:30:00Z");
    EXPECT_EQ(utc(berlin, "2019-03-31 03:00"), "2019-03-31T01:00:00Z");
    EXPECT_EQ(utc(berlin, "2019-10-27 01:59:59"), "2019-10-26T23:59:59Z");
    EXPECT_EQ(utc(berlin, "2019-10-27 02:30", UtcTime::Clock::kTwice), "2019-10-27T00:30:00Z");
    EXPECT_EQ(utc(berlin, "2019-10-27 03:00"), "2019-10-27T02:00:00Z");
}

TEST(TimeZone, Rules_are_those_of_the_year) {
    const TimeZone denver("America/Denver");
    EXPECT_EQ(utc(denver, "2006-03-20 12:00"), "2006-03-20T19:00:00Z");
    EXPECT_EQ(utc(denver, "2007-03-20 12:00"), "2007-03-20T18:00:00Z");
}

TEST(TimeZone, Plain_offsets) {
    EXPECT_EQ(utc(TimeZone("UTC"), "2019-07-01 12:00"), "2019-07-01T12:00:00Z");
    EXPECT_EQ(utc(TimeZone("UTC+2"), "2019-07-01 12:00"), "2019-07-01T10:00:00Z");
    EXPECT_EQ(utc(TimeZone("-03:30"), "2019-07-01 12:00"), "2019-07-01T15:30:00Z");
}

TEST(TimeZone, Unknown_names_are_refused) {
    for (const char* name : {"", "Mars/Olympus", "CETT", "UTC+99"}) {
        try {
            TimeZone zone(name);
            ADD_FAILURE() << name;
        } catch (const platform::RuntimeError& error) {
            EXPECT_EQ(error.Description, "there is no time zone \"" + std::string(name) +
                                             "\": name one like Europe/Berlin, America/Denver or UTC+2");
        }
    }
}

}  // namespace
}  // namespace wxl::tracking
