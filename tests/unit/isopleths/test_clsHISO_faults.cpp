#include "isopleths/clsHISO.h"
#include "platform/runtime_error.h"
#include "tests/unit/isopleths/isopleth_rig.h"

#include <gtest/gtest.h>

namespace wxl::isopleths {
namespace {

using tests::IsoplethRig;
using tests::Surface;

Surface bump() {
    return tests::surface_of({0, 0, 10, 41, 41}, [](double column, double row) {
        const double x = column - 20;
        const double y = row - 20;
        return std::exp(-0.5 * (x * x + y * y) / 25.0);
    });
}

Surface flat(double value) {
    return tests::surface_of({0, 0, 10, 5, 4}, [=](double, double) { return value; });
}

/// The one box of a failed run, and nothing published.
void expect_failure(const IsoplethRig& rig, const clsHISO& hiso, const std::string& number) {
    EXPECT_EQ(hiso.GetErrorStatus(), 3001);
    ASSERT_FALSE(rig.Messages.Boxes().empty());
    const platform::MessageBox box = rig.Messages.Last();
    EXPECT_TRUE(box.Text.starts_with("CreateIsopleths 3001\r" + number + "\r")) << box.Text;
    EXPECT_GT(box.Text.size(), ("CreateIsopleths 3001\r" + number + "\r").size());
    EXPECT_EQ(box.Title, "Error");
    EXPECT_EQ(box.Sign, platform::Icon::kCritical);
    EXPECT_TRUE(rig.Shapefiles.Published().empty());
    EXPECT_EQ(rig.Shapefiles.Unpublished(), 0U);
    EXPECT_EQ(hiso.GetLinesFeatureClass(), nullptr);
    EXPECT_EQ(hiso.GetPolysFeatureClass(), nullptr);
    EXPECT_EQ(hiso.GetDonutsFeatureClass(), nullptr);
}

TEST(clsHISO_faults, Equal_cells) {
    IsoplethRig rig;
    clsHISO hiso = rig.Object(flat(7), {50});
    hiso.CreateIsopleths();
    expect_failure(rig, hiso, "6");
    EXPECT_EQ(rig.Messages.Boxes().size(), 1U);
    EXPECT_EQ(rig.Messages.Last().Text, "CreateIsopleths 3001\r6\rOverflow");
    EXPECT_EQ(hiso.GetMaxEdgeValue(), 7.0);
}

TEST(clsHISO_faults, More_than_hundred_percent) {
    IsoplethRig rig;
    clsHISO hiso = rig.Object(bump(), {50, 101});
    hiso.CreateIsopleths();
    expect_failure(rig, hiso, "9");
}

TEST(clsHISO_faults, A_list_that_starts_at_1) {
    IsoplethRig rig;
    clsHISO hiso = rig.Object(bump(), {});
    hiso.SetIsoplethBoundaries({50, 95}, 1);
    hiso.CreateIsopleths();
    expect_failure(rig, hiso, "9");
}

TEST(clsHISO_faults, An_empty_list) {
    IsoplethRig rig;
    clsHISO hiso = rig.Object(bump(), {});
    hiso.CreateIsopleths();
    expect_failure(rig, hiso, "9");
}

TEST(clsHISO_faults, Too_many_cells_in_the_top_bin) {
    IsoplethRig rig;
    const Surface plateau =
        tests::surface_of({0, 0, 1, 200, 200}, [](double column, double) { return column < 80 ? 0.0 : 1.0; });
    clsHISO hiso = rig.Object(plateau, {50});
    hiso.CreateIsopleths();
    expect_failure(rig, hiso, "6");
    EXPECT_EQ(hiso.GetMaxEdgeValue(), 1.0);
}

// With a few cells of -3.4e38 all others share the top bin; the run goes through and draws around the missing cells.
TEST(clsHISO_faults, Missing_data_cells_are_values_like_others) {
    IsoplethRig rig;
    Surface surface = bump();
    surface.Cells[820] = -std::numeric_limits<float>::max();
    clsHISO hiso = rig.Object(surface, {50});
    hiso.CreateIsopleths();
    EXPECT_EQ(hiso.GetErrorStatus(), 0);
    EXPECT_EQ(hiso.GetStatistics().Minimum, static_cast<double>(-std::numeric_limits<float>::max()));
    EXPECT_TRUE(rig.Messages.Boxes().empty());
}

TEST(clsHISO_faults, A_cell_that_is_not_a_number) {
    IsoplethRig rig;
    Surface surface = bump();
    surface.Cells[820] = std::numeric_limits<float>::quiet_NaN();
    clsHISO hiso = rig.Object(surface, {50});
    hiso.CreateIsopleths();
    EXPECT_EQ(hiso.GetErrorStatus(), 3001);
    EXPECT_TRUE(rig.Shapefiles.Published().empty());
}

TEST(clsHISO_faults, An_existing_shapefile_is_never_replaced) {
    for (const std::string suffix : {"_line", "_poly", "_donut"}) {
        IsoplethRig rig;
        rig.Files.Disk().AddFile("/out/ELK12_iso" + suffix + ".shp", "old");
        clsHISO hiso = rig.Object(bump(), {50, 95});
        hiso.CreateIsopleths();
        expect_failure(rig, hiso, "91");
        ASSERT_EQ(rig.Messages.Boxes().size(), 2U) << suffix;
        const platform::MessageBox& box = rig.Messages.Boxes()[0];
        EXPECT_EQ(box.Text, "ERROR: file already exists. Cannot create output file.");
        EXPECT_EQ(box.Title, "File Error");
        EXPECT_EQ(box.Sign, platform::Icon::kCritical);
        EXPECT_EQ(rig.Files.Disk().Bytes("/out/ELK12_iso" + suffix + ".shp"), "old");
    }
}

TEST(clsHISO_faults, A_missing_folder) {
    IsoplethRig rig;
    clsHISO hiso = rig.Object(bump(), {50});
    hiso.SetOutputFolder("/nowhere");
    hiso.CreateIsopleths();
    expect_failure(rig, hiso, "91");
    EXPECT_EQ(rig.Messages.Boxes().size(), 1U);
}

TEST(clsHISO_faults, A_name_that_leads_elsewhere) {
    for (const char* name : {"../ELK", "a/b", "a*", "ELK?", "a:b"}) {
        IsoplethRig rig;
        clsHISO hiso = rig.Object(bump(), {50});
        hiso.SetOutputName(name);
        hiso.CreateIsopleths();
        expect_failure(rig, hiso, "5");
    }
}

TEST(clsHISO_faults, A_store_that_cannot_create_the_third_output_leaves_none) {
    IsoplethRig rig;
    rig.FailingStore.OnCreate = [](const std::string& name) {
        if (name.ends_with("_donut")) platform::Raise(platform::error_number::kPermissionDenied);
    };
    clsHISO hiso = rig.Object(bump(), {50, 95});
    hiso.CreateIsopleths();
    expect_failure(rig, hiso, "70");
}

TEST(clsHISO_faults, A_fault_while_measuring_is_reported_and_keeps_the_features) {
    IsoplethRig rig;
    rig.FailingStore.OnCreated = [](platform::IFeatureClass& made) {
        dynamic_cast<memory::MemoryFeatureClass&>(made).SetBeforeStore(
            [](std::int64_t) { platform::Raise(platform::error_number::kDiskFull); });
    };
    clsHISO hiso = rig.Object(bump(), {50, 95});
    hiso.CreateIsopleths();
    EXPECT_EQ(hiso.GetErrorStatus(), 0);
    EXPECT_EQ(rig.Messages.Texts(),
              (std::vector<std::string>{"TableAddLength: 61\rDisk full", "TableAddArea: 61\rDisk full",
                                        "TableAddPerim: 61\rDisk full", "TableAddArea: 61\rDisk full",
                                        "TableAddPerim: 61\rDisk full"}));
    ASSERT_NE(rig.Output("_poly"), nullptr);
    EXPECT_EQ(rig.Output("_poly")->FeatureCount(), 2);
    EXPECT_EQ(rig.Column(*rig.Output("_poly"), "PERCENT"), (std::vector<double>{95, 50}));
}

TEST(clsHISO_faults, A_failing_publication_keeps_the_other_outputs) {
    const std::vector<std::string> suffixes = {"_line", "_poly", "_donut"};
    for (int failing = 1; failing <= 3; ++failing) {
        IsoplethRig rig;
        int calls = 0;
        rig.FailingStore.OnPublish = [&] {
            if (++calls == failing) platform::Raise(platform::error_number::kDiskFull);
        };
        clsHISO hiso = rig.Object(bump(), {50});
        hiso.CreateIsopleths();
        EXPECT_EQ(calls, 3);
        EXPECT_EQ(hiso.GetErrorStatus(), 3001);
        EXPECT_EQ(rig.Messages.Texts(), (std::vector<std::string>{"CreateIsopleths 3001\r61\rDisk full"}));
        for (int i = 0; i < 3; ++i) {
            const auto output = rig.Output(suffixes[static_cast<std::size_t>(i)]);
            EXPECT_EQ(output != nullptr, i + 1 != failing) << i << " where output " << failing << " fails";
            if (output) {
                EXPECT_EQ(output->FeatureCount(), 1);
            }
        }
        EXPECT_EQ(hiso.GetLinesFeatureClass(), rig.Output("_line"));
        EXPECT_EQ(hiso.GetPolysFeatureClass(), rig.Output("_poly"));
        EXPECT_EQ(hiso.GetDonutsFeatureClass(), rig.Output("_donut"));
        EXPECT_EQ(rig.Shapefiles.Unpublished(), 0U);
    }
}

TEST(clsHISO_faults, Of_several_failing_publications_the_first_is_told) {
    IsoplethRig rig;
    int calls = 0;
    rig.FailingStore.OnPublish = [&] {
        if (++calls > 1)
            platform::Raise(calls == 2 ? platform::error_number::kDiskFull : platform::error_number::kDeviceIo);
    };
    clsHISO hiso = rig.Object(bump(), {50});
    hiso.CreateIsopleths();
    EXPECT_EQ(rig.Messages.Texts(), (std::vector<std::string>{"CreateIsopleths 3001\r61\rDisk full"}));
    EXPECT_NE(rig.Output("_line"), nullptr);
    EXPECT_EQ(rig.Output("_poly"), nullptr);
    EXPECT_EQ(rig.Output("_donut"), nullptr);
}

/// A raster whose rows cannot be read.
class BrokenBand final : public platform::IRasterBand {
public:
    platform::RasterGeometry Geometry() const override { return {0, 0, 1, 4, 4}; }
    platform::SpatialReference Reference() const override { return {}; }
    void ReadRow(std::int32_t, std::span<float>) override { platform::Raise(platform::error_number::kDeviceIo); }
    platform::RasterStatistics ComputeStatistics() override { return {0.0, 1.0}; }
};

TEST(clsHISO_faults, A_raster_that_cannot_be_read) {
    IsoplethRig rig;
    clsHISO hiso(rig.Services, rig.Utilities());
    hiso.SetCalculateLines(true);
    hiso.SetIsoplethBoundaries({50});
    hiso.SetOutputFolder("/out");
    hiso.SetOutputName("ELK12_iso");
    hiso.SetRasterBand(std::make_shared<BrokenBand>());
    hiso.CreateIsopleths();
    expect_failure(rig, hiso, "57");
}

}  // namespace
}  // namespace wxl::isopleths
