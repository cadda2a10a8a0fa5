#include "akde/range_record.h"

#include <algorithm>

namespace wxl::akde {

std::string RangeRecord::RasterPlace() const {
    return (Subfolder.empty() ? "" : Subfolder + "/") + RasterName;
}

std::optional<double> RangeRecord::AreaAt(double percent, const std::string& bound) const {
    for (const RangeIsopleth& isopleth : Isopleths)
        if (isopleth.Percent == percent && isopleth.Bound == bound) return isopleth.Area;
    return std::nullopt;
}

bool RangeRecord::IsCut() const {
    return std::any_of(Isopleths.begin(), Isopleths.end(), [this](const RangeIsopleth& isopleth) {
        return !isopleth.Level || *isopleth.Level < HighestAtEdge;
    });
}

}  // namespace wxl::akde
