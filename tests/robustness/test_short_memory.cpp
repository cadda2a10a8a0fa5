// Runs in so little memory that they cannot be done end soon, with a reason of their own, and leave whole datasets
// only.

#include "tests/robustness/limited_run.h"
#include "tests/robustness/malformed.h"
#include "tests/support/samples.h"
#include "tests/support/scratch_folder.h"
#include "tests/unit/cli/captured_console.h"

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <map>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace wxl::tests {
namespace {

namespace fs = std::filesystem;

constexpr rlim_t kMegabyte = rlim_t{1} << 20;
constexpr int kNotLoaded = 127;  // the system's loader had no room for the program's libraries

struct ShortRun {
    int Code = 0;  ///< exit code, or minus the signal that ended it: SIGALRM after ten seconds
    std::string Err;
};

/// Bytes of all files of a folder that stand under a name of their own, reports and tables that grow apart.
std::map<std::string, std::string> datasets_in(const fs::path& folder) {
    std::map<std::string, std::string> found;
    if (!fs::exists(folder)) return found;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        const std::string ending = entry.path().extension();
        // Hidden folders are those of work that was cut short, which the next run clears away.
        const bool isHidden = fs::relative(entry.path(), folder).string().starts_with(".");
        if (entry.is_regular_file() && !isHidden && ending != ".txt" && ending != ".csv")
            found[fs::relative(entry.path(), folder)] = bytes_of(entry.path());
    }
    return found;
}

class ShortMemory : public testing::Test {
protected:
    void SetUp() override {
        if (is_sanitized()) GTEST_SKIP() << "a sanitizer takes all addresses for itself";
        std::ofstream csv(m_folder / "table.csv");
        csv << "animal,x,y,time\n";
        Dice dice(5);
        for (int animal = 1; animal <= 2; ++animal)
            for (int fix = 0; fix < 40; ++fix)
                csv << animal << ',' << std::to_string(500000.0 + 300.0 * dice.Normal()) << ','
                    << std::to_string(6000000.0 + 300.0 * dice.Normal()) << ",2024-01-0" << animal << "T10:" << fix
                    << ":00Z\n";
        csv.close();
        for (const char* layer : {"fixes.shp", "fixes.gpkg"}) {
            const cli::Ran ran =
                cli::run_wxl({"import", m_folder / "table.csv", m_folder / layer, "--from-crs", "EPSG:32633"});
            ASSERT_EQ(ran.Code, 0) << ran.Err;
        }
        while (Run(m_least * kMegabyte, {"--version"}).Code != 0) m_least += 2;
    }

    ShortRun Run(rlim_t addresses, const std::vector<std::string>& call) const {
        const fs::path said = m_folder / "said";
        const pid_t child = ::fork();
        if (child == 0) {
            ::dup2(::open("/dev/null", O_WRONLY), STDOUT_FILENO);
            ::dup2(::open(said.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), STDERR_FILENO);
            std::vector<char*> arguments = {const_cast<char*>("wxl")};
            for (const std::string& argument : call) arguments.push_back(const_cast<char*>(argument.c_str()));
            arguments.push_back(nullptr);
            const rlimit none{0, 0};
            const rlimit limit{addresses, addresses};
            ::setrlimit(RLIMIT_CORE, &none);
            ::setrlimit(RLIMIT_AS, &limit);
            ::alarm(10);
            ::execv(WXL_PROGRAM, arguments.data());
            ::_exit(kNotLoaded);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), bytes_of(said)};
    }

    /// Sizes from the least in which the program can be loaded, close together at first.
    std::vector<rlim_t> Sizes() const {
        std::vector<rlim_t> sizes;
        for (rlim_t size = m_least; size < std::max<rlim_t>(m_least + 100, 601); size += size < m_least + 60 ? 3 : 50)
            sizes.push_back(size * kMegabyte);
        return sizes;
    }

    /// Forty sizes close together, from the least in which the program can be loaded.
    std::vector<rlim_t> CloseSizes() const {
        std::vector<rlim_t> sizes;
        for (rlim_t step = 0; step < 40; ++step) sizes.push_back(m_least * kMegabyte + step * 200 * 1024);
        return sizes;
    }

    /// Runs the call in each of these sizes: it ends well, or by its reason, and all that it leaves is as in ample
    /// memory.
    void ExpectWhole(const std::vector<std::string>& call, const std::vector<rlim_t>& sizes) {
        fs::remove_all(m_folder / "out");
        ASSERT_EQ(Run(RLIM_INFINITY, call).Code, 0);
        const auto whole = datasets_in(m_folder / "out");
        for (const rlim_t size : sizes) {
            SCOPED_TRACE(std::to_string(size) + " bytes, cells of " + call.at(7) + ", " + call.at(1));
            fs::remove_all(m_folder / "out");
            const ShortRun run = Run(size, call);
            if (run.Code == kNotLoaded) continue;
            ++(run.Code == 0 ? m_done : m_failed);
            if (run.Code != 0) {
                EXPECT_EQ(run.Code, 1) << run.Err;
                EXPECT_NE(run.Err.find("emory"), std::string::npos) << run.Err;
            }
            for (const auto& [name, bytes] : datasets_in(m_folder / "out")) {
                ASSERT_TRUE(whole.contains(name)) << name;
                EXPECT_TRUE(whole.at(name) == bytes) << name;
            }
        }
    }

    std::vector<std::string> Kde(const std::string& layer, const char* cell) const {
        return {
            "kde",        m_folder / layer, "--id-field",  "animal",   "--out",      m_folder / "out", "--cell-size",
            cell,         "--extent",       "full:20000",  "--answer", "yes",        "--bandwidth",    "300",
            "--polygons", "--lines",        "--isopleths", "95,50",    "--overwrite"};
    }

    ScratchFolder m_folder;
    rlim_t m_least = 40;
    int m_done = 0;
    int m_failed = 0;
};

