// The isopleth object on a real disk.

#include "adapters/disk/disk_file_system.h"
#include "adapters/gdal/gdal_support.h"
#include "adapters/geos/geos_operators.h"
#include "adapters/memory/memory_services.h"
#include "adapters/ogr/ogr_feature_class.h"
#include "adapters/ogr/shapefile_workspace.h"
#include "adapters/raster/contour_operation.h"
#include "adapters/raster/raster_workspace.h"
#include "isopleths/clsHISO.h"
#include "isopleths/rings.h"
#include "tests/support/scratch_folder.h"
#include "tests/unit/isopleths/polygonized.h"
#include "tests/unit/isopleths/surfaces.h"

#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <unistd.h>

namespace wxl::isopleths {
namespace {

using tests::ScratchFolder;
using tests::Surface;

/// Rasters, shapefiles and geometry on disk; messages in memory.
class DiskRig {
public:
    DiskRig() : m_utilities(Connected()) { files::RegisterGdal(); }

    std::shared_ptr<platform::IRasterDataset> Write(const std::filesystem::path& folder, const std::string& format,
                                                    const Surface& surface) {
        const auto writer = m_rasters.Create(folder, {"ELK12", format, surface.Geometry, {}});
        const auto columns = static_cast<std::size_t>(surface.Geometry.Columns);
        for (std::size_t start = 0; start < surface.Cells.size(); start += columns)
            writer->WriteRow(std::span(surface.Cells).subspan(start, columns));
        return writer->Publish();
    }

    clsHISO Run(const std::shared_ptr<platform::IRasterDataset>& raster, std::vector<double> percentages,
                const std::filesystem::path& folder, const std::string& name) {
        clsHISO hiso(m_services, m_utilities);
        hiso.SetCalculateLines(true);
        hiso.SetCalculatePolys(true);
        hiso.SetCalculateDonuts(true);
        hiso.SetIsoplethBoundaries(std::move(percentages));
        hiso.SetOutputFolder(folder);
        hiso.SetOutputName(name);
        hiso.SetRasterDataset(raster);
        hiso.CreateIsopleths();
        return hiso;
    }

    std::vector<std::string> List(const std::filesystem::path& folder) const { return m_files.List(folder); }

    memory::MemoryMessages Messages;
    files::ShapefileWorkspace Shapefiles;
    files::GeosOperators Geometry;

private:
    const platform::Services& Connected() {
        m_services.Messages = &Messages;
        m_services.Host = &m_host;
        m_services.Files = &m_files;
        m_services.Shapefiles = &Shapefiles;
        m_services.Geometry = &Geometry;
        m_services.Contours = &m_contours;
        return m_services;
    }

