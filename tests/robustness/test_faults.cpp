// One call of the system fails, the n-th that writes, for n = 1, 2, 3 ... until a run meets no fault any more. Whatever
// n is: what stands under a final name is whole, what was there before is as it was, the message names the file, and
// the next run does the work. Instead of failing, the n-th call can also be the last one: the run is killed there.
// WXL_FAULTS=all tries every n, WXL_FAULTS=each every n with every kind of failure; without it a few n of each run.

#include "adapters/ogr/ogr_feature_class.h"
#include "platform/runtime_error.h"
#include "platform/text.h"
#include "tests/robustness/datasets.h"
#include "tests/robustness/faulty_program.h"
#include "tests/support/samples.h"
#include "tests/support/scratch_folder.h"
#include "tests/unit/cli/captured_console.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <iostream>
#include <map>
#include <string>
#include <vector>

namespace wxl {
namespace {

namespace fs = std::filesystem;
using tests::by_dataset;
using tests::bytes_of;
using tests::dataset_name;
using tests::datasets_in;
using tests::Fault;
using tests::FaultyRun;
using tests::Files;

constexpr int kFewFaults = 12;  ///< of each run, where not all are wanted

bool wants(const std::string& what) {
    const char* wanted = std::getenv("WXL_FAULTS");
    return wanted != nullptr && wanted == what;
}

bool all_faults() {
    return wants("all") || wants("each");
}

/// A run of the program in a folder `work` that is made anew from `before` each time.
struct Scenario {
    std::vector<std::string> Call = {};
    /// What to add to the call when it is made again after a fault.
    std::vector<std::string> Again = {};
    /// The layer that is changed in place; its files pass through several whole states.
    std::string Changed = {};
    /// Start of the names of datasets that the run replaces, which a run that fails may have deleted already.
    std::string Replaced = {};
    std::uint32_t Kinds = tests::kWritingCalls;
};

/// Everything that a reader finds in a layer.
std::vector<std::string> rows_of(const fs::path& layer) {
    files::OgrFeatureClass::FinishInterrupted(layer.string());
    const auto features = files::OgrFeatureClass::Open(layer.string());
    std::vector<std::string> rows;
    const auto cursor = features->Find({});
    while (const auto feature = cursor->NextFeature()) {
        const platform::Point at = feature->Shape().Location;
        std::string row = platform::NumberText(at.X) + " " + platform::NumberText(at.Y);
        for (int field = 0; field < static_cast<int>(features->Table().Fields().size()); ++field)
            row += ";" + platform::ValueText(feature->Value(field));
        rows.push_back(row);
    }
    return rows;
}

class Faults : public testing::Test {
protected:
    tests::ScratchFolder m_scratch;
    const fs::path Before = m_scratch / "before";
    const fs::path Work = m_scratch / "work";

    Faults() {
        fs::create_directories(Before / "out");
        std::ofstream csv(Before / "table.csv");
        csv << "animal,x,y,time\n";
        tests::Dice dice(3);
        for (int animal = 1; animal <= 3; ++animal)
            for (int fix = 0; fix < 20; ++fix)
                csv << animal << ',' << std::to_string(500000.0 + animal * 900.0 + 300.0 * dice.Normal()) << ','
                    << std::to_string(6000000.0 + 300.0 * dice.Normal()) << ",2024-01-0" << animal << "T10:" << 10 + fix
                    << ":00Z\n";
        csv.close();
        Prepare({"import", "table.csv", "fixes.shp", "--from-crs", "EPSG:32633"});
    }

    /// Runs the program in the folder that every run starts from.
    void Prepare(std::vector<std::string> call) const {
        for (std::string& argument : call)
            if (argument.find('.') != std::string::npos || argument == "out") argument = Before / argument;
        const cli::Ran ran = cli::run_wxl(call);
        ASSERT_EQ(ran.Code, 0) << ran.Err;
    }

