#include "adapters/disk/disk_file_system.h"
#include "adapters/disk/folder_lock.h"
#include "adapters/memory/memory_services.h"
#include "platform/runtime_error.h"
#include "tests/support/scratch_folder.h"

#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace wxl::files {
namespace {

namespace fs = std::filesystem;

struct FolderLockTest : testing::Test {
    tests::ScratchFolder Folder;
    DiskFileSystem Files;
    DiskFolders Folders;
    memory::MemoryClock Clock;
    FolderLocks Locks{Files, Folders, Clock};
    std::string Holder;

    void Touch(const std::string& name) { std::ofstream(Folder / name) << "x"; }
};

TEST_F(FolderLockTest, A_locked_folder_is_refused_with_its_holder_and_free_again_afterwards) {
    auto lock = Locks.Take(Folder.Path(), Holder);
    ASSERT_NE(lock, nullptr);
    EXPECT_EQ(Locks.Take(Folder.Path(), Holder), nullptr);
    EXPECT_TRUE(Holder.starts_with("process " + std::to_string(::getpid()) + " on ")) << Holder;
    lock.reset();
    EXPECT_TRUE(fs::is_empty(Folder.Path()));
    EXPECT_NE(Locks.Take(Folder.Path(), Holder), nullptr);
}

TEST_F(FolderLockTest, A_lock_file_of_a_killed_process_stops_nobody) {
    const pid_t child = ::fork();
    if (child == 0) {
        std::string holder;
        const auto lock = Locks.Take(Folder.Path(), holder);
        ::raise(SIGKILL);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status));
    ASSERT_TRUE(fs::exists(Folder / std::string(kLockFileName)));
    EXPECT_NE(Locks.Take(Folder.Path(), Holder), nullptr);
}

TEST_F(FolderLockTest, Sharers_work_side_by_side_and_keep_everyone_else_out) {
    auto first = Locks.Share(Folder.Path(), Holder);
    auto second = Locks.Share(Folder.Path(), Holder);
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(Locks.Take(Folder.Path(), Holder), nullptr);
    first.reset();
    EXPECT_EQ(Locks.Take(Folder.Path(), Holder), nullptr) << "one sharer is still at work";
    second.reset();
    EXPECT_TRUE(fs::is_empty(Folder.Path()));
    const auto alone = Locks.Take(Folder.Path(), Holder);
    ASSERT_NE(alone, nullptr);
    EXPECT_EQ(Locks.Share(Folder.Path(), Holder), nullptr);
    EXPECT_EQ(Clock.Steady(), std::chrono::milliseconds(19 * 25)) << "a sharer that lets go is waited for";
}

TEST_F(FolderLockTest, Leftovers_in_a_subfolder_go_when_it_is_named) {
    fs::create_directory(Folder / "group");
    Touch("group/.K2." + std::to_string(::getpid()) + ".part");
    const auto lock = Locks.Take(Folder.Path(), Holder);
    EXPECT_EQ(lock->RemoveLeftovers({}), 0U);
    EXPECT_EQ(lock->RemoveLeftovers("group"), 1U);
    EXPECT_TRUE(fs::is_empty(Folder / "group"));
}

TEST_F(FolderLockTest, A_missing_folder_is_path_not_found) {
    try {
        Locks.Take(Folder / "absent", Holder);
        FAIL();
    } catch (const platform::RuntimeError& error) {
        EXPECT_EQ(error.Number, 76);
    }
}

TEST_F(FolderLockTest, Leftovers_of_dead_processes_go_and_everything_else_stays) {
    const pid_t dead = ::fork();
    if (dead == 0) ::_exit(0);
    ::waitpid(dead, nullptr, 0);
    const std::string gone = std::to_string(dead);
    const pid_t running = ::fork();
    if (running == 0) {
        ::pause();
        ::_exit(0);
    }
    const std::string alive = std::to_string(running);
    fs::create_directory(Folder / (".K1." + gone + ".part"));
    Touch(".K1." + gone + ".part/hdr.adf");
    Touch(".K1_iso_poly." + gone + ".part.shp");
    Touch(".K2." + std::to_string(::getpid()) + ".part");
    Touch(".K3." + alive + ".part");
    Touch("K4");
    Touch(".K5.part");
    const auto lock = Locks.Take(Folder.Path(), Holder);
    EXPECT_EQ(lock->RemoveLeftovers({}), 3U);
    ::kill(running, SIGKILL);
    ::waitpid(running, nullptr, 0);
    EXPECT_FALSE(fs::exists(Folder / (".K1." + gone + ".part")));
    EXPECT_FALSE(fs::exists(Folder / (".K1_iso_poly." + gone + ".part.shp")));
    EXPECT_TRUE(fs::exists(Folder / (".K3." + alive + ".part")));
    EXPECT_TRUE(fs::exists(Folder / "K4"));
    EXPECT_TRUE(fs::exists(Folder / ".K5.part"));
}

}  // namespace
}  // namespace wxl::files
