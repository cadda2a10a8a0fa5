#include "run_fixture.h"

#include <gmock/gmock.h>

namespace wxl::kde_tool {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

struct SubfolderRun : RunTest {};

TEST_F(SubfolderRun, Datasets_lie_in_them_and_report_and_records_know_it) {
    AddTwoAnimals();
    Open();
    WantPolygons("50");
    Form->AnimalsPerSubfolder = 1;
    Run();
    EXPECT_TRUE(Rasters.Exists("/out/animals_1-1", "K3"));
    EXPECT_TRUE(Rasters.Exists("/out/animals_2-2", "K7"));
    EXPECT_TRUE(Files.FileExists("/out/animals_1-1/K3_iso_poly.shp"));
    EXPECT_FALSE(HasRaster("K3"));
    EXPECT_THAT(Report(), HasSubstr("\r\nRaster name: animals_1-1/K3\r\n"));
    EXPECT_THAT(Report(), HasSubstr("\r\nRaster name: animals_2-2/K7\r\n"));
    EXPECT_THAT(Keeper.Records.at(0).Files, ElementsAre("/out/animals_1-1/K3", "/out/animals_1-1/K3_iso_poly.shp"));
}

TEST_F(SubfolderRun, A_raster_of_that_name_in_the_subfolder_is_a_naming_conflict) {
    AddTwoAnimals();
    Open();
    Form->AnimalsPerSubfolder = 2;
    Run();
    ASSERT_TRUE(Rasters.Exists("/out/animals_1-2", "K3"));
    Messages.Clear();
    Run();
    ASSERT_EQ(Messages.Boxes().size(), 1U);
    EXPECT_THAT(Messages.Last().Text, HasSubstr("naming conflict detected"));
}

}  // namespace
}  // namespace wxl::kde_tool
