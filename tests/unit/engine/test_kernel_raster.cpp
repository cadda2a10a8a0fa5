// The grid of the kernel calculator as a raster.

#include "adapters/memory/memory_rasters.h"
#include "platform/runtime_error.h"
#include "tests/unit/engine/calculator_fixture.h"

namespace wxl::engine {
namespace {

class KernelRaster : public testing::Test {
protected:
    KernelRaster() {
        disk->AddFolder("/out");
        k.SetInputCoords(PointSample{{2.0, 1.0}, {4.5, 3.5}});
        k.SetCellSize(2.0);
        k.SetColumns(4);
        k.SetRows(3);
        k.SetOriginCoords(-1.5, 0.25);
        k.SetLimitRadius(9.0);
        k.SetManualBandwidth(2.0);
    }

    std::int32_t ErrorOfWriting(const std::string& folder, const std::string& name) {
        try {
            k.WriteKernelToRaster(folder, name, {});
        } catch (const platform::RuntimeError& error) {
            return error.Number;
        }
        return 0;
    }

    std::shared_ptr<memory::MemoryDisk> disk = std::make_shared<memory::MemoryDisk>();
    memory::MemoryRasterWorkspace rasters{disk};
    memory::MemoryMessages messages;
    clsKernelCalculator k{
        messages, [this](const auto& folder, const auto& definition) { return rasters.Create(folder, definition); }};
};

TEST_F(KernelRaster, Holds_the_grid_as_32_bit_floats_from_the_north) {
    k.CalculateKernel();
    platform::SpatialReference reference;
    reference.Name = "NAD83 / UTM zone 15N";
    const auto raster = k.WriteKernelToRaster("/out", "bear1", reference);
    ASSERT_NE(raster, nullptr);
    EXPECT_EQ(raster->Name(), "bear1");
    EXPECT_EQ(raster->Reference(), reference);
    const auto band = raster->Band();
    EXPECT_EQ(band->Geometry(), (platform::RasterGeometry{-1.5, 0.25, 2.0, 4, 3}));
    EXPECT_EQ(band->Geometry().Bounds(), (platform::Extent{-1.5, 0.25, 6.5, 6.25}));
    std::vector<float> cells(4);
    for (std::int32_t row = 0; row < 3; ++row) {
        band->ReadRow(row, cells);
        for (std::int32_t column = 0; column < 4; ++column)
            EXPECT_EQ(cells[static_cast<std::size_t>(column)], static_cast<float>((*k.GetKernel())(column, row)));
    }
}

TEST_F(KernelRaster, Is_not_written_without_a_valid_kernel) {
    EXPECT_EQ(k.WriteKernelToRaster("/out", "bear1", {}), nullptr);
    k.SetManualBandwidth(0.5);
    k.CalculateKernel();
    EXPECT_EQ(k.lErrorStatus, 5002);
    EXPECT_EQ(k.WriteKernelToRaster("/out", "bear1", {}), nullptr);
    EXPECT_EQ(k.WriteKernelToRaster("/nowhere", "bear1", {}), nullptr);
    EXPECT_FALSE(rasters.Exists("/out", "bear1"));
}

TEST_F(KernelRaster, Is_not_written_with_a_status_that_came_after_the_kernel) {
    k.CalculateKernel();
    k.SetReferenceRaster(nullptr);
    EXPECT_NE(k.GetKernel(), nullptr);
    EXPECT_EQ(k.WriteKernelToRaster("/out", "bear1", {}), nullptr);
    EXPECT_FALSE(rasters.Exists("/out", "bear1"));
}

TEST_F(KernelRaster, Faults_of_writing_reach_the_caller) {
    k.CalculateKernel();
    EXPECT_EQ(ErrorOfWriting("/nowhere", "bear1"), platform::error_number::kPathNotFound);
    EXPECT_EQ(ErrorOfWriting("/out", "bear1"), 0);
    EXPECT_EQ(ErrorOfWriting("/out", "bear1"), platform::error_number::kFileExists);
    EXPECT_EQ(k.lErrorStatus, 0);
}

TEST_F(KernelRaster, A_density_beyond_32_bit_floats_is_an_overflow_and_leaves_no_raster) {
    k.SetScalingFactor(1e45);
    k.CalculateKernel();
    ASSERT_EQ(k.lErrorStatus, 0);
    EXPECT_EQ(ErrorOfWriting("/out", "bear1"), platform::error_number::kOverflow);
    EXPECT_FALSE(rasters.Exists("/out", "bear1"));
}

TEST_F(KernelRaster, Needs_something_to_write_with) {
    clsKernelCalculator alone(messages);
    alone.SetInputCoords(kSquare);
    alone.SetCellSize(1.0);
    alone.SetColumns(3);
    alone.SetRows(3);
    alone.SetManualBandwidth(1.0);
    alone.CalculateKernel();
    EXPECT_THROW(alone.WriteKernelToRaster("/out", "bear1", {}), platform::RuntimeError);
}

}  // namespace
}  // namespace wxl::engine
