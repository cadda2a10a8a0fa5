#pragma once
#include "adapters/memory/memory_file_system.h"
#include "adapters/memory/memory_map.h"
#include "adapters/memory/memory_rasters.h"
#include "adapters/memory/memory_services.h"
#include "adapters/memory/memory_shapefile_workspace.h"
#include "utilities/Utilities.h"

#include <gtest/gtest.h>

namespace wxl::tests {

/// Measures shapes by their first part's vertices: what is measured is the geometry library's business.
class CountingOperators final : public platform::IGeometryOperators {
public:
    platform::Geometry Difference(const platform::Geometry& a, const platform::Geometry&) override { return a; }
    platform::Geometry CleanUp(const platform::Geometry& a) override { return a; }
    double Area(const platform::Geometry& a) override { return 100.0 * Vertices(a); }
    double Length(const platform::Geometry& a) override { return Vertices(a); }
    double Distance(const platform::Point&, const platform::Point&) override { return 0.0; }

private:
    static double Vertices(const platform::Geometry& a) { return static_cast<double>(a.Parts.at(0).size()); }
};

/// The module connected to an application in memory, with everything on one memory disk that holds the folder "/data".
struct UtilitiesRig {
    UtilitiesRig() {
        Disk->AddFolder("/data");
        Services.Messages = &Messages;
        Services.Host = &Host;
        Services.Files = &Files;
        Services.TempPath = &TempPath;
        Services.Rasters = &Rasters;
        Services.Shapefiles = &Shapefiles;
        Services.Tins = &Tins;
        Services.Geometry = &Geometry;
        Module = std::make_unique<utilities::Utilities>(Services);
        Module->ConnectToApplication(Application);
    }

    memory::MemoryMap& Map() { return Application->Doc().Map(); }

    std::shared_ptr<memory::MemoryFeatureClass> AddShapefile(const std::string& name) {
        auto features = std::make_shared<memory::MemoryFeatureClass>(
            platform::ShapeType::kPolygon, std::vector<platform::Field>{{"ID", platform::FieldType::kInteger}});
        Shapefiles.Put("/data", name, features);
        return features;
    }

    void AddRaster(const std::string& name) {
        const auto writer = Rasters.Create("/data", {name, "GRID", {0, 0, 1, 1, 1}, {}});
        writer->WriteRow(std::vector<float>{1.0F});
        writer->Publish();
    }

    std::shared_ptr<memory::MemoryDisk> Disk = std::make_shared<memory::MemoryDisk>();
    std::shared_ptr<memory::MemoryApplication> Application = std::make_shared<memory::MemoryApplication>();
    memory::MemoryMessages Messages;
    memory::MemoryHost Host;
    memory::MemoryFileSystem Files{Disk};
    memory::MemoryTempPath TempPath;
    memory::MemoryRasterWorkspace Rasters{Disk};
    memory::MemoryShapefileWorkspace Shapefiles{&Files};
    memory::MemoryTinWorkspace Tins;
    CountingOperators Geometry;
    platform::Services Services;
    std::unique_ptr<utilities::Utilities> Module;
};

/// The one box shown so far, titled "Error", with a text that starts so.
inline void expect_error_box(const UtilitiesRig& rig, const std::string& start) {
    ASSERT_EQ(rig.Messages.Boxes().size(), 1U);
    EXPECT_EQ(rig.Messages.Last().Title, "Error");
    EXPECT_TRUE(rig.Messages.Last().Text.starts_with(start)) << rig.Messages.Last().Text;
}

}  // namespace wxl::tests
