#include "tests/contract/raster_contract.h"

#include <bit>
#include <cmath>
#include <gmock/gmock.h>
#include <limits>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace wxl::tests {

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(RasterContract);

TEST_P(RasterContract, A_published_raster_gives_its_cells_and_place_back) {
    const platform::RasterGeometry geometry{500000.0, 4649000.0, 30.0, 3, 2};
    const auto raster = Make(Define("K3", geometry), std::vector<float>{1, 2, 3, 4, 5, 6});
    ASSERT_TRUE(raster);
    EXPECT_EQ(raster->Name(), "K3");
    EXPECT_EQ(raster->Band()->Geometry(), geometry);
    EXPECT_THAT(cells_of(*raster->Band()), ElementsAre(1, 2, 3, 4, 5, 6));
}

TEST_P(RasterContract, Row_0_is_the_north_row_and_can_be_read_again) {
    const auto raster = Make(Define("K3", {0.0, 0.0, 1.0, 2, 3}), std::vector<float>{1, 2, 3, 4, 5, 6});
    std::vector<float> row(2);
    raster->Band()->ReadRow(2, row);
    EXPECT_THAT(row, ElementsAre(5, 6));
    raster->Band()->ReadRow(0, row);
    EXPECT_THAT(row, ElementsAre(1, 2));
}

TEST_P(RasterContract, One_cell_is_a_raster) {
    const platform::RasterGeometry geometry{-7.5, 12.25, 2.5, 1, 1};
    const auto raster = Make(Define("one", geometry), std::vector<float>{42.5F});
    EXPECT_EQ(raster->Band()->Geometry(), geometry);
    EXPECT_THAT(cells_of(*raster->Band()), ElementsAre(42.5F));
    EXPECT_EQ(raster->Band()->ComputeStatistics().Minimum, 42.5);
    EXPECT_EQ(raster->Band()->ComputeStatistics().Maximum, 42.5);
}

TEST_P(RasterContract, Cells_are_kept_bit_for_bit) {
    const std::vector<float> cells = {0.0F,
                                      -0.0F,
                                      std::numeric_limits<float>::denorm_min(),
                                      std::numeric_limits<float>::max(),
                                      std::nextafter(std::numeric_limits<float>::lowest(), 0.0F),
                                      1.0F / 3.0F};
    const auto raster = Make(Define("bits", {0.0, 0.0, 1.0, 3, 2}), cells);
    const auto back = cells_of(*raster->Band());
    for (std::size_t i = 0; i < cells.size(); ++i)
        EXPECT_EQ(std::bit_cast<std::uint32_t>(back[i]), std::bit_cast<std::uint32_t>(cells[i])) << i;
}

TEST_P(RasterContract, Many_cells_come_back_from_an_opened_raster) {
    const platform::RasterGeometry geometry{1000.0, -2000.0, 7.0, 611, 397};
    const auto cells = checked_cells(611, 397);
    Make(Define("K3", geometry), cells);
    const auto opened = Rasters().Open(Folder(), "K3");
    ASSERT_TRUE(opened);
    EXPECT_EQ(opened->Band()->Geometry(), geometry);
    EXPECT_EQ(cells_of(*opened->Band()), cells);
}

TEST_P(RasterContract, Statistics_are_exact) {
    std::vector<float> cells(300 * 300, 0.5F);
    cells[77] = 12345.678F;
    cells[89999] = -1e-20F;
    const auto raster = Make(Define("K3", {0.0, 0.0, 1.0, 300, 300}), cells);
    EXPECT_EQ(raster->Band()->ComputeStatistics().Maximum, static_cast<double>(12345.678F));
    EXPECT_EQ(raster->Band()->ComputeStatistics().Minimum, static_cast<double>(-1e-20F));
}

TEST_P(RasterContract, Reading_outside_is_a_subscript_error) {
    const auto band = Make(Define("K3", {0.0, 0.0, 1.0, 2, 2}), std::vector<float>{1, 2, 3, 4})->Band();
    std::vector<float> row(2);
    std::vector<float> wrong(3);
    EXPECT_EQ(error_of([&] { band->ReadRow(-1, row); }), 9);
    EXPECT_EQ(error_of([&] { band->ReadRow(2, row); }), 9);
    EXPECT_EQ(error_of([&] { band->ReadRow(0, wrong); }), 9);
}

TEST_P(RasterContract, Nothing_stands_under_the_name_before_publish) {
    const auto definition = Define("K3", {0.0, 0.0, 1.0, 1, 1});
    const auto writer = Rasters().Create(Folder(), definition);
    writer->WriteRow(std::vector<float>{1.0F});
    EXPECT_FALSE(Rasters().Exists(Folder(), "K3"));
    EXPECT_FALSE(Rasters().Open(Folder(), "K3"));
    for (const std::string& name : Names()) EXPECT_TRUE(platform::parse_temporary_name(name)) << name;
    writer->Publish();
    EXPECT_TRUE(Rasters().Exists(Folder(), "K3"));
    EXPECT_THAT(Names(), ElementsAre(FileNameOf("K3")));
}

