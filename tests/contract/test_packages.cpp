// One suite for the packages of every adapter.

#include "adapters/disk/disk_file_system.h"
#include "adapters/gdal/gdal_support.h"
#include "adapters/gdal/sqlite_fence.h"
#include "adapters/memory/memory_file_system.h"
#include "adapters/memory/memory_packages.h"
#include "adapters/ogr/geo_packages.h"
#include "platform/runtime_error.h"
#include "tests/support/scratch_folder.h"

#include <array>
#include <filesystem>
#include <gmock/gmock.h>
#include <ogrsf_frmts.h>
#include <sqlite3.h>
#include <string>
#include <sys/stat.h>

namespace wxl::tests {
namespace {

namespace fs = std::filesystem;
using platform::FieldType;
using platform::FieldValue;
using platform::Geometry;
using platform::Package;
using platform::ShapeType;
using testing::ElementsAre;
using testing::IsEmpty;

using Rows = std::vector<std::string>;

/// An adapter, and what another reader finds in its packages: "x y|cell|cell" for every row.
class PackageStage {
public:
    virtual ~PackageStage() = default;
    virtual platform::IFileSystem& Files() = 0;
    virtual platform::IPackages& Packages() = 0;
    virtual std::filesystem::path Folder() const = 0;
    virtual Rows Read(const Package& package, std::size_t table) = 0;
};

std::string place_text(double x, double y) {
    return platform::ValueText(x) + " " + platform::ValueText(y);
}

class MemoryStage final : public PackageStage {
public:
    MemoryStage() { m_files.Disk().AddFolder("/data"); }

    platform::IFileSystem& Files() override { return m_files; }
    platform::IPackages& Packages() override { return m_packages; }
    std::filesystem::path Folder() const override { return "/data"; }
    Rows Read(const Package& package, std::size_t table) override {
        Rows rows;
        for (const auto& row : m_packages.Rows(package.File, package.Tables[table].Name)) {
            rows.push_back(row.Shape.IsNull() ? "" : place_text(row.Shape.Location.X, row.Shape.Location.Y));
            for (const FieldValue& value : row.Values) rows.back() += "|" + platform::ValueText(value);
        }
        return rows;
    }

private:
    memory::MemoryFileSystem m_files;
    memory::MemoryPackages m_packages{m_files};
};

class FilesStage final : public PackageStage {
public:
    platform::IFileSystem& Files() override { return m_files; }
    platform::IPackages& Packages() override { return m_packages; }
    std::filesystem::path Folder() const override { return m_scratch.Path(); }
    Rows Read(const Package& package, std::size_t table) override {
        Rows rows;
        const files::GdalErrors quiet;
        const files::GdalDatasetPtr dataset(GDALDataset::Open(package.File.c_str(), GDAL_OF_VECTOR));
        if (!dataset) return rows;
        OGRLayer* layer = dataset->GetLayerByName(package.Tables[table].Name.c_str());
        if (layer == nullptr) return rows;
        for (const auto& row : *layer) {
            const OGRGeometry* shape = row->GetGeometryRef();
            rows.push_back(shape == nullptr ? "" : place_text(shape->toPoint()->getX(), shape->toPoint()->getY()));
            for (int field = 0; field < row->GetFieldCount(); ++field)
                rows.back() +=
                    std::string("|") + (row->IsFieldSetAndNotNull(field) ? row->GetFieldAsString(field) : "");
        }
        return rows;
    }

private:
    ScratchFolder m_scratch;
    files::DiskFileSystem m_files;
    files::GeoPackages m_packages{m_files};
};

struct PackageStageChoice {
    std::string Name;
    std::unique_ptr<PackageStage> (*Make)();
};

template <class AnyStage>
std::unique_ptr<PackageStage> made() {
    return std::make_unique<AnyStage>();
}

class PackageContract : public testing::TestWithParam<PackageStageChoice> {
protected:
    void SetUp() override {
        files::RegisterGdal();
        Wanted.File = Stage->Folder() / "ranges.gpkg";
        Wanted.Reference = files::ReferenceFromText("EPSG:32633");
        Wanted.Tables = {{"fixes", ShapeType::kPoint, {{"animal", FieldType::kText}, {"n", FieldType::kInteger}}, 0},
                         {"summary", ShapeType::kNull, {{"animal", FieldType::kText}, {"h", FieldType::kDouble}}, 0}};
        Wanted.Changed = "2026-11-22T09:05:00.000Z";
    }

    static void PutFix(platform::IPackageWriter& writer, double x, const std::string& animal, FieldValue n) {
        const std::array<FieldValue, 2> values = {animal, std::move(n)};
        writer.Put(0, Geometry::OfPoint({x, 6000000.5}), values);
    }

