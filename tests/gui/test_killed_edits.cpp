// The desktop is killed in the middle of a change of a shapefile.

#include "adapters/gdal/gdal_support.h"
#include "adapters/qgis/layer_files.h"
#include "adapters/qgis/qgis_feature_class.h"
#include "adapters/qgis/qgis_layers.h"
#include "tests/gui/qgis_environment.h"
#include "tests/support/quick_folder.h"
#include "tests/unit/adapters/disk/killed_child.h"
#include "tests/unit/adapters/ogr/shapefile_fixture.h"

#include <fcntl.h>
#include <qgsvectorfilewriter.h>
#include <qgsvectorlayer.h>
#include <sys/file.h>

namespace wxl::qgis {
namespace {

using testing::AnyOf;
using testing::Eq;
using testing::HasSubstr;
using tests::ChildEnd;
namespace fs = std::filesystem;
using Rows = std::vector<std::string>;

const Rows kOld = {"0:a0:0.5@0,0", "1:a1:1.5@1,10", "2:a2:2.5@2,20", "3:a3:3.5@3,30"};
const Rows kMarked = {"0:a0:-1@0,0", "2:a2:-1@2,20", "3:a3:-1@3,30"};
const Rows kNew = {"0:a0:-1@0,0", "1:a2:-1@2,20", "2:a3:-1@3,30"};

std::unique_ptr<QgsVectorLayer> open_in_qgis(const fs::path& path) {
    return std::make_unique<QgsVectorLayer>(QString::fromStdString(path.string()), QStringLiteral("fixes"),
                                            QStringLiteral("ogr"));
}

/// Deletes row 1 and stores V = -1 in the others; one flush.
void change_rows(QgsVectorLayer& layer) {
    QgisFeatureClass features(layer);
    const auto cursor = features.Find({});
    while (const auto feature = cursor->NextFeature()) {
        if (feature->OID() == 1) {
            feature->Delete();
            continue;
        }
        feature->SetValue(1, -1.0);
        feature->Store();
    }
    cursor->Flush();
}

/// Runs `work` on fresh data again and again, killed `step` calls later each time, until it gets through.
void kill_everywhere(int step, const std::function<void(QgsVectorLayer&)>& work,
                     const std::function<void(const fs::path&, int)>& check) {
    const tests::QuickFolder folder;
    int killed = 0;
    for (int call = 0;; call += step) {
        folder.Clear();
        const fs::path shapefile = files::MakeFixes(folder.Path(), 4);
        const auto layer = open_in_qgis(shapefile);
        ASSERT_TRUE(layer->isValid());
        const ChildEnd end = tests::RunAndKillAt(call, [&] {
            ::alarm(30);
            work(*layer);
        });
        if (end == ChildEnd::kCannotTrace) GTEST_SKIP() << "the system lets no test trace its children";
        check(shapefile, call);
        if (testing::Test::HasFailure()) return;
        if (end == ChildEnd::kFinished) break;
        ++killed;
    }
    EXPECT_GT(killed, 20) << "the work makes too few calls for this test to mean anything";
    std::cout << "killed at " << killed << " places\n";
}

TEST(KilledInQgis, Deleting_and_storing_in_a_shapefile_is_done_as_a_whole_or_not_at_all) {
    bool done = false;
    kill_everywhere(3, change_rows, [&](const fs::path& shapefile, int call) {
        // QGIS opens what was left, and a command looks at it.
        const auto layer = open_in_qgis(shapefile);
        ASSERT_TRUE(layer->isValid());
        QgisFeatureClass features(*layer);
        const Rows rows = files::RowsOf(features);
        EXPECT_THAT(rows, AnyOf(Eq(kOld), Eq(kMarked), Eq(kNew))) << "killed at call " << call;
        done = rows == kNew;
        EXPECT_EQ(files::RowsOf(*files::OgrFeatureClass::Open(shapefile.string())), rows);
    });
    EXPECT_TRUE(done) << "the last run got through";
}

TEST(KilledInQgis, Adding_a_field_to_a_shapefile_is_done_or_not) {
    const auto work = [](QgsVectorLayer& layer) {
        QgisFeatureClass(layer).AddField({"T_Cumul", platform::FieldType::kDouble, 0, 0});
    };
    std::size_t fields = 0;
    kill_everywhere(3, work, [&](const fs::path& shapefile, int call) {
        const auto layer = open_in_qgis(shapefile);
        QgisFeatureClass features(*layer);
        EXPECT_EQ(files::RowsOf(features), kOld) << "killed at call " << call;
        fields = features.Fields().size();
        EXPECT_THAT(fields, AnyOf(2U, 3U));
    });
    EXPECT_EQ(fields, 3U);
}

TEST(BlockedInQgis, A_shapefile_that_another_program_has_locked_is_named) {
    const tests::QuickFolder folder;
    const fs::path shapefile = files::MakeFixes(folder.Path(), 4);
    const auto layer = open_in_qgis(shapefile);
    QgisFeatureLayer features(*layer, layer->name().toStdString());
    EXPECT_EQ(features.WhyReadOnly(), "");
    const fs::path table = fs::canonical(shapefile).replace_extension(".dbf");
    const int descriptor = ::open(table.c_str(), O_RDONLY);
    ASSERT_EQ(::flock(descriptor, LOCK_EX), 0);
    EXPECT_EQ(features.WhyReadOnly(),
              "The layer \"fixes\" cannot be changed now: " + table.string() + " is in use by another program.");
    ::close(descriptor);
    EXPECT_EQ(features.WhyReadOnly(), "");
}

TEST(BlockedInQgis, A_geopackage_in_the_middle_of_another_programs_transaction_is_named) {
    const tests::QuickFolder folder;
    const fs::path shapefile = files::MakeFixes(folder.Path(), 4);
    const fs::path database = folder / "fixes.gpkg";
    QgsVectorFileWriter::SaveVectorOptions options;
    QgsVectorFileWriter::writeAsVectorFormatV3(open_in_qgis(shapefile).get(), QString::fromStdString(database.string()),
                                               {}, options);
    const auto layer = open_in_qgis(database);
    ASSERT_TRUE(layer->isValid());
    QgisFeatureLayer features(*layer, layer->name().toStdString());
    EXPECT_EQ(features.WhyReadOnly(), "");
    files::GdalDatasetPtr other(GDALDataset::Open(database.c_str(), GDAL_OF_VECTOR | GDAL_OF_UPDATE));
    other->ReleaseResultSet(other->ExecuteSQL("BEGIN IMMEDIATE", nullptr, nullptr));
    EXPECT_THAT(features.WhyReadOnly(), HasSubstr("is in use by another program."));
    other.reset();
    EXPECT_EQ(features.WhyReadOnly(), "");
}

TEST(BlockedInQgis, A_file_changed_by_another_program_during_a_pass_is_left_alone) {
    const tests::QuickFolder folder;
    const fs::path shapefile = files::MakeFixes(folder.Path(), 4);
    const auto layer = open_in_qgis(shapefile);
    QgisFeatureClass features(*layer);
    const auto cursor = features.Find({});
    const auto feature = cursor->NextFeature();
    feature->SetValue(1, -1.0);
    feature->Store();
    files::ChangeRows(*files::OgrFeatureClass::Open(shapefile.string()), {});
    const std::string before = files::Bytes(fs::path(shapefile).replace_extension(".dbf"));
    const auto error = files::ErrorOf([&] { cursor->Flush(); });
    EXPECT_EQ(error.Number, platform::error_number::kPermissionDenied);
    EXPECT_THAT(error.Description, HasSubstr("was changed by another program."));
    EXPECT_EQ(files::Bytes(fs::path(shapefile).replace_extension(".dbf")), before);
}

}  // namespace
}  // namespace wxl::qgis
