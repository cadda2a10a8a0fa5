#include "analysis/range_tables.h"

#include "analysis/package_draft.h"
#include "analysis/range_styles.h"

namespace wxl::analysis {

platform::PackageTable convex_polygon_table() {
    return {"mcp",
            platform::ShapeType::kPolygon,
            {text_column("animal"), number_column("percent"), number_column("area_m2"), number_column("area_ha"),
             whole_column("n"), text_column("status")},
            0,
            convex_polygon_style()};
}

platform::PackageTable overlap_table() {
    return {
        "overlap",
        platform::ShapeType::kPolygon,
        {text_column("range_of"), text_column("animal"), number_column("percent"), number_column("area_m2"),
         number_column("area_ha"), number_column("hr_ij"), number_column("hr_ji"), number_column("phr_ij"),
         number_column("phr_ji"), number_column("vi"), number_column("ba"), number_column("udoi"), number_column("hd")},
        0,
        overlap_style()};
}

}  // namespace wxl::analysis
