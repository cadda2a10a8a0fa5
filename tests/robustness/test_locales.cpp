// The same bytes whatever language the user's system speaks: decimal commas, grouped digits, and the Turkish letters i
// and I, which are no pair there. As a program of its own, which such a system starts, and inside of a desktop that has
// set its locale for everything in its process.

#include "platform/text.h"
#include "tests/robustness/faulty_program.h"
#include "tests/support/samples.h"
#include "tests/support/scratch_folder.h"
#include "tests/unit/cli/captured_console.h"

#include <clocale>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <locale>
#include <string>
#include <vector>

namespace wxl {
namespace {

namespace fs = std::filesystem;
using tests::Snapshot;

/// Sets the locale of the whole process, C's and C++'s, as a desktop does.
class ProcessLocale {
public:
    explicit ProcessLocale(const char* name) : m_set(std::setlocale(LC_ALL, name) != nullptr) {
        if (m_set) std::locale::global(std::locale(name));
    }
    ~ProcessLocale() {
        std::locale::global(std::locale::classic());
        std::setlocale(LC_ALL, "C");
    }
    ProcessLocale(const ProcessLocale&) = delete;
    ProcessLocale& operator=(const ProcessLocale&) = delete;
    bool IsSet() const { return m_set; }

private:
    bool m_set;
};

/// Locales made by localedef from the system's sources, where glibc finds them by LOCPATH.
class Locales : public testing::TestWithParam<const char*> {
protected:
    static void SetUpTestSuite() {
        s_folder = new tests::ScratchFolder;
        for (const std::string language : {"de_DE", "tr_TR"}) {
            const std::string place = (*s_folder / (language + ".UTF-8")).string();
            const std::string call = "localedef -i " + language + " -f UTF-8 " + place + " >/dev/null 2>&1";
            s_made = std::system(call.c_str()) == 0 && s_made;
        }
        ::setenv("LOCPATH", s_folder->Path().c_str(), 1);
    }
    static void TearDownTestSuite() {
        ::unsetenv("LOCPATH");
        delete s_folder;
    }

    void SetUp() override {
        if (!s_made) GTEST_SKIP() << "the locales de_DE and tr_TR are absent: install the package locales";
        fs::create_directories(Work);
        std::ofstream csv(Work / "table.csv");
        csv << "INDIVIDUAL-LOCAL-IDENTIFIER,LOCATION-LONG,LOCATION-LAT,TIMESTAMP\n";
        tests::Dice dice(3);
        for (const char* animal : {"Isis", "ipek", "Y\xC4\xB1lan"})
            for (int fix = 0; fix < 15; ++fix)
                csv << animal << ',' << std::to_string(12.5 + 0.01 * dice.Normal()) << ','
                    << std::to_string(55.25 + 0.01 * dice.Normal()) << ",2024-01-02T10:" << 10 + fix << ":00.500Z\n";
    }

    tests::ScratchFolder m_scratch;
    const fs::path Work = m_scratch / "work";

    /// Calls of every command and every method.
    std::vector<std::vector<std::string>> Calls() const {
        const std::string layer = Work / "fixes.shp";
        std::vector<std::vector<std::string>> calls = {
            {"import", Work / "table.csv", layer, "--from-crs", "epsg:4326", "--to-crs", "EPSG:32633"},
            {"info", layer, "--json"},
            {"stats", layer, "--id-field", "ANIMAL", "--csv", Work / "stats.csv"}};
        for (const char* method : {"href", "lscv", "bcv", "350.75", "prop:0.5,1.25"})
            for (const bool adaptive : {false, true}) {
                std::vector<std::string> call = {"kde",
                                                 layer,
                                                 "--id-field",
                                                 "animal",
                                                 "--out",
                                                 Work / (std::string(method) + (adaptive ? "_a" : "_f")),
                                                 "--cell-size",
                                                 "40.5",
                                                 "--extent",
                                                 "min",
                                                 "--scaling",
                                                 "1000000.5",
                                                 "--isopleths",
                                                 "95.5,50",
                                                 "--polygons",
                                                 "--lines",
                                                 "--donuts",
                                                 "--verbose-log",
                                                 "--independence",
                                                 "--json",
                                                 "--prefix",
                                                 "ki",
                                                 "--bandwidth",
                                                 method};
                if (adaptive) call.insert(call.end(), {"--adaptive", "--rescale"});
                calls.push_back(call);
            }
        calls.push_back({"kde", layer, "--id-field", "animal", "--out", Work / "tiff", "--cell-size", "100",
                         "--raster-format", "GTIFF", "--extent", "full:1234.5", "--save-settings", Work / "set.txt",
                         "--answer", "yes", "--where", "Time2 > 1704190300.5"});
        calls.push_back({"kde", layer, "--id-field", "animal", "--settings", Work / "set.txt", "--out", Work / "loaded",
                         "--answer", "yes"});
        calls.push_back(
            {"bandwidth", layer, "--id-field", "animal", "--method", "lscv", "--profile", Work / "profile.csv"});
        calls.push_back({"isopleths", Work / "href_f/ki1", "--levels", "99.5,33.3", "--out", Work / "iso", "--name",
                         "i", "--lines", "--polygons", "--donuts"});
        calls.push_back({"track", layer, Work / "track.shp", "--where", "animal = 'ipek'", "--answer", "yes"});
        calls.push_back({"remove-duplicates", layer, "--by", "xy", "--answer", "yes"});
        calls.push_back({"obs-fields", layer, "--answer", "yes"});
        return calls;
    }

