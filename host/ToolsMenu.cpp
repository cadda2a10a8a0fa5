#include "host/ToolsMenu.h"

#include <array>

namespace wxl::host {
namespace {

struct Entry {
    const char* ProgID = "";
    bool StartsGroup = false;
};

constexpr std::array kEntries = {
    Entry{"OVI.clsKDETool"},        Entry{"Ovi8.ovi_MCP"},       Entry{"OVI.oviobs"},
    Entry{"OVI.FindDupTime2"},      Entry{"OVI.FindDupxy"},      Entry{"OVI.MOLE"},
    Entry{"Ovi8.ovi_import", true}, Entry{"OVI.clsAbout", true},
};

}  // namespace

std::int32_t ToolsMenu::ItemCount() const {
    return static_cast<std::int32_t>(kEntries.size());
}

void ToolsMenu::GetItemInfo(std::int32_t position, platform::IItemDef& item) const {
    if (position < 0 || position >= ItemCount()) return;
    const Entry& entry = kEntries[static_cast<std::size_t>(position)];
    item.SetID(entry.ProgID);
    if (entry.StartsGroup) item.SetGroup(true);
}

std::string ToolsMenu::Name() const {
    return "Tools";
}

std::string ToolsMenu::Caption() const {
    return "WXL Tools";
}

}  // namespace wxl::host
