// Any bytes at all may stand in a settings file: the form must come out of it with its invariants whole.

#include "adapters/memory/memory_file_system.h"
#include "adapters/memory/memory_map.h"
#include "adapters/memory/memory_services.h"
#include "kde_tool/form_settings.h"
#include "kde_tool/frmKDE.h"
#include "kde_tool/settings_file.h"
#include "platform/text.h"
#include "utilities/Utilities.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace {

using namespace wxl;

/// A small desktop: one point layer, one raster layer "DEM", one folder "/OUT".
struct Desktop {
    Desktop() {
        disk->AddFolder("/OUT");
        auto points = std::make_shared<memory::MemoryFeatureClass>(
            platform::ShapeType::kPoint,
            std::vector<platform::Field>{{.Name = "ID", .Type = platform::FieldType::kInteger}});
        application->Doc().Map().AddLayer(
            memory::layer_of(std::make_shared<memory::MemoryFeatureLayer>("FIXES", points)));
        platform::Layer raster;
        raster.Name = "DEM";
        raster.Class = platform::LayerClass::kRaster;
        application->Doc().Map().AddLayer(raster);
        services.Messages = &messages;
        services.Folders = &folders;
        services.Files = &files;
    }

    std::shared_ptr<memory::MemoryDisk> disk = std::make_shared<memory::MemoryDisk>();
    memory::MemoryMessages messages;
    memory::MemoryFileSystem files{disk};
    memory::MemoryFolders folders{disk};
    std::shared_ptr<memory::MemoryApplication> application = std::make_shared<memory::MemoryApplication>();
    platform::Services services;
};

void require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "broken: %s\n", what);
    std::abort();
}

std::size_t characters(const std::string& utf8) {
    return static_cast<std::size_t>(std::count_if(
        utf8.begin(), utf8.end(), [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }));
}

void require_invariants(const kde_tool::frmKDE& form) {
    require(form.optFixed.Value + form.optAdaptive.Value == 1, "one kernel type");
    require(form.optBE_LSCV.Value + form.optBE_BCV.Value + form.optBE_HREF.Value + form.optBE_MANUAL.Value +
                    form.optPropHref.Value ==
                1,
            "one bandwidth method");
    require(form.optFull.Value + form.optSmall.Value + form.optExtRef.Value == 1, "one extent");
    for (const auto* box : {&form.chkRescale, &form.chkVerbose, &form.chkBnds, &form.chkLines, &form.chkPolys,
                            &form.chkDonuts, &form.chkSilent})
        require(box->Value == 0 || box->Value == 1, "check boxes hold 0 or 1");
    require(characters(form.txtR.Text) <= 6, "a prefix of at most six characters");
    require(form.txtCellSize.Text.empty() || platform::IsNumeric(form.txtCellSize.Text), "a numeric cell size");
    require(platform::IsNumeric(form.txtScaling.Text), "a numeric scaling factor");
    require(platform::IsNumeric(form.txtBuffer.Text), "a numeric buffer");
    require(form.OutputFolder().empty() || form.FolderExists(form.OutputFolder()), "an output folder that exists");
    require(form.cmbKernelForm.Text() == kde_tool::kGaussianForm, "the kernel form as it was");
    require(form.txtBnds.Enabled == (form.chkBnds.Value == 1), "isopleths enabled as checked");
    require(form.txtBW.Enabled == form.optBE_MANUAL.Value, "bandwidth enabled as chosen");
    require(form.txtBuffer.Enabled == form.optFull.Value, "buffer enabled as chosen");
    require(form.cmbExtRef.Enabled == form.optExtRef.Value, "reference layer enabled as chosen");
    for (const auto* text : {&form.txtR.Text, &form.txtBW.Text, &form.txtBnds.Text, &form.txtOutFolder.Text})
        require(platform::IsUtf8(*text), "texts in UTF-8");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Desktop desktop;
    static utilities::Utilities geodata{desktop.services};
    geodata.ConnectToApplication(desktop.application);
    desktop.messages.Clear();
    const std::string bytes(data, data + size);

    kde_tool::frmKDE form(desktop.services, geodata);
    form.Form_Load();
    kde_tool::ReadSettings(bytes, form);
    require_invariants(form);
    require(desktop.messages.Boxes().size() <= 1, "at most one box");

    const std::string once = kde_tool::SettingsFileBytes(kde_tool::settings_of(form));
    kde_tool::ReadSettings(bytes, form);
    require(kde_tool::SettingsFileBytes(kde_tool::settings_of(form)) == once, "loading twice is loading once");

    kde_tool::ReadSettings(once, form);
    const std::string saved = kde_tool::SettingsFileBytes(kde_tool::settings_of(form));
    kde_tool::ReadSettings(saved, form);
    require(kde_tool::SettingsFileBytes(kde_tool::settings_of(form)) == saved, "what was saved loads back");
    require_invariants(form);
    return 0;
}
