// The program writes where its options say and nowhere else, whatever it reads: shown by watching every call that
// writes, and by the fence that the kernel draws around it where it can.

#include "adapters/disk/write_fence.h"
#include "adapters/gdal/gdal_support.h"
#include "tests/robustness/cut_short_edits.h"
#include "tests/robustness/guarded_tree.h"
#include "tests/robustness/hostile_databases.h"
#include "tests/robustness/malformed.h"
#include "tests/support/places.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/write_watch.h"
#include "tests/unit/cli/layer_files.h"
#include "tests/unit/cli/raster_files.h"

#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ogrsf_frmts.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace wxl::tests {
namespace {

namespace fs = std::filesystem;
using testing::IsEmpty;

/// Runs `step` in a process of its own, behind a fence; its result is the exit code.
int behind_fence(const files::WritablePlaces& places, const std::function<int()>& step) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(files::raise_fence(places) ? step() : 99);
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

class WriteFence : public testing::Test {
protected:
    void SetUp() override {
        if (files::fence_version() < 2)
            GTEST_SKIP() << "this kernel has no Landlock (version " << files::fence_version()
                         << "): there is no fence to look at";
        fs::create_directories(m_folder / "out/below");
        fs::create_directories(m_folder / "other");
        ::setenv("TMPDIR", (m_folder / "temporary").c_str(), 1);
        fs::create_directories(m_folder / "temporary");
    }
    void TearDown() override { ::unsetenv("TMPDIR"); }

    static bool Writes(const fs::path& file) { return static_cast<bool>(std::ofstream(file) << "text" << std::flush); }

    ScratchFolder m_folder;
};

TEST_F(WriteFence, Lets_write_below_the_places_and_nowhere_else) {
    write_bytes(m_folder / "other/old", "old");
    EXPECT_EQ(behind_fence(files::WritablePlaces().Folder(m_folder / "out"),
                           [&] {
                               std::error_code failed;
                               int wrong = 0;
                               wrong += Writes(m_folder / "out/a") && Writes(m_folder / "out/below/b") ? 0 : 1;
                               wrong += Writes(m_folder / "temporary/c") && Writes("/dev/null") ? 0 : 2;
                               fs::rename(m_folder / "out/a", m_folder / "out/below/a", failed);
                               wrong += failed ? 4 : 0;
                               wrong += Writes(m_folder / "other/new") || Writes(m_folder / "other/old") ? 8 : 0;
                               wrong += fs::remove(m_folder / "other/old", failed) ? 16 : 0;
                               fs::rename(m_folder / "out/below/a", m_folder / "other/a", failed);
                               wrong += failed ? 0 : 32;
                               fs::create_directory(m_folder / "other/folder", failed);
                               wrong += failed ? 0 : 64;
                               return wrong;
                           }),
              0);
    EXPECT_EQ(bytes_of(m_folder / "other/old"), "old");
}

TEST_F(WriteFence, Starts_programs_only_where_that_is_allowed) {
    const auto start = [] {
        ::execl("/bin/true", "true", nullptr);
        return 1;
    };
    EXPECT_EQ(behind_fence(files::WritablePlaces().Folder(m_folder / "out"), start), 1);
    EXPECT_EQ(behind_fence(files::WritablePlaces().Folder(m_folder / "out").Programs(), start), 0);
}

TEST_F(WriteFence, A_folder_that_is_not_there_yet_can_be_made) {
    EXPECT_EQ(behind_fence(files::WritablePlaces().Folder(m_folder / "out/new/deep"),
                           [&] {
                               fs::create_directories(m_folder / "out/new/deep");
                               return Writes(m_folder / "out/new/deep/a") && !Writes(m_folder / "other/a") ? 0 : 1;
                           }),
              0);
}

/// A folder of hostile inputs, and what the commands may write.
class WatchedCommands : public testing::Test {
protected:
    void SetUp() override {
        for (const char* name : {"in", "out", "temporary", "victim"}) fs::create_directories(m_folder / name);
        write_bytes(m_folder / "victim/precious", "precious");
        MakeShapefiles();
        MakeTables();
        MakeDatabases();
        MakeCutShortEdits();
        MakeCutShortDatabases();
        MakeRasters();
        MakeLeaders();
    }

    fs::path In(const std::string& name) const { return m_folder / ("in/" + name); }

