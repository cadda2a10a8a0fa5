// Runs on a disk that is really full, with a little more room each time until all of it fits, and on one that is
// read-only: nothing under a final name is broken, and what was there stays.

#include "tests/contract/mounted_disk.h"
#include "tests/robustness/datasets.h"
#include "tests/robustness/faulty_program.h"
#include "tests/support/samples.h"
#include "tests/unit/cli/captured_console.h"

#include <fstream>
#include <gtest/gtest.h>
#include <iostream>
#include <string>
#include <sys/resource.h>
#include <vector>

namespace wxl {
namespace {

namespace fs = std::filesystem;
using tests::by_dataset;
using tests::datasets_in;
using tests::Files;

class FullDisk : public testing::Test {
protected:
    tests::ScratchFolder m_scratch;
    tests::MountedDisk m_disk{"size=2m"};
    const fs::path Work = m_disk.Path();
    const fs::path Before = m_scratch / "before";

    void SetUp() override {
        if (!m_disk.IsMounted()) GTEST_SKIP() << "no disk of its own to fill: " << m_disk.WhyNot();
        fs::create_directories(Before / "out");
        std::ofstream csv(Before / "table.csv");
        csv << "animal,x,y,time\n";
        tests::Dice dice(3);
        for (int animal = 1; animal <= 2; ++animal)
            for (int fix = 0; fix < 60; ++fix)
                csv << animal << ',' << std::to_string(500000.0 + 300.0 * dice.Normal()) << ','
                    << std::to_string(6000000.0 + 300.0 * dice.Normal()) << ",2024-01-0" << animal << "T10:" << fix / 10
                    << fix % 10 << ":00Z\n";
        csv.close();
        Prepare({"import", Before / "table.csv", Before / "fixes.shp", "--from-crs", "EPSG:32633"});
        Prepare({"kde", Before / "fixes.shp", "--id-field", "animal", "--out", Before / "out", "--cell-size", "40",
                 "--extent", "min", "--prefix", "E"});
    }

    static void Prepare(const std::vector<std::string>& call) {
        const cli::Ran ran = cli::run_wxl(call);
        ASSERT_EQ(ran.Code, 0) << ran.Err;
    }

    void Restore() const {
        for (const auto& entry : fs::directory_iterator(Work)) fs::remove_all(entry.path());
        fs::copy(Before, Work, fs::copy_options::recursive);
    }

    /// Fills the disk but for some bytes.
    void LeaveFree(std::uintmax_t bytes) const {
        const std::string block(4096, 'x');
        std::ofstream ballast(Work / "ballast", std::ios::binary);
        while (fs::space(Work).available > bytes && ballast.good()) {
            ballast << block << std::flush;
        }
    }

    tests::FaultyRun Run(const std::vector<std::string>& call) const {
        return tests::run_with_fault(call, Work, m_scratch.Path(), {});
    }

    /// In words, or by the number of a full disk where a message has its fixed form.
    static bool IsFullDisk(const std::string& message) {
        return message.find("Disk full") != std::string::npos ||
               message.find("could not be written") != std::string::npos ||
               message.find("Error number: 61") != std::string::npos || message.find(",61") != std::string::npos;
    }

    /// Every dataset is as before the run or as after a whole one, and none of the old ones is gone.
    static void ExpectWhole(const Files& old, const Files& whole, Files now) {
        now.erase("ballast");
        for (const auto& [name, files] : by_dataset(now)) {
            if (files.begin()->first.ends_with(".txt") || files.begin()->first.ends_with("SUMMARY.csv")) continue;
            const auto before = by_dataset(old);
            const auto after = by_dataset(whole);
            EXPECT_TRUE((before.contains(name) && before.at(name) == files) ||
                        (after.contains(name) && after.at(name) == files))
                << name;
        }
        for (const auto& [name, files] : by_dataset(old))
            EXPECT_TRUE(by_dataset(now).contains(name) || files.begin()->first.ends_with(".txt")) << name;
    }

