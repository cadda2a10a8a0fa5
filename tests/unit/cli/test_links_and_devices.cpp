// Nothing is written, deleted or replaced through a link to a folder, and nothing is put in the place of a link, a pipe
// or a device.

#include "tests/unit/cli/layer_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace wxl::cli {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using tests::ScratchFolder;

struct LinksAndDevices : testing::Test {
    ScratchFolder Folder;
    const std::string Layer = make_layer(Folder,
                                         "a,500000,5000000,2018-05-09\na,500400,5000300,2018-05-10\n"
                                         "a,500800,5000100,2018-05-11\nb,500300,5000900,2018-05-12\n"
                                         "b,500000,5000800,2018-05-13\nb,500100,5000100,2018-05-14\n");
    const fs::path Out = Folder / "out";
    const fs::path Elsewhere = Folder / "elsewhere";

    void SetUp() override {
        fs::create_directory(Out);
        fs::create_directory(Elsewhere);
        write_file(Folder, "elsewhere/plan.json", "{}");
        write_file(Folder, "elsewhere/.K1.4711.part", "a leftover of another program");
    }

    std::vector<std::string> Kde(const std::vector<std::string>& more,
                                 const std::vector<std::string>& command = {"kde"}) const {
        std::vector<std::string> call = command;
        const std::vector<std::string> usual = {Layer,         "--id-field", "animal",   "--out",    Out,
                                                "--cell-size", "50",         "--extent", "full:800", "--bandwidth",
                                                "200",         "--prefix",   "K"};
        call.insert(call.end(), usual.begin(), usual.end());
        call.insert(call.end(), more.begin(), more.end());
        return call;
    }

    std::map<std::string, std::string> ElsewhereContents() const {
        std::map<std::string, std::string> contents;
        for (const auto& entry : fs::recursive_directory_iterator(Elsewhere))
            contents[entry.path()] = entry.is_regular_file() ? read_file(entry) : "folder";
        return contents;
    }

    /// Runs a call that must fail with `text` and leave everything elsewhere as it is.
    void ExpectRefused(const std::vector<std::string>& call, const std::string& text) const {
        SCOPED_TRACE(testing::PrintToString(call));
        const auto before = ElsewhereContents();
        const Ran ran = run_wxl(call);
        EXPECT_EQ(ran.Code, 1) << ran.Out;
        EXPECT_THAT(ran.Err, HasSubstr(text));
        EXPECT_EQ(ElsewhereContents(), before);
    }
};

constexpr const char* kLink = " is a link, and nothing is written through links: delete it";

TEST_F(LinksAndDevices, A_link_in_the_place_of_a_group_s_folder_is_refused) {
    const fs::path link = Out / "animals_1-1";
    fs::create_directory_symlink(Elsewhere, link);
    for (const bool overwrite : {false, true}) {
        std::vector<std::string> options = {"--group-by", "1"};
        if (overwrite) options.emplace_back("--overwrite");
        ExpectRefused(Kde(options), link.string() + kLink);
        ExpectRefused(Kde(options, {"batch", "plan"}), link.string() + kLink);
    }
}

TEST_F(LinksAndDevices, Datasets_behind_a_link_are_not_deleted) {
    ASSERT_EQ(run_wxl(Kde({"--group-by", "1"})).Code, 0);
    fs::rename(Out / "animals_1-1", Elsewhere / "mine");
    fs::create_directory_symlink(Elsewhere / "mine", Out / "animals_1-1");
    ExpectRefused(Kde({"--group-by", "1", "--overwrite"}), (Out / "animals_1-1").string() + kLink);
}

TEST_F(LinksAndDevices, A_plan_that_was_edited_writes_through_no_link) {
    ASSERT_EQ(run_wxl(Kde({"--group-by", "1"}, {"batch", "plan"})).Code, 0);
    const fs::path plan = Out / "wxl_batch/plan.json";
    std::string text = read_file(plan);
    const std::string old = "animals_1-1";
    text.replace(text.find(old), old.size(), "way_outside");
    std::ofstream(plan, std::ios::binary) << text;
    fs::create_directory_symlink(Elsewhere, Out / "way_outside");
    for (const std::vector<std::string>& end : std::vector<std::vector<std::string>>{
             {"run", Out, "--task", "1"}, {"merge", Out}, {"status", Out}, {"submit", Out, "--engine", "local"}}) {
        std::vector<std::string> call = {"batch"};
        call.insert(call.end(), end.begin(), end.end());
        ExpectRefused(call, (Out / "way_outside").string() + kLink);
    }
}

