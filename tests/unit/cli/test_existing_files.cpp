// What stands already is never lost: not to a new output without --overwrite, and never by writing over what is read.

#include "tests/unit/cli/layer_files.h"
#include "tests/unit/cli/raster_files.h"

#include <algorithm>
#include <cctype>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>

namespace wxl::cli {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using tests::ScratchFolder;

constexpr const char* kFixes =
    "a,500000,5000000,2018-05-09\n"
    "a,500400,5000300,2018-05-10\n"
    "a,500800,5000100,2018-05-11\n"
    "a,500300,5000900,2018-05-12\n";

struct ExistingFiles : testing::Test {
    ScratchFolder Folder;
    const std::string Layer = make_layer(Folder, kFixes);
    const std::string Csv = (Folder / "layer.csv").string();

    std::string Put(const std::string& name) const { return write_file(Folder, name, "mine"); }

    /// Everything in the folder and below, by its path from there.
    std::map<std::string, std::string> Contents() const {
        std::map<std::string, std::string> contents;
        for (const auto& entry : fs::recursive_directory_iterator(Folder.Path()))
            if (entry.is_regular_file()) contents[entry.path().lexically_relative(Folder.Path())] = read_file(entry);
        return contents;
    }

    /// Runs a call that must be refused with `text` and change nothing.
    void ExpectRefused(const std::vector<std::string>& call, const std::string& text) const {
        SCOPED_TRACE(testing::PrintToString(call));
        const auto before = Contents();
        const Ran ran = run_wxl(call);
        EXPECT_EQ(ran.Code, 1) << ran.Out;
        EXPECT_THAT(ran.Err, HasSubstr(text));
        EXPECT_EQ(Contents(), before);
    }

