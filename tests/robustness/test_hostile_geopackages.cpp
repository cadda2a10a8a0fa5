// GeoPackages made to mislead: whatever is in them and beside them, commands that read leave every file as it is, and
// end soon.

#include "tests/robustness/guarded_tree.h"
#include "tests/robustness/hostile_databases.h"
#include "tests/robustness/malformed.h"

#include <sqlite3.h>

namespace wxl::tests {
namespace {

namespace fs = std::filesystem;

class HostileGeoPackage : public testing::Test {
protected:
    HostileGeoPackage() { fs::create_directory(Tree), fs::create_directory(Out), write_bytes(Victim, "precious"); }

    ScratchFolder m_scratch;
    const fs::path Tree = m_scratch / "tree";
    const fs::path Out = m_scratch / "out";
    const fs::path File = Tree / "d.gpkg";
    const fs::path Victim = Tree / "victim";

    LimitedRun Run(const std::vector<std::string>& call) const { return run_limited(call, Out); }

    /// What every command that reads says of the layer; nothing in the tree may change meanwhile.
    std::vector<LimitedRun> Read(const std::string& layer = "points") const {
        const std::string input = File.string() + ":" + layer;
        const std::vector<std::vector<std::string>> calls = {
            {"info", input},
            {"stats", input, "--id-field", "animal"},
            {"bandwidth", input, "--id-field", "animal", "--method", "href"},
            {"kde", input, "--id-field", "animal", "--out", Out / "k", "--cell-size", "50", "--extent", "min",
             "--overwrite"},
            {"track", input, Out / "t.shp", "--overwrite"}};
        std::vector<LimitedRun> runs;
        for (const auto& call : calls) {
            const auto before = entries_of(Tree, {});
            runs.push_back(Run(call));
            EXPECT_EQ(difference(before, entries_of(Tree, {})), "") << call.front();
            EXPECT_EQ(runs.back().Signal, 0) << call.front();
        }
        return runs;
    }

    void ExpectRead(const std::string& layer = "points") const {
        for (const LimitedRun& run : Read(layer)) EXPECT_EQ(run.Code, 0) << run.Err;
    }

    void ExpectRefused(const std::string& message, const std::string& layer = "points") const {
        for (const LimitedRun& run : Read(layer)) {
            EXPECT_EQ(run.Code, 1) << run.Out;
            EXPECT_EQ(run.Err, "wxl: " + message + "\n");
            EXPECT_LT(run.CpuSeconds, is_sanitized() ? 10.0 : 2.0);
        }
    }

    std::string LeadsElsewhere() const {
        return File.string() + " leads to data elsewhere: name the file that holds them, or give --allow-indirect";
    }

