#pragma once
// Rows of the summary of a run: one for each animal, value and percentage.

#include "analysis/record.h"
#include "analysis/summary_file.h"
#include "platform/values.h"

#include <optional>
#include <string>
#include <string_view>

namespace wxl::analysis {

/// The first line, without its line end. Bandwidths and HREF are in map units, `area` in square map units; `raster`
/// names the distribution, the one row of a failed one too. `first` to `median_interval_s` tell when the fixes were
/// taken, the distortions what the projection does to sizes, as shares: 0.02 is 2 %.
inline constexpr std::string_view kSummaryHeader =
    "id,naming_id,n,method,bandwidth,href,minimised,reason,percent,level,area,area_km2,volume,edge_warning,raster,"
    "status,area_ha,first,last,days,median_interval_s,area_distortion,length_distortion";

/// Summaries of before ended at the column `status`.
inline constexpr SummaryColumns kSummaryColumns = {kSummaryHeader,
                                                   kSummaryHeader.substr(0, kSummaryHeader.find(",area_ha"))};

/// Name of the record's raster below the output folder, as the report and the summary give it.
std::string raster_place(const AnimalRecord& record);

/// The same of the raster without a number that the animal has in a run of one bandwidth: as it keeps a run from
/// starting, and --overwrite deletes it, what tables tell of it ends with the run.
std::string plain_raster_place(const AnimalRecord& record, const std::string& prefix);

/// "href", "lscv", "bcv", "manual", "proportion" or "adhoc".
const char* method_name(BandwidthMethod method);

/// The reference bandwidth in map units; absent where the run has none.
std::optional<double> href_in_map_units(const AnimalRecord& record);

/// The area in square kilometres; absent where the length of a map unit is not known.
std::optional<double> square_kilometres(std::optional<double> area, const platform::SpatialReference& reference);

/// Rows of a record, each ended by CR LF: one for each isopleth, or one with empty percentage, level and areas.
std::string summary_rows(const AnimalRecord& record, const platform::SpatialReference& reference);

/// A row of method "mcp" for each minimum convex polygon of the record, with percentage and area alone; its raster is
/// the record's, so that a later run replaces it with that.
std::string polygon_rows(const AnimalRecord& record, const platform::SpatialReference& reference);

}  // namespace wxl::analysis
