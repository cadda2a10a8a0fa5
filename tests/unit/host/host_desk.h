#pragma once
#include "adapters/memory/memory_map.h"
#include "adapters/memory/memory_services.h"
#include "host/frmAbout.h"
#include "host/registration.h"
#include "kde_tool/frmKDE.h"
#include "utilities/Utilities.h"

#include <gtest/gtest.h>

namespace wxl::tests {

/// Shows no form, but tells which ones were shown and lets the test look at them.
class RecordingPresenter final : public host::IFormPresenter {
public:
    void ShowPleaseWait(movement::FrmPW&) override { Shown.emplace_back("FrmPW"); }
    void HidePleaseWait(movement::FrmPW&) override {}
    void ShowTrackPlayer(movement::frmOVI&) override { Shown.emplace_back("frmOVI"); }
    void ShowKernelDialog(kde_tool::frmKDE& form) override {
        Shown.emplace_back("frmKDE");
        if (OnKernelDialog) OnKernelDialog(form);
    }
    void ShowAbout(host::frmAbout& form) override {
        Shown.emplace_back("frmAbout");
        form.Form_Load();
        AboutText = form.txtAbout.Text;
    }

    std::vector<std::string> Shown;
    std::string AboutText;
    std::function<void(kde_tool::frmKDE&)> OnKernelDialog;
};

/// A desktop in memory for the commands.
class HostDesk : public ::testing::Test {
protected:
    HostDesk() {
        Environment.Services.Messages = &Messages;
        Environment.Services.Host = &Host;
        Environment.Services.Clock = &Clock;
        Environment.Forms = &Presenter;
    }

    std::unique_ptr<platform::ICommand> Command(const char* progId) {
        auto command = host::CreateCommand(progId, Environment);
        if (command) command->OnCreate(Application);
        return command;
    }

    using Texts = std::vector<std::string>;

    memory::MemoryMessages Messages;
    memory::MemoryHost Host;
    memory::MemoryClock Clock;
    RecordingPresenter Presenter;
    host::Environment Environment;
    std::shared_ptr<memory::MemoryApplication> Application = std::make_shared<memory::MemoryApplication>();
};

}  // namespace wxl::tests