TEST_P(RasterContract, A_writer_dropped_before_publish_leaves_nothing) {
    {
        const auto writer = Rasters().Create(Folder(), Define("K3", {0.0, 0.0, 1.0, 600, 600}));
        const std::vector<float> row(600, 1.0F);
        for (int i = 0; i < 300; ++i) writer->WriteRow(row);
    }
    EXPECT_THAT(Names(), IsEmpty());
}

TEST_P(RasterContract, A_missing_folder_is_76) {
    const auto definition = Define("K3", {0.0, 0.0, 1.0, 1, 1});
    EXPECT_EQ(error_of([&] { Rasters().Create(Folder() / "none", definition); }), 76);
}

TEST_P(RasterContract, A_name_taken_by_a_raster_is_58) {
    const auto definition = Define("K3", {0.0, 0.0, 1.0, 1, 1});
    Make(definition, std::vector<float>{1.0F});
    EXPECT_EQ(error_of([&] { Rasters().Create(Folder(), definition); }), 58);
    EXPECT_THAT(Names(), ElementsAre(FileNameOf("K3")));
}

TEST_P(RasterContract, A_name_taken_by_anything_is_58) {
    const auto definition = Define("K3", {0.0, 0.0, 1.0, 1, 1});
    Place().Folders().Create(Folder() / FileNameOf("K3"));
    EXPECT_EQ(error_of([&] { Rasters().Create(Folder(), definition); }), 58);
    Place().Folders().DeleteTree(Folder() / FileNameOf("K3"));
    Place().Files().OpenForWriting(Folder() / FileNameOf("K3"), platform::WriteMode::kNew)->Close();
    EXPECT_EQ(error_of([&] { Rasters().Create(Folder(), definition); }), 58);
}

TEST_P(RasterContract, A_name_taken_while_writing_is_58_and_nothing_is_replaced) {
    const auto definition = Define("K3", {0.0, 0.0, 1.0, 1, 1});
    {
        const auto writer = Rasters().Create(Folder(), definition);
        writer->WriteRow(std::vector<float>{1.0F});
        Place().Folders().Create(Folder() / FileNameOf("K3"));
        EXPECT_EQ(error_of([&] { writer->Publish(); }), 58);
    }
    EXPECT_THAT(Names(), ElementsAre(FileNameOf("K3")));
    EXPECT_THAT(Place().Files().List(Folder() / FileNameOf("K3")), IsEmpty());
}

TEST_P(RasterContract, Bad_names_are_5) {
    for (const std::string name : {"", "..", "../K3", "a/b", "a\\b", "K*", "K?", "a\nb", "NUL", " K3", "K3."})
        EXPECT_EQ(error_of([&] { Rasters().Create(Folder(), Define(name, {0.0, 0.0, 1.0, 1, 1})); }), 5) << name;
    EXPECT_THAT(Names(), IsEmpty());
}

TEST_P(RasterContract, An_unknown_format_is_5) {
    auto definition = Define("K3", {0.0, 0.0, 1.0, 1, 1});
    definition.Format = "JPEG";
    EXPECT_EQ(error_of([&] { Rasters().Create(Folder(), definition); }), 5);
}

TEST_P(RasterContract, Impossible_geometries_are_5) {
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const std::vector<platform::RasterGeometry> geometries = {
        {0.0, 0.0, 1.0, 0, 1},  {0.0, 0.0, 1.0, 1, 0},       {0.0, 0.0, 1.0, -1, 1},      {0.0, 0.0, 0.0, 1, 1},
        {0.0, 0.0, -1.0, 1, 1}, {0.0, 0.0, kNaN, 1, 1},      {0.0, 0.0, kInfinity, 1, 1}, {kNaN, 0.0, 1.0, 1, 1},
        {0.0, kNaN, 1.0, 1, 1}, {0.0, kInfinity, 1.0, 1, 1}, {1e300, 0.0, 1.0, 100, 100}, {0.0, 1e17, 1.0, 3, 3},
    };
    for (const auto& geometry : geometries)
        EXPECT_EQ(error_of([&] { Rasters().Create(Folder(), Define("K3", geometry)); }), 5)
            << geometry.OriginX << ' ' << geometry.OriginY << ' ' << geometry.CellSize << ' ' << geometry.Columns;
}

