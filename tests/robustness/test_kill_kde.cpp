// A run that is killed at any moment leaves whole datasets under their final names and the beginning of its report.
// WXL_KILLS sets how often it is killed; 20 without it.

#include "tests/support/scratch_folder.h"
#include "tests/unit/cli/captured_console.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <random>
#include <set>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace wxl {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr int kAnimals = 20;
constexpr int kFixes = 60;
const char* const kReport = "WXL_KDE_ANALYSIS.txt";

std::string content(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

/// Whether the process takes the signal that it was sent, within 20 seconds.
bool has_taken(pid_t process, int signal) {
    const std::uint64_t bit = std::uint64_t{1} << static_cast<unsigned>(signal - 1);
    const std::string label = "ShdPnd:";
    for (const auto end = Clock::now() + std::chrono::seconds(20); Clock::now() < end;) {
        const std::string status = content("/proc/" + std::to_string(process) + "/status");
        const std::size_t at = status.find(label);
        if (at == std::string::npos) return false;
        if ((std::stoull(status.substr(at + label.size()), nullptr, 16) & bit) == 0) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return false;
}

/// The report without its times.
std::string timeless(std::string report) {
    for (const std::string label : {"Start time: ", "Finish time: "})
        for (std::size_t at = report.find(label); at != std::string::npos; at = report.find(label, at + 1)) {
            const std::size_t begin = at + label.size();
            report.erase(begin, std::min(report.find("\r\n", begin), report.size()) - begin);
        }
    return report;
}

/// Bytes of all files that belong to datasets with a final name, by path in the folder: grids, and shapefiles as soon
/// as their .shp stands.
std::map<std::string, std::string> datasets(const fs::path& folder) {
    std::map<std::string, std::string> found;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        const std::string name = fs::relative(entry.path(), folder).string();
        if (!entry.is_regular_file() || name.front() == '.' || entry.path().extension() == ".txt") continue;
        const bool inGrid = entry.path().parent_path() != folder;
        if (inGrid || fs::exists(fs::path(entry.path()).replace_extension(".shp"))) found[name] = content(entry.path());
    }
    return found;
}

/// Names of whole datasets: grid folders, and shapefiles by their .shp.
std::set<std::string> dataset_names(const fs::path& folder) {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) {
        const std::string name = entry.path().filename().string();
        if (name.front() != '.' && (entry.is_directory() || entry.path().extension() == ".shp")) names.insert(name);
    }
    return names;
}

struct KilledRun : testing::Test {
    tests::ScratchFolder Folder;
    const fs::path Out = Folder / "out";
    std::vector<std::string> Call = {"kde",         Folder / "fixes.shp",
                                     "--id-field",  "animal",
                                     "--out",       Out,
                                     "--cell-size", "40",
                                     "--extent",    "min",
                                     "--isopleths", "95,50",
                                     "--polygons",  "--lines",
                                     "--prefix",    "K"};

    KilledRun() {
        std::mt19937 random(7);
        std::normal_distribution<double> spread(0.0, 400.0);
        std::ofstream csv(Folder / "fixes.csv");
        csv << "a,x,y\n";
        for (int animal = 0; animal < kAnimals; ++animal)
            for (int fix = 0; fix < kFixes; ++fix)
                csv << 100 + animal << ',' << 500000.0 + animal * 900.0 + spread(random) << ','
                    << 6000000.0 + spread(random) << '\n';
        csv.close();
        const cli::Ran ran = cli::run_wxl({"import", Folder / "fixes.csv", Folder / "fixes.shp", "--id", "a", "--x",
                                           "x", "--y", "y", "--from-crs", "EPSG:32633"});
        EXPECT_EQ(ran.Code, 0) << ran.Err;
    }

    pid_t Start() const {
        const pid_t child = ::fork();
        if (child != 0) return child;
        ::dup2(::open("/dev/null", O_WRONLY), 1);
        ::dup2(::open((Folder / "said").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), 2);
        std::vector<char*> arguments = {const_cast<char*>("wxl")};
        for (const std::string& argument : Call) arguments.push_back(const_cast<char*>(argument.c_str()));
        arguments.push_back(nullptr);
        ::execv(WXL_PROGRAM, arguments.data());
        ::_exit(127);
    }

