#include "adapters/memory/memory_file_system.h"
#include "adapters/memory/memory_folder_locks.h"
#include "adapters/memory/memory_rasters.h"
#include "analysis/output_names.h"
#include "analysis/settings_text.h"
#include "platform/runtime_error.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace wxl::analysis {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

Settings settings_of(BandwidthMethod method, const std::string& list) {
    Settings settings;
    settings.Prefix = "K";
    settings.Method = method;
    settings.Bandwidths = settings.Proportions = typed_numbers(list);
    return settings;
}

TEST(OutputNames, Rasters_are_numbered_for_proportions_and_for_lists_of_bandwidths) {
    EXPECT_EQ(raster_name(settings_of(BandwidthMethod::kHref, "1,2"), "3", 1), "K3");
    EXPECT_EQ(raster_name(settings_of(BandwidthMethod::kProportion, "1"), "3", 1), "K3_b1");
    EXPECT_EQ(raster_name(settings_of(BandwidthMethod::kProportion, "1,2"), "7", 2), "K7_b2");
    EXPECT_EQ(raster_name(settings_of(BandwidthMethod::kManual, "100"), "3", 1), "K3");
    EXPECT_EQ(raster_name(settings_of(BandwidthMethod::kManual, "100,200"), "3", 2), "K3_b2");
    EXPECT_EQ(isopleth_stem("ELK12_b2"), "ELK12_b2_iso");
    EXPECT_EQ(isopleth_name("ELK12", DatasetKind::kDonuts), "ELK12_iso_donut");
}

TEST(OutputNames, Datasets_of_one_value_are_the_raster_and_the_shapefiles_asked_for) {
    Settings settings;
    settings.Polygons = true;
    const Dataset raster{DatasetKind::kRaster, "K3"};
    const Dataset polygons{DatasetKind::kPolygons, "K3_iso_poly"};
    EXPECT_THAT(datasets_of(settings, "K3"), ElementsAre(raster));
    settings.Isopleths = true;
    EXPECT_THAT(datasets_of(settings, "K3"), ElementsAre(raster, polygons));
    settings.Lines = settings.Donuts = true;
    EXPECT_THAT(datasets_of(settings, "K3"), ElementsAre(raster, Dataset{DatasetKind::kLines, "K3_iso_line"}, polygons,
                                                         Dataset{DatasetKind::kDonuts, "K3_iso_donut"}));
}

class StandingOutputs : public testing::Test {
protected:
    StandingOutputs() {
        m_services.Files = &m_files;
        m_services.Folders = &m_folders;
        m_services.Rasters = &m_rasters;
        m_services.Locks = &m_locks;
        m_disk->AddFolder("/out");
        m_settings.Polygons = m_settings.Isopleths = true;
    }

    std::vector<std::string> Taken() { return taken_names(m_services, m_settings, "/out", m_animals); }
    void Put(const std::string& file) { platform::PublishFile(m_files, file, "x"); }

    std::shared_ptr<memory::MemoryDisk> m_disk = std::make_shared<memory::MemoryDisk>();
    memory::MemoryFileSystem m_files{m_disk};
    memory::MemoryFolders m_folders{m_disk};
    memory::MemoryRasterWorkspace m_rasters{m_disk};
    memory::MemoryFolderLocks m_locks;
    platform::Services m_services;
    Settings m_settings = settings_of(BandwidthMethod::kManual, "100,200");
    std::vector<AnimalFixes> m_animals = {{.Id = std::int64_t{3}, .NamingId = "3", .Fixes = {}}};
};

TEST_F(StandingOutputs, An_empty_folder_has_no_name_taken) {
    EXPECT_THAT(Taken(), IsEmpty());
    Put("/out/K4_b1_iso_poly.shp");
    Put("/out/K3_b1_iso_line.shp");
    EXPECT_THAT(Taken(), IsEmpty()) << "of another animal, and a kind that the run does not make";
}

TEST_F(StandingOutputs, Numbered_names_and_lone_side_files_are_taken) {
    Put("/out/K3_b2");
    Put("/out/K3_b1_iso_poly.dbf");
    EXPECT_THAT(Taken(), ElementsAre("K3_b2", "K3_b1_iso_poly.dbf"));
}

TEST_F(StandingOutputs, Names_in_a_subfolder_are_told_with_it) {
    m_animals[0].Subfolder = "animals_1-1";
    m_disk->AddFolder("/out/animals_1-1");
    Put("/out/animals_1-1/K3_b1_iso_poly.shp");
    EXPECT_THAT(Taken(), ElementsAre("animals_1-1/K3_b1_iso_poly.shp"));
}

TEST_F(StandingOutputs, Deletion_takes_the_datasets_of_the_run_and_nothing_else) {
    for (const char* file :
         {"/out/K3_b1_iso_poly.shp", "/out/K3_b2_iso_poly.cpg", "/out/K3_iso_poly.shp", "/out/notes.txt"})
        Put(file);
    delete_outputs(m_services, m_settings, "/out", m_animals);
    EXPECT_THAT(m_files.List("/out"), testing::UnorderedElementsAre("K3_iso_poly.shp", "notes.txt"));
}

TEST_F(StandingOutputs, Nothing_is_deleted_where_a_name_cannot_be) {
    Put("/out/K3_b1_iso_poly.shp");
    m_animals.push_back({.Id = std::string("a/b"), .NamingId = "a/b", .Fixes = {}});
    EXPECT_THROW(delete_outputs(m_services, m_settings, "/out", m_animals), platform::RuntimeError);
    EXPECT_TRUE(m_files.FileExists("/out/K3_b1_iso_poly.shp"));
}

TEST_F(StandingOutputs, Nothing_is_deleted_while_another_run_is_at_work) {
    Put("/out/K3_b1_iso_poly.shp");
    std::string holder;
    const auto other = m_locks.Take("/out", holder);
    EXPECT_THROW(delete_outputs(m_services, m_settings, "/out", m_animals), platform::RuntimeError);
    EXPECT_TRUE(m_files.FileExists("/out/K3_b1_iso_poly.shp"));
}

}  // namespace
}  // namespace wxl::analysis
