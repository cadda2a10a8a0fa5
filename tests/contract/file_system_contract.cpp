#include "tests/contract/file_system_contract.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using wxl::platform::WriteMode;

namespace wxl::tests {

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(FileSystemContract);

TEST_P(FileSystemContract, A_written_file_reads_back_byte_for_byte) {
    std::string bytes;
    for (int i = 0; i < 70000; ++i) bytes += static_cast<char>(i % 256);
    Write("data.bin", bytes);
    EXPECT_EQ(Read("data.bin"), bytes);
}

TEST_P(FileSystemContract, Many_small_writes_follow_one_another) {
    const auto file = Files().OpenForWriting(At("log.txt"), WriteMode::kReplace);
    std::string expected;
    for (int i = 0; i < 5000; ++i) {
        const std::string line = "line " + std::to_string(i) + "\r\n";
        file->Write(line);
        expected += line;
    }
    file->Close();
    EXPECT_EQ(Read("log.txt"), expected);
}

TEST_P(FileSystemContract, A_file_is_read_from_any_offset_to_its_end_and_no_further) {
    Write("a.bin", "0123456789");
    const auto file = Files().OpenForReading(At("a.bin"));
    EXPECT_EQ(file->Size(), 10U);
    std::string piece(4, '?');
    for (const auto& [offset, bytes] : {std::pair(6U, "6789"), {0U, "0123"}}) {
        file->Read(offset, piece);
        EXPECT_EQ(piece, bytes);
    }
    file->Read(10, {});
    EXPECT_EQ(error_of([&] { file->Read(7, piece); }), 57);
    EXPECT_EQ(error_of([&] { file->Read(11, piece); }), 57);
}

TEST_P(FileSystemContract, What_is_no_file_is_not_opened_for_reading) {
    EXPECT_EQ(error_of([&] { Files().OpenForReading(At("absent")); }), 53);
    EXPECT_NE(error_of([&] { Files().OpenForReading(At("")); }), 0);
}

TEST_P(FileSystemContract, Facts_are_those_of_files_only) {
    Write("a.bin", "0123456789");
    const auto facts = Files().FactsOf(At(".") / "a.bin");
    ASSERT_TRUE(facts);
    EXPECT_EQ(facts->Place, At("a.bin"));
    EXPECT_EQ(facts->Bytes, 10U);
    EXPECT_GT(facts->Modified, 1'600'000'000);
    EXPECT_FALSE(Files().FactsOf(At("absent")));
    EXPECT_FALSE(Files().FactsOf(At("")));
}

TEST_P(FileSystemContract, Replace_empties_an_older_file) {
    Write("a.txt", "a long older text");
    Write("a.txt", "new");
    EXPECT_EQ(Read("a.txt"), "new");
}

TEST_P(FileSystemContract, Append_goes_on_at_the_end_and_makes_a_missing_file) {
    Write("a.txt", "one,", WriteMode::kAppend);
    Write("a.txt", "two", WriteMode::kAppend);
    EXPECT_EQ(Read("a.txt"), "one,two");
}

TEST_P(FileSystemContract, New_refuses_a_file_that_exists) {
    Write("a.txt", "old", WriteMode::kNew);
    EXPECT_EQ(error_of([&] { Write("a.txt", "new", WriteMode::kNew); }), 58);
    EXPECT_EQ(Read("a.txt"), "old");
}

TEST_P(FileSystemContract, Seek_overwrites_in_the_middle) {
    const auto file = Files().OpenForWriting(At("a.bin"), WriteMode::kReplace);
    file->Write("0123456789");
    file->Seek(3);
    file->Write("ab");
    file->Close();
    EXPECT_EQ(Read("a.bin"), "012ab56789");
}

TEST_P(FileSystemContract, Seek_works_in_a_file_opened_for_appending) {
    Write("a.bin", "0123456789");
    const auto file = Files().OpenForWriting(At("a.bin"), WriteMode::kAppend);
    file->Write("AB");
    file->Seek(0);
    file->Write("x");
    file->Close();
    EXPECT_EQ(Read("a.bin"), "x123456789AB");
}

TEST_P(FileSystemContract, Flush_lets_others_see_what_was_written) {
    const auto file = Files().OpenForWriting(At("a.txt"), WriteMode::kReplace);
    file->Write("half");
    file->Flush();
    EXPECT_EQ(Read("a.txt"), "half");
    file->Close();
}

TEST_P(FileSystemContract, A_file_dropped_without_close_keeps_its_bytes) {
    Files().OpenForWriting(At("a.txt"), WriteMode::kReplace)->Write("kept");
    EXPECT_EQ(Read("a.txt"), "kept");
}

TEST_P(FileSystemContract, A_closed_file_refuses_more) {
    const auto file = Files().OpenForWriting(At("a.txt"), WriteMode::kReplace);
    file->Close();
    EXPECT_EQ(error_of([&] { file->Write("x"); }), 5);
    EXPECT_EQ(error_of([&] { file->Close(); }), 5);
}

TEST_P(FileSystemContract, Missing_files_and_folders_are_told_apart) {
    EXPECT_EQ(error_of([&] { Read("none.txt"); }), 53);
    EXPECT_EQ(error_of([&] { Read("nowhere/none.txt"); }), 76);
    EXPECT_EQ(error_of([&] { Write("nowhere/a.txt", "x"); }), 76);
    EXPECT_EQ(error_of([&] { Files().DeleteFile(At("none.txt"), false); }), 53);
    EXPECT_EQ(error_of([&] { Files().DeleteFile(At("nowhere/none.txt"), true); }), 76);
}

TEST_P(FileSystemContract, Errors_name_the_path) {
    EXPECT_THAT(text_of_error([&] { Read("none.txt"); }), HasSubstr(At("none.txt").string()));
    EXPECT_THAT(text_of_error([&] { Write("nowhere/a.txt", "x"); }), HasSubstr(At("nowhere/a.txt").string()));
}

TEST_P(FileSystemContract, Reading_stops_at_the_limit) {
    Write("a.txt", "12345");
    EXPECT_EQ(Files().ReadFile(At("a.txt"), 5), "12345");
    EXPECT_EQ(error_of([&] { Files().ReadFile(At("a.txt"), 4); }), 6);
}

TEST_P(FileSystemContract, Files_and_folders_are_no_files_and_folders_of_each_other) {
    Write("file", "");
    Folders().Create(At("folder"));
    EXPECT_TRUE(Files().FileExists(At("file")));
    EXPECT_FALSE(Files().FolderExists(At("file")));
    EXPECT_TRUE(Files().FolderExists(At("folder")));
    EXPECT_TRUE(Files().FolderExists(At("folder/")));
    EXPECT_FALSE(Files().FileExists(At("folder")));
    EXPECT_EQ(error_of([&] { Write("folder", "x"); }), 70);
    EXPECT_EQ(error_of([&] { Files().DeleteFile(At("folder"), true); }), 53);
    EXPECT_EQ(error_of([&] { Folders().DeleteTree(At("file")); }), 76);
}

TEST_P(FileSystemContract, A_file_renamed_replaces_an_older_file) {
    Write("new", "new");
    Write("old", "old");
    Files().Rename(At("new"), At("old"));
    EXPECT_EQ(Read("old"), "new");
    EXPECT_FALSE(Files().FileExists(At("new")));
}

TEST_P(FileSystemContract, A_folder_renamed_takes_its_content_along) {
    Folders().Create(At("a"));
    Folders().Create(At("a/b"));
    Write("a/b/file", "x");
    Files().Rename(At("a"), At("c"));
    EXPECT_EQ(Read("c/b/file"), "x");
    EXPECT_FALSE(Files().FolderExists(At("a")));
}

TEST_P(FileSystemContract, A_folder_renamed_replaces_nothing) {
    Folders().Create(At("a"));
    Folders().Create(At("empty"));
    Write("file", "x");
    EXPECT_EQ(error_of([&] { Files().Rename(At("a"), At("empty")); }), 58);
    EXPECT_EQ(error_of([&] { Files().Rename(At("a"), At("file")); }), 58);
    EXPECT_EQ(error_of([&] { Files().Rename(At("file"), At("empty")); }), 58);
    EXPECT_TRUE(Files().FolderExists(At("a")));
    EXPECT_EQ(Read("file"), "x");
}

TEST_P(FileSystemContract, Renaming_what_is_not_there_fails) {
    EXPECT_EQ(error_of([&] { Files().Rename(At("none"), At("b")); }), 53);
    Write("a", "x");
    EXPECT_EQ(error_of([&] { Files().Rename(At("a"), At("nowhere/b")); }), 76);
    EXPECT_EQ(Read("a"), "x");
}

TEST_P(FileSystemContract, List_is_sorted_and_shallow) {
    Write("b", "");
    Write(".hidden", "");
    Folders().Create(At("a"));
    Write("a/deep", "");
    EXPECT_THAT(Files().List(At("")), ElementsAre(".hidden", "a", "b"));
    EXPECT_THAT(Files().List(At("nowhere")), IsEmpty());
    EXPECT_THAT(Files().List(At("b")), IsEmpty());
}

TEST_P(FileSystemContract, Create_makes_one_folder) {
    Folders().Create(At("a"));
    Write("file", "");
    EXPECT_EQ(error_of([&] { Folders().Create(At("a")); }), 58);
    EXPECT_EQ(error_of([&] { Folders().Create(At("file")); }), 58);
    EXPECT_EQ(error_of([&] { Folders().Create(At("x/y")); }), 76);
}

TEST_P(FileSystemContract, DeleteTree_takes_all_and_nothing_beside) {
    Folders().Create(At("a"));
    Folders().Create(At("a/b"));
    Write("a/b/file", "x");
    Write("a/file", "x");
    Folders().Create(At("ab"));
    Folders().DeleteTree(At("a"));
    EXPECT_THAT(Files().List(At("")), ElementsAre("ab"));
    EXPECT_EQ(error_of([&] { Folders().DeleteTree(At("a")); }), 76);
}

TEST_P(FileSystemContract, FindIgnoringCase_prefers_the_exact_name) {
    Folders().Create(At("Out"));
    Folders().Create(At("OUT"));
    EXPECT_EQ(Folders().FindIgnoringCase(At("Out")), At("Out"));
    EXPECT_EQ(Folders().FindIgnoringCase(At("OUT")), At("OUT"));
    EXPECT_EQ(Folders().FindIgnoringCase(At("none")), "");
}

TEST_P(FileSystemContract, FindIgnoringCase_matches_every_level) {
    Folders().Create(At("Data"));
    Folders().Create(At("Data/Sub"));
    EXPECT_EQ(Folders().FindIgnoringCase(At("DATA/SUB")), At("Data/Sub"));
    EXPECT_EQ(Folders().FindIgnoringCase(At("data/none")), "");
}

TEST_P(FileSystemContract, FindIgnoringCase_knows_accented_letters) {
    Folders().Create(At("Bär"));
    EXPECT_EQ(Folders().FindIgnoringCase(At("BÄR")), At("Bär"));
}

TEST_P(FileSystemContract, FindIgnoringCase_is_not_led_astray_by_an_exact_parent) {
    Folders().Create(At("DATA"));
    Folders().Create(At("Data"));
    Folders().Create(At("Data/Sub"));
    EXPECT_EQ(Folders().FindIgnoringCase(At("DATA/SUB")), At("Data/Sub"));
}

TEST_P(FileSystemContract, FindIgnoringCase_finds_no_files) {
    Write("File", "");
    EXPECT_EQ(Folders().FindIgnoringCase(At("FILE")), "");
    EXPECT_EQ(Folders().FindIgnoringCase(At("File")), "");
}

TEST_P(FileSystemContract, PublishFile_leaves_only_the_finished_file) {
    Write("report.txt", "older");
    platform::PublishFile(Files(), At("report.txt"), "whole");
    EXPECT_EQ(Read("report.txt"), "whole");
    EXPECT_THAT(Files().List(At("")), ElementsAre("report.txt"));
}

TEST_P(FileSystemContract, PublishFile_into_a_missing_folder_fails) {
    EXPECT_EQ(error_of([&] { platform::PublishFile(Files(), At("nowhere/a"), "x"); }), 76);
}

TEST_P(FileSystemContract, Names_beyond_ascii_are_kept) {
    Write("Żubr und Bär 東.txt", "x");
    EXPECT_THAT(Files().List(At("")), ElementsAre("Żubr und Bär 東.txt"));
    EXPECT_EQ(Read("Żubr und Bär 東.txt"), "x");
}

}  // namespace wxl::tests
