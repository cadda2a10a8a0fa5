#include "adapters/memory/memory_file_system.h"
#include "platform/file_system.h"
#include "platform/runtime_error.h"
#include "tests/contract/stage.h"

#include <array>
#include <gmock/gmock.h>
#include <unistd.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace wxl::platform {
namespace {

using tests::error_of;
using tests::text_of_error;

class PublishFileTest : public testing::Test {
protected:
    PublishFileTest() {
        m_disk->AddFolder("/out");
        m_disk->AddFile("/out/a.txt", "older");
    }
    std::int32_t Publish() {
        return error_of([&] { PublishFile(m_files, "/out/a.txt", "newer"); });
    }
    void ExpectOnlyOlder() {
        EXPECT_THAT(m_files.List("/out"), ElementsAre("a.txt"));
        EXPECT_EQ(m_disk->Bytes("/out/a.txt"), "older");
    }

    std::shared_ptr<memory::MemoryDisk> m_disk = std::make_shared<memory::MemoryDisk>();
    memory::MemoryFileSystem m_files{m_disk};
};

}  // namespace

TEST(TemporaryName, Is_hidden_names_its_dataset_and_its_process) {
    EXPECT_EQ(TemporaryName("K3.shp"), ".K3.shp." + std::to_string(::getpid()) + ".part");
    EXPECT_NE(TemporaryName("a"), TemporaryName("b"));
}

TEST(ParseTemporaryName, Gives_the_dataset_and_the_process_before_the_mark) {
    const auto made = parse_temporary_name(TemporaryName("K3.tif"));
    ASSERT_TRUE(made);
    EXPECT_EQ(made->Name, "K3.tif");
    EXPECT_EQ(made->Process, ::getpid());
    const auto part = parse_temporary_name(".K1_iso_poly.5.4711.part.dbf");
    ASSERT_TRUE(part);
    EXPECT_EQ(part->Name, "K1_iso_poly.5");
    EXPECT_EQ(part->Process, 4711);
}

TEST(ParseTemporaryName, Other_names_are_none) {
    for (const char* name : {"", ".", ".part", ".hidden", "K3", "K3.part", "K1.4711.part", ".K1.part", ".K1.47x.part",
                             ".4711.part", ".K1.4711.party", ".K1.-5.part", ".K1.99999999999999999999.part"})
        EXPECT_FALSE(parse_temporary_name(name)) << name;
}

TEST(CheckDatasetName, Takes_ordinary_names) {
    for (const std::string name : {"K3", "k_3-b1", "a.b", "Bär 7", "東", "K3_iso_line", "CONIFER", "COM", "COM10",
                                   "LPT0", "nul1", "(x)", "100%", "~K"})
        EXPECT_EQ(error_of([&] { CheckDatasetName(name); }), 0) << name;
    EXPECT_EQ(error_of([&] { CheckDatasetName(std::string(200, 'n')); }), 0);
}

TEST(CheckDatasetName, Refuses_names_that_could_leave_their_folder_or_mean_several) {
    for (const std::string name :
         {"",    "..",  "../x", "x/../y", "a/b",  "/a",   "a\\b", "c:",   "c:x",   "a*",      "a?",   "[a]",  "a<b",
          "a>b", "a|b", "a\"b", "a\nb",   "a\tb", "\x7F", ".",    ".a",   " a",    "a ",      "a.",   "a..b", "CON",
          "con", "Prn", "AUX",  "nul",    "COM1", "com9", "LPT1", "lpt9", "CON.x", "aux.b.c", "\xFF", "a\xC3"})
        EXPECT_EQ(error_of([&] { CheckDatasetName(name); }), 5) << testing::PrintToString(name);
    EXPECT_EQ(error_of([&] { CheckDatasetName(std::string_view("a\0b", 3)); }), 5);
    EXPECT_EQ(error_of([&] { CheckDatasetName(std::string(201, 'n')); }), 5);
}

