#include "adapters/gdal/gdal_support.h"
#include "adapters/ogr/ogr_source.h"
#include "tests/support/quick_folder.h"
#include "tests/unit/adapters/disk/killed_child.h"
#include "tests/unit/adapters/ogr/shapefile_fixture.h"

#include <ogrsf_frmts.h>

namespace wxl::files {
namespace {

using testing::AnyOf;
using testing::ElementsAre;
using testing::Eq;
using tests::ChildEnd;
using tests::QuickFolder;
namespace fs = std::filesystem;
using Rows = std::vector<std::string>;

constexpr int kMostCalls = 20000;

/// Runs `work` on fresh data again and again, killed one call (or `step` calls) later each time, until it gets through.
/// `prepare` makes the data, `check` judges what a killed run left.
void kill_everywhere(int step, const std::function<void()>& prepare, const std::function<void()>& work,
                     const std::function<void(int)>& check) {
    RegisterGdal();
    int killed = 0;
    for (int call = 0; call < kMostCalls; call += step) {
        prepare();
        const ChildEnd end = tests::RunAndKillAt(call, work);
        if (end == ChildEnd::kCannotTrace) GTEST_SKIP() << "the system lets no test trace its children";
        check(call);
        if (testing::Test::HasFailure()) return;
        if (end == ChildEnd::kFinished) {
            EXPECT_GT(killed, 20) << "the work makes too few calls for this test to mean anything";
            return;
        }
        ++killed;
    }
    FAIL() << "the work never ended";
}

const Rows kOld = {"0:a0:0.5@0,0", "1:a1:1.5@1,10", "2:a2:2.5@2,20", "3:a3:3.5@3,30"};
const Rows kMarked = {"0:a0:-1@0,0", "2:a2:-1@2,20", "3:a3:-1@3,30"};
const Rows kNew = {"0:a0:-1@0,0", "1:a2:-1@2,20", "2:a3:-1@3,30"};

TEST(KilledEdits, Deleting_and_storing_in_a_shapefile_is_done_as_a_whole_or_not_at_all) {
    const QuickFolder folder;
    fs::path shapefile;
    const auto prepare = [&] {
        folder.Clear();
        shapefile = MakeFixes(folder.Path(), 4);
    };
    const auto work = [&] { ChangeRows(*OgrFeatureClass::Open(shapefile.string()), {1}); };
    const auto check = [&](int call) {
        // Who reads finds the rows that count, and leaves it to who changes them to put the files into their places.
        const auto left = NamesIn(folder.Path());
        const Rows rows = RowsOf(*OgrFeatureClass::Open(shapefile.string()));
        EXPECT_THAT(rows, AnyOf(Eq(kOld), Eq(kMarked), Eq(kNew))) << "killed at call " << call;
        EXPECT_EQ(NamesIn(folder.Path()), left);
        OgrFeatureClass::FinishInterrupted(shapefile.string());
        const auto features = OgrFeatureClass::Open(shapefile.string());
        EXPECT_EQ(RowsOf(*features), rows) << "killed at call " << call;
        EXPECT_FALSE(fs::exists(folder / ".fixes.swap"));
        // Whatever was left can be worked on.
        ChangeRows(*features, {0});
        EXPECT_EQ(RowsOf(*OgrFeatureClass::Open(shapefile.string())).size(), rows.size() - 1);
    };
    kill_everywhere(1, prepare, work, check);
}

TEST(KilledEdits, Adding_a_field_is_done_or_not) {
    const QuickFolder folder;
    fs::path shapefile;
    const auto prepare = [&] {
        folder.Clear();
        shapefile = MakeFixes(folder.Path(), 4);
    };
    const auto work = [&] {
        OgrFeatureClass::Open(shapefile.string())->Table().AddField({"T_Cumul", platform::FieldType::kDouble, 0, 0});
    };
    const auto check = [&](int call) {
        const auto features = OgrFeatureClass::Open(shapefile.string());
        EXPECT_EQ(RowsOf(*features), kOld) << "killed at call " << call;
        EXPECT_THAT(features->Table().Fields().size(), AnyOf(2U, 3U));
        EXPECT_EQ(features->WhyReadOnly(), "");
    };
    kill_everywhere(1, prepare, work, check);
}

TEST(KilledEdits, A_killed_publishing_leaves_a_whole_shapefile_or_none) {
    const QuickFolder folder;
    const auto prepare = [&] { folder.Clear(); };
    const auto work = [&] { MakeFixes(folder.Path(), 4); };
    const auto check = [&](int call) {
        const auto found = ShapefileWorkspace().Open(folder.Path(), "fixes");
        if (found) {
            EXPECT_EQ(RowsOf(*found), kOld) << "killed at call " << call;
            return;
        }
        // Side files that stand alone may be somebody's, and are replaced when an older shapefile of the name would be.
        if (fs::exists(folder / "fixes.dbf")) ShapefileWorkspace().Delete(folder.Path(), "fixes");
        MakeFixes(folder.Path(), 4);
        EXPECT_EQ(RowsOf(*ShapefileWorkspace().Open(folder.Path(), "fixes")), kOld) << "killed at call " << call;
    };
    kill_everywhere(1, prepare, work, check);
}

// A transaction makes many more calls, and SQLite is trusted with each of them: some of them are tried.
TEST(KilledEdits, Changing_a_geopackage_is_done_as_a_whole_or_not_at_all) {
    const QuickFolder folder;
    const fs::path path = folder / "fixes.gpkg";
    const auto prepare = [&] {
        folder.Clear();
        const GdalDatasetPtr dataset(
            GetGDALDriverManager()->GetDriverByName("GPKG")->Create(path.c_str(), 0, 0, 0, GDT_Unknown, nullptr));
        OGRLayer* layer = dataset->CreateLayer("fixes", nullptr, wkbPoint);
        OGRFieldDefn id("ID", OFTString);
        OGRFieldDefn value("V", OFTReal);
        ASSERT_EQ(layer->CreateField(&id), OGRERR_NONE);
        ASSERT_EQ(layer->CreateField(&value), OGRERR_NONE);
        for (int i = 0; i < 4; ++i) {
            const OGRFeatureUniquePtr feature(OGRFeature::CreateFeature(layer->GetLayerDefn()));
            feature->SetField(0, ("a" + std::to_string(i)).c_str());
            feature->SetField(1, i + 0.5);
            feature->SetGeometryDirectly(new OGRPoint(i, 10.0 * i));
            ASSERT_EQ(layer->CreateFeature(feature.get()), OGRERR_NONE);
        }
    };
    const auto work = [&] { ChangeRows(*OgrFeatureClass::Open(path.string()), {2}); };
    const Rows before = {"1:a0:0.5@0,0", "2:a1:1.5@1,10", "3:a2:2.5@2,20", "4:a3:3.5@3,30"};
    const Rows after = {"1:a0:-1@0,0", "3:a2:-1@2,20", "4:a3:-1@3,30"};
    const auto check = [&](int call) {
        OgrFeatureClass::FinishInterrupted(path.string());
        const auto features = OgrFeatureClass::Open(path.string());
        EXPECT_THAT(RowsOf(*features), AnyOf(Eq(before), Eq(after))) << "killed at call " << call;
        EXPECT_EQ(features->WhyReadOnly(), "");
    };
    kill_everywhere(23, prepare, work, check);
}

}  // namespace
}  // namespace wxl::files
