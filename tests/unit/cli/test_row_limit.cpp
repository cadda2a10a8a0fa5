#include "tests/unit/cli/layer_files.h"
#include "tests/unit/cli/layer_rows.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace wxl::cli {
namespace {

using tests::ScratchFolder;

/// A walk of 32769 fixes, one a second; the last one stands where the first one stood.
std::string make_long_layer(const ScratchFolder& folder) {
    std::string rows = "a,500000,5000000,2018-05-09T00:00:00\n";
    for (int i = 1; i < 32768; ++i) {
        rows += fmt::format("a,{},5000000,2018-05-09T{:02}:{:02}:{:02}\n", 500000 + i, i / 3600, i / 60 % 60, i % 60);
    }
    return make_layer(folder, rows + "a,500000,5000000,2018-05-10T00:00:00\n");
}

TEST(RowLimit, Movement_tools_refuse_long_layers_unless_large_is_given) {
    ScratchFolder folder;
    const std::string layer = make_long_layer(folder);
    const std::string track = (folder / "track.shp").string();
    const std::string advice = "; --large lifts the limit of 32767 rows\n";

    const Ran shortTrack = run_wxl({"track", layer, track});
    EXPECT_EQ(shortTrack.Code, 1);
    EXPECT_EQ(shortTrack.Err, "getlastFID sub Error number: 6\nwxl: " + track + ": the track was not saved" + advice);
    EXPECT_EQ(run_wxl({"track", layer, track, "--large"}).Out, track + ": 32769 fixes, 32768 legs\n");

    const Ran fields = run_wxl({"obs-fields", layer, "--yes"});
    EXPECT_EQ(fields.Code, 1);
    EXPECT_EQ(fields.Err,
              "calcobsfields sub Error number: 6\nwxl: " + layer + ": the fields are not complete" + advice);
    EXPECT_EQ(run_wxl({"obs-fields", layer, "--yes", "--large"}).Out, layer + ": 32769 rows filled\n");

    const Ran duplicates = run_wxl({"remove-duplicates", layer, "--by", "time2"});
    EXPECT_EQ(duplicates.Code, 1);
    EXPECT_EQ(duplicates.Err, "CalcFeatures sub Error number: 6\nwxl: " + layer +
                                  ": the duplicates were not all removed; 32769 of 32769 rows are left" + advice);
    EXPECT_EQ(run_wxl({"remove-duplicates", layer, "--by", "xy", "--large"}).Out,
              layer + ": 32769 fixes compared, 1 deleted, 32768 left in the layer\n");
}

// Two fixes at one place, then 32768 places of one fix each: the walk deletes one fix, and ends at the row 32768.
TEST(RowLimit, The_option_is_named_also_where_deletions_came_before_the_limit) {
    ScratchFolder folder;
    std::string rows = "a,1,1,2018-05-09\na,1,1,2018-05-09\n";
    for (int i = 1; i <= 32768; ++i) rows += fmt::format("a,{},5000000,2018-05-09\n", 500000 + i);
    const std::string layer = make_layer(folder, rows);
    const Ran ran = run_wxl({"remove-duplicates", layer, "--by", "xy"});
    EXPECT_EQ(ran.Code, 1);
    EXPECT_EQ(ran.Err,
              "Calcfeatures sub Error number: 6\nwxl: " + layer +
                  ": the duplicates were not all removed; 32769 of 32770 rows are left; --large lifts the limit "
                  "of 32767 rows\n");
}

}  // namespace
}  // namespace wxl::cli
