#include "adapters/gdal/gdal_support.h"
#include "platform/file_system.h"
#include "tests/contract/mounted_disk.h"
#include "tests/unit/adapters/ogr/shapefile_fixture.h"

#include <fcntl.h>
#include <ogrsf_frmts.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace wxl::files {
namespace {

using platform::FieldValue;
using platform::Geometry;
using testing::ElementsAre;
using testing::HasSubstr;
namespace fs = std::filesystem;

class ShapefileEditing : public testing::Test {
protected:
    tests::ScratchFolder m_folder;
    fs::path m_shapefile = MakeFixes(m_folder.Path(), 4);

    fs::path Part(const char* extension) const { return fs::path(m_shapefile).replace_extension(extension); }
    std::shared_ptr<OgrFeatureClass> Open() const { return OgrFeatureClass::Open(m_shapefile.string()); }
};

TEST_F(ShapefileEditing, A_new_shapefile_has_its_five_files_and_nothing_else) {
    EXPECT_THAT(NamesIn(m_folder.Path()), ElementsAre("fixes.cpg", "fixes.dbf", "fixes.shp", "fixes.shx"));
    EXPECT_EQ(Bytes(Part(".cpg")), "UTF-8");
}

TEST_F(ShapefileEditing, Equal_data_give_equal_bytes) {
    const tests::ScratchFolder other;
    const fs::path twin = MakeFixes(other.Path(), 4);
    for (const char* extension : {".shp", ".shx", ".dbf"})
        EXPECT_EQ(Bytes(Part(extension)), Bytes(fs::path(twin).replace_extension(extension))) << extension;
}

TEST_F(ShapefileEditing, Rows_are_only_marked_while_a_cursor_lives_and_move_up_afterwards) {
    const auto features = Open();
    {
        const auto cursor = features->Find({});
        const auto first = cursor->NextFeature();
        cursor->NextFeature()->Delete();
        cursor->Flush();
        EXPECT_THAT(RowsOf(*Open()), ElementsAre("0:a0:0.5@0,0", "2:a2:2.5@2,20", "3:a3:3.5@3,30"));
        EXPECT_EQ(Open()->FeatureCount(), 3);
    }
    EXPECT_THAT(RowsOf(*features), ElementsAre("0:a0:0.5@0,0", "1:a2:2.5@2,20", "2:a3:3.5@3,30"));
    EXPECT_EQ(fs::file_size(Part(".shp")), 100U + 3 * 28);
    EXPECT_EQ(fs::file_size(Part(".shx")), 100U + 3 * 8);
    EXPECT_THAT(NamesIn(m_folder.Path()), ElementsAre("fixes.cpg", "fixes.dbf", "fixes.shp", "fixes.shx"));
}

TEST_F(ShapefileEditing, The_extent_shrinks_with_the_rows) {
    const auto features = Open();
    ChangeRows(*features, {0, 3});
    EXPECT_EQ(features->Bounds(), (platform::Extent{1, 10, 2, 20}));
}

TEST_F(ShapefileEditing, A_selection_follows_rows_that_move_up) {
    const auto layer = std::make_shared<FilesFeatureLayer>("fixes", Open());
    layer->Select({3, 1, 2, 99});
    EXPECT_EQ(layer->Selection()->Count(), 3);
    ChangeRows(layer->Features(), {0, 2});
    EXPECT_EQ(layer->Selection()->Count(), 2);
    const auto cursor = layer->Selection()->Find({});
    EXPECT_EQ(cursor->NextFeature()->Value(0), FieldValue("a1"));
    EXPECT_EQ(cursor->NextFeature()->Value(0), FieldValue("a3"));
}

TEST_F(ShapefileEditing, Cells_that_were_not_set_keep_their_bytes) {
    std::string table = Bytes(Part(".dbf"));
    const std::size_t header = 32 + 2 * 32 + 1;
    const std::size_t record = 1 + 10 + 24;
    table.replace(header + record + 1, 10, "\xFF\xFE odd  \x01 ");  // no text in any encoding
    PutBytes(Part(".dbf"), table);
    const auto features = Open();
    {
        const auto cursor = features->Find({});
        const auto feature = cursor->NextFeature();
        feature->SetValue(1, 9.0);
        feature->Store();
        cursor->Flush();
    }
    std::string expected = table;
    expected.replace(header + 1 + 10, 24, "                       9");
    EXPECT_EQ(Bytes(Part(".dbf")), expected);
}

TEST_F(ShapefileEditing, Values_that_a_column_cannot_hold_are_refused_before_anything_is_written) {
    const std::string before = Bytes(Part(".dbf"));
    const auto features = Open();
    {
        const auto cursor = features->Find({});
        const auto feature = cursor->NextFeature();
        const auto error = ErrorOf([&] { feature->SetValue(0, std::string("longer than ten")); });
        EXPECT_EQ(error.Number, 6);
        EXPECT_EQ(error.Description, "The value longer than ten does not fit the field \"ID\" of width 10.");
        feature->Store();
    }
    EXPECT_EQ(Bytes(Part(".dbf")), before);
    EXPECT_EQ(ErrorOf([&] {
                  features->Table().AddField({"elevenchars", platform::FieldType::kDouble, 0, 0});
              }).Number,
              5);
}

TEST_F(ShapefileEditing, Rights_of_the_files_are_kept) {
    ::chmod(Part(".dbf").c_str(), 0640);
    ::chmod(Part(".shp").c_str(), 0604);
    ChangeRows(*Open(), {1});
    struct stat status = {};
    ::stat(Part(".dbf").c_str(), &status);
    EXPECT_EQ(status.st_mode & 07777, 0640U);
    ::stat(Part(".shp").c_str(), &status);
    EXPECT_EQ(status.st_mode & 07777, 0604U);
}

TEST_F(ShapefileEditing, Indexes_go_when_rows_go_and_other_side_files_stay) {
    for (const char* extension : {".qix", ".sbn", ".sbx", ".idm", ".ind", ".prj"}) PutBytes(Part(extension), "x");
    ChangeRows(*Open(), {1});
    EXPECT_THAT(NamesIn(m_folder.Path()), ElementsAre("fixes.cpg", "fixes.dbf", "fixes.prj", "fixes.shp", "fixes.shx"));
}

TEST_F(ShapefileEditing, A_read_only_file_is_told_before_anything_is_touched) {
    ::chmod(Part(".dbf").c_str(), 0444);
    const auto features = Open();
    EXPECT_EQ(features->WhyReadOnly(), fs::canonical(Part(".dbf")).string() + " is read-only.");
    const std::string before = Bytes(Part(".dbf"));
    const auto cursor = features->Find({});
    const auto feature = cursor->NextFeature();
    feature->SetValue(1, 9.0);
    feature->Store();
    EXPECT_EQ(ErrorOf([&] { cursor->Flush(); }).Number, 70);
    EXPECT_EQ(ErrorOf([&] { features->Table().DeleteField(0); }).Number, 70);
    EXPECT_EQ(Bytes(Part(".dbf")), before);
}

TEST_F(ShapefileEditing, A_read_only_folder_is_told) {
    const auto features = Open();
    ::chmod(m_folder.Path().c_str(), 0555);
    EXPECT_EQ(features->WhyReadOnly(), "The folder " + fs::canonical(m_folder.Path()).string() + " is read-only.");
    EXPECT_EQ(ErrorOf([&] { features->Table().AddField({"X", platform::FieldType::kDouble, 0, 0}); }).Number, 70);
    ::chmod(m_folder.Path().c_str(), 0755);
}

TEST_F(ShapefileEditing, A_file_that_another_program_locked_is_told) {
    const auto features = Open();
    const int descriptor = ::open(Part(".dbf").c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(::flock(descriptor, LOCK_EX), 0);
    EXPECT_EQ(features->WhyReadOnly(), fs::canonical(Part(".dbf")).string() + " is in use by another program.");
    ::close(descriptor);
    EXPECT_EQ(features->WhyReadOnly(), "");
}

TEST_F(ShapefileEditing, A_missing_table_is_told) {
    fs::remove(Part(".dbf"));
    const platform::RuntimeError error = ErrorOf([&] { Open(); });
    EXPECT_EQ(error.Number, 53);
    EXPECT_EQ(error.Description, Part(".dbf").string() + " is missing: copy the shapefile again with all its files.");
}

TEST_F(ShapefileEditing, A_table_cut_short_is_not_read) {
    const std::string table = Bytes(Part(".dbf"));
    PutBytes(Part(".dbf"), table.substr(0, table.size() - 30));
    const platform::RuntimeError error = ErrorOf([&] { Open(); });
    EXPECT_EQ(error.Number, 57);
    EXPECT_THAT(error.Description, HasSubstr("is shorter than its header says"));
}

TEST_F(ShapefileEditing, A_change_by_another_program_in_between_is_never_overwritten) {
    const auto features = Open();
    const auto cursor = features->Find({});
    const auto feature = cursor->NextFeature();
    feature->SetValue(1, 9.0);
    feature->Store();
    ChangeRows(*Open(), {0});
    EXPECT_EQ(ErrorOf([&] { cursor->Flush(); }).Number, 70);
    EXPECT_THAT(RowsOf(*Open()), ElementsAre("0:a1:-1@1,10", "1:a2:-1@2,20", "2:a3:-1@3,30"));
}

TEST_F(ShapefileEditing, A_change_by_another_program_between_two_passes_is_met) {
    const auto features = Open();
    EXPECT_EQ(RowsOf(*features).size(), 4U);
    ChangeRows(*Open(), {0, 1});
    EXPECT_THAT(RowsOf(*features), ElementsAre("0:a2:-1@2,20", "1:a3:-1@3,30"));
    ChangeRows(*features, {0});
    EXPECT_THAT(RowsOf(*features), ElementsAre("0:a3:-1@3,30"));
}

TEST_F(ShapefileEditing, Heights_of_shapes_are_carried_over) {
    RegisterGdal();
    const fs::path path = m_folder / "high.shp";
    {
        const GdalDatasetPtr dataset(GetGDALDriverManager()
                                         ->GetDriverByName("ESRI Shapefile")
                                         ->Create(path.c_str(), 0, 0, 0, GDT_Unknown, nullptr));
        OGRLayer* layer = dataset->CreateLayer("high", nullptr, wkbPoint25D);
        OGRFieldDefn field("N", OFTInteger);
        ASSERT_EQ(layer->CreateField(&field), OGRERR_NONE);
        for (int i = 0; i < 3; ++i) {
            const OGRFeatureUniquePtr feature(OGRFeature::CreateFeature(layer->GetLayerDefn()));
            feature->SetField(0, i);
            feature->SetGeometryDirectly(new OGRPoint(i, i, 100.0 + i));
            ASSERT_EQ(layer->CreateFeature(feature.get()), OGRERR_NONE);
        }
    }
    {
        const auto features = OgrFeatureClass::Open(path.string());
        const auto cursor = features->Find({});
        cursor->NextFeature();
        cursor->NextFeature()->Delete();
        EXPECT_EQ(ErrorOf([&] { features->Insert(); }).Number, 5);
    }
    const GdalDatasetPtr dataset(GDALDataset::Open(path.c_str(), GDAL_OF_VECTOR));
    const OGRFeatureUniquePtr last(dataset->GetLayer(0)->GetFeature(1));
    EXPECT_EQ(last->GetFieldAsInteger(0), 2);
    EXPECT_EQ(last->GetGeometryRef()->toPoint()->getZ(), 102.0);
}

TEST_F(ShapefileEditing, A_table_without_any_word_on_its_encoding_is_windows_1252) {
    fs::remove(Part(".cpg"));
    const auto features = Open();
    {
        const auto cursor = features->Find({});
        const auto feature = cursor->NextFeature();
        feature->SetValue(0, std::string("Bär €"));
        EXPECT_EQ(ErrorOf([&] { feature->SetValue(0, std::string("Łoś")); }).Number, 5);
        feature->Store();
    }
    EXPECT_THAT(Bytes(Part(".dbf")), HasSubstr("B\xE4r \x80"));
    EXPECT_EQ(Open()->Find({})->NextFeature()->Value(0), FieldValue("Bär €"));
}

TEST_F(ShapefileEditing, Texts_follow_the_encoding_that_the_table_names) {
    PutBytes(Part(".cpg"), "ISO-8859-2");
    const auto features = Open();
    {
        const auto cursor = features->Find({});
        const auto feature = cursor->NextFeature();
        feature->SetValue(0, std::string("Łoś"));
        feature->Store();
    }
    EXPECT_THAT(Bytes(Part(".dbf")), HasSubstr("\xA3o\xB6"));
    EXPECT_EQ(Open()->Find({})->NextFeature()->Value(0), FieldValue("Łoś"));
}

TEST_F(ShapefileEditing, A_full_disk_leaves_the_old_table) {
    const tests::MountedDisk disk("size=400k");
    if (!disk.IsMounted()) GTEST_SKIP() << "no small disk could be mounted: " << disk.WhyNot();
    const fs::path path = MakeFixes(disk.Path(), 3000);  // table 105 kB, shapes 84 kB + 24 kB
    const auto features = OgrFeatureClass::Open(path.string());
    const auto before = RowsOf(*features);
    PutBytes(disk.Path() / "fill", std::string(150000, 'x'));
    {
        const auto cursor = features->Find({});
        const auto feature = cursor->NextFeature();
        feature->SetValue(1, 9.0);
        feature->Store();
        const auto error = ErrorOf([&] { cursor->Flush(); });
        EXPECT_EQ(error.Number, 61);
        EXPECT_THAT(error.Description, HasSubstr("fixes.dbf"));
    }
    EXPECT_EQ(RowsOf(*OgrFeatureClass::Open(path.string())), before);
    EXPECT_THAT(NamesIn(disk.Path()), ElementsAre("fill", "fixes.cpg", "fixes.dbf", "fixes.shp", "fixes.shx"));
}

// The marks still fit, the repacked copy of all three files does not: the rows stay marked.
TEST_F(ShapefileEditing, A_disk_too_full_to_repack_keeps_rows_marked_as_deleted) {
    const tests::MountedDisk disk("size=500k");
    if (!disk.IsMounted()) GTEST_SKIP() << "no small disk could be mounted: " << disk.WhyNot();
    const fs::path path = MakeFixes(disk.Path(), 3000);
    const auto features = OgrFeatureClass::Open(path.string());
    PutBytes(disk.Path() / "fill", std::string(130000, 'x'));
    {
        const auto cursor = features->Find({});
        cursor->NextFeature()->Delete();
        cursor->Flush();
    }
    EXPECT_EQ(features->FeatureCount(), 2999);
    EXPECT_EQ(features->Find({})->NextFeature()->OID(), 1);
    EXPECT_EQ(fs::file_size(path), 100U + 3000 * 28);
    fs::remove(disk.Path() / "fill");
    ChangeRows(*features, {1});
    EXPECT_EQ(fs::file_size(path), 100U + 2998 * 28);
    EXPECT_EQ(features->Find({})->NextFeature()->OID(), 0);
}

TEST_F(ShapefileEditing, A_full_disk_fails_the_publishing_and_leaves_nothing) {
    const tests::MountedDisk disk("size=64k");
    if (!disk.IsMounted()) GTEST_SKIP() << "no small disk could be mounted: " << disk.WhyNot();
    const auto error = ErrorOf([&] { MakeFixes(disk.Path(), 3000); });
    EXPECT_EQ(error.Number, 61);
    EXPECT_THAT(error.Description, HasSubstr(disk.Path().string()));
    EXPECT_TRUE(NamesIn(disk.Path()).empty());
}

TEST_F(ShapefileEditing, A_published_shapefile_is_opened_when_somebody_asks_for_it) {
    ShapefileWorkspace shapefiles;
    const tests::ScratchFolder folder;
    const auto created = shapefiles.Create(folder.Path(), {"tracks", platform::ShapeType::kPolyline, {}, {}});
    shapefiles.Publish(created);
    shapefiles.Delete(folder.Path(), "tracks");
    EXPECT_EQ(ErrorOf([&] { created->FeatureCount(); }).Number, 53);
}

TEST_F(ShapefileEditing, A_shapefile_that_is_never_published_leaves_nothing) {
    ShapefileWorkspace shapefiles;
    const tests::ScratchFolder folder;
    {
        const auto created = shapefiles.Create(folder.Path(), {"tracks", platform::ShapeType::kPolyline, {}, {}});
        EXPECT_EQ(NamesIn(folder.Path()).size(), 1U);
        EXPECT_TRUE(platform::parse_temporary_name(NamesIn(folder.Path())[0]));
    }
    EXPECT_TRUE(NamesIn(folder.Path()).empty());
}

TEST_F(ShapefileEditing, Folders_that_are_missing_or_read_only_are_told_at_once) {
    ShapefileWorkspace shapefiles;
    const platform::FeatureClassDefinition definition{"a", platform::ShapeType::kPoint, {}, {}};
    EXPECT_EQ(ErrorOf([&] { shapefiles.Create(m_folder / "none", definition); }).Number, 76);
    ::chmod(m_folder.Path().c_str(), 0555);
    EXPECT_EQ(ErrorOf([&] { shapefiles.Create(m_folder.Path(), definition); }).Number, 70);
    ::chmod(m_folder.Path().c_str(), 0755);
}

TEST_F(ShapefileEditing, Non_ascii_folders_and_names_work) {
    const fs::path folder = m_folder / "Bären — ложка";
    fs::create_directory(folder);
    ShapefileWorkspace shapefiles;
    const auto created = shapefiles.Create(folder, {"Fährte_ż", platform::ShapeType::kPoint, {}, {}});
    created->Insert()->Insert(Geometry::OfPoint({1, 2}), {});
    shapefiles.Publish(created);
    const auto found = shapefiles.Open(folder, "Fährte_ż");
    ASSERT_TRUE(found);
    EXPECT_EQ(found->FeatureCount(), 1);
    EXPECT_EQ(dynamic_cast<OgrFeatureClass&>(*found).Name(), "Fährte_ż");
}

TEST_F(ShapefileEditing, Deleting_a_shapefile_takes_all_its_files_and_no_others) {
    for (const char* extension : {".qix", ".prj", ".txt"}) PutBytes(Part(extension), "x");
    PutBytes(m_folder / "fixes.shp.xml", "x");
    PutBytes(m_folder / "fixes2.dbf", "x");
    ShapefileWorkspace().Delete(m_folder.Path(), "fixes");
    EXPECT_THAT(NamesIn(m_folder.Path()), ElementsAre("fixes.txt", "fixes2.dbf"));
}

}  // namespace
}  // namespace wxl::files
