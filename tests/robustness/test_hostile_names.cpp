// Whatever a prefix, an animal, a layer or a folder is called, and whatever links stand in the output folder: nothing
// outside that folder is written, deleted or changed, and no code for the terminal is printed.

#include "tests/robustness/guarded_tree.h"
#include "tests/robustness/hostile_names.h"
#include "tests/support/samples.h"
#include "tests/support/scratch_folder.h"
#include "tests/unit/cli/captured_console.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace wxl {
namespace {

namespace fs = std::filesystem;

/// Whether a text can be shown on a terminal without harm.
bool is_printable(const std::string& text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) {
                           const auto byte = static_cast<unsigned char>(c);
                           return byte == '\n' || byte == '\t' || (byte >= 0x20 && byte != 0x7F);
                       }) &&
           text.find("\xC2\x9B") == std::string::npos && text.find("\xE2\x80\xAE") == std::string::npos;
}

class HostileNames : public testing::Test {
protected:
    tests::ScratchFolder m_scratch;
    const fs::path Guard = m_scratch / "guard";
    const fs::path Out = Guard / "area" / "out";
    const fs::path Fixes = Guard / "fixes.shp";

    HostileNames() {
        fs::create_directories(Out);
        fs::create_directories(Guard / "area" / "x");
        fs::create_directories(Guard / "K1");
        for (const char* file : {"x", "K1/hdr.adf", "area/x.shp", "area/x/hdr.adf", "area/K1.shp", "x_iso_poly.shp"})
            std::ofstream(Guard / file) << "leave alone " << file;
        WriteFixes("1");
        Import("fixes.shp");
    }

    /// One animal with four fixes.
    void WriteFixes(const std::string& animal) const {
        std::ofstream csv(Guard / "fixes.csv", std::ios::binary);
        csv << "animal,x,y\n";
        std::string quoted = "\"";
        for (const char c : animal) quoted += c == '"' ? "\"\"" : std::string(1, c);
        for (const char* at : {"500000,6000000", "500100,6000000", "500000,6000100", "500150,6000150"})
            csv << quoted << "\"," << at << "\n";
    }

    cli::Ran Import(const std::string& name) const {
        return cli::run_wxl({"import", Guard / "fixes.csv", (Guard / name).string(), "--from-crs", "EPSG:32633"});
    }

    std::vector<std::string> Kde(const std::string& prefix) const {
        return {"kde", Fixes,      "--id-field", "animal",      "--out", Out,          "--cell-size",
                "50",  "--extent", "min",        "--isopleths", "95",    "--polygons", "--prefix=" + prefix};
    }

    /// Runs the program; nothing outside `allowed` may change. The exit code.
    int RunGuarded(const std::vector<std::string>& call, const fs::path& allowed) {
        const auto before = tests::entries_of(Guard, allowed);
        const cli::Ran ran = cli::run_wxl(call);
        EXPECT_EQ(tests::difference(before, tests::entries_of(Guard, allowed)), "");
        EXPECT_TRUE(ran.Code == 0 || ran.Code == 1 || ran.Code == 2) << ran.Code;
        EXPECT_TRUE(is_printable(ran.Out)) << ran.Out;
        EXPECT_TRUE(is_printable(ran.Err)) << ran.Err;
        EXPECT_TRUE(ran.Code == 0 || !ran.Err.empty());
        return ran.Code;
    }

    void Empty(const fs::path& folder) const {
        for (const auto& entry : fs::directory_iterator(folder)) fs::remove_all(entry.path());
    }
};

TEST_F(HostileNames, There_are_two_hundred_of_them) {
    EXPECT_GE(tests::hostile_names().size(), 200U);
}

TEST_F(HostileNames, As_prefixes) {
    int done = 0;
    for (const std::string& name : tests::hostile_names()) {
        SCOPED_TRACE(testing::PrintToString(name));
        const int code = RunGuarded(Kde(name), Out);
        if (code == 0) ++done;
        EXPECT_EQ(code == 0, fs::exists(Out / "WXL_KDE_ANALYSIS.txt"));
        Empty(Out);
    }
    EXPECT_GT(done, 10);
}

TEST_F(HostileNames, As_names_of_isopleths) {
    ASSERT_EQ(cli::run_wxl(Kde("K")).Code, 0);
    fs::rename(Out / "K1", Guard / "raster");
    Empty(Out);
    int done = 0;
    for (const std::string& name : tests::hostile_names()) {
        SCOPED_TRACE(testing::PrintToString(name));
        const int code = RunGuarded(
            {"isopleths", Guard / "raster", "--levels", "95", "--out", Out, "--name=" + name, "--polygons"}, Out);
        if (code == 0) ++done;
        EXPECT_EQ(code == 0, !fs::is_empty(Out));
        Empty(Out);
    }
    EXPECT_GT(done, 10);
}

TEST_F(HostileNames, As_animals) {
    for (const std::string& name : tests::hostile_names()) {
        SCOPED_TRACE(testing::PrintToString(name));
        WriteFixes(name);
        for (const char* extension : {"shp", "shx", "dbf", "prj", "cpg"})
            fs::remove(fs::path(Fixes).replace_extension(extension));
        const cli::Ran imported = Import("fixes.shp");
        EXPECT_TRUE(is_printable(imported.Err) && is_printable(imported.Out)) << imported.Err << imported.Out;
        if (imported.Code != 0) continue;
        EXPECT_EQ(RunGuarded(Kde("K"), Out), 0);
        EXPECT_TRUE(fs::exists(Out / "K1/hdr.adf"));
        Empty(Out);
        RunGuarded({"stats", Fixes, "--id-field", "animal"}, Out);
        RunGuarded({"kde", Fixes, "--id-field", "animal", "--out", Out, "--cell-size", "50",
                    "--where=animal = '" + name + "'"},
                   Out);
        Empty(Out);
    }
}

