#pragma once
#include "platform/commands.h"

namespace wxl::host {

/// The menu on the toolbar. Two of its items belong to a separate, earlier library; they are named by their identifiers
/// only, and left out where that library is not installed.
class ToolsMenu final : public platform::IMenuDef {
public:
    std::int32_t ItemCount() const override;
    void GetItemInfo(std::int32_t position, platform::IItemDef& item) const override;
    std::string Name() const override;
    std::string Caption() const override;
};

}  // namespace wxl::host