    void MakeShapefiles() {
        const cli::Ran ran =
            cli::run_wxl({"import", Put("fixes.csv", kFixes), In("good.shp"), "--from-crs", "EPSG:32633"});
        ASSERT_EQ(ran.Code, 0) << ran.Err;
        m_inputs.push_back(In("good.shp"));
        for (const std::string name : {"cut", "wild", "linked"}) {
            for (const char* end : {".shp", ".shx", ".dbf", ".prj"}) fs::copy_file(In("good") += end, In(name) += end);
            m_inputs.push_back(In(name) += ".shp");
        }
        write_bytes(In("cut.dbf"), bytes_of(In("good.dbf")).substr(0, 200));
        std::string wild = bytes_of(In("good.shp"));
        for (std::size_t i = 100; i < wild.size(); i += 7) wild[i] = static_cast<char>(i);
        write_bytes(In("wild.shp"), wild);
        fs::remove(In("linked.dbf"));
        fs::create_symlink(m_folder / "victim/precious", In("linked.dbf"));
        fs::create_symlink(m_folder / "victim/precious", In("good.shp.xml"));
    }

    void MakeTables() {
        for (const auto& entry : fs::directory_iterator(SourceFile("fuzz/corpus/tracking_csv")))
            m_inputs.push_back(Put(entry.path().filename().string(), bytes_of(entry.path())));
        for (const auto& entry : fs::directory_iterator(SourceFile("fuzz/corpus/settings_reader")))
            m_settings.push_back(Put(entry.path().filename().string(), bytes_of(entry.path())));
        m_settings.push_back(
            Put("elsewhere.txt", "[OUTFOLDER]\r\n" + (m_folder / "victim").string() + "\r\n[END]\r\n"));
    }

    /// GeoPackages: plain, and with a trigger that deletes when something is changed.
    void MakeDatabases() {
        OGRSpatialReference zone = files::ToOgr(files::ReferenceFromText("EPSG:32633"));
        for (const std::string name : {"plain.gpkg", "trigger.gpkg"}) {
            files::RegisterGdal();
            GDALDriver* driver = GetGDALDriverManager()->GetDriverByName("GPKG");
            const files::GdalDatasetPtr made(driver->Create(In(name).c_str(), 0, 0, 0, GDT_Unknown, nullptr));
            ASSERT_TRUE(made);
            OGRLayer* layer = made->CreateLayer("fixes", &zone, wkbPoint, nullptr);
            OGRFieldDefn field("animal", OFTString);
            ASSERT_EQ(layer->CreateField(&field), OGRERR_NONE);
            for (int i = 0; i < 5; ++i) {
                OGRFeature row(layer->GetLayerDefn());
                OGRPoint point(500000 + 100 * i, 5000000 + 50 * i * i);
                row.SetGeometry(&point);
                row.SetField(0, "a");
                ASSERT_EQ(layer->CreateFeature(&row), OGRERR_NONE);
            }
            if (name == "trigger.gpkg")
                made->ReleaseResultSet(made->ExecuteSQL(
                    "CREATE TRIGGER t AFTER UPDATE ON fixes BEGIN DELETE FROM fixes; END", nullptr, nullptr));
            m_inputs.push_back(In(name));
        }
        m_inputs.push_back(
            Put("points.geojson",
                R"({"type":"FeatureCollection","features":[{"type":"Feature","properties":{"animal":"a"},)"
                R"("geometry":{"type":"Point","coordinates":[1,2]}}]})"));
    }

    /// A shapefile of four fixes with a change into one of three that was cut short, `moved` of its files in place.
    fs::path CutShort(const std::string& name, int moved) {
        for (const char* end : {".shp", ".shx", ".dbf", ".prj"}) fs::copy_file(In("good") += end, In(name) += end);
        const fs::path shapefile = In(name) += ".shp";
        leave_half_moved(shapefile, In("three.shp"), moved);
        m_inputs.push_back(shapefile);
        return shapefile;
    }

