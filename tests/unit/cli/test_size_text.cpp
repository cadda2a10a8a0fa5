#include "apps/cli/size_text.h"
#include "tests/unit/cli/layer_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

namespace wxl::cli {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using tests::ScratchFolder;

platform::SpatialReference in_units(double metres, bool degrees) {
    platform::SpatialReference reference;
    reference.MetersPerUnit = metres;
    reference.IsGeographic = degrees;
    return reference;
}

/// The corners and the middle of a square of 5280 feet.
std::string layer_in_feet(const ScratchFolder& folder) {
    const std::string csv = write_file(folder, "feet.csv",
                                       "animal,x,y,timestamp\n"
                                       "a,2000000,600000,2018-05-09 10:00\na,2005280,600000,2018-05-09 11:00\n"
                                       "a,2005280,605280,2018-05-09 12:00\na,2000000,605280,2018-05-09 13:00\n"
                                       "a,2002640,602640,2018-05-09 14:00\n");
    const std::string layer = (folder / "feet.gpkg").string();
    const Ran ran = run_wxl({"import", csv, layer, "--from-crs", "EPSG:2225", "--to-crs", "EPSG:2225"});
    EXPECT_EQ(ran.Code, 0) << ran.Err;
    return layer;
}

TEST(SizeText, Kilometres_are_told_where_map_units_have_a_size) {
    EXPECT_EQ(kilometres_text(1234567.0, in_units(1.0, false), 4), "1.235");
    EXPECT_EQ(kilometres_text(27878400.0, in_units(0.3048, false), 6), "2.58999");
    EXPECT_EQ(kilometres_unit(in_units(0.3048, false)), " km2");
    EXPECT_EQ(kilometres_text(0.25, in_units(111319.0, true), 4), "0.25");
    EXPECT_EQ(kilometres_unit(in_units(111319.0, true)), "");
}

// A square mile of survey feet: (5280 * 1200 / 3937)^2 m2 = 2.589998 km2.
TEST(SizeText, Kernels_of_a_layer_in_feet_have_square_kilometres) {
    const ScratchFolder folder;
    const Ran ran = run_wxl({"kde", layer_in_feet(folder), "--id-field", "animal", "--out", (folder / "kde").string(),
                             "--cell-size", "400", "--extent", "min", "--mcp", "100"});
    EXPECT_EQ(ran.Code, 0) << ran.Err;
    EXPECT_THAT(ran.Out, HasSubstr(", MCP 100 %: 2.59 km2\n"));
}

// Independent fixes: the variance is 4 * 2640^2 / 4 square feet each way, and the area -2 ln 0.05 pi times that.
TEST(SizeText, Models_of_a_layer_in_feet_have_square_kilometres) {
    const ScratchFolder folder;
    const std::string layer = layer_in_feet(folder);
    const Ran models = run_wxl({"models", layer, "--id-field", "animal"});
    EXPECT_THAT(models.Out, HasSubstr(" km2 "));
    EXPECT_THAT(models.Out, ContainsRegex("IID isotropic +0.000 .* 12.19 "));
    const Ran akde = run_wxl({"akde", layer, "--id-field", "animal", "--out", (folder / "akde").string()});
    EXPECT_THAT(akde.Out, ContainsRegex("\n  95 %: [0-9.]+ km2 \\([0-9.]+ to [0-9.]+\\)\n"));
    const std::string metres = make_layer(folder,
                                          "a,500000,6000000,2018-05-09 10:00\na,500300,6000000,2018-05-09 11:00\n"
                                          "a,500300,6000200,2018-05-09 12:00\na,500000,6000400,2018-05-09 13:00\n");
    const Ran small = run_wxl({"akde", metres, "--id-field", "animal", "--out", (folder / "small").string()});
    EXPECT_THAT(small.Out, ContainsRegex("\n  95 %: 0[.][0-9]+ km2 [(]0[.][0-9]+ to [0-9.]+[)]\n"));
}

}  // namespace
}  // namespace wxl::cli
