#include "tests/unit/adapters/disk/killed_child.h"
#include "tests/unit/cli/layer_files.h"
#include "tests/unit/cli/layer_rows.h"

#include <gtest/gtest.h>

namespace wxl::cli {
namespace {

using tests::ScratchFolder;

// Rows 0, 1 and 4 have one time, rows 2, 3 and 4 one place; row 4 is of another animal.
const std::string kFixes =
    "a,1,1,2018-05-09\n"
    "a,2,2,2018-05-09\n"
    "a,3,3,2018-05-10\n"
    "a,3,3,2018-05-11\n"
    "b,3,3,2018-05-09\n";

const std::string kMixed =
    "the fixes of 2 animals (field animal) are taken as one track; --id-field animal takes each animal by itself\n";

/// The x coordinate of every row.
std::vector<double> xs_of(const std::string& layer) {
    std::vector<double> xs;
    for (const LayerRow& row : layer_rows(layer)) xs.push_back(row.Shape.Location.X);
    return xs;
}

TEST(RemoveDuplicates, By_time_keeps_the_lowest_row) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, kFixes);
    const Ran ran = run_wxl({"remove-duplicates", layer, "--by", "time2", "--answer", "animals=yes"});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_EQ(ran.Out, layer + ": 5 fixes compared, 2 deleted, 3 left in the layer\n");
    EXPECT_EQ(ran.Err, kMixed + "Deleted 2 duplicate features\n");
    EXPECT_EQ(xs_of(layer), (std::vector<double>{1, 3, 3}));
    EXPECT_EQ(names_in(folder.Path()),
              (std::set<std::string>{"layer.csv", "layer.cpg", "layer.dbf", "layer.prj", "layer.shp", "layer.shx"}));
}

TEST(RemoveDuplicates, By_place_keeps_the_first) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, kFixes);
    const Ran ran = run_wxl({"remove-duplicates", layer, "--by", "xy", "--answer", "yes"});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_EQ(ran.Out, layer + ": 5 fixes compared, 2 deleted, 3 left in the layer\n");
    EXPECT_EQ(xs_of(layer), (std::vector<double>{1, 2, 3}));
}

TEST(RemoveDuplicates, Fixes_that_do_not_meet_the_condition_stay) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, kFixes);
    const Ran ran = run_wxl({"remove-duplicates", layer, "--by", "time2", "--where", "animal = 'a'"});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_EQ(ran.Out, layer + ": 4 fixes compared, 1 deleted, 4 left in the layer\n");
    EXPECT_EQ(xs_of(layer), (std::vector<double>{1, 3, 3, 3}));
    const Ran none = run_wxl({"remove-duplicates", layer, "--by", "time2", "--where", "animal = 'a'"});
    EXPECT_EQ(none.Code, 0);
    EXPECT_EQ(none.Err, "Deleted 0 duplicate features\n");
}

TEST(RemoveDuplicates, Several_animals_are_a_question_even_when_quiet) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, kFixes);
    const Ran ran = run_wxl({"-q", "remove-duplicates", layer, "--by", "time2"});
    EXPECT_EQ(ran.Code, 1);
    EXPECT_EQ(ran.Out, "");
    EXPECT_EQ(ran.Err, kMixed +
                           "wxl: stopped, because this question has no answer: give --answer animals=yes or "
                           "--answer animals=no\n");
    const Ran declined = run_wxl({"remove-duplicates", layer, "--by", "time2", "--answer", "animals=no"});
    EXPECT_EQ(declined.Code, 0);
    EXPECT_EQ(declined.Out, layer + ": nothing changed\n");
    EXPECT_EQ(layer_rows(layer).size(), 5U);
}