TEST_P(RasterContract, Cells_that_are_no_numbers_are_6_and_name_the_raster) {
    const auto writer = Rasters().Create(Folder(), Define("K3", {0.0, 0.0, 1.0, 3, 1}));
    constexpr float kLowest = std::numeric_limits<float>::lowest();
    for (const float bad : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
                            -std::numeric_limits<float>::infinity(), kLowest}) {
        const std::vector<float> row = {1.0F, bad, 2.0F};
        EXPECT_EQ(error_of([&] { writer->WriteRow(row); }), 6) << bad;
        EXPECT_THAT(text_of_error([&] { writer->WriteRow(row); }), HasSubstr("\"K3\""));
    }
    // The refused rows were not taken.
    writer->WriteRow(std::vector<float>{1, 2, 3});
    EXPECT_THAT(cells_of(*writer->Publish()->Band()), ElementsAre(1, 2, 3));
}

TEST_P(RasterContract, Rows_of_another_length_and_rows_too_many_are_9) {
    const auto writer = Rasters().Create(Folder(), Define("K3", {0.0, 0.0, 1.0, 2, 1}));
    EXPECT_EQ(error_of([&] { writer->WriteRow(std::vector<float>{1, 2, 3}); }), 9);
    EXPECT_EQ(error_of([&] { writer->WriteRow(std::vector<float>{1}); }), 9);
    writer->WriteRow(std::vector<float>{1, 2});
    EXPECT_EQ(error_of([&] { writer->WriteRow(std::vector<float>{1, 2}); }), 9);
}

TEST_P(RasterContract, Publish_before_the_last_row_or_twice_is_5) {
    const auto writer = Rasters().Create(Folder(), Define("K3", {0.0, 0.0, 1.0, 1, 2}));
    writer->WriteRow(std::vector<float>{1});
    EXPECT_EQ(error_of([&] { writer->Publish(); }), 5);
    writer->WriteRow(std::vector<float>{2});
    EXPECT_TRUE(writer->Publish());
    EXPECT_EQ(error_of([&] { writer->Publish(); }), 5);
}

TEST_P(RasterContract, A_raster_not_there_is_neither_found_nor_deleted) {
    EXPECT_FALSE(Rasters().Exists(Folder(), "K3"));
    EXPECT_FALSE(Rasters().Exists(Folder() / "none", "K3"));
    EXPECT_FALSE(Rasters().Open(Folder(), "K3"));
    EXPECT_EQ(error_of([&] { Rasters().Delete(Folder(), "K3"); }), 53);
}

TEST_P(RasterContract, A_plain_folder_is_no_raster) {
    Place().Folders().Create(Folder() / "K3");
    EXPECT_FALSE(Rasters().Exists(Folder(), "K3"));
    EXPECT_FALSE(Rasters().Open(Folder(), "K3"));
    EXPECT_EQ(error_of([&] { Rasters().Delete(Folder(), "K3"); }), 53);
    EXPECT_TRUE(Place().Files().FolderExists(Folder() / "K3"));
}

TEST_P(RasterContract, Delete_frees_the_name_and_touches_nothing_else) {
    const auto definition = Define("K3", {0.0, 0.0, 1.0, 1, 1});
    Make(definition, std::vector<float>{1.0F});
    Make(Define("K31", {0.0, 0.0, 1.0, 1, 1}), std::vector<float>{1.0F});
    Rasters().Delete(Folder(), "K3");
    EXPECT_FALSE(Rasters().Exists(Folder(), "K3"));
    EXPECT_THAT(Names(), ElementsAre(FileNameOf("K31")));
    EXPECT_THAT(cells_of(*Make(definition, std::vector<float>{2.0F})->Band()), ElementsAre(2.0F));
}

TEST_P(RasterContract, Two_writers_of_different_names_do_not_meet) {
    const auto one = Define("one", {0.0, 0.0, 1.0, 1, 1});
    const auto two = Define("two", {0.0, 0.0, 1.0, 1, 1});
    const auto first = Rasters().Create(Folder(), one);
    const auto second = Rasters().Create(Folder(), two);
    first->WriteRow(std::vector<float>{1});
    second->WriteRow(std::vector<float>{2});
    EXPECT_THAT(cells_of(*first->Publish()->Band()), ElementsAre(1));
    EXPECT_THAT(cells_of(*second->Publish()->Band()), ElementsAre(2));
}

TEST_P(RasterContract, Names_and_folders_beyond_ascii_work) {
    const auto folder = Folder() / "Bären Ż 東";
    Place().Folders().Create(folder);
    const auto definition = Define("Bär Ż 東", {0.0, 0.0, 1.0, 2, 1});
    const auto writer = Rasters().Create(folder, definition);
    writer->WriteRow(std::vector<float>{1, 2});
    EXPECT_EQ(writer->Publish()->Name(), "Bär Ż 東");
    EXPECT_THAT(cells_of(*Rasters().Open(folder, "Bär Ż 東")->Band()), ElementsAre(1, 2));
    Rasters().Delete(folder, "Bär Ż 東");
    EXPECT_THAT(Place().Files().List(folder), IsEmpty());
}

}  // namespace wxl::tests