    /// All that a folder of a change that was cut short can be: whole, stale, without its list, of other files.
    void MakeCutShortEdits() {
        const cli::Ran ran = cli::run_wxl({"import", Put("three.csv", std::string(kFixes, kThreeFixes)),
                                           In("three.shp"), "--from-crs", "EPSG:32633"});
        ASSERT_EQ(ran.Code, 0) << ran.Err;
        for (int moved = 0; moved <= 3; ++moved) CutShort("moved" + std::to_string(moved), moved);
        write_bytes(CutShort("stale", 0).replace_extension("dbf"), bytes_of(In("good.dbf")) + " ");
        fs::remove(swap_folder_of(CutShort("listless", 1)) / "manifest");
        write_bytes(swap_folder_of(CutShort("stranger", 1)) / "stranger.prj", "text");
        ASSERT_EQ(::mkfifo((swap_folder_of(CutShort("fifo", 1)) / "fifo").c_str(), 0600), 0);
        write_bytes(swap_folder_of(CutShort("torn", 1)) / "torn.shp", "torn");
        const fs::path leading = swap_folder_of(CutShort("leading", 1)) / "leading.shp";
        fs::remove(leading);
        fs::create_symlink(m_folder / "victim/precious", leading);
        const fs::path led = CutShort("led", 0);
        fs::remove_all(swap_folder_of(led));
        fs::create_directory_symlink(m_folder / "victim", swap_folder_of(led));
    }

    /// GeoPackages whose writers were killed: with a journal, with one that names another file, with a log.
    void MakeCutShortDatabases() {
        for (const char* name : {"half.gpkg", "common.gpkg", "torn.gpkg", "alone.gpkg", "logging.gpkg", "log.gpkg"}) {
            make_geopackage(In(name));
            m_inputs.push_back(In(name));
        }
        for (const char* name : {"half.gpkg", "common.gpkg", "torn.gpkg", "alone.gpkg"}) leave_half_changed(In(name));
        name_common_journal(In("common.gpkg"), m_folder / "victim/precious");
        const std::string journal = bytes_of(In("torn.gpkg-journal"));
        write_bytes(In("torn.gpkg-journal"), journal.substr(0, journal.size() / 2));
        write_bytes(In("alone.gpkg"), "");
        turn_to_logging(In("logging.gpkg"));
        leave_log(In("log.gpkg"));
    }

    void MakeRasters() {
        const ScratchFolder scratch;
        m_rasters.push_back(cli::make_raster(scratch, "grid", cli::rings({0, 1, 9})));
        fs::copy(m_rasters.back(), In("grid"), fs::copy_options::recursive);
        fs::copy(m_rasters.back(), In("short"), fs::copy_options::recursive);
        write_bytes(In("short/w001001.adf"), "short");
        const std::string tiff = cli::make_raster(scratch, "tiff", cli::rings({0, 1, 9}), "GTiff");
        fs::copy_file(tiff, In("whole.tif"));
        write_bytes(In("cut.tif"), bytes_of(tiff).substr(0, bytes_of(tiff).size() / 2));
        m_rasters = {In("grid"), In("short"), In("whole.tif"), In("cut.tif"), In("leader.vrt")};
    }

    /// Files that would lead elsewhere.
    void MakeLeaders() {
        const std::string victim = (m_folder / "victim/precious").string();
        m_inputs.push_back(Put("leader.vrt", "<OGRVRTDataSource><OGRVRTLayer name=\"a\"><SrcDataSource>" + victim +
                                                 "</SrcDataSource></OGRVRTLayer></OGRVRTDataSource>"));
        m_inputs.push_back(Put("empty.shp", ""));
        m_inputs.push_back(Put("noise.gpkg", std::string(4096, '\x55')));
        fs::create_symlink(m_folder / "victim", In("folder"));
        m_inputs.push_back(In("folder"));
    }

    std::string Put(const std::string& name, const std::string& bytes) const {
        write_bytes(In(name), bytes);
        return In(name);
    }

    /// Watches a call, which may write below these folders and the temporary one.
    void Watch(std::vector<std::string> call, std::vector<fs::path> allowed, bool mayStart = false) {
        SCOPED_TRACE(testing::PrintToString(call));
        call.insert(call.begin(), WXL_PROGRAM);
        const WatchedRun run = watch_writes(call, m_folder.Path(), m_folder / "temporary");
        if (!run.WhyNot.empty()) GTEST_SKIP() << run.WhyNot;
        ++m_watched;
        m_written += run.Writes.size();
        EXPECT_GE(run.Code, 0) << run.Said;
        allowed.push_back(m_folder / "temporary");
        for (const std::string& file : run.Writes) EXPECT_TRUE(IsAllowed(file, allowed)) << file << "\n" << run.Said;
        if (!mayStart) {
            EXPECT_THAT(run.Programs, IsEmpty());
        }
    }