    std::vector<std::string> Kde(std::vector<std::string> more) const {
        std::vector<std::string> call = {"kde",         Layer, "--id-field",  "animal",   "--out",       Folder / "out",
                                         "--cell-size", "50",  "--extent",    "full:800", "--bandwidth", "200",
                                         "--prefix",    "K",   "--isopleths", "95",       "--polygons"};
        call.insert(call.end(), more.begin(), more.end());
        return call;
    }
};

const std::vector<std::string> kSideFiles = {"new.dbf", "new.shx", "new.prj", "new.cpg",
                                             "new.qix", "new.PRJ", "new.Dbf", "new.shp.xml"};

TEST_F(ExistingFiles, A_lone_side_file_takes_the_name_of_an_imported_shapefile) {
    for (const std::string& name : kSideFiles) {
        const std::string side = Put(name);
        const std::vector<std::string> call = {"import", Csv, Folder / "new.shp", "--from-crs", "EPSG:32633"};
        ExpectRefused(call, side + " exists: choose another name, or give --overwrite");
        fs::remove(side);
    }
}

TEST_F(ExistingFiles, A_lone_side_file_takes_the_name_of_a_track) {
    for (const std::string& name : kSideFiles) {
        const std::string side = Put(name);
        ExpectRefused({"track", Layer, Folder / "new.shp"}, side + " exists: choose another name, or give --overwrite");
        fs::remove(side);
    }
}

TEST_F(ExistingFiles, A_lone_side_file_takes_the_name_of_isopleths) {
    const std::string raster = make_raster(Folder, "r", rings({0, 1, 9}));
    fs::create_directory(Folder / "out");
    for (const std::string name : {"n_poly.dbf", "n_poly.prj", "n_line.cpg", "n_donut.shx"}) {
        const std::string side = Put("out/" + name);
        ExpectRefused({"isopleths", raster, "--levels", "50", "--out", Folder / "out", "--name", "n", "--lines",
                       "--polygons", "--donuts"},
                      side + " exists: choose another name, or give --overwrite");
        fs::remove(side);
    }
}

TEST_F(ExistingFiles, A_lone_side_file_takes_the_name_of_a_raster_and_its_isopleths) {
    fs::create_directory(Folder / "out");
    for (const std::string format : {"GRID", "GTiff"})
        for (const std::string name :
             {"K1_iso_poly.dbf", "K1_iso_poly.prj", "K1_iso_poly.cpg", "K1_iso_poly.shx",
              format == "GRID" ? "K1.aux.xml" : "K1.tif.aux.xml", format == "GRID" ? "K1" : "K1.tif.ovr"}) {
            const std::string side = Put("out/" + name);
            ExpectRefused(Kde({"--raster-format", format}), name);
            ExpectRefused(Kde({"--raster-format", format, "--dry-run"}), name);
            ExpectRefused(Kde({"--raster-format", format, "--jobs", "2"}), name);
            fs::remove(side);
        }
}

TEST_F(ExistingFiles, With_overwrite_lone_side_files_are_replaced) {
    for (const std::string& name : kSideFiles) Put(name);
    EXPECT_EQ(run_wxl({"track", Layer, Folder / "new.shp", "--overwrite"}).Code, 0);
    EXPECT_EQ(names_in(Folder.Path()),
              (std::set<std::string>{"layer.cpg", "layer.csv", "layer.dbf", "layer.prj", "layer.shp", "layer.shx",
                                     "new.cpg", "new.dbf", "new.prj", "new.shp", "new.shx"}));
    fs::create_directory(Folder / "out");
    for (const std::string name : {"K1_iso_poly.PRJ", "K1.tif.aux.xml", "K1.tif.ovr"}) Put("out/" + name);
    const Ran ran = run_wxl(Kde({"--raster-format", "GTiff", "--overwrite"}));
    EXPECT_EQ(ran.Code, 0) << ran.Err;
    const auto names = names_in(Folder / "out");
    EXPECT_TRUE(names.contains("K1.tif"));
    for (const std::string gone : {"K1_iso_poly.PRJ", "K1.tif.aux.xml", "K1.tif.ovr"})
        EXPECT_FALSE(names.contains(gone)) << gone;
}

/// Other names of a file of the layer: links, hard links, another case, the process's own view of its folder.
std::vector<std::string> other_names(const ScratchFolder& folder, const fs::path& file) {
    const fs::path link = folder / ("link" + file.extension().string());
    const fs::path hard = folder / ("hard" + file.extension().string());
    fs::create_symlink(file, link);
    fs::create_hard_link(file, hard);
    std::string upper = file.filename().string();
    std::transform(upper.begin(), upper.end(), upper.begin(), [](char c) { return static_cast<char>(::toupper(c)); });
    return {file, link, hard, folder / upper, folder / "./" / file.filename(), "/proc/self/root" + file.string()};
}

constexpr const char* kAlsoRead = " is read by this command too: choose another name for the output";

TEST_F(ExistingFiles, A_track_never_replaces_its_input) {
    ExpectRefused({"track", Folder.Path().string() + ":layer", Layer, "--overwrite"}, kAlsoRead);
    for (const std::string& name : other_names(Folder, Layer))
        ExpectRefused({"track", Layer, name, "--overwrite"}, kAlsoRead);
    // Under a name of its own, a table that is the input's.
    fs::create_hard_link(Folder / "layer.dbf", Folder / "b.dbf");
    ExpectRefused({"track", Layer, Folder / "b.shp", "--overwrite"}, kAlsoRead);
}

TEST_F(ExistingFiles, An_import_never_replaces_its_input) {
    const std::string table = write_file(Folder, "y.dbf", "animal,x,y\na,1,1\na,2,3\n");
    const std::vector<std::string> end = {"--from-crs", "EPSG:32633"};
    for (const bool overwrite : {false, true}) {
        std::vector<std::string> call = {"import", table, Folder / "y.shp", "--from-crs", "EPSG:32633"};
        if (overwrite) call.emplace_back("--overwrite");
        ExpectRefused(call, kAlsoRead);
        call[2] = Folder / "Y.shp";
        ExpectRefused(call, kAlsoRead);
    }
}

TEST_F(ExistingFiles, Isopleths_never_replace_files_of_their_raster) {
    const std::string raster = write_file(Folder, "n_poly.asc",
                                          "ncols 3\nnrows 3\nxllcorner 0\nyllcorner 0\ncellsize 1\n"
                                          "0 0 0\n0 9 0\n0 0 0\n");
    fs::copy_file(Folder / "layer.prj", Folder / "n_poly.prj");
    ExpectRefused({"isopleths", raster, "--levels", "50", "--out", Folder.Path(), "--name", "n", "--overwrite"},
                  kAlsoRead);
}

TEST_F(ExistingFiles, An_analysis_never_replaces_its_points) {
    fs::create_directory(Folder / "out");
    const std::string points = (Folder / "out/K1_iso_poly.shp").string();
    ASSERT_EQ(run_wxl({"import", Csv, points, "--from-crs", "EPSG:32633"}).Code, 0);
    auto call = Kde({"--overwrite"});
    call[1] = points;
    ExpectRefused(call, kAlsoRead);
    call.insert(call.end(), {"--jobs", "2"});
    ExpectRefused(call, kAlsoRead);
    call = Kde({"--overwrite"});
    call[1] = points;
    call[0] = "plan";
    call.insert(call.begin(), "batch");
    ExpectRefused(call, kAlsoRead);
}

TEST_F(ExistingFiles, An_analysis_never_replaces_its_reference_raster) {
    ASSERT_EQ(run_wxl(Kde({})).Code, 0);
    auto call = Kde({"--overwrite"});
    call[9] = "ref:" + (Folder / "out/K1").string();
    ExpectRefused(call, kAlsoRead);
}

TEST_F(ExistingFiles, Tables_plots_and_settings_never_replace_what_is_read) {
    for (const fs::path& file : {fs::path(Layer), Folder / "layer.dbf", Folder / "layer.prj"}) {
        const auto names = other_names(Folder, file);
        for (const std::string& name : names) {
            // A table is put in the place of no link, whatever it leads to.
            const char* text = fs::is_symlink(name) ? " is a link, and nothing is written through links" : kAlsoRead;
            ExpectRefused({"stats", Layer, "--id-field", "animal", "--csv", name, "--overwrite"}, text);
            ExpectRefused(
                {"bandwidth", Layer, "--id-field", "animal", "--method", "lscv", "--profile", name, "--overwrite"},
                text);
            ExpectRefused(Kde({"--save-settings", name, "--overwrite"}), kAlsoRead);
        }
        fs::remove(names[1]);
        fs::remove(names[2]);
    }
    const std::string settings = (Folder / "settings.txt").string();
    ASSERT_EQ(run_wxl(Kde({"--save-settings", settings})).Code, 0);
    ExpectRefused(Kde({"--settings", settings, "--save-settings", settings, "--overwrite"}), kAlsoRead);
    // The record of a run is rewritten by every run, also by one that starts from it.
    const Ran again = run_wxl(Kde({"--settings", Folder / "out/WXL_KERNEL_SETTINGS.txt", "--overwrite"}));
    EXPECT_EQ(again.Code, 0) << again.Err;
}

}  // namespace
}  // namespace wxl::cli