    /// Two fixes of one place, the second and third of their animal at one time each.
    void AddDuplicates() const {
        std::ofstream more(Before / "table.csv", std::ios::app);
        more << "3,501000,6000100,2024-01-03T10:10:00Z\n3,501000,6000100,2024-01-03T10:11:00Z\n";
        more.close();
        Prepare({"import", "table.csv", "fixes.shp", "--from-crs", "EPSG:32633", "--overwrite"});
    }

    void MakeGeoPackage() const {
        const std::string call =
            "ogr2ogr -f GPKG '" + (Before / "fixes.gpkg").string() + "' '" + (Before / "fixes.shp").string() + "'";
        ASSERT_EQ(std::system(call.c_str()), 0) << call;
    }

    FaultyRun Run(std::vector<std::string> call, const Fault& fault) const {
        return tests::run_with_fault(call, Work, m_scratch.Path(), fault);
    }

    void Restore() const {
        fs::remove_all(Work);
        fs::copy(Before, Work, fs::copy_options::recursive);
    }

    /// Every n-th call fails in turn; the checks that hold for all of them.
    void CountUp(const Scenario& scenario) {
        Restore();
        const FaultyRun whole = Run(scenario.Call, {.Kinds = scenario.Kinds});
        ASSERT_EQ(whole.Code, 0) << whole.Err;
        ASSERT_GT(whole.Counted, 2) << "the failing calls are not preloaded";
        m_before = datasets_in(Before);
        m_after = datasets_in(Work);
        if (!scenario.Changed.empty()) {
            m_oldRows = rows_of(Before / scenario.Changed);
            m_rows = rows_of(Work / scenario.Changed);
        }
        const std::int64_t few = std::max<std::int64_t>(1, whole.Counted / kFewFaults);
        std::int64_t tried = 0;
        std::int64_t failed = 0;
        for (std::int64_t n = 1; n <= whole.Counted; n += all_faults() ? 1 : few)
            for (const Fault& fault : Variants(n, scenario.Kinds, static_cast<std::size_t>(tried))) {
                ++tried;
                failed += TryOne(scenario, fault) ? 1 : 0;
                if (testing::Test::HasFailure() && !all_faults()) return;
            }
        std::cout << "[ FAULTS   ] " << whole.Counted << " calls, " << tried << " runs with a fault, " << failed
                  << " of them ended with exit code 1\n";
        EXPECT_GT(failed, 0);
    }

private:
    static std::vector<Fault> Variants(std::int64_t n, std::uint32_t kinds, std::size_t turn) {
        const std::vector<Fault> all = {{.At = n, .Code = ENOSPC, .Lasting = false, .Kinds = kinds},
                                        {.At = n, .Code = EIO, .Lasting = false, .Kinds = kinds},
                                        {.At = n, .Code = ENOSPC, .Lasting = true, .Kinds = kinds},
                                        {.At = n, .Code = -SIGKILL, .Lasting = false, .Kinds = kinds}};
        if (wants("each")) return all;
        return {all[turn % all.size()]};
    }

    bool TryOne(const Scenario& scenario, const Fault& fault) {
        Restore();
        const FaultyRun run = Run(scenario.Call, fault);
        SCOPED_TRACE("call " + std::to_string(fault.At) + (fault.Lasting ? " and later ones" : "") + ", errno " +
                     std::to_string(fault.Code) + ": " + run.Path + " (kind " + std::to_string(run.Kind) + "), code " +
                     std::to_string(run.Code) + "\n" + run.Err);
        EXPECT_TRUE(run.Failed);
        const bool killed = fault.Code < 0;
        EXPECT_TRUE(killed ? run.Code == fault.Code : run.Code == 0 || run.Code == 1);
        if (run.Code == 0) {
            CheckMade(scenario, m_after, datasets_in(Work), "exit code 0, but not all is there");
        } else if (!killed) {
            EXPECT_TRUE(Names(run.Err, run.Path) || Names(run.Err, run.LastPath)) << "the message names no file";
        }
        CheckWhole(scenario);
        CheckKeptRows();
        CheckNextRun(scenario);
        // What could not be deleted stays, under a name that tells what it is.
        if (run.Kind != tests::kRemovingCalls && !killed) CheckTidy();
        return run.Code == 1;
    }