TEST(CheckDatasetName, Says_what_is_wrong) {
    EXPECT_EQ(text_of_error([] { CheckDatasetName("a/b"); }),
              "The output name \"a/b\" holds a path separator. Please choose another prefix or name.");
    EXPECT_THAT(text_of_error([] { CheckDatasetName("nul"); }), HasSubstr("is a reserved device name"));
}

TEST_F(PublishFileTest, Replaces_the_older_file) {
    EXPECT_EQ(Publish(), 0);
    EXPECT_EQ(m_disk->Bytes("/out/a.txt"), "newer");
    EXPECT_THAT(m_files.List("/out"), ElementsAre("a.txt"));
}

TEST_F(PublishFileTest, A_failure_at_any_step_keeps_the_older_file_and_leaves_nothing) {
    using memory::DiskStep;
    for (const auto step : {DiskStep::kOpen, DiskStep::kWrite, DiskStep::kClose, DiskStep::kRename}) {
        m_disk->Fail(step, 1, error_number::kDiskFull);
        EXPECT_EQ(Publish(), 61);
        ExpectOnlyOlder();
    }
    m_disk->Capacity = 8;
    EXPECT_EQ(Publish(), 61);
    ExpectOnlyOlder();
}

TEST_F(PublishFileTest, The_first_failure_is_reported_even_when_cleaning_up_fails_too) {
    m_disk->Fail(memory::DiskStep::kWrite, 1, error_number::kDiskFull);
    m_disk->Fail(memory::DiskStep::kDelete, 1, error_number::kPermissionDenied);
    EXPECT_EQ(Publish(), 61);
    EXPECT_EQ(m_disk->Bytes("/out/a.txt"), "older");
}

TEST(MemoryDisk, The_nth_step_fails_once) {
    auto disk = std::make_shared<memory::MemoryDisk>();
    memory::MemoryFileSystem files(disk);
    disk->Fail(memory::DiskStep::kWrite, 3, error_number::kDeviceIo);
    const auto file = files.OpenForWriting("/a", WriteMode::kNew);
    file->Write("1");
    file->Write("2");
    EXPECT_EQ(error_of([&] { file->Write("3"); }), 57);
    file->Write("4");
    EXPECT_EQ(disk->Bytes("/a"), "124");
    EXPECT_EQ(error_of([&] { file->Close(); }), 57) << "a file with a hole does not pass as whole";
}

TEST(MemoryDisk, Has_only_so_many_bytes) {
    auto disk = std::make_shared<memory::MemoryDisk>();
    memory::MemoryFileSystem files(disk);
    disk->Capacity = 5;
    disk->AddFile("/a", "123");
    const auto file = files.OpenForWriting("/b", WriteMode::kNew);
    file->Write("45");
    EXPECT_EQ(error_of([&] { file->Write("6"); }), 61);
    file->Seek(0);
    EXPECT_EQ(error_of([&] { file->Write("x"); }), 0) << "what only replaces takes no room";
}

TEST(MemoryDisk, Read_only_files_are_kept_unless_forced) {
    auto disk = std::make_shared<memory::MemoryDisk>();
    memory::MemoryFileSystem files(disk);
    disk->AddFile("/a", "x");
    disk->SetReadOnly("/a");
    EXPECT_EQ(error_of([&] { files.OpenForWriting("/a", WriteMode::kReplace); }), 70);
    EXPECT_EQ(error_of([&] { files.DeleteFile("/a", false); }), 70);
    files.DeleteFile("/a", true);
    EXPECT_FALSE(files.FileExists("/a"));
}

TEST(MemoryTempPath, Answers_as_the_system_does) {
    std::array<char, 8> buffer{};
    EXPECT_EQ(memory::MemoryTempPath().GetTempPathA(buffer.size(), buffer.data()), 0U);
    EXPECT_EQ(memory::MemoryTempPath("/tmp/").GetTempPathA(5, buffer.data()), 6U);
    EXPECT_EQ(memory::MemoryTempPath("/tmp/").GetTempPathA(6, buffer.data()), 5U);
    EXPECT_STREQ(buffer.data(), "/tmp/");
}

}  // namespace wxl::platform
