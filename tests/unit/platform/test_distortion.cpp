#include "platform/distortion.h"

#include <gtest/gtest.h>

namespace wxl::platform {
namespace {

TEST(Distortion, Is_told_in_per_cent_with_one_decimal) {
    EXPECT_EQ(distortion_text({0.0263, 0.0001}), "areas are up to 2.6 % and distances less than 0.05 % wrong");
    EXPECT_EQ(distortion_text({3.0, 1.0}), "areas are up to 300.0 % and distances up to 100.0 % wrong");
}

TEST(Distortion, The_larger_of_each_is_kept) {
    EXPECT_EQ(larger_of({0.1, 0.02}, {0.01, 0.2}), (Distortion{0.1, 0.2}));
}

}  // namespace
}  // namespace wxl::platform