    /// Whether a message names the dataset of a file, or the folder that was to be locked by it.
    bool Names(const std::string& message, const std::string& path) const {
        const fs::path file = path;
        if (file.filename() == ".wxl_run.lock") return message.find(file.parent_path()) != std::string::npos;
        const fs::path out = Work / "out";
        const std::string dataset = tests::dataset_of(path, path.starts_with(out.string() + "/") ? out : Work);
        return message.find(dataset) != std::string::npos;
    }

    /// Every dataset is as before the run or as after a whole one; texts and summaries may also be gone or other.
    void CheckWhole(const Scenario& scenario) const {
        const auto before = by_dataset(m_before);
        const auto after = by_dataset(m_after);
        const auto now = by_dataset(datasets_in(Work));
        for (const auto& [name, files] : now) {
            if (files.begin()->first.ends_with(".txt") || files.begin()->first.ends_with("SUMMARY.csv")) continue;
            if (!scenario.Changed.empty() && name == dataset_name(scenario.Changed)) {
                CheckChanged(Work / scenario.Changed);
                continue;
            }
            const auto old = before.find(name);
            const auto made = after.find(name);
            EXPECT_TRUE((old != before.end() && old->second == files) || (made != after.end() && made->second == files))
                << name << " is neither the old nor the new one";
        }
        for (const auto& [name, files] : before) {
            const auto made = after.find(name);
            const bool kept = made != after.end() && made->second == files;
            if (!kept || (!scenario.Replaced.empty() && name.starts_with(scenario.Replaced))) continue;
            EXPECT_TRUE(now.contains(name) && now.at(name) == files) << name << " was to stay as it is";
        }
    }

    /// Rows of a summary that a whole run keeps are never lost.
    void CheckKeptRows() const {
        for (const auto& [name, text] : m_before) {
            const auto made = m_after.find(name);
            if (!name.ends_with("SUMMARY.csv") || made == m_after.end()) continue;
            const auto lines = [](const std::string& rows) { return platform::Split(rows, '\n'); };
            const std::vector<std::string> whole = lines(made->second);
            const std::vector<std::string> now = lines(bytes_of(Work / name));
            for (const std::string& row : lines(text))
                EXPECT_TRUE(std::ranges::count(whole, row) == 0 || std::ranges::count(now, row) > 0)
                    << name << " lost " << row;
        }
    }

    /// All is there. Deleted rows may stay in a layer's table, marked, where it could not be packed.
    void CheckMade(const Scenario& scenario, Files expected, Files found, const std::string& what) const {
        if (!scenario.Changed.empty()) {
            EXPECT_EQ(rows_of(Work / scenario.Changed), m_rows) << what;
            for (Files* files : {&expected, &found})
                std::erase_if(*files, [&](const auto& file) {
                    return dataset_name(file.first) == dataset_name(scenario.Changed);
                });
        }
        EXPECT_TRUE(found == expected) << what;
    }

    /// A layer that is changed in place holds whole rows, old ones or new ones.
    void CheckChanged(const fs::path& layer) const {
        try {
            const std::vector<std::string> rows = rows_of(layer);
            EXPECT_TRUE(rows.size() == m_rows.size() || rows.size() == m_oldRows.size());
            for (const std::string& row : rows) {
                const std::string place = row.substr(0, row.find(';') + 1);
                const auto known = [&](const std::string& other) { return other.starts_with(place); };
                EXPECT_TRUE(std::any_of(m_oldRows.begin(), m_oldRows.end(), known)) << row;
            }
        } catch (const platform::RuntimeError& error) {
            ADD_FAILURE() << layer << " cannot be read: " << error.Description;
        }
    }