    /// A package with a fix of Arn and two of Zoe.
    void MakeThree() {
        const auto writer = Stage->Packages().Open(Wanted);
        ASSERT_NE(writer, nullptr);
        PutFix(*writer, 500000.25, "Arn", std::int64_t{1});
        PutFix(*writer, 500001.0, "Zoe", std::int64_t{2});
        PutFix(*writer, 500002.0, "Zoe", FieldValue{});
        const std::array<FieldValue, 2> summary = {std::string("Zoe"), 12.5};
        writer->Put(1, {}, summary);
        writer->Publish();
    }

    std::unique_ptr<PackageStage> Stage = GetParam().Make();
    Package Wanted;
};

// Rows may go in many at once: what a row lacks must not be that of the row before.
TEST_P(PackageContract, Any_number_of_rows_appears) {
    for (const std::size_t count : {15U, 16U, 17U, 32U, 33U, 101U}) {
        Wanted.File = Stage->Folder() / (std::to_string(count) + ".gpkg");
        Rows expected;
        const auto writer = Stage->Packages().Open(Wanted);
        for (std::size_t i = 0; i < count; ++i) {
            const double x = 500000.0 + static_cast<double>(i);
            const bool lacks = i % 3 == 1;
            const std::string animal = "animal " + std::string(i % 7, 'x');
            PutFix(*writer, x, animal, lacks ? FieldValue() : FieldValue(static_cast<std::int64_t>(i)));
            expected.push_back(place_text(x, 6000000.5) + "|" + animal + "|" + (lacks ? "" : std::to_string(i)));
        }
        writer->Publish();
        EXPECT_EQ(Stage->Read(Wanted, 0), expected) << count;
    }
}

TEST_P(PackageContract, Rows_appear_in_their_order_with_what_is_missing) {
    MakeThree();
    EXPECT_THAT(Stage->Read(Wanted, 0),
                ElementsAre("500000.25 6000000.5|Arn|1", "500001 6000000.5|Zoe|2", "500002 6000000.5|Zoe|"));
    EXPECT_THAT(Stage->Read(Wanted, 1), ElementsAre("|Zoe|12.5"));
}

TEST_P(PackageContract, Nothing_appears_before_it_is_published) {
    {
        const auto writer = Stage->Packages().Open(Wanted);
        PutFix(*writer, 500000.0, "Arn", std::int64_t{1});
    }
    EXPECT_FALSE(Stage->Files().FileExists(Wanted.File));
    EXPECT_THAT(Stage->Read(Wanted, 0), IsEmpty());
}

TEST_P(PackageContract, Rows_that_are_not_published_leave_the_earlier_ones) {
    MakeThree();
    {
        const auto writer = Stage->Packages().Open(Wanted);
        writer->Drop(0, "Zoe");
        PutFix(*writer, 1.0, "Zoe", std::int64_t{9});
    }
    EXPECT_EQ(Stage->Read(Wanted, 0).size(), 3U);
}

TEST_P(PackageContract, Rows_of_a_key_are_replaced_and_the_others_kept) {
    MakeThree();
    const auto writer = Stage->Packages().Open(Wanted);
    ASSERT_NE(writer, nullptr);
    writer->Drop(0, "Zoe");
    PutFix(*writer, 500003.0, "Zoe", std::int64_t{3});
    writer->Publish();
    EXPECT_THAT(Stage->Read(Wanted, 0), ElementsAre("500000.25 6000000.5|Arn|1", "500003 6000000.5|Zoe|3"));
    EXPECT_EQ(Stage->Read(Wanted, 1).size(), 1U);
}

TEST_P(PackageContract, A_file_that_is_something_else_stays) {
    const auto file = Stage->Files().OpenForWriting(Wanted.File, platform::WriteMode::kReplace);
    file->Write("my notes");
    file->Close();
    EXPECT_EQ(Stage->Packages().Open(Wanted), nullptr);
    EXPECT_EQ(Stage->Files().ReadFile(Wanted.File, 100), "my notes");
}

TEST_P(PackageContract, A_package_of_other_fields_or_another_system_stays) {
    MakeThree();
    Package other = Wanted;
    other.Tables[0].Fields[1].Type = FieldType::kDouble;
    EXPECT_EQ(Stage->Packages().Open(other), nullptr);
    other = Wanted;
    other.Reference = files::ReferenceFromText("EPSG:32634");
    EXPECT_EQ(Stage->Packages().Open(other), nullptr);
    EXPECT_EQ(Stage->Read(Wanted, 0).size(), 3U);
}

/// Another run's table for the package of MakeThree.
Package with_pairs(const Package& wanted) {
    Package pairs = wanted;
    pairs.Tables = {
        {"pairs", ShapeType::kPoint, {{"animal", FieldType::kText}, {"n", FieldType::kInteger}}, 0, "<qgis/>"}};
    pairs.Others = wanted.Tables;
    return pairs;
}

TEST_P(PackageContract, A_table_that_is_missing_joins_those_that_stand) {
    MakeThree();
    const Package pairs = with_pairs(Wanted);
    EXPECT_FALSE(Stage->Packages().HasRows(pairs.File, "pairs"));
    const auto writer = Stage->Packages().Open(pairs);
    ASSERT_NE(writer, nullptr);
    PutFix(*writer, 500004.0, "Arn", std::int64_t{4});
    writer->Publish();
    EXPECT_THAT(Stage->Read(pairs, 0), ElementsAre("500004 6000000.5|Arn|4"));
    EXPECT_EQ(Stage->Read(Wanted, 0).size(), 3U);
    EXPECT_EQ(Stage->Read(Wanted, 1).size(), 1U);
    EXPECT_TRUE(Stage->Packages().HasRows(pairs.File, "pairs"));
}

TEST_P(PackageContract, The_first_table_is_joined_by_those_of_others) {
    const Package pairs = with_pairs(Wanted);
    const auto writer = Stage->Packages().Open(pairs);
    ASSERT_NE(writer, nullptr);
    PutFix(*writer, 500004.0, "Arn", std::int64_t{4});
    writer->Publish();
    Wanted.Others = pairs.Tables;
    MakeThree();
    EXPECT_EQ(Stage->Read(Wanted, 0).size(), 3U);
    EXPECT_EQ(Stage->Read(pairs, 0).size(), 1U);
}

TEST_P(PackageContract, Cleared_rows_make_room_for_new_ones) {
    MakeThree();
    const auto writer = Stage->Packages().Open(Wanted);
    ASSERT_NE(writer, nullptr);
    writer->Clear(0);
    PutFix(*writer, 500005.0, "Zoe", std::int64_t{5});
    writer->Publish();
    EXPECT_THAT(Stage->Read(Wanted, 0), ElementsAre("500005 6000000.5|Zoe|5"));
    EXPECT_EQ(Stage->Read(Wanted, 1).size(), 1U);
}

TEST_P(PackageContract, A_package_with_none_of_the_tables_stays) {
    MakeThree();
    Package other = with_pairs(Wanted);
    other.Others.clear();
    EXPECT_EQ(Stage->Packages().Open(other), nullptr);
    other = with_pairs(Wanted);
    for (platform::PackageTable& table : other.Others) table.Fields.pop_back();
    EXPECT_EQ(Stage->Packages().Open(other), nullptr);
    EXPECT_FALSE(Stage->Packages().HasRows(Wanted.File, "pairs"));
    EXPECT_FALSE(Stage->Packages().HasRows(Stage->Folder() / "no.gpkg", "pairs"));
}

INSTANTIATE_TEST_SUITE_P(Adapters, PackageContract,
                         testing::Values(PackageStageChoice{"Memory", made<MemoryStage>},
                                         PackageStageChoice{"Files", made<FilesStage>}),
                         [](const auto& choice) { return choice.param.Name; });

TEST(GeoPackages, Pipes_and_links_in_their_place_are_refused_at_once) {
    ScratchFolder folder;
    files::DiskFileSystem disk;
    files::GeoPackages packages(disk);
    const auto refusal_of = [&](const std::string& name) -> std::string {
        try {
            packages.Open({folder / name, {}, {{"fixes", ShapeType::kPoint, {{"animal", FieldType::kText}}, 0}}, ""});
        } catch (const platform::RuntimeError& error) {
            return error.Description;
        }
        return "";
    };
    ASSERT_EQ(::mkfifo((folder / "pipe.gpkg").c_str(), 0600), 0);
    std::filesystem::create_symlink(folder / "elsewhere.gpkg", folder / "link.gpkg");
    EXPECT_EQ(refusal_of("pipe.gpkg"),
              (folder / "pipe.gpkg").string() + " is a pipe or a device and no file: choose another name");
    EXPECT_EQ(refusal_of("link.gpkg"),
              (folder / "link.gpkg").string() + " is a link, and nothing is written through links: delete it");
}

/// "fixes|3, summary|1"
std::string told_counts(const fs::path& file) {
    sqlite3* opened = nullptr;
    EXPECT_EQ(sqlite3_open(file.c_str(), &opened), SQLITE_OK);
    const files::SqlitePtr database(opened);
    std::string text;
    const auto add = [](void* all, int, char** cells, char**) {
        *static_cast<std::string*>(all) += std::string(cells[0]) + "|" + cells[1] + " ";
        return 0;
    };
    EXPECT_EQ(
        sqlite3_exec(opened, "SELECT table_name, feature_count FROM gpkg_ogr_contents ORDER BY 1", add, &text, nullptr),
        SQLITE_OK);
    return text;
}

// Where a package does not tell them, QGIS takes the number of all rows for that of its filtered ones.
TEST(GeoPackages, Numbers_of_rows_stand_in_it_and_follow_every_change) {
    ScratchFolder folder;
    files::DiskFileSystem disk;
    files::GeoPackages packages(disk);
    Package wanted{folder / "ranges.gpkg",
                   files::ReferenceFromText("EPSG:32633"),
                   {{"fixes", ShapeType::kPoint, {{"animal", FieldType::kText}}, 0}},
                   "2026-11-22T09:05:00.000Z"};
    const auto put = [&](const std::string& animal, int rows) {
        const auto writer = packages.Open(wanted);
        writer->Drop(0, animal);
        const std::array<FieldValue, 1> values = {animal};
        for (int i = 0; i < rows; ++i) writer->Put(0, Geometry::OfPoint({500000.0 + i, 6000000.0}), values);
        writer->Publish();
    };
    put("a", 40);
    EXPECT_EQ(told_counts(wanted.File), "fixes|40 ");
    put("b", 2);
    put("a", 3);
    EXPECT_EQ(told_counts(wanted.File), "fixes|5 ");
    wanted.Tables.push_back({"summary", ShapeType::kNull, {{"animal", FieldType::kText}}, 0});
    put("b", 1);
    EXPECT_EQ(told_counts(wanted.File), "fixes|4 summary|0 ");
    // Whoever edits it keeps them.
    const files::GdalDatasetPtr dataset(GDALDataset::Open(wanted.File.c_str(), GDAL_OF_VECTOR | GDAL_OF_UPDATE));
    ASSERT_TRUE(dataset);
    dataset->ReleaseResultSet(
        dataset->ExecuteSQL("INSERT INTO summary (animal) VALUES ('x'), ('y')", nullptr, nullptr));
    dataset->ReleaseResultSet(dataset->ExecuteSQL("DELETE FROM fixes WHERE animal = 'a'", nullptr, nullptr));
    EXPECT_EQ(told_counts(wanted.File), "fixes|1 summary|2 ");
}

TEST(GeoPackages, One_that_another_program_has_open_keeps_the_change_that_is_in_its_log) {
    ScratchFolder folder;
    files::DiskFileSystem disk;
    files::GeoPackages packages(disk);
    const Package wanted{folder / "ranges.gpkg",
                         files::ReferenceFromText("EPSG:32633"),
                         {{"fixes", ShapeType::kPoint, {{"animal", FieldType::kText}}, 0}},
                         "2026-11-22T09:05:00.000Z"};
    packages.Open(wanted)->Publish();
    const auto writer = packages.Open(wanted);
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(wanted.File.c_str(), &other), SQLITE_OK);
    const files::SqlitePtr database(other);
    const char* const change = "PRAGMA journal_mode = WAL; CREATE TABLE mine (a); INSERT INTO mine VALUES (42)";
    ASSERT_EQ(sqlite3_exec(other, change, nullptr, nullptr, nullptr), SQLITE_OK);
    const auto expect_refused = [&](const auto& action) {
        try {
            action();
            ADD_FAILURE() << "it was replaced";
        } catch (const platform::RuntimeError& error) {
            EXPECT_EQ(error.Number, platform::error_number::kPermissionDenied);
            EXPECT_EQ(error.Description,
                      wanted.File.string() + " is open in another program, or a change of it was cut short (" +
                          wanted.File.string() +
                          "-wal stands beside it): close it there, or open it in QGIS and save it, and do this again");
        }
    };
    expect_refused([&] { packages.Open(wanted); });
    expect_refused([&] { writer->Publish(); });
    sqlite3_stmt* rows = nullptr;
    ASSERT_EQ(sqlite3_prepare_v2(other, "SELECT a FROM mine", -1, &rows, nullptr), SQLITE_OK);
    EXPECT_EQ(sqlite3_step(rows), SQLITE_ROW);
    EXPECT_EQ(sqlite3_column_int(rows, 0), 42);
    sqlite3_finalize(rows);
    EXPECT_EQ(sqlite3_exec(other, "PRAGMA integrity_check", nullptr, nullptr, nullptr), SQLITE_OK);
}

}  // namespace
}  // namespace wxl::tests