    /// How long an undisturbed run takes.
    std::chrono::microseconds RunWhole() const {
        const auto begin = Clock::now();
        int status = 0;
        ::waitpid(Start(), &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
        return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - begin);
    }

    /// Waits until the run has published this dataset.
    bool Awaits(const std::string& name) const {
        const auto end = Clock::now() + std::chrono::seconds(20);
        while (!fs::exists(Out / name) && Clock::now() < end) std::this_thread::sleep_for(std::chrono::milliseconds(1));
        return fs::exists(Out / name);
    }

    void RunAndKill(std::chrono::microseconds after) const {
        const pid_t child = Start();
        std::this_thread::sleep_for(after);
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
    }
};

TEST_F(KilledRun, Leaves_whole_datasets_and_the_beginning_of_the_report) {
    const auto duration = RunWhole();
    const auto wholeDatasets = datasets(Out);
    const std::string wholeReport = timeless(content(Out / kReport));
    ASSERT_EQ(dataset_names(Out).size(), 3U * kAnimals);

    const char* wanted = std::getenv("WXL_KILLS");
    const int kills = wanted != nullptr ? std::atoi(wanted) : 20;
    std::mt19937 random(11);
    std::uniform_int_distribution<std::int64_t> moment(0, duration.count());
    int midway = 0;
    for (int i = 0; i < kills || (midway == 0 && i < 20 * kills); ++i) {
        fs::remove_all(Out);
        RunAndKill(std::chrono::microseconds(moment(random)));
        if (!fs::exists(Out)) continue;
        const auto left = datasets(Out);
        if (!left.empty() && left.size() < wholeDatasets.size()) ++midway;
        for (const auto& [name, bytes] : left) {
            const auto whole = wholeDatasets.find(name);
            ASSERT_NE(whole, wholeDatasets.end()) << name;
            EXPECT_EQ(bytes == whole->second, true) << name << " differs after kill " << i;
        }
        for (const std::string& name : dataset_names(Out))
            if (fs::is_directory(Out / name))
                EXPECT_TRUE(left.contains(name + "/hdr.adf") && left.contains(name + "/w001001.adf")) << name;
            else
                EXPECT_TRUE(left.contains(fs::path(name).replace_extension(".dbf").string())) << name;
        EXPECT_TRUE(wholeReport.starts_with(timeless(content(Out / kReport)))) << "after kill " << i;
    }
    EXPECT_GT(midway, 0) << "no kill met the batch at work";

    // The next run into the folder, whatever was left there, and into a new one.
    Call.emplace_back("--overwrite");
    RunWhole();
    EXPECT_EQ(datasets(Out) == wholeDatasets, true);
    for (const auto& entry : fs::directory_iterator(Out)) EXPECT_NE(entry.path().filename().string().front(), '.');
}

TEST_F(KilledRun, Leaves_the_package_of_ranges_as_it_was_or_whole) {
    const fs::path package = Out / "RANGES.gpkg";
    const fs::path saved = Folder / "saved";
    Call.emplace_back("--gpkg");
    std::string& prefix = Call.at(Call.size() - 2);
    prefix = "E";
    RunWhole();
    fs::rename(Out, saved);
    const std::string old = content(saved / "RANGES.gpkg");
    const auto restore = [&] {
        fs::remove_all(Out);
        fs::copy(saved, Out, fs::copy_options::recursive);
    };
    prefix = "K";
    restore();
    const auto duration = RunWhole();
    const std::string whole = content(package);
    ASSERT_NE(whole, old);

    const char* wanted = std::getenv("WXL_KILLS");
    const int kills = wanted != nullptr ? std::atoi(wanted) : 10;
    std::mt19937 random(13);
    std::uniform_int_distribution<std::int64_t> moment(0, duration.count());
    int midway = 0;
    for (int i = 0; i < kills || (midway == 0 && i < 20 * kills); ++i) {
        restore();
        RunAndKill(std::chrono::microseconds(moment(random)));
        const std::string left = content(package);
        EXPECT_TRUE(left == old || left == whole) << "after kill " << i;
        if (left == old && fs::exists(Out / "K1")) ++midway;
    }
    EXPECT_GT(midway, 0) << "no kill met the batch at work";

    // The next run takes what one that was killed before its end left for what it is.
    for (int i = 0; content(package) != old && i < 20 * kills; ++i) {
        restore();
        RunAndKill(std::chrono::microseconds(moment(random) / 2));
    }
    ASSERT_EQ(content(package) == old, true);
    Call.emplace_back("--overwrite");
    RunWhole();
    EXPECT_EQ(content(package) == whole, true);
    for (const auto& entry : fs::directory_iterator(Out)) EXPECT_NE(entry.path().filename().string().front(), '.');
}

