#pragma once
#include "adapters/memory/memory_file_system.h"
#include "adapters/memory/memory_map.h"
#include "adapters/memory/memory_services.h"
#include "kde_tool/frmKDE.h"
#include "utilities/Utilities.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace wxl::kde_tool {

/// A desktop in memory with the analysis form over it. Add layers, then press Open().
class FormTest : public testing::Test {
protected:
    FormTest() {
        m_disk->AddFolder("/out");
        geodata.ConnectToApplication(application);
    }

    platform::Services Services() {
        platform::Services services;
        services.Messages = &messages;
        services.Dialogs = &dialogs;
        services.Host = &host;
        services.Clock = &clock;
        services.Files = &files;
        services.Folders = &folders;
        return services;
    }

    memory::MemoryMap& Map() { return application->Doc().Map(); }

    /// A point layer with the fields "Animal" (of that type) and "Age".
    memory::MemoryFeatureClass& AddPoints(const std::string& name,
                                          platform::FieldType idType = platform::FieldType::kInteger) {
        auto features = std::make_shared<memory::MemoryFeatureClass>(
            platform::ShapeType::kPoint,
            std::vector<platform::Field>{{.Name = "Animal", .Type = idType},
                                         {.Name = "Age", .Type = platform::FieldType::kDouble}});
        layers.push_back(std::make_shared<memory::MemoryFeatureLayer>(name, features));
        Map().AddLayer(memory::layer_of(layers.back()));
        return *features;
    }

    void AddRaster(const std::string& name) {
        platform::Layer layer{
            .Name = name, .Class = platform::LayerClass::kRaster, .Feature = nullptr, .Raster = nullptr};
        Map().AddLayer(layer);
    }

    void Open() { form.Form_Load(); }

    template <class Control, class Click>
    void Choose(Control& option, Click click) {
        option.Value = true;
        (form.*click)();
    }

    void ChooseField(const std::string& field) {
        ASSERT_TRUE(form.cmbUIDFLD.Select(field));
        form.cmbUIDFLD_Click();
    }

    void ChooseLayer(const std::string& layer) {
        ASSERT_TRUE(form.cmbPntL.Select(layer));
        form.cmbPntL_Click();
    }

    void GoToPage(int page) {
        const int previous = form.SSTab1.Current;
        form.SSTab1.Current = page;
        form.SSTab1_Click(previous);
    }

    /// Puts the bytes into a file and presses Load Settings.
    void Load(const std::string& bytes) {
        m_disk->AddFile("/out/settings.txt", bytes);
        dialogs.WillChoose("/out/settings.txt");
        form.btnLoadSettings_Click();
    }

    /// Presses Save Settings and returns what stands in the file.
    std::string Save() {
        dialogs.WillChoose("/out/saved.txt");
        form.btnSaveSettings_Click();
        return files.ReadFile("/out/saved.txt", 1U << 20U);
    }

private:
    std::shared_ptr<memory::MemoryDisk> m_disk = std::make_shared<memory::MemoryDisk>();

protected:
    memory::MemoryDisk& Disk() { return *m_disk; }

    memory::MemoryMessages messages;
    memory::MemoryFileDialogs dialogs;
    memory::MemoryHost host;
    memory::MemoryClock clock;
    memory::MemoryFileSystem files{m_disk};
    memory::MemoryFolders folders{m_disk};
    std::shared_ptr<memory::MemoryApplication> application = std::make_shared<memory::MemoryApplication>();
    std::vector<std::shared_ptr<memory::MemoryFeatureLayer>> layers;
    utilities::Utilities geodata{Services()};
    frmKDE form{Services(), geodata};
};

}  // namespace wxl::kde_tool
