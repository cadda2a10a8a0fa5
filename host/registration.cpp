#include "host/registration.h"

#include "host/clsAbout.h"
#include "host/clsKDETool.h"
#include "host/OVI9ui.h"
#include "host/ToolsMenu.h"
#include "movement/FIndDupTime2.h"
#include "movement/FindDupxy.h"
#include "movement/MOLE.h"
#include "movement/OVIOBS.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <variant>

namespace wxl::host {

using namespace wxl::platform;

namespace {

using MakeToolBar = std::unique_ptr<IToolBarDef> (*)();
using MakeMenu = std::unique_ptr<IMenuDef> (*)();
using MakeCommand = std::unique_ptr<ICommand> (*)(const Environment&);

struct Registration {
    const char* ProgID;
    std::variant<MakeToolBar, MakeMenu, MakeCommand> Make;
};

template <class Command>
std::unique_ptr<ICommand> make_command(const Environment& environment) {
    return std::make_unique<Command>(environment.Services, *environment.Forms);
}

std::unique_ptr<IToolBarDef> make_tool_bar() {
    return std::make_unique<OVI9ui>();
}

std::unique_ptr<IMenuDef> make_menu() {
    return std::make_unique<ToolsMenu>();
}

/// The one place where a class is registered.
const std::array kRegistrations = {
    Registration{"OVI.OVI9ui", &make_tool_bar},
    Registration{"OVI.ToolsMenu", &make_menu},
    Registration{"OVI.clsKDETool", &make_command<clsKDETool>},
    Registration{"OVI.OVIOBS", &make_command<movement::OVIOBS>},
    Registration{"OVI.FIndDupTime2", &make_command<movement::FIndDupTime2>},
    Registration{"OVI.FindDupxy", &make_command<movement::FindDupxy>},
    Registration{"OVI.MOLE", &make_command<movement::MOLE>},
    Registration{"OVI.clsAbout", &make_command<clsAbout>},
};

/// The factory of that kind registered for an identifier, or null.
template <class Make>
Make factory_of(std::string_view progId) {
    const auto found = std::find_if(kRegistrations.begin(), kRegistrations.end(),
                                    [&](const Registration& r) { return EqualNoCase(r.ProgID, progId); });
    if (found == kRegistrations.end()) return nullptr;
    const Make* make = std::get_if<Make>(&found->Make);
    return make ? *make : nullptr;
}

/// What a definition says about one item.
class ItemDef final : public IItemDef {
public:
    void SetID(const std::string& progId) override { ID = progId; }
    void SetGroup(bool startsGroup) override { StartsGroup = startsGroup; }

    std::string ID;
    bool StartsGroup = false;
};

/// The items of a toolbar or menu definition, in order.
template <class Definition>
std::vector<ItemDef> items_of(const Definition& definition) {
    std::vector<ItemDef> items(static_cast<std::size_t>(std::max(0, definition.ItemCount())));
    for (std::size_t i = 0; i < items.size(); ++i) definition.GetItemInfo(static_cast<std::int32_t>(i), items[i]);
    return items;
}

}  // namespace

std::unique_ptr<IToolBarDef> CreateToolBar(std::string_view progId) {
    const auto make = factory_of<MakeToolBar>(progId);
    return make ? make() : nullptr;
}

std::unique_ptr<IMenuDef> CreateMenu(std::string_view progId) {
    const auto make = factory_of<MakeMenu>(progId);
    return make ? make() : nullptr;
}

std::unique_ptr<ICommand> CreateCommand(std::string_view progId, const Environment& environment) {
    const auto make = factory_of<MakeCommand>(progId);
    return make ? make(environment) : nullptr;
}

Menu ExpandMenu(const IMenuDef& definition, const Environment& environment,
                const std::shared_ptr<IApplication>& application) {
    Menu menu;
    menu.Name = definition.Name();
    menu.Caption = definition.Caption();
    bool startsGroup = false;
    for (const ItemDef& item : items_of(definition)) {
        startsGroup = startsGroup || item.StartsGroup;
        auto command = CreateCommand(item.ID, environment);
        if (!command) continue;
        command->OnCreate(application);
        menu.Items.push_back({item.ID, std::move(command), startsGroup && !menu.Items.empty()});
        startsGroup = false;
    }
    return menu;
}

ToolBar BuildToolBar(std::string_view progId, const Environment& environment,
                     const std::shared_ptr<IApplication>& application) {
    ToolBar toolBar;
    const auto definition = CreateToolBar(progId);
    if (!definition) return toolBar;
    toolBar.Name = definition->Name();
    toolBar.Caption = definition->Caption();
    for (const ItemDef& item : items_of(*definition))
        if (const auto menu = CreateMenu(item.ID)) toolBar.Menus.push_back(ExpandMenu(*menu, environment, application));
    return toolBar;
}

}  // namespace wxl::host
