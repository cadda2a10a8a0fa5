// A session in which another program's set-up has led PROJ astray: the variables name a folder without its database.

#include "tests/robustness/faulty_program.h"
#include "tests/support/samples.h"
#include "tests/support/scratch_folder.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace wxl {
namespace {

namespace fs = std::filesystem;

struct AstrayProj : testing::Test {
    tests::ScratchFolder Scratch;
    const fs::path Work = Scratch / "work";

    AstrayProj() {
        fs::create_directories(Work / "empty");
        std::ofstream table(Work / "fixes.csv");
        table << "id,x,y\n";
        for (int i = 0; i < 20; ++i) table << "a," << 500000 + i * i % 37 << ',' << 6000000 + i * 7 % 23 << '\n';
    }
    ~AstrayProj() override { Lead(""); }

    /// Where PROJ is to look for its database; empty: where it looks by itself.
    static void Lead(const std::string& folder) {
        for (const char* variable : {"PROJ_LIB", "PROJ_DATA"})
            folder.empty() ? ::unsetenv(variable) : ::setenv(variable, folder.c_str(), 1);
    }

    tests::FaultyRun Wxl(const std::vector<std::string>& arguments) {
        return tests::run_with_fault(arguments, Work, Scratch.Path(), {});
    }
    std::string Layer(const std::string& name) const { return (Work / name).string(); }
};

TEST_F(AstrayProj, An_import_tells_that_the_database_is_missing_not_the_code) {
    Lead((Work / "empty").string());
    const auto run = Wxl({"import", Layer("fixes.csv"), Layer("fixes.gpkg"), "--from-crs", "EPSG:32633"});
    EXPECT_EQ(run.Code, 1);
    EXPECT_EQ(run.Err,
              "wxl: coordinate systems cannot be looked up: there is no proj.db of this PROJ; unset PROJ_DATA "
              "and PROJ_LIB, or set them to the folder that holds it\n");
    EXPECT_FALSE(fs::exists(Work / "fixes.gpkg"));
}

TEST_F(AstrayProj, A_shapefile_is_not_said_to_be_damaged) {
    ASSERT_EQ(Wxl({"import", Layer("fixes.csv"), Layer("fixes.shp"), "--from-crs", "EPSG:32633"}).Code, 0);
    Lead((Work / "empty").string());
    const auto run = Wxl({"info", Layer("fixes.shp")});
    EXPECT_EQ(run.Code, 1);
    EXPECT_EQ(run.Err, "wxl: " + Layer("fixes.shp") +
                           " could not be read: there is no proj.db of this PROJ; unset PROJ_DATA and PROJ_LIB, or set "
                           "them to the folder that holds it\n");
}

}  // namespace
}  // namespace wxl
