#include "platform/runtime_error.h"
#include "tests/unit/utilities/utilities_rig.h"

#include <algorithm>

namespace wxl::utilities {
namespace {

using platform::ShapeType;
using tests::UtilitiesRig;

using Names = std::vector<std::string>;

std::int32_t fault_of(const std::function<void()>& action) {
    try {
        action();
    } catch (const platform::RuntimeError& error) {
        return error.Number;
    }
    return 0;
}

std::shared_ptr<platform::IFeatureClass> create(UtilitiesRig& rig, const std::string& name, bool overwrite) {
    return rig.Module->CreateOutputShapefile("/data", name, ShapeType::kPolyline, false, false, std::nullopt,
                                             overwrite);
}

/// Records the sizes it is asked with.
class ScriptedTempPath final : public platform::ITempPath {
public:
    explicit ScriptedTempPath(std::string path) : Path(std::move(path)) {}
    std::size_t GetTempPathA(std::size_t size, char* buffer) const override {
        Sizes.push_back(size);
        if (Path.size() >= size) return Path.size() + 1;
        std::copy(Path.begin(), Path.end(), buffer);
        return Path.size();
    }
    std::string Path;
    mutable std::vector<std::size_t> Sizes;
};

TEST(GetTempFolder, Loses_its_trailing_separator) {
    UtilitiesRig rig;
    rig.TempPath.Path = "C:\\Users\\me\\Temp\\";
    EXPECT_EQ(rig.Module->GetTempFolder(), "C:\\Users\\me\\Temp");
    rig.TempPath.Path = "C:\\Temp\\\\";
    EXPECT_EQ(rig.Module->GetTempFolder(), "C:\\Temp\\");
    rig.TempPath.Path = "/tmp/";
    EXPECT_EQ(rig.Module->GetTempFolder(), "/tmp");
    rig.TempPath.Path = "/var/tmp";
    EXPECT_EQ(rig.Module->GetTempFolder(), "/var/tmp");
    rig.TempPath.Path = "/";
    EXPECT_EQ(rig.Module->GetTempFolder(), "/");
}

TEST(GetTempFolder, Asks_again_with_a_longer_buffer) {
    UtilitiesRig rig;
    ScriptedTempPath path("D:\\" + std::string(700, 't') + "\\");
    rig.Services.TempPath = &path;
    Utilities module(rig.Services);
    EXPECT_EQ(module.GetTempFolder(), "D:\\" + std::string(700, 't'));
    // 704 characters and the end mark are reported as 705.
    EXPECT_EQ(path.Sizes, (std::vector<std::size_t>{512, 706}));
}

TEST(GetTempFolder, Asks_once_when_the_path_fits) {
    UtilitiesRig rig;
    ScriptedTempPath path(std::string(511, 't'));
    rig.Services.TempPath = &path;
    Utilities module(rig.Services);
    EXPECT_EQ(module.GetTempFolder(), std::string(511, 't'));
    EXPECT_EQ(path.Sizes, (std::vector<std::size_t>{512}));
}

/// Fills its buffer to the last character and reports just that many.
class FullTempPath final : public platform::ITempPath {
public:
    std::size_t GetTempPathA(std::size_t size, char* buffer) const override {
        ++Calls;
        std::fill_n(buffer, size, 't');
        return size;
    }
    mutable int Calls = 0;
};

TEST(GetTempFolder, Keeps_a_path_that_fills_the_buffer) {
    UtilitiesRig rig;
    FullTempPath path;
    rig.Services.TempPath = &path;
    Utilities module(rig.Services);
    EXPECT_EQ(module.GetTempFolder(), std::string(512, 't'));
    EXPECT_EQ(path.Calls, 1);
}

TEST(GetTempFolder, Falls_back_in_a_fixed_order) {
    UtilitiesRig rig;
    EXPECT_EQ(rig.Module->GetTempFolder(), "c:\\");
    rig.Disk->AddFolder("c:\\tmp");
    EXPECT_EQ(rig.Module->GetTempFolder(), "c:\\tmp");
    rig.Disk->AddFolder("c:\\temp");
    EXPECT_EQ(rig.Module->GetTempFolder(), "c:\\temp");
}

TEST(CreateOutputShapefile, Makes_a_class_that_waits_to_be_published) {
    UtilitiesRig rig;
    const platform::SpatialReference reference{"UTM", "WKT", "metre", 1.0, false};
    const auto made =
        rig.Module->CreateOutputShapefile("/data", "ELK_line", ShapeType::kPolyline, false, false, reference, false);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->Shape(), ShapeType::kPolyline);
    EXPECT_EQ(made->Reference(), reference);
    EXPECT_TRUE(rig.Files.List("/data").empty());
    rig.Shapefiles.Publish(made);
    EXPECT_TRUE(rig.Files.FileExists("/data/ELK_line.shp"));
}

TEST(CreateOutputShapefile, Without_a_reference_the_coordinate_system_is_unknown) {
    UtilitiesRig rig;
    EXPECT_EQ(create(rig, "a", false)->Reference(), platform::SpatialReference());
}

TEST(CreateOutputShapefile, Never_replaces_without_being_asked) {
    UtilitiesRig rig;
    rig.Disk->AddFile("/data/ELK.shp", "old");
    EXPECT_EQ(create(rig, "ELK", false), nullptr);
    ASSERT_EQ(rig.Messages.Boxes().size(), 1U);
    EXPECT_EQ(rig.Messages.Last().Text, "ERROR: file already exists. Cannot create output file.");
    EXPECT_EQ(rig.Messages.Last().Title, "File Error");
    EXPECT_EQ(rig.Messages.Last().Sign, platform::Icon::kCritical);
    EXPECT_EQ(rig.Disk->Bytes("/data/ELK.shp"), "old");
}

TEST(CreateOutputShapefile, Asked_to_overwrite_it_deletes_every_sibling_whatever_its_extension) {
    UtilitiesRig rig;
    for (const char* file : {"ELK.shp", "ELK.dbf", "ELK.shp.xml", "ELK.txt", "ELK.", "ELK1.shp", "ELK_b1.dbf", "ELK",
                             "elk.shp", "xELK.shp"})
        rig.Disk->AddFile(std::string("/data/") + file, "old");
    rig.Disk->SetReadOnly("/data/ELK.dbf");
    EXPECT_NE(create(rig, "ELK", true), nullptr);
    EXPECT_EQ(rig.Files.List("/data"), (Names{"ELK", "ELK1.shp", "ELK_b1.dbf", "elk.shp", "xELK.shp"}));
    EXPECT_TRUE(rig.Messages.Boxes().empty());
}

TEST(CreateOutputShapefile, Siblings_without_a_shp_stay) {
    UtilitiesRig rig;
    rig.Disk->AddFile("/data/ELK.txt", "notes");
    EXPECT_NE(create(rig, "ELK", true), nullptr);
    EXPECT_EQ(rig.Disk->Bytes("/data/ELK.txt"), "notes");
}

TEST(CreateOutputShapefile, Names_with_wildcards_or_separators_are_refused_before_anything_is_deleted) {
    for (const char* name : {"*", "EL?", "E[L]K", "../ELK", "sub/ELK", "sub\\ELK", ""}) {
        UtilitiesRig rig;
        rig.Disk->AddFile("/data/ELK.shp", "old");
        rig.Disk->AddFile(std::string("/data/x") + ".shp", "old");
        EXPECT_EQ(fault_of([&] { create(rig, name, true); }), 5) << name;
        EXPECT_EQ(rig.Files.List("/data"), (Names{"ELK.shp", "x.shp"})) << name;
    }
}

TEST(CreateOutputShapefile, Z_and_m_values_are_faults_of_the_caller) {
    UtilitiesRig rig;
    rig.Disk->AddFile("/data/ELK.shp", "old");
    const auto make = [&](const char* name, bool z, bool m, bool overwrite) {
        return rig.Module->CreateOutputShapefile("/data", name, ShapeType::kPolygon, z, m, std::nullopt, overwrite);
    };
    EXPECT_EQ(fault_of([&] { make("a", true, false, false); }), 5);
    EXPECT_EQ(fault_of([&] { make("a", false, true, false); }), 5);
    EXPECT_EQ(fault_of([&] { make("ELK", true, true, true); }), 5);
    EXPECT_EQ(rig.Disk->Bytes("/data/ELK.shp"), "old") << "refused before anything is deleted";
    EXPECT_TRUE(rig.Messages.Boxes().empty());
    EXPECT_EQ(make("ELK", true, true, false), nullptr);
    EXPECT_EQ(rig.Messages.Last().Title, "File Error") << "whether the file exists is asked first";
}

TEST(CreateOutputShapefile, A_folder_that_does_not_open_gives_none) {
    UtilitiesRig rig;
    EXPECT_EQ(
        rig.Module->CreateOutputShapefile("/nowhere", "a", ShapeType::kPolygon, false, false, std::nullopt, false),
        nullptr);
    EXPECT_TRUE(rig.Messages.Boxes().empty());
}

TEST(CreateShapeFields, Are_an_object_identifier_and_a_geometry) {
    UtilitiesRig rig;
    const ShapeFields fields = rig.Module->CreateShapeFields(ShapeType::kPolygon, false, false, {});
    ASSERT_EQ(fields.Fields.size(), 2U);
    EXPECT_EQ(fields.Fields[0].Name, "OID");
    EXPECT_EQ(fields.Fields[0].Type, platform::FieldType::kObjectId);
    EXPECT_EQ(fields.Fields[1].Name, "Shape");
    EXPECT_EQ(fields.Fields[1].Type, platform::FieldType::kGeometry);
    EXPECT_EQ(fields.Shape, ShapeType::kPolygon);
}

TEST(DeleteFile, Deletes_only_the_first_kind_that_it_finds) {
    UtilitiesRig rig;
    rig.AddShapefile("ELK");
    rig.AddRaster("ELK");
    rig.Tins.Add("/data", "ELK");

    EXPECT_TRUE(rig.Module->DeleteFile("/data", "ELK"));
    EXPECT_EQ(rig.Module->DeleteFileTrace(), "DeleteFile\rDetected shapefile.");
    EXPECT_EQ(rig.Shapefiles.Open("/data", "ELK"), nullptr);
    EXPECT_TRUE(rig.Rasters.Exists("/data", "ELK"));

    EXPECT_TRUE(rig.Module->DeleteFile("/data", "ELK"));
    EXPECT_EQ(rig.Module->DeleteFileTrace(), "DeleteFile\rDetected raster.");
    EXPECT_FALSE(rig.Rasters.Exists("/data", "ELK"));
    EXPECT_TRUE(rig.Tins.Exists("/data", "ELK"));

    EXPECT_TRUE(rig.Module->DeleteFile("/data", "ELK"));
    EXPECT_EQ(rig.Module->DeleteFileTrace(), "DeleteFile\rDetected tin.");
    EXPECT_FALSE(rig.Tins.Exists("/data", "ELK"));

    rig.Disk->AddFile("/data/ELK", "text");
    EXPECT_TRUE(rig.Module->DeleteFile("/data", "ELK"));
    EXPECT_EQ(rig.Module->DeleteFileTrace(), "DeleteFile\rDetected regular file.");
    EXPECT_FALSE(rig.Files.FileExists("/data/ELK"));

    EXPECT_FALSE(rig.Module->DeleteFile("/data", "ELK"));
    EXPECT_EQ(rig.Module->DeleteFileTrace(), "DeleteFile");
    EXPECT_TRUE(rig.Messages.Boxes().empty());
}

TEST(DeleteFile, Finds_nothing_in_a_missing_folder) {
    UtilitiesRig rig;
    EXPECT_FALSE(rig.Module->DeleteFile("/nowhere", "ELK"));
    EXPECT_TRUE(rig.Messages.Boxes().empty());
}

TEST(DeleteFile, A_read_only_plain_file_is_not_forced) {
    UtilitiesRig rig;
    rig.Disk->AddFile("/data/notes.txt", "text");
    rig.Disk->SetReadOnly("/data/notes.txt");
    EXPECT_FALSE(rig.Module->DeleteFile("/data", "notes.txt"));
    tests::expect_error_box(rig, "DeleteFile: 70\r");
    EXPECT_TRUE(rig.Messages.Last().Text.ends_with("\rDeleteFile\rDetected regular file."));
    EXPECT_TRUE(rig.Files.FileExists("/data/notes.txt"));
}

TEST(DeleteFile, Names_that_lead_elsewhere_are_refused) {
    UtilitiesRig rig;
    rig.Disk->AddFile("/precious", "text");
    EXPECT_FALSE(rig.Module->DeleteFile("/data", "../precious"));
    tests::expect_error_box(rig, "DeleteFile: 5\r");
    EXPECT_TRUE(rig.Files.FileExists("/precious"));
}

TEST(OpenDatasets, Return_none_for_what_is_not_there) {
    UtilitiesRig rig;
    EXPECT_EQ(rig.Module->OpenShapefile("/data", "ELK"), nullptr);
    EXPECT_EQ(rig.Module->OpenRasterDataset("/data", "ELK"), nullptr);
    EXPECT_EQ(rig.Module->OpenTin("/data", "ELK"), std::nullopt);
    EXPECT_TRUE(rig.Messages.Boxes().empty());
}

TEST(OpenDatasets, Return_what_is_there) {
    UtilitiesRig rig;
    const auto features = rig.AddShapefile("ELK");
    rig.AddRaster("DEER");
    rig.Tins.Add("/data", "HILL");
    EXPECT_EQ(rig.Module->OpenShapefile("/data", "ELK"), features);
    ASSERT_NE(rig.Module->OpenRasterDataset("/data", "DEER"), nullptr);
    EXPECT_EQ(rig.Module->OpenTin("/data", "HILL"), std::filesystem::path("/data/HILL"));
}

/// Stores of which every look-up fails.
class BrokenShapefiles final : public platform::IShapefileWorkspace {
public:
    std::shared_ptr<platform::IFeatureClass> Create(const std::filesystem::path&,
                                                    const platform::FeatureClassDefinition&) override {
        platform::Raise(platform::error_number::kDeviceIo, "The disk is broken.");
    }
    void Publish(const std::shared_ptr<platform::IFeatureClass>&) override {}
    std::shared_ptr<platform::IFeatureClass> Open(const std::filesystem::path&, const std::string&) override {
        platform::Raise(platform::error_number::kDeviceIo, "The disk is broken.");
    }
    void Delete(const std::filesystem::path&, const std::string&) override {}
};

class BrokenTins final : public platform::ITinWorkspace {
public:
    bool Exists(const std::filesystem::path&, const std::string&) const override {
        platform::Raise(platform::error_number::kDeviceIo, "The disk is broken.");
    }
    void Delete(const std::filesystem::path&, const std::string&) override {}
};

TEST(OpenDatasets, A_store_that_fails_is_reported) {
    UtilitiesRig rig;
    BrokenShapefiles shapefiles;
    BrokenTins tins;
    rig.Services.Shapefiles = &shapefiles;
    rig.Services.Tins = &tins;
    Utilities module(rig.Services);
    EXPECT_EQ(module.OpenShapefile("/data", "ELK"), nullptr);
    EXPECT_EQ(module.OpenTin("/data", "ELK"), std::nullopt);
    ASSERT_EQ(rig.Messages.Boxes().size(), 2U);
    EXPECT_EQ(rig.Messages.Boxes()[0].Text, "OpenShapefile: 57\rThe disk is broken.");
    EXPECT_EQ(rig.Messages.Boxes()[1].Text, "OpenTin: 57\rThe disk is broken.");
    for (const auto& box : rig.Messages.Boxes()) EXPECT_EQ(box.Title, "Error");
    EXPECT_EQ(fault_of([&] {
                  module.CreateOutputShapefile("/data", "a", ShapeType::kPolygon, false, false, std::nullopt, false);
              }),
              57);
}

TEST(OpenDatasets, A_raster_workspace_is_an_existing_folder) {
    UtilitiesRig rig;
    EXPECT_EQ(rig.Module->OpenRasterWorkspace("/data").Folder, "/data");
    EXPECT_EQ(fault_of([&] { rig.Module->OpenRasterWorkspace("/nowhere"); }), 76);
    EXPECT_EQ(rig.Module->OpenRasterDataset("/nowhere", "ELK"), nullptr);
    tests::expect_error_box(rig, "OpenRasterDataset: 76\r");
}

}  // namespace
}  // namespace wxl::utilities
