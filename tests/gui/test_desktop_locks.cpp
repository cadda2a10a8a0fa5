#include "adapters/disk/folder_lock.h"
#include "adapters/ogr/disk_services.h"
#include "adapters/qgis/desktop_locks.h"
#include "tests/support/scratch_folder.h"

#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace wxl::qgis {
namespace {

/// A process that holds the folder and gets the signal; how it ended.
int end_while_holding(const std::filesystem::path& folder, int signal) {
    const pid_t child = ::fork();
    if (child == 0) {
        files::DiskServices disk;
        const platform::Services services = disk.Complete({});
        DesktopLocks locks(*services.Locks);
        std::string holder;
        const auto lock = locks.Take(folder, holder);
        const bool held = lock && std::filesystem::exists(folder / files::kLockFileName);
        if (!held) ::_exit(1);
        ::raise(signal);
        ::_exit(2);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return status;
}

TEST(DesktopLocks, A_signal_that_ends_the_desktop_leaves_no_lock) {
    for (const int signal : {SIGTERM, SIGHUP, SIGINT}) {
        const tests::ScratchFolder folder;
        const int status = end_while_holding(folder.Path(), signal);
        ASSERT_TRUE(WIFSIGNALED(status)) << status;
        EXPECT_EQ(WTERMSIG(status), signal) << "the signal does what it did before";
        EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
    }
}

TEST(DesktopLocks, Handlers_stand_only_while_a_lock_is_held) {
    const tests::ScratchFolder folder;
    files::DiskServices disk;
    const platform::Services services = disk.Complete({});
    DesktopLocks locks(*services.Locks);
    const auto handler = [] {
        struct sigaction now {};
        ::sigaction(SIGTERM, nullptr, &now);
        return now.sa_handler;
    };
    const auto before = handler();
    std::string holder;
    {
        const auto lock = locks.Take(folder.Path(), holder);
        ASSERT_NE(lock, nullptr);
        EXPECT_NE(handler(), before);
        EXPECT_EQ(locks.Take(folder.Path(), holder), nullptr) << "one run at a time";
        EXPECT_EQ(holder.rfind("process ", 0), 0U) << holder;
    }
    EXPECT_EQ(handler(), before);
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

}  // namespace
}  // namespace wxl::qgis