    void CheckNextRun(const Scenario& scenario) const {
        std::vector<std::string> call = scenario.Call;
        call.insert(call.end(), scenario.Again.begin(), scenario.Again.end());
        const FaultyRun next = Run(call, {});
        EXPECT_EQ(next.Code, 0) << "the next run: " << next.Err;
        Files expected = m_after;
        Files found = datasets_in(Work);
        for (Files* files : {&expected, &found})
            std::erase_if(*files, [](const auto& file) {
                // A package of the same rows has other bytes where it was made in other steps.
                return file.first.ends_with("ANALYSIS.txt") || file.first.ends_with("RANGES.gpkg");
            });
        CheckMade(scenario, expected, found, "the next run did not make what an undisturbed one makes");
    }

    void CheckTidy() const {
        for (const auto& entry : fs::recursive_directory_iterator(Work))
            EXPECT_NE(entry.path().filename().string().front(), '.') << entry.path() << " was left";
    }

    Files m_before;
    Files m_after;
    std::vector<std::string> m_oldRows;
    std::vector<std::string> m_rows;
};

TEST_F(Faults, Of_a_run_with_grids_isopleths_and_report) {
    Prepare({"kde", "fixes.shp", "--id-field", "animal", "--out", "out", "--cell-size", "40", "--extent", "min",
             "--isopleths", "90", "--polygons", "--prefix", "E"});
    CountUp({.Call = {"kde", Work / "fixes.shp", "--id-field", "animal", "--out", Work / "out", "--cell-size", "40",
                      "--extent", "min", "--isopleths", "95,50", "--lines", "--polygons", "--donuts", "--prefix", "K"},
             .Again = {"--overwrite"}});
}

TEST_F(Faults, Of_a_run_with_geotiffs_into_a_new_folder) {
    CountUp({.Call = {"kde", Work / "fixes.shp", "--id-field", "animal", "--out", Work / "out", "--cell-size", "40",
                      "--extent", "min", "--raster-format", "GTiff", "--adaptive", "--bandwidth", "lscv"},
             .Again = {"--overwrite"}});
}

TEST_F(Faults, Of_a_run_over_earlier_outputs) {
    Prepare({"kde", "fixes.shp", "--id-field", "animal", "--out", "out", "--cell-size", "40", "--extent", "min",
             "--isopleths", "90", "--polygons", "--prefix", "K"});
    CountUp({.Call = {"kde", Work / "fixes.shp", "--id-field", "animal", "--out", Work / "out", "--cell-size", "40",
                      "--extent", "min", "--isopleths", "95,50", "--polygons", "--prefix", "K", "--overwrite"},
             .Replaced = "out/K",
             .Kinds = tests::kWritingCalls | tests::kRemovingCalls});
}

TEST_F(Faults, Of_a_run_that_adds_to_a_package) {
    Prepare({"kde", "fixes.shp", "--id-field", "animal", "--out", "out", "--cell-size", "40", "--extent", "min",
             "--isopleths", "90", "--polygons", "--prefix", "E", "--gpkg"});
    CountUp({.Call = {"kde", Work / "fixes.shp", "--id-field", "animal", "--out", Work / "out", "--cell-size", "40",
                      "--extent", "min", "--isopleths", "95,50", "--polygons", "--prefix", "K", "--gpkg"},
             .Again = {"--overwrite"}});
}

TEST_F(Faults, Of_ranges_with_limits_and_their_package_in_a_new_folder) {
    CountUp({.Call = {"akde", Work / "fixes.shp", "--id-field", "animal", "--out", Work / "out", "--cell-size", "40",
                      "--raster-format", "GTiff", "--lines", "--gpkg"},
             .Again = {"--overwrite"}});
}

TEST_F(Faults, Of_ranges_with_limits_beside_earlier_ones) {
    Prepare({"akde", "fixes.shp", "--id-field", "animal", "--out", "out", "--cell-size", "40", "--isopleths", "90",
             "--prefix", "E"});
    CountUp({.Call = {"akde", Work / "fixes.shp", "--id-field", "animal", "--out", Work / "out", "--cell-size", "40",
                      "--prefix", "K"},
             .Again = {"--overwrite"}});
}

TEST_F(Faults, Of_ranges_with_limits_over_earlier_ones) {
    Prepare({"akde", "fixes.shp", "--id-field", "animal", "--out", "out", "--cell-size", "40", "--isopleths", "90",
             "--prefix", "K", "--gpkg"});
    CountUp({.Call = {"akde", Work / "fixes.shp", "--id-field", "animal", "--out", Work / "out", "--cell-size", "40",
                      "--prefix", "K", "--gpkg", "--overwrite"},
             .Replaced = "out/K",
             .Kinds = tests::kWritingCalls | tests::kRemovingCalls});
}

class IsoplethFaults : public Faults {
protected:
    IsoplethFaults() {
        Prepare({"kde", "fixes.shp", "--id-field", "animal", "--out", "out", "--cell-size", "40", "--extent", "min",
                 "--prefix", "E"});
    }
    std::vector<std::string> Call = {"isopleths",  Work / "out/E1", "--levels", "95,50",
                                     "--out",      Work / "out",    "--name",   "I",
                                     "--polygons", "--lines",       "--donuts"};
};

TEST_F(IsoplethFaults, Of_new_isopleths) {
    CountUp({.Call = Call, .Again = {"--overwrite"}});
}

TEST_F(IsoplethFaults, Of_isopleths_over_earlier_ones) {
    Prepare({"isopleths", Before / "out/E2", "--levels", "90", "--out", "out", "--name", "I", "--polygons"});
    Call.emplace_back("--overwrite");
    CountUp({.Call = Call, .Replaced = "out/I", .Kinds = tests::kWritingCalls | tests::kRemovingCalls});
}

TEST_F(Faults, Of_an_import) {
    CountUp({.Call = {"import", Work / "table.csv", Work / "new.shp", "--from-crs", "EPSG:32633"},
             .Again = {"--overwrite"}});
}

TEST_F(Faults, Of_an_import_over_an_earlier_one) {
    CountUp({.Call = {"import", Work / "table.csv", Work / "fixes.shp", "--from-crs", "EPSG:32634", "--overwrite"},
             .Replaced = "fixes",
             .Kinds = tests::kWritingCalls | tests::kRemovingCalls});
}

TEST_F(Faults, Of_a_track) {
    CountUp({.Call = {"track", Work / "fixes.shp", Work / "track.shp"}, .Again = {"--overwrite"}});
}

TEST_F(Faults, Of_a_table_of_statistics) {
    CountUp({.Call = {"stats", Work / "fixes.shp", "--id-field", "animal", "--csv", Work / "stats.csv"},
             .Again = {"--overwrite"}});
}

TEST_F(Faults, Of_observation_fields) {
    CountUp({.Call = {"obs-fields", Work / "fixes.shp", "--answer", "yes"}, .Changed = "fixes.shp"});
}

TEST_F(Faults, Of_observation_fields_in_a_geopackage) {
    MakeGeoPackage();
    CountUp({.Call = {"obs-fields", Work / "fixes.gpkg", "--answer", "yes"},
             .Changed = "fixes.gpkg",
             .Kinds = tests::kWritingCalls | tests::kRemovingCalls});
}

TEST_F(Faults, Of_duplicates_in_a_geopackage) {
    AddDuplicates();
    MakeGeoPackage();
    CountUp(
        {.Call = {"remove-duplicates", Work / "fixes.gpkg", "--by", "xy", "--answer", "yes"}, .Changed = "fixes.gpkg"});
}

TEST_F(Faults, Of_duplicates) {
    AddDuplicates();
    CountUp({.Call = {"remove-duplicates", Work / "fixes.shp", "--by", "time2", "--answer", "yes"},
             .Changed = "fixes.shp"});
}

}  // namespace
}  // namespace wxl