    memory::MemoryHost m_host;
    files::DiskFileSystem m_files;
    files::DiskFolders m_folders;
    files::RasterWorkspace m_rasters{m_files, m_folders};
    files::ContourOperation m_contours;
    platform::Services m_services;
    utilities::Utilities m_utilities;
};

Surface bumps() {
    return tests::random_bumps({431000, 5712000, 25, 120, 90}, 9, 4, 12, 0.2, 3);
}

std::vector<double> column_of(platform::IFeatureClass& features, const std::string& name) {
    const int field = features.Table().FindField(name);
    std::vector<double> values;
    const auto cursor = features.Find({});
    while (const auto feature = cursor->NextFeature()) values.push_back(platform::ValueNumber(feature->Value(field)));
    return values;
}

TEST(clsHISO_on_disk, Outputs_read_back_valid_with_every_digit) {
    for (const std::string format : {"GRID", "GTiff"}) {
        DiskRig rig;
        const ScratchFolder scratch;
        const auto raster = rig.Write(scratch.Path(), format, bumps());
        const clsHISO hiso = rig.Run(raster, {50, 75, 95}, scratch.Path(), "ELK12_iso");
        ASSERT_EQ(hiso.GetErrorStatus(), 0) << format << rig.Messages.Last().Text;

        const auto polys = rig.Shapefiles.Open(scratch.Path(), "ELK12_iso_poly");
        const auto donuts = rig.Shapefiles.Open(scratch.Path(), "ELK12_iso_donut");
        const auto lines = rig.Shapefiles.Open(scratch.Path(), "ELK12_iso_line");
        ASSERT_TRUE(polys && donuts && lines);
        const auto& levels = hiso.GetLevels();
        EXPECT_EQ(column_of(*polys, "ISOPLETH"), (std::vector<double>{levels[2], levels[1], levels[0]}));
        EXPECT_EQ(column_of(*donuts, "ISOPLETH2"), levels);
        EXPECT_EQ(column_of(*donuts, "PERCENT1"), (std::vector<double>{0, 50, 75}));

        for (const auto& output : {polys, donuts}) {
            const std::vector<double> areas = column_of(*output, "AREA");
            const auto cursor = output->Find({});
            for (std::size_t i = 0; const auto feature = cursor->NextFeature(); ++i) {
                EXPECT_TRUE(tests::is_valid(feature->Shape())) << i;
                EXPECT_DOUBLE_EQ(rig.Geometry.Area(feature->Shape()), areas.at(i));
            }
        }
        const std::vector<double> lengths = column_of(*lines, "LENGTH");
        const auto cursor = lines->Find({});
        for (std::size_t i = 0; const auto feature = cursor->NextFeature(); ++i) {
            EXPECT_EQ(feature->Shape().Parts.at(0).front(), feature->Shape().Parts.at(0).back()) << i;
            EXPECT_DOUBLE_EQ(rig.Geometry.Length(feature->Shape()), lengths.at(i));
        }
    }
}

// Densities of a wide range and areas of whole countries keep their digits.
TEST(clsHISO_on_disk, Very_small_levels_and_very_large_areas_are_not_cut) {
    DiskRig rig;
    const ScratchFolder scratch;
    Surface surface = bumps();
    surface.Geometry.CellSize = 50000;
    for (float& cell : surface.Cells) cell *= 1e-14F;
    const auto raster = rig.Write(scratch.Path(), "GRID", surface);
    const clsHISO hiso = rig.Run(raster, {95}, scratch.Path(), "ELK12_iso");
    ASSERT_EQ(hiso.GetErrorStatus(), 0) << rig.Messages.Last().Text;
    EXPECT_TRUE(rig.Messages.Boxes().empty());
    const auto polys = rig.Shapefiles.Open(scratch.Path(), "ELK12_iso_poly");
    EXPECT_EQ(column_of(*polys, "ISOPLETH"), hiso.GetLevels());
    EXPECT_LT(std::abs(hiso.GetLevels()[0]), 1e-12);
    const double area = column_of(*polys, "AREA").at(0);
    EXPECT_GT(area, 1e11);
    EXPECT_DOUBLE_EQ(rig.Geometry.Area(polys->Find({})->NextFeature()->Shape()), area);
}

TEST(clsHISO_on_disk, Folders_and_names_may_hold_any_letters) {
    DiskRig rig;
    const ScratchFolder scratch;
    const auto folder = scratch / "Fälle Ωλκή \xE9\xB9\xBF";
    std::filesystem::create_directory(folder);
    const auto raster = rig.Write(scratch.Path(), "GRID", bumps());
    const clsHISO hiso = rig.Run(raster, {50, 95}, folder, "Łoś_č_iso");
    EXPECT_EQ(hiso.GetErrorStatus(), 0) << rig.Messages.Last().Text;
    for (const char* suffix : {"_line", "_poly", "_donut"})
        EXPECT_NE(rig.Shapefiles.Open(folder, std::string("Łoś_č_iso") + suffix), nullptr) << suffix;
}

TEST(clsHISO_on_disk, Nothing_but_the_three_shapefiles_is_left_in_the_folder) {
    DiskRig rig;
    const ScratchFolder scratch;
    std::filesystem::create_directory(scratch / "out");
    const auto raster = rig.Write(scratch.Path(), "GRID", bumps());
    rig.Run(raster, {50, 95}, scratch / "out", "ELK12_iso");
    for (const std::string& file : rig.List(scratch / "out")) EXPECT_TRUE(file.starts_with("ELK12_iso_")) << file;
    EXPECT_GE(rig.List(scratch / "out").size(), 9U);
}

TEST(clsHISO_on_disk, A_missing_folder_and_a_file_in_its_place) {
    DiskRig rig;
    const ScratchFolder scratch;
    const auto raster = rig.Write(scratch.Path(), "GRID", bumps());
    EXPECT_EQ(rig.Run(raster, {50}, scratch / "nowhere", "ELK12_iso").GetErrorStatus(), 3001);
    EXPECT_TRUE(rig.Messages.Last().Text.starts_with("CreateIsopleths 3001\r91\r")) << rig.Messages.Last().Text;
    std::ofstream(scratch / "file") << "text";
    EXPECT_EQ(rig.Run(raster, {50}, scratch / "file", "ELK12_iso").GetErrorStatus(), 3001);
    EXPECT_TRUE(rig.Messages.Last().Text.starts_with("CreateIsopleths 3001\r91\r")) << rig.Messages.Last().Text;
}

TEST(clsHISO_on_disk, An_existing_shapefile_keeps_its_bytes_and_no_other_output_appears) {
    DiskRig rig;
    const ScratchFolder scratch;
    std::filesystem::create_directory(scratch / "out");
    const auto raster = rig.Write(scratch.Path(), "GRID", bumps());
    std::ofstream(scratch / "out/ELK12_iso_donut.shp") << "old";
    EXPECT_EQ(rig.Run(raster, {50}, scratch / "out", "ELK12_iso").GetErrorStatus(), 3001);
    EXPECT_EQ(rig.Messages.Boxes()[0].Title, "File Error");
    EXPECT_EQ(rig.List(scratch / "out"), (std::vector<std::string>{"ELK12_iso_donut.shp"}));
    std::string content;
    std::ifstream(scratch / "out/ELK12_iso_donut.shp") >> content;
    EXPECT_EQ(content, "old");
}

/// The administrator may write anywhere: another user for as long as this lives.
class PlainUser {
public:
    PlainUser() : m_before(::geteuid()) {
        if (m_before == 0) m_changed = ::seteuid(65534) == 0;
    }
    ~PlainUser() {
        if (m_changed && ::seteuid(m_before) != 0) std::abort();
    }
    PlainUser(const PlainUser&) = delete;
    PlainUser& operator=(const PlainUser&) = delete;

private:
    uid_t m_before;
    bool m_changed = false;
};

TEST(clsHISO_on_disk, A_read_only_folder) {
    DiskRig rig;
    const ScratchFolder scratch;
    std::filesystem::permissions(scratch.Path(), std::filesystem::perms(0755));
    std::filesystem::create_directory(scratch / "out");
    const auto raster = rig.Write(scratch.Path(), "GRID", bumps());
    std::filesystem::permissions(scratch / "out", std::filesystem::perms(0555));
    {
        const PlainUser user;
        EXPECT_EQ(rig.Run(raster, {50}, scratch / "out", "ELK12_iso").GetErrorStatus(), 3001);
    }
    EXPECT_TRUE(rig.Messages.Last().Text.starts_with("CreateIsopleths 3001\r70\r")) << rig.Messages.Last().Text;
    EXPECT_TRUE(rig.List(scratch / "out").empty());
}

/// A folder on a disk of a few bytes, or, where none can be mounted, files that cannot grow beyond them.
class SmallDisk {
public:
    SmallDisk(const std::filesystem::path& folder, std::size_t bytes) : m_folder(folder) {
        std::filesystem::create_directory(folder);
        const std::string size = "size=" + std::to_string(bytes);
        m_mounted = ::mount("tmpfs", folder.c_str(), "tmpfs", 0, size.c_str()) == 0;
        if (m_mounted) return;
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes / 8, m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        m_handler = std::signal(SIGXFSZ, SIG_IGN);
    }
    ~SmallDisk() {
        if (m_mounted) {
            ::umount(m_folder.c_str());
            return;
        }
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;
    bool IsMounted() const { return m_mounted; }

private:
    std::filesystem::path m_folder;
    bool m_mounted = false;
    rlimit m_before{};
    void (*m_handler)(int) = nullptr;
};

// At every size the run either ends well or tells that the disk is full; either way nothing half stands under a final
// name, and nothing of a failed run is left behind.
TEST(clsHISO_on_disk, A_full_disk_leaves_no_half_dataset) {
    int failures = 0;
    for (const std::size_t kib : {4U, 16U, 40U, 64U, 96U, 128U, 160U, 200U, 1024U}) {
        DiskRig rig;
        const ScratchFolder scratch;
        const auto raster = rig.Write(scratch.Path(), "GRID", bumps());
        const SmallDisk disk(scratch / "out", kib * 1024);
        const clsHISO hiso = rig.Run(raster, {50, 75, 95}, scratch / "out", "ELK12_iso");
        if (hiso.GetErrorStatus() != 0) {
            ++failures;
            EXPECT_EQ(hiso.GetErrorStatus(), 3001) << kib;
            const std::string number = disk.IsMounted() ? "61" : "57";
            EXPECT_TRUE(rig.Messages.Last().Text.starts_with("CreateIsopleths 3001\r" + number + "\r"))
                << kib << rig.Messages.Last().Text;
        }
        for (const std::string& file : rig.List(scratch / "out")) {
            EXPECT_TRUE(file.starts_with("ELK12_iso_")) << kib << file;
            const std::string name = std::filesystem::path(file).stem().string();
            EXPECT_NE(rig.Shapefiles.Open(scratch / "out", name), nullptr) << kib << file;
        }
    }
    EXPECT_GE(failures, 2);
}

}  // namespace
}  // namespace wxl::isopleths
