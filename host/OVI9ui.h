#pragma once
#include "platform/commands.h"

namespace wxl::host {

/// The toolbar: one item, the menu of all tools.
class OVI9ui final : public platform::IToolBarDef {
public:
    std::int32_t ItemCount() const override;
    void GetItemInfo(std::int32_t position, platform::IItemDef& item) const override;
    std::string Name() const override;
    std::string Caption() const override;
};

}  // namespace wxl::host