    /// All files below the work folder and what the program said, without times.
    Snapshot Whole(const Snapshot& said) const {
        Snapshot all = tests::snapshot_of(Work);
        for (auto& [name, bytes] : all)
            if (name.ends_with("ANALYSIS.txt")) bytes = tests::without_times(bytes);
        all.insert(all.end(), said.begin(), said.end());
        return all;
    }

    Snapshot InProcess() const {
        Snapshot said;
        for (const auto& call : Calls()) {
            const cli::Ran ran = cli::run_wxl(call);
            said.emplace_back(call[0], ran.Out + ran.Err + std::to_string(ran.Code));
        }
        return Whole(said);
    }

    Snapshot AsProgram(const char* locale) const {
        ::setenv("LC_ALL", locale, 1);
        Snapshot said;
        for (const auto& call : Calls()) {
            const tests::FaultyRun ran = tests::run_with_fault(call, Work, m_scratch.Path(), {});
            said.emplace_back(call[0], ran.Out + ran.Err + std::to_string(ran.Code));
        }
        ::unsetenv("LC_ALL");
        return Whole(said);
    }

    void EmptyWork() const {
        for (const auto& entry : fs::directory_iterator(Work))
            if (entry.path().filename() != "table.csv") fs::remove_all(entry.path());
    }

    /// The last entries are what the calls said.
    void ExpectSame(const Snapshot& expected, const Snapshot& found) const {
        const std::size_t said = Calls().size();
        ASSERT_GT(expected.size(), 300U);
        for (std::size_t i = 0; i < said; ++i)
            EXPECT_EQ(found[found.size() - said + i].second, expected[expected.size() - said + i].second);
        ASSERT_EQ(found.size(), expected.size());
        for (std::size_t i = 0; i < expected.size(); ++i) {
            EXPECT_EQ(found[i].first, expected[i].first);
            EXPECT_TRUE(found[i].second == expected[i].second) << expected[i].first << " differs";
        }
    }

    static tests::ScratchFolder* s_folder;
    static bool s_made;
};

tests::ScratchFolder* Locales::s_folder = nullptr;
bool Locales::s_made = true;

TEST_P(Locales, Give_the_same_bytes_inside_of_a_desktop) {
    const Snapshot expected = InProcess();
    for (const auto& [name, said] : expected)
        EXPECT_TRUE(name.find_first_of("./") != std::string::npos || said.ends_with("0")) << said;
    EmptyWork();
    const ProcessLocale locale(GetParam());
    ASSERT_TRUE(locale.IsSet());
    ExpectSame(expected, InProcess());
}

TEST_P(Locales, Give_the_same_bytes_on_the_command_line) {
    const Snapshot expected = AsProgram("C");
    EmptyWork();
    ExpectSame(expected, AsProgram(GetParam()));
}

TEST_P(Locales, Leave_numbers_and_letters_alone) {
    const ProcessLocale locale(GetParam());
    ASSERT_TRUE(locale.IsSet());
    EXPECT_EQ(platform::NumberText(1234567.5), "1234567.5");
    EXPECT_EQ(platform::NumberText(1.5e-7), "1.5E-07");
    EXPECT_EQ(platform::NumberFromText(" 1234.5 "), 1234.5);
    EXPECT_FALSE(platform::IsNumeric("1234,5"));
    EXPECT_FALSE(platform::IsNumeric("1.234.567"));
    EXPECT_EQ(platform::UpperCase("title i"), "TITLE I");
    EXPECT_TRUE(platform::EqualNoCase("TIME2_I", "time2_i"));
}

// In Germany a comma stands where the point does here and digits are grouped; in Turkey i and I are no pair.
INSTANTIATE_TEST_SUITE_P(Of, Locales, testing::Values("de_DE.UTF-8", "tr_TR.UTF-8"));

}  // namespace
}  // namespace wxl
