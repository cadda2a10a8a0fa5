#pragma once
#include "adapters/files/tracking_csv.h"

#include <optional>
#include <string>
#include <vector>

namespace wxl::files {

/// Where the cells of a row stand.
struct TrackingLayout {
    std::size_t Id = 0;
    std::optional<std::size_t> OtherId;  ///< where Id is a name that was found: a number of the animal, perhaps
    std::size_t X = 0;
    std::size_t Y = 0;
    std::optional<std::size_t> Time;
    std::optional<std::size_t> TimeOfDay;  ///< joined with Time where that holds a date alone
    std::optional<std::size_t> Visible;
    std::vector<std::size_t> Outlier;
};

/// Finds the columns in a header (UTF-8, trimmed); RuntimeError 13 with the columns there are when one is missing.
/// `place` is the file and line of the header, for messages.
TrackingLayout find_tracking_columns(const std::vector<std::string>& header, const TrackingColumns& wanted,
                                     const std::string& place);

/// The column or field that looks like the animal's name, also where the name was cut to the 10 bytes of a shapefile.
std::optional<std::size_t> find_animal_column(const std::vector<std::string>& names);

}  // namespace wxl::files
