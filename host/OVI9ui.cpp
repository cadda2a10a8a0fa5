#include "host/OVI9ui.h"

namespace wxl::host {

std::int32_t OVI9ui::ItemCount() const {
    return 1;
}

void OVI9ui::GetItemInfo(std::int32_t position, platform::IItemDef& item) const {
    if (position == 0) item.SetID("OVI.toolsMenu");
}

std::string OVI9ui::Name() const {
    return "OVITools";
}

std::string OVI9ui::Caption() const {
    return "Wexley Arcgis 9";
}

}  // namespace wxl::host
