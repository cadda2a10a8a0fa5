#include "analysis/suggestions.h"

#include "analysis/fitting_cells.h"
#include "engine/kernel_reach.h"

#include <algorithm>

namespace wxl::analysis {

std::optional<double> suggested_cell_size(std::span<const AnimalFixes> animals, std::span<const HrefRow> hrefs) {
    std::optional<double> smallest;
    for (const HrefRow& row : hrefs)
        if (row.Href && *row.Href > 0.0) smallest = std::min(smallest.value_or(*row.Href), *row.Href);
    if (!smallest) return std::nullopt;
    double side = 1.0;
    for (std::size_t i = 0; i < animals.size(); ++i)
        if (hrefs[i].Href)
            side = std::max(side, fitting_cell_size(*smallest, platform::bounds_of(animals[i].Fixes),
                                                    engine::kUsualReach * *hrefs[i].Href));
    return side;
}

}  // namespace wxl::analysis