    /// `steps`: the states that a layer may have on the way, where the call changes it more than once.
    void FillUp(const std::vector<std::string>& call, bool changesInSteps = false) const {
        Restore();
        const Files old = datasets_in(Work);
        ASSERT_EQ(Run(call).Code, 0);
        const Files whole = datasets_in(Work);
        int refused = 0;
        int code = 1;
        for (std::uintmax_t room = 0; code != 0 && room < 1500000; room = room * 3 / 2 + 4096) {
            SCOPED_TRACE(std::to_string(room) + " bytes free");
            Restore();
            LeaveFree(room);
            const tests::FaultyRun run = Run(call);
            code = run.Code;
            Files now = datasets_in(Work);
            if (code == 0) {
                now.erase("ballast");
                EXPECT_TRUE(now == whole);
                break;
            }
            ++refused;
            EXPECT_EQ(code, 1) << run.Err;
            EXPECT_TRUE(IsFullDisk(run.Err)) << run.Err;
            if (!changesInSteps) ExpectWhole(old, whole, now);
            fs::remove(Work / "ballast");
            std::vector<std::string> again = call;
            if (call[0] != "obs-fields") again.emplace_back("--overwrite");
            EXPECT_EQ(Run(again).Code, 0);
        }
        EXPECT_EQ(code, 0);
        EXPECT_GT(refused, 0);
        std::cout << "[ DISK     ] " << refused << " full disks\n";
    }

