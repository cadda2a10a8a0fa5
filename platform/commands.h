#pragma once
// What a host asks of an add-in: a toolbar that names menus, menus that name commands, commands that do the work.

#include "platform/map.h"

#include <cstdint>
#include <memory>
#include <string>

namespace wxl::platform {

/// The fixed properties of a command, as menus, toolbars and status bars show them.
struct CommandProperties {
    std::string Name;     ///< how other software knows the command
    std::string Caption;  ///< in menus
    std::string Tooltip;
    std::string Message;  ///< in the status bar
    std::string Category = "OVI9";
    bool Enabled = true;
    bool Checked = false;
    std::int32_t Bitmap = 0;  ///< 0: no image
    std::string HelpFile = {};
    std::int32_t HelpContextID = 0;
};

/// A command of a toolbar or menu.
class ICommand {
public:
    virtual ~ICommand() = default;
    virtual CommandProperties Properties() const = 0;

    /// Called once, before any click, with the host application.
    virtual void OnCreate(const std::shared_ptr<IApplication>& hook) = 0;
    virtual void OnClick() = 0;
};

/// Receives what a toolbar or menu tells about one of its items.
class IItemDef {
public:
    virtual ~IItemDef() = default;

    /// Programmatic identifier of the item; looked up without regard to case.
    virtual void SetID(const std::string& progId) = 0;

    /// Whether the item starts a new group. Items that say nothing start none.
    virtual void SetGroup(bool startsGroup) = 0;
};

/// The definition of a toolbar: items are menus or commands.
class IToolBarDef {
public:
    virtual ~IToolBarDef() = default;
    virtual std::int32_t ItemCount() const = 0;

    /// Describes the item at a position from 0; other positions leave `item` untouched.
    virtual void GetItemInfo(std::int32_t position, IItemDef& item) const = 0;
    virtual std::string Name() const = 0;
    virtual std::string Caption() const = 0;
};

/// The definition of a menu: items are commands.
class IMenuDef {
public:
    virtual ~IMenuDef() = default;
    virtual std::int32_t ItemCount() const = 0;

    /// Describes the item at a position from 0; other positions leave `item` untouched.
    virtual void GetItemInfo(std::int32_t position, IItemDef& item) const = 0;
    virtual std::string Name() const = 0;
    virtual std::string Caption() const = 0;
};

}  // namespace wxl::platform