    std::string CutShort(const std::string& side) const {
        return File.string() + " holds a change that was cut short (" + side +
               "), and commands that read leave it alone: make the change again (wxl obs-fields and wxl "
               "remove-duplicates first take back what was cut short), or open the file in QGIS and save it";
    }
};

TEST_F(HostileGeoPackage, A_plain_one_is_read) {
    make_geopackage(File);
    ExpectRead();
}

TEST_F(HostileGeoPackage, A_change_that_was_cut_short_is_taken_back_by_commands_that_change_only) {
    make_geopackage(File);
    leave_half_changed(File);
    const std::string journal = File.string() + "-journal";
    ExpectRefused(CutShort(journal));
    const LimitedRun run = Run({"remove-duplicates", File.string() + ":points", "--by", "xy"});
    EXPECT_EQ(run.Code, 0) << run.Err;
    EXPECT_FALSE(fs::exists(journal));
    EXPECT_EQ(bytes_of(File).find("half"), std::string::npos);
    ExpectRead();
}

TEST_F(HostileGeoPackage, The_file_that_a_journal_names_is_never_deleted) {
    make_geopackage(File);
    leave_half_changed(File);
    name_common_journal(File, Victim);
    const std::string journal = File.string() + "-journal";
    ExpectRefused(CutShort(journal));
    const auto before = entries_of(Tree, {});
    for (const std::vector<std::string>& call :
         {std::vector<std::string>{"obs-fields", File.string() + ":points", "--yes"},
          {"remove-duplicates", File.string() + ":points", "--by", "xy"}}) {
        const LimitedRun run = Run(call);
        EXPECT_EQ(run.Code, 1);
        EXPECT_EQ(run.Err, "wxl: " + journal + " names another file (" + Victim.string() +
                               "), which would be deleted with the change that it takes back: finish that change with "
                               "the program that began it, or delete the journal when " +
                               File.string() + " is as it should be\n");
        EXPECT_EQ(difference(before, entries_of(Tree, {})), "");
    }
}

TEST_F(HostileGeoPackage, A_journal_without_a_database_is_left_alone) {
    make_geopackage(File);
    leave_half_changed(File);
    write_bytes(File, "");
    for (const LimitedRun& run : Read()) EXPECT_EQ(run.Code, 1) << run.Out;
}

TEST_F(HostileGeoPackage, One_with_a_write_ahead_log_is_read_without_making_one) {
    make_geopackage(File);
    turn_to_logging(File);
    ASSERT_FALSE(fs::exists(File.string() + "-wal"));
    ExpectRead();
}

TEST_F(HostileGeoPackage, Rows_that_stand_in_another_programs_log_are_read) {
    make_geopackage(File);
    turn_to_logging(File);
    sqlite3* writer = nullptr;
    ASSERT_EQ(sqlite3_open(File.c_str(), &writer), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(writer, "PRAGMA wal_autocheckpoint=0; UPDATE points SET animal = 'logged'", nullptr, nullptr,
                           nullptr),
              SQLITE_OK);
    // Readers mark in the log's index which rows they see; that file is the other program's.
    const LimitedRun run = Run({"info", File.string() + ":points"});
    EXPECT_EQ(run.Code, 0) << run.Err;
    EXPECT_NE(run.Out.find("logged: 3"), std::string::npos) << run.Out;
    sqlite3_close(writer);
}

TEST_F(HostileGeoPackage, Links_in_the_places_of_side_files_are_not_followed) {
    make_geopackage(File);
    turn_to_logging(File);
    for (const char* ending : {"-journal", "-wal", "-shm"}) {
        fs::create_symlink(Victim, File.string() + ending);
        for (const LimitedRun& run : Read()) EXPECT_TRUE(run.Code == 0 || run.Code == 1) << run.Err;
        fs::remove(File.string() + ending);
    }
}

TEST_F(HostileGeoPackage, Virtual_tables_are_refused_however_they_are_written) {
    const std::string module = " USING VirtualShape('" + (Tree / "t").string() + "',CP1252,32633)";
    for (const std::string start :
         {"CREATE VIRTUAL TABLE v", "CREATE VIRTUAL  TABLE v", "CREATE  VIRTUAL TABLE v", "CREATE\tVIRTUAL\tTABLE v",
          "CREATE\nVIRTUAL\nTABLE\nv", "create virtual table v", "CREATE/**/VIRTUAL/* x */TABLE v",
          "CREATE --\nVIRTUAL TABLE v", "CREATE VIRTUAL TABLE IF NOT EXISTS v", "CREATE VIRTUAL TABLE [v]",
          "CREATE VIRTUAL TABLE `v`", "CREATE VIRTUAL TABLE 'v'", "CREATE VIRTUAL TABLE\"v\"",
          "CREATE /* USING rtree */ VIRTUAL TABLE v"}) {
        SCOPED_TRACE(start);
        make_geopackage(File, {schema_entry("table", "v", start + module), told_as_layer("v")});
        ExpectRefused(LeadsElsewhere());
        ExpectRefused(LeadsElsewhere(), "v");
    }
}

TEST_F(HostileGeoPackage, Views_in_the_place_of_what_a_geopackage_tells_of_itself_are_refused) {
    make_geopackage(File, {"ALTER TABLE gpkg_contents RENAME TO told",
                           "CREATE VIEW gpkg_contents AS WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM "
                           "n) SELECT told.* FROM told, n"});
    ExpectRefused(LeadsElsewhere());
}

TEST_F(HostileGeoPackage, Plain_views_are_read_and_endless_ones_are_refused) {
    const auto make_view = [&](const std::string& select) {
        make_geopackage(File, {"CREATE VIEW v AS " + select, told_as_layer("v")});
    };
    make_view("SELECT fid AS OGC_FID, geom, animal, Time2 FROM points WHERE Time2 >= 0");
    ExpectRead("v");

    const std::string advice = ": write its rows into a table (ogr2ogr OUT.gpkg INPUT v), or give --allow-indirect";
    const std::string endless = File.string() + ": the view \"v\" takes too long to compute, or has no end" + advice;
    make_view(
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) SELECT i AS OGC_FID, geom, animal, Time2 FROM "
        "points, n");
    ExpectRefused(endless, "v");
    make_view(
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) SELECT i AS OGC_FID, geom, animal, Time2 FROM "
        "n, points WHERE i < 0");
    ExpectRefused(endless, "v");
    make_view("SELECT fid AS OGC_FID, geom, animal, random() AS Time2 FROM points");
    ExpectRefused(File.string() + ": the view \"v\" is not plain: not authorized to use function: random" + advice,
                  "v");
}

TEST_F(HostileGeoPackage, Huge_texts_end_soon) {
    make_geopackage(File, {"UPDATE points SET animal = hex(zeroblob(35000000)) WHERE fid = 2"});
    for (const LimitedRun& run : Read()) {
        EXPECT_EQ(run.Code, 1) << run.Out.size();
        EXPECT_NE(run.Err.find(File.string() +
                               ": the row 2 holds a text of more than 16 MB in the field \"animal\": shorten it, or "
                               "leave the row out"),
                  std::string::npos)
            << run.Err.substr(0, 200);
        EXPECT_LT(run.CpuSeconds, is_sanitized() ? 10.0 : 2.0);
    }
}

}  // namespace
}  // namespace wxl::tests