    std::vector<std::string> Kde() const {
        return {"kde",         Work / "fixes.shp",
                "--id-field",  "animal",
                "--out",       Work / "out",
                "--cell-size", "40",
                "--extent",    "min",
                "--isopleths", "95,50",
                "--polygons",  "--lines",
                "--prefix",    "K"};
    }
    std::vector<std::string> Isopleths() const {
        return {"isopleths",  Work / "out/E1", "--levels", "95,50",      "--out",
                Work / "out", "--name",        "I",        "--polygons", "--donuts"};
    }
    std::vector<std::string> Import() const {
        return {"import", Work / "table.csv", Work / "new.shp", "--from-crs", "EPSG:32633"};
    }
};

TEST_F(FullDisk, Leaves_whole_datasets_of_a_run) {
    FillUp(Kde());
}

TEST_F(FullDisk, Leaves_whole_datasets_of_a_run_with_geotiffs) {
    std::vector<std::string> call = Kde();
    call.insert(call.end(), {"--raster-format", "GTiff"});
    FillUp(call);
}

// The package holds the ranges of an earlier run: it stays as it was, or has those of both.
TEST_F(FullDisk, Leaves_the_package_of_ranges_as_it_was_or_whole) {
    Prepare({"kde", Before / "fixes.shp", "--id-field", "animal", "--out", Before / "out", "--cell-size", "40",
             "--extent", "min", "--isopleths", "95", "--polygons", "--prefix", "F", "--gpkg"});
    std::vector<std::string> call = Kde();
    call.emplace_back("--gpkg");
    FillUp(call);
}

TEST_F(FullDisk, Leaves_no_half_geopackage_of_an_import) {
    // Its bytes hold the time of the import, so that two are never the same.
    const std::vector<std::string> call = {"import", Work / "table.csv", Work / "new.gpkg", "--from-crs", "EPSG:32633"};
    int refused = 0;
    int code = 1;
    for (std::uintmax_t room = 0; code != 0 && room < 1500000; room = room * 3 / 2 + 4096) {
        SCOPED_TRACE(std::to_string(room) + " bytes free");
        Restore();
        const Files old = datasets_in(Work);
        LeaveFree(room);
        const tests::FaultyRun run = Run(call);
        code = run.Code;
        if (code == 0) break;
        ++refused;
        EXPECT_TRUE(IsFullDisk(run.Err)) << run.Err;
        fs::remove(Work / "ballast");
        EXPECT_TRUE(datasets_in(Work) == old);
    }
    EXPECT_EQ(code, 0);
    EXPECT_GT(refused, 0);
    const cli::Ran info = cli::run_wxl({"info", Work / "new.gpkg"});
    EXPECT_EQ(info.Code, 0) << info.Err;
}

TEST_F(FullDisk, Leaves_whole_isopleths) {
    FillUp(Isopleths());
}

TEST_F(FullDisk, Leaves_no_half_import) {
    FillUp(Import());
}

TEST_F(FullDisk, Leaves_a_layer_readable_that_gets_observation_fields) {
    FillUp({"obs-fields", Work / "fixes.shp", "--answer", "yes"}, true);
}

TEST_F(FullDisk, Leaves_no_half_track) {
    FillUp({"track", Work / "fixes.shp", Work / "track.shp"});
}

TEST_F(FullDisk, That_is_read_only_is_told_of_and_stays_as_it_is) {
    Restore();
    const tests::Snapshot before = tests::snapshot_of(Work);
    ASSERT_TRUE(m_disk.MakeReadOnly());
    for (const auto& call :
         {Kde(), Isopleths(), Import(), std::vector<std::string>{"obs-fields", Work / "fixes.shp", "--answer", "yes"},
          std::vector<std::string>{"remove-duplicates", Work / "fixes.shp", "--by", "xy", "--answer", "yes"},
          std::vector<std::string>{"track", Work / "fixes.shp", Work / "track.shp"},
          std::vector<std::string>{"stats", Work / "fixes.shp", "--id-field", "animal", "--csv", Work / "s.csv"}}) {
        const tests::FaultyRun run = Run(call);
        EXPECT_EQ(run.Code, 1) << call[0] << run.Err;
        EXPECT_NE(run.Err.find(Work.string()), std::string::npos) << call[0] << ": " << run.Err;
        EXPECT_TRUE(tests::snapshot_of(Work) == before) << call[0];
    }
}

/// Limits the size of files that this process and its children write, while it lives.
class SmallFiles {
public:
    explicit SmallFiles(rlim_t bytes) {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit small = {bytes, m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &small);
    }
    ~SmallFiles() { ::setrlimit(RLIMIT_FSIZE, &m_before); }

private:
    rlimit m_before = {};
};

TEST(SizeLimit, Of_files_ends_a_run_with_a_message_and_leaves_nothing_half_written) {
    const tests::ScratchFolder scratch;
    const tests::ScratchFolder work;
    std::ofstream csv(work / "table.csv");
    csv << "animal,x,y\n";
    for (int fix = 0; fix < 400; ++fix)
        csv << "a," << 500000 + fix * 7 % 900 << ',' << 6000000 + fix * 13 % 800 << '\n';
    csv.close();
    const std::vector<std::string> import = {"import", work / "table.csv", work / "fixes.shp", "--from-crs",
                                             "EPSG:32633"};
    const Files table = datasets_in(work.Path());
    const auto run_limited = [&](const std::vector<std::string>& call) {
        const SmallFiles limit(8000);
        return tests::run_with_fault(call, work.Path(), scratch.Path(), {});
    };
    const tests::FaultyRun imported = run_limited(import);
    EXPECT_EQ(imported.Code, 1);
    EXPECT_NE(imported.Err.find("The file became larger than this user's limit (ulimit -f) allows: "),
              std::string::npos)
        << imported.Err;
    EXPECT_EQ(datasets_in(work.Path()), table);
    ASSERT_EQ(tests::run_with_fault(import, work.Path(), scratch.Path(), {}).Code, 0);
    const Files before = datasets_in(work.Path());
    for (const std::string format : {"GRID", "GTiff"}) {
        const tests::FaultyRun run =
            run_limited({"kde", work / "fixes.shp", "--id-field", "animal", "--out", work / "out", "--cell-size", "10",
                         "--extent", "min", "--raster-format", format});
        EXPECT_EQ(run.Code, 1) << format;
        EXPECT_NE(run.Err.find("could not be written"), std::string::npos) << run.Err;
        EXPECT_EQ(datasets_in(work.Path()), before) << format;
    }
}

}  // namespace
}  // namespace wxl
