// What only a real disk can show: links, permissions, full disks, descriptors.

#include "adapters/disk/disk_file_system.h"
#include "tests/contract/mounted_disk.h"
#include "tests/contract/stage.h"

#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <optional>
#include <sys/stat.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using wxl::platform::WriteMode;

namespace wxl::tests {
namespace {

class FilesDisk : public testing::Test {
protected:
    void Put(const std::filesystem::path& file, std::string_view bytes) {
        const auto out = m_files.OpenForWriting(file, WriteMode::kReplace);
        out->Write(bytes);
        out->Close();
    }

    ScratchFolder m_scratch;
    files::DiskFileSystem m_files;
    files::DiskFolders m_folders;
};

/// Sets an environment variable for as long as it lives.
class Environment {
public:
    Environment(const char* name, const char* value) : m_name(name) {
        if (const char* old = std::getenv(name)) m_old = old;
        Set(value);
    }
    ~Environment() { Set(m_old ? m_old->c_str() : nullptr); }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

private:
    void Set(const char* value) {
        if (value != nullptr)
            ::setenv(m_name, value, 1);
        else
            ::unsetenv(m_name);
    }
    const char* m_name;
    std::optional<std::string> m_old;
};

int open_descriptors() {
    int count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) ++count;
    return count;
}

}  // namespace

TEST_F(FilesDisk, A_device_without_room_is_61) {
    const auto file = m_files.OpenForWriting("/dev/full", WriteMode::kAppend);
    EXPECT_EQ(error_of([&] { file->Write(std::string(100000, 'x')); }), 61);
}

TEST_F(FilesDisk, Small_writes_that_find_no_room_are_told_at_the_latest_by_close) {
    const auto file = m_files.OpenForWriting("/dev/full", WriteMode::kAppend);
    file->Write("short");
    EXPECT_EQ(error_of([&] { file->Close(); }), 61);
}

TEST_F(FilesDisk, Close_repeats_a_failure_that_a_caller_swallowed) {
    const auto file = m_files.OpenForWriting("/dev/full", WriteMode::kAppend);
    file->Write("short");
    EXPECT_EQ(error_of([&] { file->Flush(); }), 61);
    EXPECT_EQ(error_of([&] { file->Close(); }), 61);
}

TEST_F(FilesDisk, A_full_disk_names_the_file_and_keeps_what_was_published) {
    const MountedDisk disk("size=64k");
    if (!disk.IsMounted()) GTEST_SKIP() << "no small disk could be mounted: " << disk.WhyNot();
    platform::PublishFile(m_files, disk.Path() / "a.txt", "older");
    const std::string big(200000, 'x');
    const auto publish = [&] { platform::PublishFile(m_files, disk.Path() / "a.txt", big); };
    EXPECT_EQ(error_of(publish), 61);
    EXPECT_THAT(text_of_error(publish), HasSubstr("Disk full: " + disk.Path().string()));
    EXPECT_THAT(m_files.List(disk.Path()), ElementsAre("a.txt"));
    EXPECT_EQ(m_files.ReadFile(disk.Path() / "a.txt", 100), "older");
}

TEST_F(FilesDisk, A_read_only_disk_is_70) {
    MountedDisk disk("size=64k");
    if (!disk.IsMounted()) GTEST_SKIP() << "no small disk could be mounted: " << disk.WhyNot();
    Put(disk.Path() / "a.txt", "x");
    if (!disk.MakeReadOnly()) GTEST_SKIP() << "the disk could not be made read-only";
    EXPECT_EQ(error_of([&] { Put(disk.Path() / "b.txt", "x"); }), 70);
    EXPECT_EQ(error_of([&] { m_folders.Create(disk.Path() / "b"); }), 70);
    EXPECT_EQ(error_of([&] { m_files.DeleteFile(disk.Path() / "a.txt", true); }), 70);
    EXPECT_EQ(error_of([&] { m_files.Rename(disk.Path() / "a.txt", disk.Path() / "c.txt"); }), 70);
}

