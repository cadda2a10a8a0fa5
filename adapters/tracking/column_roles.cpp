#include "adapters/tracking/column_roles.h"

#include "adapters/tracking/animal_column.h"
#include "adapters/tracking/position_columns.h"
#include "adapters/tracking/time_columns.h"
#include "platform/text.h"

#include <algorithm>
#include <array>

namespace wxl::tracking {

namespace {

constexpr std::array<std::string_view, 1> kVisible = {"visible"};
constexpr std::array<std::string_view, 3> kOutlier = {"importmarkedoutlier", "manuallymarkedoutlier",
                                                      "algorithmmarkedoutlier"};
constexpr std::array<std::string_view, 14> kSatellites = {"satcount",       "satellitecount", "gpssatellitecount",
                                                          "satellites",     "sats",           "svs",
                                                          "numsats",        "nsats",          "nsat",
                                                          "satellitesused", "numsat",         "nbsat",
                                                          "usedsatellites", "gpssats"};
constexpr std::array<std::string_view, 14> kStatus = {
    "fixstatus", "status", "eobsstatus", "fixtype",   "typeoffix", "datatype",   "gpsfixattempt",
    "2d3d",      "fix",    "gpsfix",     "validated", "validity",  "navigation", "fixresult"};
constexpr std::array<std::string_view, 12> kDop = {
    "dop",  "hdop",        "pdop",     "gpshdop", "gpspdop", "gpsdop", "gpshorizontaldilution", "horizontaldilution",
    "gdop", "gpsdopvalue", "dilution", "fixdop"};
constexpr std::array<std::string_view, 12> kArgosClass = {
    "lc",      "locquality", "locationquality", "locationclass",      "argoslc", "argosclass", "locclass",
    "quality", "class",      "lcclass",         "argoslocationclass", "lcargos"};

void find_id(const ColumnHeader& header, const std::vector<ColumnProfile>& profiles, const WantedColumns& wanted,
             Layout& layout) {
    if (!wanted.Id.empty()) {
        layout.Id = header.Named(wanted.Id, "--id");
        return;
    }
    if (wanted.NoId) return;
    const auto animal = find_animal(header, profiles);
    if (!animal || animal->Column == layout.Position.X || animal->Column == layout.Position.Y) return;
    layout.Id = animal->Column;
    layout.OtherId = animal->Number;
    layout.IdByContent = animal->ByContent;
}

/// The columns that positions, animals and times are read from.
std::vector<std::size_t> columns_read(const Layout& layout) {
    std::vector<std::size_t> read = {layout.Position.X, layout.Position.Y};
    for (const auto& column :
         {layout.Id, layout.Position.Zone, layout.Position.EastOrWest, layout.Position.NorthOrSouth})
        if (column) read.push_back(*column);
    for (const auto& parts : {layout.Position.PartsOfX, layout.Position.PartsOfY}) {
        if (!parts) continue;
        read.push_back(parts->Minutes);
        if (parts->Seconds) read.push_back(*parts->Seconds);
    }
    if (layout.Time) read.insert(read.end(), layout.Time->Columns.begin(), layout.Time->Columns.end());
    return read;
}

/// Which of two columns of one name is meant nobody can know.
void refuse_namesakes(const std::vector<std::string>& header, const ColumnHeader& columns, const Layout& layout) {
    const std::vector<std::size_t> read = columns_read(layout);
    // MM and mm are month and minute where each has its role.
    const auto differ = [&](std::size_t column, std::size_t other) {
        return header[column] != header[other] && std::ranges::count(read, column) == 1 &&
               std::ranges::count(read, other) == 1;
    };
    for (const std::size_t column : read)
        for (std::size_t other = 0; other < header.size(); ++other)
            if (other != column && !header[column].empty() && platform::EqualNoCase(header[column], header[other]) &&
                !differ(column, other))
                columns.Refuse("two columns are called \"" + header[column] + "\"; give each a name of its own");
}

}  // namespace

Layout find_layout(const std::vector<std::string>& header, const std::vector<ColumnProfile>& profiles,
                   const WantedColumns& wanted, const std::string& place) {
    const ColumnHeader columns(header, place);
    Layout layout;
    layout.Position = find_position(columns, profiles, wanted);
    find_id(columns, profiles, wanted, layout);
    layout.Time = find_time(columns, profiles, wanted, layout.Position);
    layout.Visible = columns.FindFirst(kVisible);
    for (const std::string_view name : kOutlier)
        if (const auto found = columns.FindBare(name)) layout.Outlier.push_back(*found);
    layout.Satellites = columns.FindFirst(kSatellites);
    for (const std::string_view name : kStatus)
        if (const auto found = columns.FindBare(name)) layout.Status.push_back(*found);
    layout.Dop = columns.FindFirst(kDop);
    layout.ArgosClass = columns.FindFirst(kArgosClass);
    if (wanted.MaxDop && !layout.Dop)
        columns.Refuse("no column looks like the dilution of precision that --max-dop asks for");
    if (wanted.ArgosClass && !layout.ArgosClass)
        columns.Refuse("no column looks like the Argos class that --argos-class asks for");
    refuse_namesakes(header, columns, layout);
    return layout;
}

std::optional<std::size_t> find_animal_column(const std::vector<std::string>& names) {
    // Of a layer's fields no more than the names is known: each of them may hold anything.
    std::vector<ColumnProfile> unknown(names.size());
    for (ColumnProfile& profile : unknown) profile.Take("x");
    const auto animal = find_animal(ColumnHeader(names, ""), unknown);
    if (!animal) return std::nullopt;
    return animal->Column;
}

}  // namespace wxl::tracking
