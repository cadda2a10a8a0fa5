#pragma once
#include "host/IFormPresenter.h"
#include "platform/commands.h"
#include "platform/services.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace wxl::host {

/// What the commands work with; both outlive every command made with it.
struct Environment {
    platform::Services Services;
    IFormPresenter* Forms = nullptr;
};

/// The programmatic identifier of the toolbar, from which everything else is reached.
inline constexpr std::string_view kToolBarProgID = "OVI.OVI9ui";

/// Objects by programmatic identifier, looked up without regard to case; null for an identifier that is unknown or
/// belongs to a class of another kind.
std::unique_ptr<platform::IToolBarDef> CreateToolBar(std::string_view progId);
std::unique_ptr<platform::IMenuDef> CreateMenu(std::string_view progId);
std::unique_ptr<platform::ICommand> CreateCommand(std::string_view progId, const Environment& environment);

/// A command in a menu or on a toolbar.
struct MenuItem {
    std::string ProgID;  ///< as the menu names it
    std::unique_ptr<platform::ICommand> Command;
    bool StartsGroup = false;
};

struct Menu {
    std::string Name;
    std::string Caption;
    std::vector<MenuItem> Items;
};

struct ToolBar {
    std::string Name;
    std::string Caption;
    std::vector<Menu> Menus;
};

/// Creates the commands that a menu names and calls OnCreate once on each. Items whose library is not installed are
/// left out; where such an item starts a group, the next item that is there starts it. The first item starts none.
Menu ExpandMenu(const platform::IMenuDef& definition, const Environment& environment,
                const std::shared_ptr<platform::IApplication>& application);

/// The whole toolbar with its menus, for a desktop to draw. An unknown identifier gives an empty toolbar.
ToolBar BuildToolBar(std::string_view progId, const Environment& environment,
                     const std::shared_ptr<platform::IApplication>& application);

}  // namespace wxl::host