TEST(RemoveDuplicates, Each_animal_by_itself_in_one_pass) {
    ScratchFolder folder;
    const std::string byTime = make_layer(folder, kFixes + "b,4,4,2018-05-09\n");
    const Ran time2 = run_wxl({"remove-duplicates", byTime, "--by", "time2", "--id-field", "ANIMAL"});
    EXPECT_EQ(time2.Code, 0);
    EXPECT_EQ(time2.Out, byTime + ": 6 fixes compared, 2 deleted, 4 left in the layer\n");
    EXPECT_EQ(time2.Err, "Deleted 2 duplicate features\n");
    EXPECT_EQ(xs_of(byTime), (std::vector<double>{1, 3, 3, 3}));
    ScratchFolder other;
    const std::string byPlace = make_layer(other, kFixes);
    EXPECT_EQ(run_wxl({"remove-duplicates", byPlace, "--by", "xy", "--id-field", "animal"}).Code, 0);
    EXPECT_EQ(xs_of(byPlace), (std::vector<double>{1, 2, 3, 3}));
    const Ran unknown = run_wxl({"remove-duplicates", byPlace, "--by", "xy", "--id-field", "wolf"});
    EXPECT_EQ(unknown.Code, 1);
    EXPECT_EQ(unknown.Err.find("wxl: " + byPlace + " has no field \"wolf\"; its fields are: animal"), 0U);
}

TEST(RemoveDuplicates, A_field_that_numbers_the_rows_is_no_name_of_an_animal) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, "a,1,1,2018-05-09\nb,2,2,2018-05-09\nc,3,3,2018-05-10\n");
    const Ran ran = run_wxl({"remove-duplicates", layer, "--by", "time2"});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_EQ(ran.Err, "Deleted 1 duplicate features\n");
}

TEST(RemoveDuplicates, Nothing_to_compare_is_a_failure) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, kFixes);
    const Ran ran = run_wxl({"remove-duplicates", layer, "--by", "xy", "--where", "animal = 'c'"});
    EXPECT_EQ(ran.Code, 1);
    EXPECT_EQ(ran.Out, "");
    EXPECT_EQ(ran.Err,
              "You must select/highlight some points in the map to test. No points were tested or removed!!\nwxl: " +
                  layer + ": the duplicates were not all removed; 5 of 5 rows are left\n");
}

TEST(RemoveDuplicates, Wrong_calls_are_told) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, kFixes);
    EXPECT_EQ(run_wxl({"remove-duplicates", layer}).Code, 2);
    EXPECT_EQ(run_wxl({"remove-duplicates", layer, "--by", "place"}).Code, 2);
    const Ran where = run_wxl({"remove-duplicates", layer, "--by", "xy", "--where", "nothing = 1"});
    EXPECT_EQ(where.Code, 1);
    EXPECT_NE(where.Err.find("nothing"), std::string::npos);
    const std::string csv = write_file(folder, "t.csv", "animal,x,y\na,1,1\n");
    const std::string timeless = (folder / "t.shp").string();
    ASSERT_EQ(run_wxl({"import", csv, timeless, "--from-crs", "EPSG:32633"}).Code, 0);
    EXPECT_EQ(run_wxl({"remove-duplicates", timeless, "--by", "time2"}).Err,
              "You must select points layer with a Time2 field\nwxl: " + timeless +
                  ": the duplicates were not all removed; 1 of 1 rows are left\n");
    EXPECT_EQ(layer_rows(layer).size(), 5U);
}

TEST(RemoveDuplicates, Killed_at_any_moment_it_leaves_the_table_as_it_was_or_as_it_should_be) {
    ScratchFolder folder;
    make_layer(folder, kFixes);
    const std::vector<double> before = {1, 2, 3, 3, 3};
    const std::vector<double> after = {1, 3, 3};
    int unchanged = 0;
    int done = 0;
    constexpr int kStride = 5;  // system calls; those between are left to the tests of the table itself
    for (int call = 0;; call += kStride) {
        ScratchFolder work;
        for (const std::string& name : names_in(folder.Path())) std::filesystem::copy_file(folder / name, work / name);
        const std::string layer = (work / "layer.shp").string();
        const auto end = tests::RunAndKillAt(call, [&] {
            run_wxl({"remove-duplicates", layer, "--by", "time2", "--answer", "yes"});
        });
        if (end == tests::ChildEnd::kCannotTrace) GTEST_SKIP() << "processes cannot be traced here";
        const std::vector<double> left = xs_of(layer);
        ASSERT_TRUE(left == before || left == after) << "killed at system call " << call;
        ++(left == before ? unchanged : done);
        if (end == tests::ChildEnd::kFinished) break;
    }
    EXPECT_GT(unchanged, 0);
    EXPECT_GT(done, 1);
}

}  // namespace
}  // namespace wxl::cli
