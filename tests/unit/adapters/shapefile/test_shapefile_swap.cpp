#include "adapters/gdal/gdal_support.h"
#include "adapters/shapefile/shapefile_swap.h"
#include "tests/robustness/guarded_tree.h"
#include "tests/support/quick_folder.h"
#include "tests/unit/adapters/disk/killed_child.h"
#include "tests/unit/adapters/ogr/shapefile_fixture.h"

#include <sys/stat.h>

namespace wxl::files {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using tests::ChildEnd;
namespace fs = std::filesystem;
using Rows = std::vector<std::string>;

const Rows kOld = {"0:a0:0.5@0,0", "1:a1:1.5@1,10", "2:a2:2.5@2,20", "3:a3:3.5@3,30"};
const Rows kNew = {"0:a0:-1@0,0", "1:a2:-1@2,20", "2:a3:-1@3,30"};

/// A shapefile of which a change of all three files was cut short when it counted already.
class CutShort : public testing::Test {
protected:
    /// Kills deletions of a row until one leaves the folder with this many of its three files.
    void LeaveWaiting(std::size_t files) {
        RegisterGdal();
        // How many calls a deletion takes may differ a little from one to the next.
        constexpr int kEarlier = 16;
        for (int first = FirstCall();; first -= kEarlier) {
            ASSERT_GE(first, 0) << "no run was killed there";
            if (IsLeftWaiting(files, first) || IsSkipped()) return;
        }
    }

    /// Whether one of the deletions that are killed at this call and the next ones does so.
    bool IsLeftWaiting(std::size_t files, int first) {
        constexpr int kMostCalls = 3000;
        for (int call = first; call < kMostCalls; ++call) {
            const ChildEnd end = DeleteRowAndDieAt(call);
            if (end == ChildEnd::kFinished) return false;
            if (end == ChildEnd::kCannotTrace) {
                SkipIt();
                return false;
            }
            if (fs::exists(SwapFolder()) && NamesIn(SwapFolder()).size() == files + 1) return true;
        }
        return false;
    }

    static void SkipIt() { GTEST_SKIP() << "the system lets no test trace its children"; }

    /// A call shortly before the change counts.
    int FirstCall() {
        static int first = 0;
        constexpr int kStep = 8;
        while (first == 0 || !m_foundFirst) {
            m_foundFirst = DeleteRowAndDieAt(first + kStep) != ChildEnd::kKilled || fs::exists(SwapFolder());
            if (m_foundFirst) break;
            first += kStep;
        }
        return first;
    }

    ChildEnd DeleteRowAndDieAt(int call) {
        m_folder.Clear();
        fs::create_directory(m_folder / "work");
        m_shapefile = fs::canonical(MakeFixes(m_folder / "work", 4));
        for (const char* extension : {".shp", ".shx", ".dbf"}) m_backup[extension] = Bytes(Part(extension));
        return tests::RunAndKillAt(call, [&] { ChangeRows(*OgrFeatureClass::Open(m_shapefile.string()), {1}); });
    }

    fs::path Part(const char* extension) const { return fs::path(m_shapefile).replace_extension(extension); }
    fs::path SwapFolder() const { return m_shapefile.parent_path() / ".fixes.swap"; }
    Rows Read() const { return RowsOf(*OgrFeatureClass::Open(m_shapefile.string())); }
    void Finish() const { OgrFeatureClass::FinishInterrupted(m_shapefile.string()); }

    /// Reading and finishing say the same, and touch nothing.
    void ExpectBroken(const std::string& why) const {
        const auto before = tests::entries_of(m_folder.Path(), {});
        const std::string told = SwapFolder().string() + " tells of a change of " + m_shapefile.string() +
                                 " that was cut short, and cannot be used: " + why +
                                 ". Delete that folder when the shapefile is as it should be; else put a copy of the "
                                 "shapefile in its place, and delete the folder";
        EXPECT_EQ(ErrorOf([&] { Read(); }).Description, told);
        EXPECT_EQ(ErrorOf([&] { Finish(); }).Description, told);
        EXPECT_EQ(tests::difference(before, tests::entries_of(m_folder.Path(), {})), "");
    }

    void RestoreBackup() const {
        for (const auto& [extension, bytes] : m_backup) PutBytes(Part(extension.c_str()), bytes);
    }

