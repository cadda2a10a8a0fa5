#include "host/clsAbout.h"
#include "host/clsKDETool.h"
#include "tests/unit/host/host_desk.h"

namespace wxl::tests {
namespace {

using namespace platform;

class Commands : public HostDesk {};

struct Expected {
    const char* ProgID;
    const char* Name;
    const char* Caption;
    const char* Tooltip;
    const char* Message;
};

TEST_F(Commands, Every_property) {
    const Expected table[] = {
        {"OVI.clsKDETool", "OVI_KDE", "Kernel Density Estimation", "Kernel Density Estimation",
         "Kernel Density Estimation"},
        {"OVI.OVIOBS", "CalcOBS", "Calculate Travel Times and Distances", "Calc Observation Fields",
         "Calculate Travel Times and Distances"},
        {"OVI.FIndDupTime2", "RemoveDupsByTime2", "Remove Time2 Field Duplicates",
         "Finds and Removes Duplicate points using the time2 field.",
         "Finds and Removes Duplicate points using the time2 field."},
        {"OVI.FindDupxy", "RemoveDupsByxy", "Remove X/Y Duplicates", "Finds and Removes Duplicate points.",
         "Finds and Removes Duplicate points using the xy field."},
        {"OVI.MOLE", "MOLE", "Display Travel", "Display Travel", "Display Travel"},
        {"OVI.clsAbout", "OVI_About", "About...", "About...", "About..."},
    };
    for (const Expected& expected : table) {
        const CommandProperties properties = Command(expected.ProgID)->Properties();
        EXPECT_EQ(properties.Name, expected.Name);
        EXPECT_EQ(properties.Caption, expected.Caption);
        EXPECT_EQ(properties.Tooltip, expected.Tooltip);
        EXPECT_EQ(properties.Message, expected.Message);
        EXPECT_EQ(properties.Category, "OVI9");
        EXPECT_TRUE(properties.Enabled);
        EXPECT_FALSE(properties.Checked);
        EXPECT_EQ(properties.Bitmap, 0);
        EXPECT_EQ(properties.HelpFile, "");
        EXPECT_EQ(properties.HelpContextID, 0);
    }
}

TEST_F(Commands, The_kernel_command_opens_its_dialog_connected_to_the_application) {
    Presenter.OnKernelDialog = [&](kde_tool::frmKDE& form) {
        EXPECT_EQ(form.Geodata().Application(), Application);
        EXPECT_EQ(form.Geodata().FocusMap(), Application->Doc().FocusMap());
    };
    const auto command = Command("OVI.clsKDETool");
    command->OnClick();
    command->OnClick();
    EXPECT_EQ(Presenter.Shown, (Texts{"frmKDE", "frmKDE"}));
    EXPECT_TRUE(Messages.Boxes().empty());
}

TEST_F(Commands, The_kernel_command_keeps_the_map_and_an_extension_that_may_be_absent) {
    host::clsKDETool without(Environment.Services, Presenter);
    without.OnCreate(Application);
    EXPECT_EQ(without.FocusMap(), Application->Doc().FocusMap());
    EXPECT_EQ(without.Extension(), nullptr);
    without.OnClick();
    EXPECT_EQ(Presenter.Shown, Texts{"frmKDE"});

    Application->AddExtension("OVI9.clsKDE");
    host::clsKDETool with(Environment.Services, Presenter);
    with.OnCreate(Application);
    ASSERT_NE(with.Extension(), nullptr);
    EXPECT_EQ(with.Extension()->Name(), "OVI9.clsKDE");
}

TEST_F(Commands, References_are_released_with_the_command) {
    const auto before = Application.use_count();
    auto command = Command("OVI.clsKDETool");
    command->OnClick();
    EXPECT_GT(Application.use_count(), before);
    command.reset();
    EXPECT_EQ(Application.use_count(), before);
}

TEST_F(Commands, Clicks_before_OnCreate_are_reported) {
    host::clsKDETool(Environment.Services, Presenter).OnClick();
    host::clsAbout(Environment.Services, Presenter).OnClick();
    EXPECT_EQ(Messages.Texts(),
              (Texts{"clsKDETool_OnClick sub Error number: 91", "clsAbout_OnClick sub Error number: 91"}));
    EXPECT_TRUE(Presenter.Shown.empty());
}

TEST_F(Commands, Clicks_without_an_application_are_reported) {
    host::clsKDETool kernel(Environment.Services, Presenter);
    kernel.OnCreate(nullptr);
    EXPECT_EQ(kernel.FocusMap(), nullptr);
    EXPECT_EQ(kernel.Extension(), nullptr);
    kernel.OnClick();
    host::clsAbout about(Environment.Services, Presenter);
    about.OnCreate(nullptr);
    about.OnClick();
    EXPECT_EQ(Messages.Texts(),
              (Texts{"clsKDETool_OnClick sub Error number: 91", "clsAbout_OnClick sub Error number: 91"}));
    EXPECT_TRUE(Presenter.Shown.empty());
}

TEST_F(Commands, The_about_box_tells_version_credits_citation_and_disclaimer) {
    Command("OVI.clsAbout")->OnClick();
    EXPECT_EQ(Presenter.Shown, Texts{"frmAbout"});
    EXPECT_TRUE(Presenter.AboutText.starts_with("Version 1.1\n"));
    for (const char* part : {"wxl developers", "Citation", "Silverman, B. W. (1986)", "Worton, B. J. (1989)",
                             "GNU General Public License", "without any warranty"})
        EXPECT_NE(Presenter.AboutText.find(part), std::string::npos) << part;
}

TEST(AboutBox, Title_and_exit) {
    host::frmAbout form;
    EXPECT_EQ(form.Caption, "About WXL Tools ");
    EXPECT_EQ(form.btnExit.Caption, "Exit");
    EXPECT_FALSE(form.lblHeading.Caption.empty());
    EXPECT_TRUE(form.Visible);
    form.btnExit_Click();
    EXPECT_FALSE(form.Visible);
}

}  // namespace
}  // namespace wxl::tests
