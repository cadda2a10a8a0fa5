#include "host/OVI9ui.h"
#include "host/ToolsMenu.h"
#include "tests/unit/host/host_desk.h"

namespace wxl::tests {
namespace {

using namespace platform;

/// Remembers what was said about an item; untouched at first.
class RecordingItem final : public IItemDef {
public:
    void SetID(const std::string& progId) override { Said.push_back("ID " + progId); }
    void SetGroup(bool startsGroup) override { Said.push_back(startsGroup ? "group" : "no group"); }
    std::vector<std::string> Said;
};

template <class Definition>
std::vector<std::string> said_of(const Definition& definition, std::int32_t position) {
    RecordingItem item;
    definition.GetItemInfo(position, item);
    return item.Said;
}

TEST(ToolBar, It_holds_the_menu_and_nothing_else) {
    const host::OVI9ui toolBar;
    EXPECT_EQ(toolBar.ItemCount(), 1);
    EXPECT_EQ(toolBar.Name(), "OVITools");
    EXPECT_EQ(toolBar.Caption(), "Wexley Arcgis 9");
    EXPECT_EQ(said_of(toolBar, 0), std::vector<std::string>{"ID OVI.toolsMenu"});
    for (const std::int32_t position : {-1, 1, 2, 1000}) EXPECT_TRUE(said_of(toolBar, position).empty());
}

TEST(ToolsMenu, It_names_eight_items_of_which_two_start_a_group) {
    const host::ToolsMenu menu;
    EXPECT_EQ(menu.ItemCount(), 8);
    EXPECT_EQ(menu.Name(), "Tools");
    EXPECT_EQ(menu.Caption(), "WXL Tools");
    using Said = std::vector<std::string>;
    EXPECT_EQ(said_of(menu, 0), Said{"ID OVI.clsKDETool"});
    EXPECT_EQ(said_of(menu, 1), Said{"ID Ovi8.ovi_MCP"});
    EXPECT_EQ(said_of(menu, 2), Said{"ID OVI.oviobs"});
    EXPECT_EQ(said_of(menu, 3), Said{"ID OVI.FindDupTime2"});
    EXPECT_EQ(said_of(menu, 4), Said{"ID OVI.FindDupxy"});
    EXPECT_EQ(said_of(menu, 5), Said{"ID OVI.MOLE"});
    EXPECT_EQ(said_of(menu, 6), (Said{"ID Ovi8.ovi_import", "group"}));
    EXPECT_EQ(said_of(menu, 7), (Said{"ID OVI.clsAbout", "group"}));
    for (const std::int32_t position : {-1, 8, 9, 1000}) EXPECT_TRUE(said_of(menu, position).empty());
}

class Registry : public HostDesk {};

TEST_F(Registry, Every_class_is_registered) {
    EXPECT_NE(host::CreateToolBar("OVI.OVI9ui"), nullptr);
    EXPECT_NE(host::CreateMenu("OVI.ToolsMenu"), nullptr);
    for (const char* progId :
         {"OVI.clsKDETool", "OVI.OVIOBS", "OVI.FIndDupTime2", "OVI.FindDupxy", "OVI.MOLE", "OVI.clsAbout"})
        EXPECT_NE(host::CreateCommand(progId, Environment), nullptr) << progId;
}

TEST_F(Registry, Identifiers_are_found_without_regard_to_case) {
    for (const char* progId : {"OVI.clsKDETool", "OVI.oviobs", "ovi.FINDDUPTIME2", "OVI.FindDupTime2", "OVI.finddupxy",
                               "OVI.mole", "OVI.CLSABOUT"})
        EXPECT_NE(host::CreateCommand(progId, Environment), nullptr) << progId;
    EXPECT_NE(host::CreateMenu("OVI.toolsMenu"), nullptr);
    EXPECT_NE(host::CreateToolBar("ovi.ovi9UI"), nullptr);
}

TEST_F(Registry, Unknown_identifiers_and_other_kinds_give_nothing) {
    for (const char* progId : {"Ovi8.ovi_MCP", "Ovi8.ovi_import", "", "OVI.", "OVI.clsKDETool ", "OVI.toolsMenu"})
        EXPECT_EQ(host::CreateCommand(progId, Environment), nullptr) << progId;
    EXPECT_EQ(host::CreateMenu("OVI.OVI9ui"), nullptr);
    EXPECT_EQ(host::CreateMenu("OVI.MOLE"), nullptr);
    EXPECT_EQ(host::CreateToolBar("OVI.toolsMenu"), nullptr);
}

TEST_F(Registry, The_toolbar_is_built_with_the_commands_that_are_installed) {
    const host::ToolBar toolBar = host::BuildToolBar(host::kToolBarProgID, Environment, Application);
    EXPECT_EQ(toolBar.Name, "OVITools");
    EXPECT_EQ(toolBar.Caption, "Wexley Arcgis 9");
    ASSERT_EQ(toolBar.Menus.size(), 1U);
    EXPECT_EQ(toolBar.Menus[0].Name, "Tools");
    EXPECT_EQ(toolBar.Menus[0].Caption, "WXL Tools");
    Texts captions;
    for (const host::MenuItem& item : toolBar.Menus[0].Items) {
        EXPECT_EQ(item.StartsGroup, item.ProgID == "OVI.clsAbout") << item.ProgID;
        captions.push_back(item.Command->Properties().Caption);
    }
    EXPECT_EQ(captions,
              (Texts{"Kernel Density Estimation", "Calculate Travel Times and Distances",
                     "Remove Time2 Field Duplicates", "Remove X/Y Duplicates", "Display Travel", "About..."}));
    EXPECT_TRUE(host::BuildToolBar("OVI.other", Environment, Application).Menus.empty());
}

TEST_F(Registry, Commands_of_a_built_menu_know_their_application) {
    const host::ToolBar toolBar = host::BuildToolBar(host::kToolBarProgID, Environment, Application);
    for (const host::MenuItem& item : toolBar.Menus.at(0).Items) item.Command->OnClick();
    EXPECT_EQ(Presenter.Shown, (Texts{"frmKDE", "frmAbout"}));
    EXPECT_EQ(Messages.Texts(),
              (Texts{"Please select a points layer", "Please select points layer",
                     "Please select a points layer with some points selected.", "You must select a point layer"}));
}

/// A menu of given items.
class SomeMenu final : public IMenuDef {
public:
    explicit SomeMenu(std::vector<std::pair<std::string, bool>> items) : m_items(std::move(items)) {}
    std::int32_t ItemCount() const override { return static_cast<std::int32_t>(m_items.size()); }
    void GetItemInfo(std::int32_t position, IItemDef& item) const override {
        item.SetID(m_items.at(static_cast<std::size_t>(position)).first);
        item.SetGroup(m_items.at(static_cast<std::size_t>(position)).second);
    }
    std::string Name() const override { return "Some"; }
    std::string Caption() const override { return "Some menu"; }

private:
    std::vector<std::pair<std::string, bool>> m_items;
};

TEST_F(Registry, A_group_started_by_an_absent_item_is_started_by_the_next) {
    const SomeMenu definition({{"Other.absent", true},
                               {"OVI.MOLE", false},
                               {"Other.absent", true},
                               {"Other.absent", false},
                               {"OVI.clsAbout", false},
                               {"OVI.OVIOBS", false},
                               {"Other.absent", true}});
    const host::Menu menu = host::ExpandMenu(definition, Environment, Application);
    std::vector<std::pair<std::string, bool>> items;
    for (const host::MenuItem& item : menu.Items) items.emplace_back(item.ProgID, item.StartsGroup);
    EXPECT_EQ(items, (std::vector<std::pair<std::string, bool>>{
                         {"OVI.MOLE", false}, {"OVI.clsAbout", true}, {"OVI.OVIOBS", false}}));
}

}  // namespace
}  // namespace wxl::tests