TEST_F(LinksAndDevices, Folders_of_a_batch_that_are_links_are_refused) {
    for (const std::string name : {"wxl_batch", "wxl_batch/tasks", "wxl_batch/logs", "wxl_batch/tasks/1"}) {
        SCOPED_TRACE(name);
        ASSERT_EQ(run_wxl(Kde({}, {"batch", "plan"})).Code, 0);
        fs::create_directories(Out / "wxl_batch/tasks/1");
        fs::rename(Out / name, Elsewhere / "moved");
        fs::create_directory_symlink(Elsewhere / "moved", Out / name);
        for (const std::string command : {"run", "merge", "status", "submit"}) {
            std::vector<std::string> call = {"batch", command, Out};
            if (command == "run") call.insert(call.end(), {"--task", "1"});
            if (command == "submit") call.insert(call.end(), {"--engine", "local"});
            ExpectRefused(call, (Out / name).string() + kLink);
        }
        fs::remove_all(Elsewhere / "moved");
        fs::remove_all(Out);
        fs::create_directory(Out);
    }
}

TEST_F(LinksAndDevices, A_batch_that_is_a_link_is_not_deleted_with_what_it_leads_to) {
    fs::create_directory_symlink(Elsewhere, Out / "wxl_batch");
    const auto before = ElsewhereContents();
    const Ran ran = run_wxl(Kde({"--overwrite"}));
    EXPECT_EQ(ran.Code, 0) << ran.Err;
    EXPECT_EQ(ElsewhereContents(), before);
    EXPECT_FALSE(fs::is_symlink(Out / "wxl_batch"));
}

TEST_F(LinksAndDevices, Pipes_devices_and_links_are_not_replaced) {
    const fs::path pipe = Folder / "pipe.svg";
    const fs::path device = Folder / "device.svg";
    const fs::path link = Folder / "link.svg";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    fs::create_symlink(Elsewhere / "plan.json", link);
    std::vector<std::pair<fs::path, std::string>> places = {
        {pipe, pipe.string() + " is a pipe or a device and no file: choose another name"},
        {link, link.string() + kLink}};
    if (::mknod(device.c_str(), S_IFCHR | 0666, ::makedev(1, 7)) == 0)
        places.emplace_back(device, device.string() + " is a pipe or a device and no file: choose another name");
    for (const auto& [place, text] : places) {
        for (const bool overwrite : {true, false}) {
            const std::vector<std::vector<std::string>> calls = {
                {"stats", Layer, "--id-field", "animal", "--csv", place},
                {"bandwidth", Layer, "--id-field", "animal", "--method", "lscv", "--profile", place},
                Kde({"--save-settings", place})};
            for (std::vector<std::string> call : calls) {
                if (overwrite) call.emplace_back("--overwrite");
                ExpectRefused(call, text);
            }
        }
        EXPECT_TRUE(fs::exists(fs::symlink_status(place)));
        EXPECT_FALSE(fs::is_regular_file(fs::symlink_status(place)));
    }
    EXPECT_FALSE(fs::exists(Out / "K1"));
}

TEST_F(LinksAndDevices, A_report_that_is_a_device_stays) {
    for (const std::string name : {"WXL_KDE_ANALYSIS.txt", "WXL_KERNEL_SETTINGS.txt", "WXL_KDE_SUMMARY.csv"}) {
        SCOPED_TRACE(name);
        // What /dev/full is: every write finds the disk full.
        if (::mknod((Out / name).c_str(), S_IFCHR | 0666, ::makedev(1, 7)) != 0)
            GTEST_SKIP() << "this user may not make devices";
        EXPECT_EQ(run_wxl(Kde({"--overwrite"})).Code, 1);
        EXPECT_TRUE(fs::is_character_file(Out / name));
        fs::remove_all(Out);
        fs::create_directory(Out);
    }
}

}  // namespace
}  // namespace wxl::cli
