#pragma once
// A form over a small map in memory, ready to run.

#include "adapters/geos/geos_operators.h"
#include "adapters/memory/memory_file_system.h"
#include "adapters/memory/memory_folder_locks.h"
#include "adapters/memory/memory_map.h"
#include "adapters/memory/memory_rasters.h"
#include "adapters/memory/memory_services.h"
#include "adapters/memory/memory_shapefile_workspace.h"
#include "adapters/raster/contour_operation.h"
#include "kde_tool/frmKDE.h"
#include "platform/services.h"
#include "utilities/Utilities.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace wxl::kde_tool {

/// Keeps the records of a run.
struct RecordKeeper final : analysis::IRunObserver {
    std::vector<std::size_t> Begun;  ///< animals of each run that began
    std::vector<analysis::AnimalRecord> Records;
    std::vector<analysis::RunOutcome> Ended;
    void RunBegins(const analysis::RunFrame&, const analysis::GroupedFixes& animals) override {
        Begun.push_back(animals.Animals.size());
    }
    void AnimalDone(const analysis::AnimalRecord& record) override { Records.push_back(record); }
    void RunEnds(analysis::RunOutcome outcome) override { Ended.push_back(outcome); }
};

struct RunTest : testing::Test {
    std::shared_ptr<memory::MemoryDisk> Disk = std::make_shared<memory::MemoryDisk>();
    memory::MemoryFileSystem Files{Disk};
    memory::MemoryFolders Folders{Disk};
    memory::MemoryRasterWorkspace Rasters{Disk};
    memory::MemoryShapefileWorkspace Shapefiles{&Files};
    memory::MemoryFolderLocks Locks;
    memory::MemoryMessages Messages;
    memory::MemoryHost Host;
    memory::MemoryClock Clock;
    files::GeosOperators Geometry;
    files::ContourOperation Contours;
    platform::Services Services;
    std::shared_ptr<memory::MemoryApplication> Application = std::make_shared<memory::MemoryApplication>();
    std::shared_ptr<memory::MemoryFeatureClass> Points;
    std::shared_ptr<memory::MemoryFeatureLayer> Layer;
    std::unique_ptr<utilities::Utilities> Geodata;
    std::unique_ptr<frmKDE> Form;
    RecordKeeper Keeper;

    RunTest() {
        Services.Messages = &Messages;
        Services.Host = &Host;
        Services.Clock = &Clock;
        Services.Files = &Files;
        Services.Folders = &Folders;
        Services.Rasters = &Rasters;
        Services.Shapefiles = &Shapefiles;
        Services.Geometry = &Geometry;
        Services.Contours = &Contours;
        Services.Locks = &Locks;
        Disk->AddFolder("/out");
        MakePoints(platform::FieldType::kInteger);
    }

    /// A point layer "bears" with the fields NAME (text) and ID of the given type, without points.
    void MakePoints(platform::FieldType idType) {
        Points = std::make_shared<memory::MemoryFeatureClass>(
            platform::ShapeType::kPoint,
            std::vector<platform::Field>{{.Name = "NAME", .Type = platform::FieldType::kText},
                                         {.Name = "ID", .Type = idType}});
        Layer = std::make_shared<memory::MemoryFeatureLayer>("bears", Points);
    }

    /// Animal 3 ("Bo"): four corners of a square of side 200. Animal 7 ("Ada"): two fixes.
    void AddTwoAnimals() {
        for (const auto& [x, y] : {std::pair(1000.0, 500.0), {1200.0, 500.0}, {1000.0, 700.0}, {1200.0, 700.0}})
            Points->AddPoint(x, y, {std::string("Bo"), std::int64_t{3}});
        Points->AddPoint(1900.0, 800.0, {std::string("Ada"), std::int64_t{7}});
        Points->AddPoint(1500.0, 600.0, {std::string("Ada"), std::int64_t{7}});
    }

    /// A loaded form: ID field "ID", cell size 50, prefix K, folder /out, full extent + 400, user bandwidth 100.
    void Open() {
        Application->Doc().Map().AddLayer(memory::layer_of(Layer));
        Geodata = std::make_unique<utilities::Utilities>(Services);
        Geodata->ConnectToApplication(Application);
        Form = std::make_unique<frmKDE>(Services, *Geodata);
        Form->Form_Load();
        ChooseIdField("ID");
        Form->SetOutputFolder("/out");
        Form->txtR.Text = "K";
        Form->txtCellSize.Text = "50";
        Form->txtBuffer.Text = "400";
        Choose(Form->optBE_MANUAL, &frmKDE::optBE_MANUAL_Click);
        Form->txtBW.Text = "100";
        Form->AddObserver(Keeper);
    }

    void ChooseIdField(const std::string& name) {
        ASSERT_TRUE(Form->cmbUIDFLD.Select(name));
        Form->cmbUIDFLD_Click();
    }

    void Choose(platform::OptionButton& button, void (frmKDE::*click)()) {
        button.Value = true;
        (*Form.*click)();
    }

    void WantPolygons(const std::string& percentages) {
        Form->chkBnds.Value = 1;
        Form->chkBnds_Click();
        Form->txtBnds.Text = percentages;
        Form->chkPolys.Value = 1;
    }

    void Run() { Form->btnOK_Click(); }

    bool HasRaster(const std::string& name) const { return Rasters.Exists("/out", name); }
    std::string Report() const { return Disk->Bytes("/out/WXL_KDE_ANALYSIS.txt"); }
    bool HasReport() const { return Files.FileExists("/out/WXL_KDE_ANALYSIS.txt"); }
    bool HasSettingsRecord() const { return Files.FileExists("/out/WXL_KERNEL_SETTINGS.txt"); }
};

/// Replaces the number behind each "Volume: " by "#" and returns the numbers: they hang on rounding in the last digits.
inline std::vector<double> take_volumes(std::string& report) {
    std::vector<double> volumes;
    static const std::string kLabel = "Volume: ";
    for (std::size_t at = report.find(kLabel); at != std::string::npos; at = report.find(kLabel, at + 1)) {
        const std::size_t begin = at + kLabel.size();
        const std::size_t end = report.find(" / ", begin);
        volumes.push_back(std::stod(report.substr(begin, end - begin)));
        report.replace(begin, end - begin, "#");
    }
    return volumes;
}

/// Lines joined as they stand in the report file.
inline std::string as_file(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) text += line + "\r\n";
    return text;
}

}  // namespace wxl::kde_tool