TEST_F(ShortMemory, Ends_an_analysis_with_its_reason_and_whole_datasets) {
    for (const char* cell : {"200", "20", "14"})
        for (const char* layer : {"fixes.shp", "fixes.gpkg"}) ExpectWhole(Kde(layer, cell), Sizes());
    EXPECT_GT(m_failed, 10);
    EXPECT_GT(m_done, 10);
}

// Where GDAL, PROJ and SQLite have no memory for their own.
TEST_F(ShortMemory, Ends_an_analysis_that_has_just_begun) {
    for (const char* layer : {"fixes.shp", "fixes.gpkg"}) ExpectWhole(Kde(layer, "200"), CloseSizes());
    EXPECT_GT(m_failed, 10);
}

TEST_F(ShortMemory, Ends_every_other_command_with_its_reason) {
    const std::string layer = m_folder / "fixes.gpkg";
    const std::vector<std::vector<std::string>> calls = {
        {"info", layer},
        {"stats", layer, "--id-field", "animal"},
        {"bandwidth", layer, "--id-field", "animal", "--method", "lscv"},
        {"overlap", layer, "--id-field", "animal"},
        {"mcp", layer, "--id-field", "animal", "--out", m_folder / "mcp.shp", "--overwrite"},
        {"curve", layer, "--id-field", "animal"},
        {"models", layer, "--id-field", "animal", "--time-field", "Time2"},
        {"import", m_folder / "table.csv", m_folder / "again.gpkg", "--from-crs", "EPSG:32633", "--overwrite"}};
    std::vector<rlim_t> sizes = CloseSizes();
    for (rlim_t size = m_least + 9; size < m_least + 30; size += 3) sizes.push_back(size * kMegabyte);
    for (const std::vector<std::string>& call : calls)
        for (const rlim_t size : sizes) {
            SCOPED_TRACE(std::to_string(size) + " bytes, " + call.front());
            const ShortRun run = Run(size, call);
            if (run.Code == 0 || run.Code == kNotLoaded) continue;
            EXPECT_EQ(run.Code, 1) << run.Err;
            EXPECT_NE(run.Err.find("emory"), std::string::npos) << run.Err;
            ++m_failed;
        }
    EXPECT_GT(m_failed, 10);
}

}  // namespace
}  // namespace wxl::tests