    tests::QuickFolder m_folder;
    fs::path m_shapefile;
    bool m_foundFirst = false;
    std::map<std::string, std::string> m_backup;
};

TEST_F(CutShort, Readers_find_the_rows_that_count_and_touch_nothing) {
    for (const std::size_t waiting : {3U, 2U, 1U, 0U}) {
        ASSERT_NO_FATAL_FAILURE(LeaveWaiting(waiting));
        if (IsSkipped()) return;
        const auto before = tests::entries_of(m_folder.Path(), {});
        EXPECT_EQ(Read(), kNew) << waiting << " files wait";
        EXPECT_EQ(OgrFeatureClass::Open(m_shapefile.string())->FeatureCount(), 3);
        EXPECT_EQ(OgrFeatureClass::Open(m_shapefile.string())->Bounds(), (platform::Extent{0, 0, 3, 30}));
        EXPECT_EQ(tests::difference(before, tests::entries_of(m_folder.Path(), {})), "");
        Finish();
        EXPECT_FALSE(fs::exists(SwapFolder()));
        EXPECT_EQ(Read(), kNew);
        EXPECT_EQ(OgrFeatureClass::Open(m_shapefile.string())->WhyReadOnly(), "");
    }
}

TEST_F(CutShort, A_layer_read_so_is_not_changed_before_it_is_finished) {
    ASSERT_NO_FATAL_FAILURE(LeaveWaiting(2));
    if (IsSkipped()) return;
    const auto features = OgrFeatureClass::Open(m_shapefile.string());
    EXPECT_EQ(
        features->WhyReadOnly(),
        SwapFolder().string() + " holds a change that was cut short: it must be finished before another is made.");
    EXPECT_EQ(ErrorOf([&] { features->Table().DeleteField(0); }).Number, 70);
}

TEST_F(CutShort, A_reader_that_has_no_folder_for_temporary_files_says_so) {
    ASSERT_NO_FATAL_FAILURE(LeaveWaiting(2));
    if (IsSkipped()) return;
    const char* set = std::getenv("TMPDIR");
    const std::string before = set == nullptr ? "" : set;
    ::setenv("TMPDIR", (m_folder / "gone").c_str(), 1);
    const platform::RuntimeError error = ErrorOf([&] { Read(); });
    if (set == nullptr)
        ::unsetenv("TMPDIR");
    else
        ::setenv("TMPDIR", before.c_str(), 1);
    EXPECT_EQ(error.Description, "Nothing can be written to the folder of temporary files, " +
                                     (m_folder / "gone/").string() +
                                     " (No such file or directory): name another in the variable TMPDIR");
}

TEST_F(CutShort, A_reader_goes_on_when_another_program_finishes_the_change) {
    ASSERT_NO_FATAL_FAILURE(LeaveWaiting(2));
    if (IsSkipped()) return;
    const auto features = OgrFeatureClass::Open(m_shapefile.string());
    Finish();
    EXPECT_EQ(RowsOf(*features), kNew);
    EXPECT_EQ(features->WhyReadOnly(), "");
}

TEST_F(CutShort, A_restored_backup_is_never_replaced) {
    for (const std::size_t waiting : {3U, 1U}) {
        ASSERT_NO_FATAL_FAILURE(LeaveWaiting(waiting));
        if (IsSkipped()) return;
        RestoreBackup();
        EXPECT_EQ(Read(), kOld);
        Finish();
        EXPECT_EQ(Read(), kOld);
        EXPECT_THAT(OgrFeatureClass::Open(m_shapefile.string())->WhyReadOnly(),
                    HasSubstr(SwapFolder().string() + " holds a change that was made for other files than "));
        EXPECT_EQ(ErrorOf([&] { ChangeRows(*OgrFeatureClass::Open(m_shapefile.string()), {1}); }).Number, 70);
        fs::remove_all(SwapFolder());
        ChangeRows(*OgrFeatureClass::Open(m_shapefile.string()), {1});
        EXPECT_EQ(Read(), kNew);
    }
}

TEST_F(CutShort, A_shapefile_of_which_half_was_restored_is_refused) {
    ASSERT_NO_FATAL_FAILURE(LeaveWaiting(2));
    if (IsSkipped()) return;
    for (const auto& [extension, bytes] : m_backup)
        if (fs::exists(SwapFolder() / ("fixes" + extension))) PutBytes(Part(extension.c_str()), bytes);
    EXPECT_THAT(ErrorOf([&] { Read(); }).Description, HasSubstr(" was changed since. Delete that folder"));
    EXPECT_THAT(ErrorOf([&] { Finish(); }).Description, HasSubstr(" was changed since. Delete that folder"));
}

TEST_F(CutShort, Foreign_files_links_and_pipes_in_the_folder_are_told) {
    ASSERT_NO_FATAL_FAILURE(LeaveWaiting(2));
    if (IsSkipped()) return;
    const fs::path foreign = SwapFolder() / "fixes.prj";
    PutBytes(foreign, "x");
    ExpectBroken("fixes.prj is no part of it");
    fs::remove(foreign);
    const std::string waiting = fs::exists(SwapFolder() / "fixes.shp") ? "fixes.shp" : "fixes.shx";
    fs::rename(SwapFolder() / waiting, m_folder / "kept");
    fs::create_symlink(m_folder / "kept", SwapFolder() / waiting);
    ExpectBroken(waiting + " is not what was written");
    fs::remove(SwapFolder() / waiting);
    ASSERT_EQ(::mkfifo((SwapFolder() / waiting).c_str(), 0600), 0);
    ExpectBroken(waiting + " is not what was written");
    fs::remove(SwapFolder() / waiting);
    ExpectBroken(waiting + " is missing");
    fs::rename(m_folder / "kept", SwapFolder() / waiting);
    fs::rename(SwapFolder() / "manifest", m_folder / "kept");
    ExpectBroken("it has no list of its files");
    ASSERT_EQ(::mkfifo((SwapFolder() / "manifest").c_str(), 0600), 0);
    ExpectBroken("it has no list of its files");
}

TEST_F(CutShort, A_folder_copied_from_elsewhere_replaces_nothing) {
    ASSERT_NO_FATAL_FAILURE(LeaveWaiting(3));
    if (IsSkipped()) return;
    const fs::path other = m_folder / "other";
    fs::create_directory(other);
    const fs::path copy = MakeFixes(other, 4);
    fs::copy(SwapFolder(), other / ".fixes.swap", fs::copy_options::recursive);
    OgrFeatureClass::FinishInterrupted(copy.string());
    EXPECT_EQ(RowsOf(*OgrFeatureClass::Open(copy.string())), kOld);
}

TEST_F(CutShort, Nothing_stays_in_the_place_for_temporary_files) {
    ASSERT_NO_FATAL_FAILURE(LeaveWaiting(2));
    if (IsSkipped()) return;
    const tests::ScratchFolder place;
    ::setenv("TMPDIR", place.Path().c_str(), 1);
    const Rows rows = Read();
    ::unsetenv("TMPDIR");
    EXPECT_EQ(rows, kNew);
    EXPECT_THAT(NamesIn(place.Path()), IsEmpty());
}

}  // namespace
}  // namespace wxl::files