TEST_F(FilesDisk, A_read_only_file_is_deleted_only_by_force) {
    Put(m_scratch / "a.txt", "x");
    ::chmod((m_scratch / "a.txt").c_str(), 0444);
    EXPECT_EQ(error_of([&] { m_files.DeleteFile(m_scratch / "a.txt", false); }), 70);
    EXPECT_TRUE(m_files.FileExists(m_scratch / "a.txt"));
    m_files.DeleteFile(m_scratch / "a.txt", true);
    EXPECT_FALSE(m_files.FileExists(m_scratch / "a.txt"));
}

TEST_F(FilesDisk, DeleteTree_deletes_links_and_not_what_they_point_to) {
    m_folders.Create(m_scratch / "kept");
    Put(m_scratch / "kept/file", "x");
    m_folders.Create(m_scratch / "tree");
    std::filesystem::create_directory_symlink(m_scratch / "kept", m_scratch / "tree/link");
    std::filesystem::create_symlink(m_scratch / "kept/file", m_scratch / "tree/file");
    std::filesystem::create_symlink(m_scratch / "nowhere", m_scratch / "tree/dangling");
    m_folders.DeleteTree(m_scratch / "tree");
    EXPECT_THAT(m_files.List(m_scratch.Path()), ElementsAre("kept"));
    EXPECT_EQ(m_files.ReadFile(m_scratch / "kept/file", 10), "x");
}

TEST_F(FilesDisk, DeleteTree_of_a_link_deletes_the_link) {
    m_folders.Create(m_scratch / "kept");
    Put(m_scratch / "kept/file", "x");
    std::filesystem::create_directory_symlink(m_scratch / "kept", m_scratch / "link");
    m_folders.DeleteTree(m_scratch.Path() / "link/");
    EXPECT_THAT(m_files.List(m_scratch.Path()), ElementsAre("kept"));
    EXPECT_TRUE(m_files.FileExists(m_scratch / "kept/file"));
}

TEST_F(FilesDisk, DeleteTree_opens_read_only_folders) {
    m_folders.Create(m_scratch / "tree");
    m_folders.Create(m_scratch / "tree/sub");
    Put(m_scratch / "tree/sub/file", "x");
    ::chmod((m_scratch / "tree/sub/file").c_str(), 0444);
    ::chmod((m_scratch / "tree/sub").c_str(), 0555);
    m_folders.DeleteTree(m_scratch / "tree");
    EXPECT_THAT(m_files.List(m_scratch.Path()), IsEmpty());
}

TEST_F(FilesDisk, Deleting_a_link_to_a_file_leaves_the_file) {
    Put(m_scratch / "kept", "x");
    std::filesystem::create_symlink(m_scratch / "kept", m_scratch / "link");
    m_files.DeleteFile(m_scratch / "link", true);
    EXPECT_THAT(m_files.List(m_scratch.Path()), ElementsAre("kept"));
}

TEST_F(FilesDisk, A_dangling_link_is_no_file_but_takes_its_name) {
    std::filesystem::create_symlink(m_scratch / "nowhere", m_scratch / "link");
    EXPECT_FALSE(m_files.FileExists(m_scratch / "link"));
    EXPECT_EQ(error_of([&] { m_files.OpenForWriting(m_scratch / "link", WriteMode::kNew); }), 58);
    m_folders.Create(m_scratch / "folder");
    EXPECT_EQ(error_of([&] { m_files.Rename(m_scratch / "folder", m_scratch / "link"); }), 58);
}

TEST_F(FilesDisk, Names_too_long_are_an_error_of_the_path) {
    EXPECT_EQ(error_of([&] { Put(m_scratch / std::string(300, 'n'), "x"); }), 76);
}