/// A run that is asked to stop, politely.
struct StoppedRun : KilledRun, testing::WithParamInterface<int> {};

TEST_P(StoppedRun, Ends_after_the_present_animal_and_keeps_what_is_done) {
    RunWhole();
    const auto wholeDatasets = datasets(Out);
    fs::remove_all(Out);

    const pid_t child = Start();
    ASSERT_TRUE(Awaits("K2"));
    ::kill(child, GetParam());
    int status = 0;
    ::waitpid(child, &status, 0);
    ASSERT_TRUE(WIFEXITED(status)) << "killed by signal " << WTERMSIG(status);
    EXPECT_EQ(WEXITSTATUS(status), 1);
    EXPECT_NE(content(Folder / "said").find("wxl: stopping after the present animal; a second Ctrl-C stops at once\n"),
              std::string::npos)
        << content(Folder / "said");

    const auto left = datasets(Out);
    EXPECT_LT(left.size(), wholeDatasets.size());
    for (const auto& [name, bytes] : left) EXPECT_EQ(bytes == wholeDatasets.at(name), true) << name;
    // Three datasets of every animal that was begun, and a row of the summary for each of its isopleths.
    const std::size_t animals = dataset_names(Out).size() / 3;
    EXPECT_EQ(dataset_names(Out).size() % 3, 0U);
    EXPECT_GE(animals, 2U);
    const std::string report = content(Out / kReport);
    EXPECT_TRUE(report.ends_with("Processing stopped by the user\r\n")) << report.substr(report.size() - 100);
    const std::string summary = content(Out / "WXL_KDE_SUMMARY.csv");
    EXPECT_EQ(static_cast<std::size_t>(std::count(summary.begin(), summary.end(), '\n')), 1 + 2 * animals) << summary;
    for (const auto& entry : fs::directory_iterator(Out)) EXPECT_NE(entry.path().filename().string().front(), '.');
}

INSTANTIATE_TEST_SUITE_P(By, StoppedRun, testing::Values(SIGINT, SIGTERM, SIGHUP), [](const auto& signal) {
    return std::string(signal.param == SIGINT ? "SIGINT" : signal.param == SIGTERM ? "SIGTERM" : "SIGHUP");
});

TEST_F(KilledRun, A_second_signal_ends_a_run_at_once) {
    Call[7] = "2";  // cells so small that an animal takes longer than both signals
    const pid_t child = Start();
    ASSERT_TRUE(Awaits("WXL_KDE_ANALYSIS.txt"));
    ::kill(child, SIGINT);
    ASSERT_TRUE(has_taken(child, SIGINT));
    ::kill(child, SIGINT);
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT);
}

TEST_F(KilledRun, Ignored_signals_stay_ignored) {
    ::signal(SIGHUP, SIG_IGN);
    const pid_t child = Start();
    ::signal(SIGHUP, SIG_DFL);
    ASSERT_TRUE(Awaits("K2"));
    ::kill(child, SIGHUP);
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_EQ(dataset_names(Out).size(), 3U * kAnimals);
}

}  // namespace
}  // namespace wxl