    static bool IsAllowed(const fs::path& file, const std::vector<fs::path>& allowed) {
        if (file == "/dev/null") return true;
        return std::any_of(allowed.begin(), allowed.end(), [&](const fs::path& folder) {
            const fs::path way = file.lexically_relative(fs::weakly_canonical(folder));
            return !way.empty() && *way.begin() != "..";
        });
    }

    /// After all: what was to be left alone is as it was.
    void TearDown() override {
        EXPECT_EQ(bytes_of(m_folder / "victim/precious"), "precious");
        EXPECT_EQ(std::distance(fs::directory_iterator(m_folder / "victim"), fs::directory_iterator()), 1);
    }

    static constexpr const char* kFixes =
        "animal,x,y,timestamp\n"
        "a,500000,5000000,2018-05-09\na,500400,5000300,2018-05-10\na,500800,5000100,2018-05-11\n"
        "a,500300,5000900,2018-05-12\n";

    static constexpr std::size_t kThreeFixes = 105;  // so many bytes of them

    ScratchFolder m_folder;
    std::vector<std::string> m_inputs;
    std::vector<std::string> m_settings;
    std::vector<std::string> m_rasters;
    std::size_t m_watched = 0;
    std::size_t m_written = 0;
};

TEST_F(WatchedCommands, That_only_read_open_nothing_for_writing) {
    for (const std::string& input : m_inputs) {
        Watch({"info", input}, {});
        Watch({"stats", input, "--id-field", "animal"}, {});
        Watch({"bandwidth", input, "--id-field", "animal", "--method", "lscv"}, {});
        Watch({"kde", input, "--id-field", "animal", "--out", m_folder / "new", "--cell-size", "50", "--dry-run"}, {});
        Watch({"overlap", input, "--id-field", "animal"}, {});
        Watch({"mcp", input, "--id-field", "animal"}, {});
        Watch({"curve", input, "--id-field", "animal"}, {});
        Watch({"models", input, "--id-field", "animal", "--time-field", "Time2"}, {});
    }
    EXPECT_GT(m_watched, 50U);
}

TEST_F(WatchedCommands, That_read_find_the_rows_of_a_change_that_was_cut_short_wherever_its_files_are) {
    fs::remove_all(m_folder / "temporary");
    fs::create_directories(m_folder / "elsewhere/temporary");
    const fs::path shorter = m_folder / "elsewhere/temporary";
    for (int moved = 0; moved <= 3; ++moved) {
        const fs::path input = In("moved" + std::to_string(moved) + ".shp");
        const auto before = entries_of(m_folder / "in", {});
        const WatchedRun run = watch_writes({WXL_PROGRAM, "mcp", input, "--id-field", "animal", "--percent", "100"},
                                            m_folder.Path(), shorter);
        if (!run.WhyNot.empty()) GTEST_SKIP() << run.WhyNot;
        EXPECT_EQ(run.Code, 0) << run.Said;
        EXPECT_NE(run.Said.find("100000  3"), std::string::npos) << run.Said;
        for (const std::string& file : run.Writes) EXPECT_TRUE(IsAllowed(file, {shorter})) << file;
        EXPECT_EQ(difference(before, entries_of(m_folder / "in", {})), "");
        EXPECT_TRUE(fs::is_empty(shorter));
    }
}

TEST_F(WatchedCommands, That_write_tables_write_beside_them) {
    for (const std::string& input : m_inputs) {
        Watch({"stats", input, "--id-field", "animal", "--csv", m_folder / "out/s.csv", "--overwrite"},
              {m_folder / "out"});
        Watch({"bandwidth", input, "--id-field", "animal", "--method", "lscv", "--profile", m_folder / "out/p.csv",
               "--plot", m_folder / "out/p.svg", "--overwrite"},
              {m_folder / "out"});
        Watch({"overlap", input, "--id-field", "animal", "--csv", m_folder / "out/o.csv", "--overwrite"},
              {m_folder / "out"});
        Watch({"curve", input, "--id-field", "animal", "--csv", m_folder / "out/c.csv", "--plot",
               m_folder / "out/c.svg", "--overwrite"},
              {m_folder / "out"});
        Watch({"models", input, "--id-field", "animal", "--time-field", "Time2", "--csv", m_folder / "out/m.csv",
               "--plot", m_folder / "out", "--overwrite"},
              {m_folder / "out"});
    }
    EXPECT_GT(m_written, 0U);
}

TEST_F(WatchedCommands, That_make_datasets_write_into_their_folder) {
    const fs::path out = m_folder / "out";
    for (const std::string& input : m_inputs) {
        Watch({"import", input, out / "i.shp", "--from-crs", "EPSG:32633", "--overwrite"}, {out});
        Watch({"track", input, out / "t.shp", "--overwrite"}, {out});
        Watch({"mcp", input, "--id-field", "animal", "--out", out / "m.shp", "--overwrite"}, {out});
        Watch({"overlap", input, "--id-field", "animal", "--out", out, "--overwrite"}, {out});
        Watch({"akde", input, "--id-field", "animal", "--time-field", "Time2", "--out", out, "--overwrite"}, {out});
        Watch({"kde", input, "--id-field", "animal", "--out", out, "--cell-size", "50", "--extent", "full:900",
               "--isopleths", "95", "--polygons", "--overwrite", "--answer", "yes", "--html"},
              {out});
    }
    for (const std::string& raster : m_rasters) {
        Watch({"isopleths", raster, "--levels", "50", "--out", out, "--name", "n", "--overwrite"}, {out});
        Watch({"kde", In("good.shp"), "--id-field", "animal", "--out", out, "--extent", "ref:" + raster, "--overwrite",
               "--answer", "yes"},
              {out});
    }
    EXPECT_GT(m_written, 0U);
}

TEST_F(WatchedCommands, That_load_settings_write_into_the_folder_that_was_named) {
    for (const std::string& settings : m_settings)
        Watch({"kde", In("good.shp"), "--id-field", "animal", "--settings", settings, "--out", m_folder / "out",
               "--cell-size", "50", "--answer", "yes", "--overwrite"},
              {m_folder / "out"});
    EXPECT_GT(m_written, 0U);
}

TEST_F(WatchedCommands, That_edit_write_beside_the_dataset) {
    for (const std::string& input : m_inputs) {
        // A link to a folder is the user's choice: the dataset is what it leads to.
        if (fs::is_directory(input)) continue;
        Watch({"obs-fields", input, "--yes"}, {m_folder / "in"});
        Watch({"remove-duplicates", input, "--by", "xy"}, {m_folder / "in"});
    }
    EXPECT_GT(m_written, 0U);
}

TEST_F(WatchedCommands, Of_a_batch_write_into_its_folder) {
    const fs::path out = m_folder / "out";
    const std::vector<std::string> plan = {"batch", "plan",        In("good.shp"), "--id-field", "animal",   "--out",
                                           out,     "--cell-size", "50",           "--extent",   "full:900", "--answer",
                                           "yes",   "--overwrite", "--group-by",   "1"};
    const auto all = [&] {
        Watch({"batch", "status", out}, {out});
        Watch({"batch", "submit", out, "--dry-run"}, {out});
        Watch({"batch", "run", out, "--task", "1"}, {out});
        Watch({"batch", "merge", out}, {out});
        Watch({"batch", "submit", out, "--engine", "local"}, {out}, true);
        Watch({"batch", "overlap", out, "--tasks", "2"}, {out});
        Watch({"batch", "overlap", out, "--task", "1"}, {out});
        Watch({"batch", "overlap", out, "--merge", "--out", out, "--overwrite"}, {out});
    };
    Watch(plan, {out});
    all();
    for (const char* subfolder : {"../victim", "link", "."}) {
        Watch(plan, {out});
        std::error_code ignored;
        fs::create_directory_symlink(m_folder / "victim", out / "link", ignored);
        std::string text = bytes_of(out / "wxl_batch/plan.json");
        const std::string old = "animals_1-1";
        ASSERT_NE(text.find(old), std::string::npos);
        write_bytes(out / "wxl_batch/plan.json", text.replace(text.find(old), old.size(), subfolder));
        all();
    }
    Watch({"batch", "plan-akde", In("good.shp"), "--id-field", "animal", "--time-field", "Time2", "--out", out,
           "--html", "--gpkg", "--overwrite"},
          {out});
    all();
    Watch({"kde", In("good.shp"), "--id-field", "animal", "--out", m_folder / "out2", "--cell-size", "50", "--extent",
           "full:900", "--answer", "yes", "--jobs", "2"},
          {m_folder / "out2"}, true);
    Watch({"man", "--all", m_folder / "out/man"}, {out});
    Watch({"completion", "bash"}, {});
}

}  // namespace
}  // namespace wxl::tests