TEST_F(HostileNames, As_layers) {
    const fs::path folder = Guard / "layers";
    for (const std::string& name : tests::hostile_file_names()) {
        SCOPED_TRACE(testing::PrintToString(name));
        fs::create_directories(folder);
        const int code = RunGuarded(
            {"import", Guard / "fixes.csv", (folder / (name + ".shp")).string(), "--from-crs", "EPSG:32633"}, folder);
        if (code == 0) RunGuarded({"info", folder / (name + ".shp")}, folder);
        RunGuarded({"info", folder / name}, folder);
        RunGuarded({"stats", Fixes, "--id-field=" + name}, folder);
        fs::remove_all(folder);
    }
}

TEST_F(HostileNames, As_output_folders) {
    for (const std::string& name : tests::hostile_file_names()) {
        SCOPED_TRACE(testing::PrintToString(name));
        std::vector<std::string> call = Kde("K");
        call[5] = Out / name;
        const int code = RunGuarded(call, Out);
        EXPECT_EQ(code == 0, fs::exists(Out / name / "K1/hdr.adf"));
        Empty(Out);
    }
}

/// Names in the output folder that can be foretold, and under which another user may have left a link.
std::vector<std::string> foretold_names() {
    const std::string process = std::to_string(::getpid());
    std::vector<std::string> names = {"K1",
                                      "K1.aux.xml",
                                      "K1.tif",
                                      "K1.tif.aux.xml",
                                      "K1.tif.ovr",
                                      "K1.tif.msk",
                                      "K1_iso_poly.shp",
                                      "K1_iso_poly.shx",
                                      "K1_iso_poly.dbf",
                                      "K1_iso_poly.prj",
                                      "K1_iso_poly.cpg",
                                      "K1_iso_poly.qix",
                                      "K1_iso_poly.shp.xml",
                                      "WXL_KDE_ANALYSIS.txt",
                                      "WXL_KERNEL_SETTINGS.txt",
                                      ".WXL_KERNEL_SETTINGS.txt." + process + ".part",
                                      ".wxl_run.lock",
                                      ".K1." + process + ".part",
                                      ".K1.tif." + process + ".part",
                                      ".K1_iso_poly.swap",
                                      ".K1_iso_poly." + process + ".part"};
    for (int count = 1; count < 4; ++count)
        names.push_back(".K1_iso_poly." + std::to_string(count) + "." + process + ".part");
    return names;
}

class PlantedLinks : public HostileNames {
protected:
    /// Files and folders that links lead to.
    std::vector<fs::path> Targets() const { return {Guard / "x", Guard / "K1", Guard / "missing"}; }

    void Try(std::vector<std::string> call) {
        for (const bool overwrite : {false, true}) {
            if (overwrite) call.emplace_back("--overwrite");
            for (const std::string& name : foretold_names())
                for (const fs::path& target : Targets()) {
                    SCOPED_TRACE(name + " -> " + target.string() + (overwrite ? ", overwriting" : ""));
                    Empty(Out);
                    fs::create_symlink(target, Out / name);
                    RunGuarded(call, Out);
                }
        }
    }
};

TEST_F(PlantedLinks, Are_not_followed_by_a_run_with_grids) {
    Try(Kde("K"));
}

TEST_F(PlantedLinks, Are_not_followed_by_a_run_with_geotiffs) {
    std::vector<std::string> call = Kde("K");
    call.insert(call.end(), {"--raster-format", "GTiff"});
    Try(call);
}

TEST_F(PlantedLinks, Are_not_followed_by_isopleths) {
    ASSERT_EQ(cli::run_wxl(Kde("K")).Code, 0);
    fs::rename(Out / "K1", Guard / "raster");
    Try({"isopleths", Guard / "raster", "--levels", "95", "--out", Out, "--name=K1_iso", "--polygons"});
}

TEST_F(PlantedLinks, Are_not_followed_by_an_import) {
    Try({"import", Guard / "fixes.csv", Out / "K1_iso_poly.shp", "--from-crs", "EPSG:32633"});
}

TEST_F(PlantedLinks, Are_not_followed_when_settings_are_saved) {
    std::vector<std::string> call = Kde("K");
    call.insert(call.end(), {"--save-settings", Out / "K1.tif"});
    Try(call);
}

TEST_F(PlantedLinks, Are_told_of_when_the_report_is_one) {
    fs::create_symlink(Guard / "x", Out / "WXL_KDE_ANALYSIS.txt");
    const cli::Ran ran = cli::run_wxl(Kde("K"));
    EXPECT_EQ(ran.Code, 1);
    EXPECT_NE(ran.Err.find((Out / "WXL_KDE_ANALYSIS.txt").string() +
                           " is a link, and nothing is written through links: delete it"),
              std::string::npos)
        << ran.Err;
}

/// A folder in which an interrupted change waits is ours only when it is a folder, and only its shapefile's files are.
TEST_F(PlantedLinks, Of_interrupted_changes_take_no_files_along) {
    fs::create_directory_symlink(Guard / "K1", Guard / ".fixes.swap");
    EXPECT_EQ(RunGuarded({"info", Fixes}, Out), 0);
    fs::remove(Guard / ".fixes.swap");
    fs::create_directory(Guard / ".fixes.swap");
    std::ofstream(Guard / ".fixes.swap/x") << "not the shapefile's";
    RunGuarded({"info", Fixes}, Out);
}

}  // namespace
}  // namespace wxl
