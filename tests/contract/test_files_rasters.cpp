// What only rasters on a real disk can show: coordinate systems, side files, full and read-only disks, damage.

#include "adapters/raster/raster_dataset.h"
#include "tests/contract/files_rasters.h"
#include "tests/contract/mounted_disk.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using wxl::platform::RasterDefinition;
using wxl::platform::RasterGeometry;

namespace wxl::tests {
namespace {

class FilesRastersOfFormat : public FilesRasters, public testing::WithParamInterface<std::string> {};

}  // namespace

INSTANTIATE_TEST_SUITE_P(Formats, FilesRastersOfFormat, testing::Values("GRID", "GTiff"),
                         [](const auto& format) { return format.param; });

TEST_P(FilesRastersOfFormat, The_coordinate_system_is_recognised_by_its_code) {
    for (const std::string code : {"26915", "32733", "4326", "3035", "2154"}) {
        const auto reference = files::ReferenceFromText("EPSG:" + code);
        const auto raster =
            Make({"K" + code, GetParam(), {10.0, 20.0, 0.5, 2, 1}, reference}, std::vector<float>{1, 2});
        const auto dataset = open_by_gdal(raster->Path());
        ASSERT_TRUE(dataset);
        const OGRSpatialReference* read = dataset->GetSpatialRef();
        ASSERT_NE(read, nullptr);
        const platform::SpatialReference back = raster->Reference();
        EXPECT_EQ(raster->Band()->Reference(), back) << code;
        EXPECT_EQ(back.IsGeographic, reference.IsGeographic) << code;
        EXPECT_EQ(back.MetersPerUnit, reference.MetersPerUnit) << code;
        int count = 0;
        int* confidence = nullptr;
        OGRSpatialReferenceH* matches = read->FindMatches(nullptr, &count, &confidence);
        ASSERT_GT(count, 0) << code;
        EXPECT_STREQ(OGRSpatialReference::FromHandle(matches[0])->GetAuthorityCode(nullptr), code.c_str());
        OSRFreeSRSArray(matches);
        CPLFree(confidence);
    }
}

// Cells without any contribution are 0, and 0 is a value.
TEST_P(FilesRastersOfFormat, Empty_cells_are_0_and_not_missing) {
    const auto raster = Make({"K3", GetParam(), {0.0, 0.0, 1.0, 2, 1}, {}}, std::vector<float>{0.0F, 1.0F});
    const auto dataset = open_by_gdal(raster->Path());
    ASSERT_TRUE(dataset);
    int isSet = 0;
    const double missing = dataset->GetRasterBand(1)->GetNoDataValue(&isSet);
    // The format of GRIDs has a fixed one.
    EXPECT_EQ(isSet != 0, GetParam() == "GRID");
    EXPECT_TRUE(isSet == 0 || missing < -3.4e38) << missing;
    EXPECT_THAT(cells_of(*raster->Band()), ElementsAre(0.0F, 1.0F));
}

TEST_P(FilesRastersOfFormat, An_unknown_coordinate_system_stays_unknown) {
    const auto raster = Make({"K3", GetParam(), {0.0, 0.0, 1.0, 1, 1}, {}}, std::vector<float>{1});
    EXPECT_EQ(raster->Reference(), platform::SpatialReference());
}

TEST_P(FilesRastersOfFormat, The_dataset_tells_where_it_lies) {
    const auto raster = Make({"K3", GetParam(), {0.0, 0.0, 1.0, 1, 1}, {}}, std::vector<float>{1});
    EXPECT_EQ(raster->Path(), m_scratch / (GetParam() == "GRID" ? "K3" : "K3.tif"));
    EXPECT_EQ(cells_of(*files::OpenRaster(raster->Path())->Band()), std::vector<float>{1});
}

TEST_P(FilesRastersOfFormat, Reading_leaves_no_file_beside_the_raster) {
    {
        const auto raster = Make({"K3", GetParam(), {0.0, 0.0, 1.0, 2, 2}, {}}, std::vector<float>{1, 2, 3, 4});
        raster->Band()->ComputeStatistics();
    }
    EXPECT_THAT(m_files.List(m_scratch.Path()), ElementsAre(GetParam() == "GRID" ? "K3" : "K3.tif"));
}

TEST_P(FilesRastersOfFormat, Statistics_do_not_trust_a_side_file) {
    const std::string name = GetParam() == "GRID" ? "K3" : "K3.tif";
    Make({"K3", GetParam(), {0.0, 0.0, 1.0, 2, 2}, {}}, std::vector<float>{1, 2, 3, 4});
    Put(m_scratch / (name + ".aux.xml"),
        "<PAMDataset><PAMRasterBand band=\"1\"><Metadata><MDI key=\"STATISTICS_MINIMUM\">-99</MDI>"
        "<MDI key=\"STATISTICS_MAXIMUM\">99</MDI></Metadata></PAMRasterBand></PAMDataset>");
    const auto statistics = m_rasters.Open(m_scratch.Path(), "K3")->Band()->ComputeStatistics();
    EXPECT_EQ(statistics.Minimum, 1.0);
    EXPECT_EQ(statistics.Maximum, 4.0);
}

TEST_P(FilesRastersOfFormat, A_side_file_goes_with_its_raster) {
    const std::string name = GetParam() == "GRID" ? "K3" : "K3.tif";
    Make({"K3", GetParam(), {0.0, 0.0, 1.0, 1, 1}, {}}, std::vector<float>{1});
    Put(m_scratch / (name + ".aux.xml"), "<PAMDataset/>");
    Put(m_scratch / "K31.aux.xml", "<PAMDataset/>");
    m_rasters.Delete(m_scratch.Path(), "K3");
    EXPECT_THAT(m_files.List(m_scratch.Path()), ElementsAre("K31.aux.xml"));
}

TEST_P(FilesRastersOfFormat, A_lone_side_file_takes_the_name_and_stays) {
    const std::string name = GetParam() == "GRID" ? "K3" : "K3.tif";
    for (const std::string end : {".aux.xml", ".ovr", ".msk"}) {
        const RasterDefinition definition{"K3", GetParam(), {0.0, 0.0, 1.0, 1, 1}, {}};
        {
            // It may come while the raster is being written, too.
            const auto writer = m_rasters.Create(m_scratch.Path(), definition);
            writer->WriteRow(std::vector<float>{1.0F});
            Put(m_scratch / (name + end), "mine");
            EXPECT_EQ(error_of([&] { writer->Publish(); }), 58);
        }
        EXPECT_EQ(error_of([&] { m_rasters.Create(m_scratch.Path(), definition); }), 58);
        EXPECT_THAT(m_files.List(m_scratch.Path()), ElementsAre(name + end));
        EXPECT_EQ(m_files.ReadFile(m_scratch / (name + end), 10), "mine");
        m_files.DeleteFile(m_scratch / (name + end), false);
    }
}

TEST_P(FilesRastersOfFormat, A_full_disk_is_61_names_the_raster_and_leaves_nothing) {
    const MountedDisk disk("size=96k");
    if (!disk.IsMounted()) GTEST_SKIP() << "no small disk could be mounted: " << disk.WhyNot();
    std::string text;
    std::int32_t number = 0;
    {
        const RasterDefinition definition{"K3", GetParam(), {0.0, 0.0, 1.0, 900, 900}, {}};
        const auto cells = checked_cells(900, 900);
        try {
            const auto writer = m_rasters.Create(disk.Path(), definition);
            write_rows(*writer, definition, cells);
            writer->Publish();
        } catch (const platform::RuntimeError& error) {
            number = error.Number;
            text = error.Description;
        }
    }
    EXPECT_EQ(number, 61) << text;
    EXPECT_THAT(text, StartsWith("The raster \"K3\" could not be written"));
    EXPECT_THAT(text, HasSubstr("Disk full"));
    EXPECT_THAT(m_files.List(disk.Path()), IsEmpty());
}

// The last bytes of a raster, too, can be the ones that find no room.
TEST_P(FilesRastersOfFormat, A_disk_full_at_any_moment_leaves_nothing) {
    const MountedDisk disk("size=128k");
    if (!disk.IsMounted()) GTEST_SKIP() << "no small disk could be mounted: " << disk.WhyNot();
    const RasterDefinition definition{"K3", GetParam(), {0.0, 0.0, 1.0, 100, 100}, files::ReferenceFromText(kUtm15)};
    const auto cells = checked_cells(100, 100);
    int full = 0;
    for (std::size_t taken = 0; taken <= 128; taken += 4) {
        SCOPED_TRACE(taken);
        if (taken > 0) Put(disk.Path() / "filler", std::string(std::min<std::size_t>(taken, 120) * 1024, 'x'));
        const std::int32_t number = error_of([&] {
            const auto writer = m_rasters.Create(disk.Path(), definition);
            write_rows(*writer, definition, cells);
            writer->Publish();
        });
        EXPECT_TRUE(number == 0 || number == 61) << number;
        full += number == 61 ? 1 : 0;
        if (number == 0) {
            EXPECT_TRUE(cells_of(*m_rasters.Open(disk.Path(), "K3")->Band()) == cells);
            m_rasters.Delete(disk.Path(), "K3");
        }
        if (taken > 0) m_files.DeleteFile(disk.Path() / "filler", false);
        ASSERT_THAT(m_files.List(disk.Path()), IsEmpty());
    }
    EXPECT_GT(full, 5);
    EXPECT_LT(full, 33);
}

TEST_P(FilesRastersOfFormat, A_read_only_folder_is_70) {
    MountedDisk disk("size=96k");
    if (!disk.IsMounted()) GTEST_SKIP() << "no small disk could be mounted: " << disk.WhyNot();
    if (!disk.MakeReadOnly()) GTEST_SKIP() << "the disk could not be made read-only";
    EXPECT_EQ(error_of([&] { m_rasters.Create(disk.Path(), {"K3", GetParam(), {0.0, 0.0, 1.0, 1, 1}, {}}); }), 70);
}

TEST_F(FilesRasters, A_grid_folder_that_holds_other_files_is_not_deleted) {
    Make({"K3", "GRID", {0.0, 0.0, 1.0, 1, 1}, {}}, std::vector<float>{1});
    Put(m_scratch / "K3/thesis.txt", "years of work");
    EXPECT_EQ(error_of([&] { m_rasters.Delete(m_scratch.Path(), "K3"); }), 70);
    EXPECT_EQ(Read(m_scratch / "K3/thesis.txt"), "years of work");
    EXPECT_TRUE(m_rasters.Exists(m_scratch.Path(), "K3"));
}

TEST_F(FilesRasters, Deleting_a_link_to_a_grid_leaves_the_grid) {
    Make({"K3", "GRID", {0.0, 0.0, 1.0, 1, 1}, {}}, std::vector<float>{1});
    std::filesystem::create_directory_symlink(m_scratch / "K3", m_scratch / "link");
    m_rasters.Delete(m_scratch.Path(), "link");
    EXPECT_THAT(m_files.List(m_scratch.Path()), ElementsAre("K3"));
    EXPECT_EQ(cells_of(*m_rasters.Open(m_scratch.Path(), "K3")->Band()), std::vector<float>{1});
}

TEST_F(FilesRasters, Delete_never_leaves_its_folder) {
    m_folders.Create(m_scratch / "sub");
    Make({"K3", "GRID", {0.0, 0.0, 1.0, 1, 1}, {}}, std::vector<float>{1});
    EXPECT_EQ(error_of([&] { m_rasters.Delete(m_scratch / "sub", "../K3"); }), 5);
    EXPECT_TRUE(m_rasters.Exists(m_scratch.Path(), "K3"));
}

TEST_F(FilesRasters, A_grid_with_names_in_capitals_is_found) {
    Make({"K3", "GRID", {0.0, 0.0, 1.0, 1, 1}, {}}, std::vector<float>{1});
    for (const std::string& name : m_files.List(m_scratch / "K3")) {
        std::string upper = name;
        for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        m_files.Rename(m_scratch.Path() / "K3" / name, m_scratch.Path() / "K3" / upper);
    }
    EXPECT_TRUE(m_rasters.Exists(m_scratch.Path(), "K3"));
    EXPECT_EQ(cells_of(*m_rasters.Open(m_scratch.Path(), "K3")->Band()), std::vector<float>{1});
}

TEST_F(FilesRasters, A_leftover_of_a_broken_off_run_is_no_obstacle) {
    m_folders.Create(m_scratch / platform::TemporaryName("K3"));
    Put(m_scratch / platform::TemporaryName("K3") / "w001001.adf", "half");
    Make({"K3", "GRID", {0.0, 0.0, 1.0, 1, 1}, {}}, std::vector<float>{1});
    EXPECT_THAT(m_files.List(m_scratch.Path()), ElementsAre("K3"));
}

TEST_F(FilesRasters, A_damaged_grid_is_an_error_and_not_a_crash) {
    Make({"K3", "GRID", {0.0, 0.0, 1.0, 300, 300}, {}}, checked_cells(300, 300));
    std::filesystem::resize_file(m_scratch / "K3/w001001.adf", 5000);
    testing::internal::CaptureStderr();
    const std::int32_t number = error_of([&] { m_rasters.Open(m_scratch.Path(), "K3")->Band()->ComputeStatistics(); });
    EXPECT_EQ(number, 57);
    std::filesystem::resize_file(m_scratch / "K3/hdr.adf", 10);
    EXPECT_EQ(error_of([&] { m_rasters.Open(m_scratch.Path(), "K3"); }), 57);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(FilesRasters, Any_raster_that_gdal_opens_is_read_by_its_file_name) {
    Put(m_scratch / "small.asc",
        "ncols 2\nnrows 2\nxllcorner 10\nyllcorner 20\ncellsize 5\nNODATA_value -9999\n1 2\n3.5 -9999\n");
    EXPECT_TRUE(m_rasters.Exists(m_scratch.Path(), "small.asc"));
    const auto raster = m_rasters.Open(m_scratch.Path(), "small.asc");
    ASSERT_TRUE(raster);
    EXPECT_EQ(raster->Name(), "small.asc");
    EXPECT_EQ(raster->Band()->Geometry(), (RasterGeometry{10.0, 20.0, 5.0, 2, 2}));
    EXPECT_THAT(cells_of(*raster->Band()), ElementsAre(1.0F, 2.0F, 3.5F, -9999.0F));
}

TEST_F(FilesRasters, What_is_no_raster_is_told_apart) {
    EXPECT_EQ(error_of([&] { files::OpenRaster(m_scratch / "none"); }), 53);
    EXPECT_EQ(error_of([&] { files::OpenRaster(m_scratch.Path() / "none" / "none"); }), 76);
    Put(m_scratch / "text", "no raster at all");
    EXPECT_EQ(error_of([&] { files::OpenRaster(m_scratch / "text"); }), 57);
    EXPECT_FALSE(m_rasters.Exists(m_scratch.Path(), "text"));
    EXPECT_FALSE(m_rasters.Open(m_scratch.Path(), "text"));
}

TEST_F(FilesRasters, Rasters_with_oblong_or_turned_cells_are_refused) {
    files::RegisterGdal();
    GDALDriver* driver = GetGDALDriverManager()->GetDriverByName("GTiff");
    const auto make = [&](const char* name, std::array<double, 6> transform) {
        files::GdalDatasetPtr dataset(driver->Create((m_scratch / name).c_str(), 10, 10, 1, GDT_Float32, nullptr));
        dataset->SetGeoTransform(transform.data());
    };
    make("oblong.tif", {0.0, 1.0, 0.0, 0.0, 0.0, -2.0});
    make("turned.tif", {0.0, 1.0, 0.1, 0.0, 0.1, -1.0});
    make("south.tif", {0.0, 1.0, 0.0, 0.0, 0.0, 1.0});
    make("good.tif", {0.0, 1.0, 0.0, 0.0, 0.0, -1.0000000001});
    for (const char* name : {"oblong.tif", "turned.tif", "south.tif"})
        EXPECT_EQ(error_of([&] { files::OpenRaster(m_scratch / name); }), 5) << name;
    EXPECT_EQ(files::OpenRaster(m_scratch / "good.tif")->Band()->Geometry().CellSize, 1.0);
}

TEST_F(FilesRasters, Tins_are_found_by_their_files_and_deleted_whole) {
    files::TinWorkspace tins(m_files, m_folders);
    for (const std::string mark : {"tnxy.adf", "tdenv.adf", "TDENV9.ADF"}) {
        m_folders.Create(m_scratch / "net");
        EXPECT_FALSE(tins.Exists(m_scratch.Path(), "net"));
        EXPECT_EQ(error_of([&] { tins.Delete(m_scratch.Path(), "net"); }), 53);
        Put(m_scratch.Path() / "net" / mark, "x");
        EXPECT_TRUE(tins.Exists(m_scratch.Path(), "net")) << mark;
        EXPECT_FALSE(m_rasters.Exists(m_scratch.Path(), "net"));
        tins.Delete(m_scratch.Path(), "net");
        EXPECT_THAT(m_files.List(m_scratch.Path()), IsEmpty());
    }
}

TEST_F(FilesRasters, A_wide_tiff_is_written_in_strips) {
    const auto cells = checked_cells(20000, 3);
    const auto raster = Make({"wide", "GTiff", {0.0, 0.0, 1.0, 20000, 3}, {}}, cells);
    EXPECT_TRUE(cells_of(*raster->Band()) == cells);
}

}  // namespace wxl::tests