TEST_F(FilesDisk, No_descriptor_is_left_open) {
    const int before = open_descriptors();
    Put(m_scratch / "a", "x");
    m_files.ReadFile(m_scratch / "a", 10);
    m_files.List(m_scratch.Path());
    m_folders.Create(m_scratch / "t");
    m_folders.Create(m_scratch / "t/u");
    m_folders.FindIgnoringCase(m_scratch / "T");
    m_folders.DeleteTree(m_scratch / "t");
    error_of([&] { m_files.ReadFile(m_scratch / "a", 0); });
    error_of([&] {
        const auto file = m_files.OpenForWriting("/dev/full", WriteMode::kAppend);
        file->Write("x");
        file->Close();
    });
    EXPECT_EQ(open_descriptors(), before);
}

TEST_F(FilesDisk, FindIgnoringCase_walks_a_path_all_in_capitals_from_the_root) {
    m_folders.Create(m_scratch / "Out");
    std::string upper = (m_scratch / "Out").string();
    for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    const auto found = m_folders.FindIgnoringCase(upper);
    EXPECT_TRUE(std::filesystem::equivalent(found, m_scratch / "Out")) << found;
}

TEST(SystemTempPath, Gives_the_folder_of_the_environment_with_a_separator) {
    const Environment environment("TMPDIR", "/some/where");
    std::array<char, 512> buffer{};
    EXPECT_EQ(files::SystemTempPath().GetTempPathA(buffer.size(), buffer.data()), 12U);
    EXPECT_STREQ(buffer.data(), "/some/where/");
}

TEST(SystemTempPath, Falls_back_to_tmp) {
    for (const char* value : {static_cast<const char*>(nullptr), ""}) {
        const Environment environment("TMPDIR", value);
        std::array<char, 512> buffer{};
        EXPECT_EQ(files::SystemTempPath().GetTempPathA(buffer.size(), buffer.data()), 5U);
        EXPECT_STREQ(buffer.data(), "/tmp/");
    }
}

TEST(SystemTempPath, A_buffer_too_small_is_left_alone_and_told_its_size) {
    const Environment environment("TMPDIR", "/tmp/");
    std::array<char, 6> buffer = {'?', '?', '?', '?', '?', '?'};
    EXPECT_EQ(files::SystemTempPath().GetTempPathA(5, buffer.data()), 6U);
    EXPECT_EQ(buffer[0], '?');
    EXPECT_EQ(files::SystemTempPath().GetTempPathA(0, nullptr), 6U);
    EXPECT_EQ(files::SystemTempPath().GetTempPathA(6, buffer.data()), 5U);
    EXPECT_STREQ(buffer.data(), "/tmp/");
}

TEST_F(FilesDisk, Nothing_is_put_in_the_place_of_a_link_a_pipe_or_a_device_and_none_of_them_is_read) {
    Put(m_scratch / "new", "new");
    Put(m_scratch / "target", "old");
    std::filesystem::create_symlink(m_scratch / "target", m_scratch / "link");
    ASSERT_EQ(::mkfifo((m_scratch / "pipe").c_str(), 0600), 0);
    for (const std::string name : {"link", "pipe"}) {
        EXPECT_EQ(error_of([&] { m_files.Rename(m_scratch / "new", m_scratch / name); }), 70) << name;
        EXPECT_EQ(error_of([&] { platform::PublishFile(m_files, m_scratch / name, "new"); }), 70) << name;
    }
    EXPECT_EQ(error_of([&] { m_files.DeleteFile(m_scratch / "pipe", true); }), 70);
    EXPECT_EQ(error_of([&] { m_files.ReadFile(m_scratch / "pipe", 10); }), 5);
    EXPECT_EQ(error_of([&] { m_files.ReadFile("/dev/zero", 10); }), 5);
    m_files.DeleteFile(m_scratch / "link", true);
    EXPECT_THAT(m_files.List(m_scratch.Path()), ElementsAre("new", "pipe", "target"));
    EXPECT_EQ(m_files.ReadFile(m_scratch / "target", 10), "old");
}

}  // namespace wxl::tests
