#include "adapters/tracking/position_columns.h"

#include "adapters/tracking/cell_text.h"
#include "adapters/tracking/coordinate_text.h"
#include "adapters/tracking/position_text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fmt/format.h>
#include <span>

namespace wxl::tracking {

namespace {

/// A pair of words for the two coordinates, alone or within longer names.
struct Words {
    std::string_view X;
    std::string_view Y;
    PositionUnit Unit;
    int Score;
    bool Within;  ///< also as a part of a name
};

constexpr std::array<Words, 60> kWords = {{{"locationlong", "locationlat", PositionUnit::kDegrees, 100, false},
                                           {"decimallongitude", "decimallatitude", PositionUnit::kDegrees, 99, false},
                                           {"longitude", "latitude", PositionUnit::kDegrees, 98, true},
                                           {"longitud", "latitud", PositionUnit::kDegrees, 97, true},
                                           {"longitudine", "latitudine", PositionUnit::kDegrees, 97, true},
                                           {"long", "lat", PositionUnit::kDegrees, 96, true},
                                           {"lon", "lat", PositionUnit::kDegrees, 95, true},
                                           {"lng", "lat", PositionUnit::kDegrees, 94, true},
                                           {"langengrad", "breitengrad", PositionUnit::kDegrees, 93, true},
                                           {"laengengrad", "breitengrad", PositionUnit::kDegrees, 93, true},
                                           {"lange", "breite", PositionUnit::kDegrees, 92, true},
                                           {"laenge", "breite", PositionUnit::kDegrees, 92, true},
                                           {"lengdegrad", "breddegrad", PositionUnit::kDegrees, 92, true},
                                           {"lengtegraad", "breedtegraad", PositionUnit::kDegrees, 92, true},
                                           {"pituusaste", "leveysaste", PositionUnit::kDegrees, 92, true},
                                           {"laengdegrad", "breddegrad", PositionUnit::kDegrees, 92, true},
                                           {"dlugosc", "szerokosc", PositionUnit::kDegrees, 92, true},
                                           {"delka", "sirka", PositionUnit::kDegrees, 91, true},
                                           {"hosszusag", "szelesseg", PositionUnit::kDegrees, 91, true},
                                           {"долгота", "широта", PositionUnit::kDegrees, 92, true},
                                           {"довгота", "широта", PositionUnit::kDegrees, 92, true},
                                           {"дължина", "ширина", PositionUnit::kDegrees, 92, true},
                                           {"дужина", "ширина", PositionUnit::kDegrees, 92, true},
                                           {"μηκοσ", "πλατοσ", PositionUnit::kDegrees, 92, true},
                                           {"经度", "纬度", PositionUnit::kDegrees, 92, true},
                                           {"經度", "緯度", PositionUnit::kDegrees, 92, true},
                                           {"経度", "緯度", PositionUnit::kDegrees, 92, true},
                                           {"경도", "위도", PositionUnit::kDegrees, 92, true},
                                           {"東経", "北緯", PositionUnit::kDegrees, 92, true},
                                           {"东经", "北纬", PositionUnit::kDegrees, 92, true},
                                           {"東經", "北緯", PositionUnit::kDegrees, 92, true},
                                           {"동경", "북위", PositionUnit::kDegrees, 92, true},
                                           {"dlgeogr", "szergeogr", PositionUnit::kDegrees, 92, true},
                                           {"geogrl", "geogrb", PositionUnit::kDegrees, 90, false},
                                           {"boylam", "enlem", PositionUnit::kDegrees, 92, true},
                                           {"dolzina", "sirina", PositionUnit::kDegrees, 92, true},
                                           {"duzina", "sirina", PositionUnit::kDegrees, 92, true},
                                           {"pikkuskraad", "laiuskraad", PositionUnit::kDegrees, 92, true},
                                           {"bujur", "lintang", PositionUnit::kDegrees, 92, true},
                                           {"x", "y", PositionUnit::kUnknown, 70, false},
                                           {"x1", "y1", PositionUnit::kUnknown, 65, false},
                                           {"mux", "muy", PositionUnit::kUnknown, 64, false},
                                           {"xcoord", "ycoord", PositionUnit::kUnknown, 66, false},
                                           {"xcoordinate", "ycoordinate", PositionUnit::kUnknown, 66, false},
                                           {"coordx", "coordy", PositionUnit::kUnknown, 66, false},
                                           {"coordsx1", "coordsx2", PositionUnit::kUnknown, 66, false},
                                           {"posx", "posy", PositionUnit::kUnknown, 66, false},
                                           {"gpsx", "gpsy", PositionUnit::kUnknown, 66, false},
                                           {"pointx", "pointy", PositionUnit::kUnknown, 66, false},
                                           {"locx", "locy", PositionUnit::kUnknown, 66, false},
                                           {"easting", "northing", PositionUnit::kLengths, 60, true},
                                           {"utmeasting", "utmnorthing", PositionUnit::kLengths, 59, true},
                                           {"utmx", "utmy", PositionUnit::kLengths, 58, true},
                                           {"utme", "utmn", PositionUnit::kLengths, 58, false},
                                           {"xutm", "yutm", PositionUnit::kLengths, 58, true},
                                           {"eutm", "nutm", PositionUnit::kLengths, 58, false},
                                           {"rechtswert", "hochwert", PositionUnit::kLengths, 57, true},
                                           {"east", "north", PositionUnit::kLengths, 56, true},
                                           {"este", "norte", PositionUnit::kLengths, 55, true},
                                           {"ost", "nord", PositionUnit::kLengths, 54, false}}};

// Words of columns that tell of other places than those of fixes.
constexpr std::array<std::string_view, 22> kOtherPlaces = {
    "tagdep", "deploy", "release", "capture", "nest", "colony", "study", "start", "end",  "home",    "centroid",
    "mean",   "ecef",   "burrow",  "den",     "site", "roost",  "acc",   "mag",   "gyro", "station", "offset"};
// A solution that is not that of the satellite receiver on the animal.
constexpr std::array<std::string_view, 7> kCoarse = {"iridium", "argos", "gsm", "cell", "doppler", "cep", "network"};

struct Pair {
    std::size_t X;
    std::size_t Y;
    PositionUnit Unit;
    int Score;
};

/// "lonw", "latitudesouth": the name without the side that it tells.
std::string without_direction(const std::string& name) {
    for (const std::string_view start : {"longitude", "long", "lon", "latitude", "lat"}) {
        if (!name.starts_with(start)) continue;
        const std::string_view rest = std::string_view(name).substr(start.size());
        for (const std::string_view side : {"w", "e", "n", "s", "west", "east", "north", "south"})
            if (rest == side) return std::string(start);
    }
    return name;
}

bool has_any(std::string_view name, std::span<const std::string_view> words) {
    return std::any_of(words.begin(), words.end(),
                       [&](std::string_view word) { return name.find(word) != std::string_view::npos; });
}

/// What stands around a word in a name: "gps" and "1" in "gpslatitude1".
struct Around {
    std::string Before;
    std::string Behind;
    friend bool operator==(const Around&, const Around&) = default;
};

std::optional<Around> around(const std::string& name, const Words& words, std::string_view word) {
    if (name == word) return Around{};
    if (!words.Within) return std::nullopt;
    const std::size_t at = name.find(word);
    if (at == std::string::npos) return std::nullopt;
    return Around{name.substr(0, at), name.substr(at + word.size())};
}

/// "lat_min" is a corner of an area, or minutes.
bool is_corner(const Around& place) {
    const auto is_limit = [](const std::string& text) { return text == "min" || text == "max"; };
    return is_limit(place.Before) || is_limit(place.Behind);
}

/// Fewer points for what stands around a word: later solutions, coarse sources.
int score_around(const Around& place) {
    const std::string all = place.Before + place.Behind;
    int score = all.empty() ? 0 : -8;
    if (all.find("gps") != std::string::npos || all.find("fix") != std::string::npos) score += 18;
    if (has_any(all, kCoarse)) score -= 40;
    if (all.ends_with('2') || all.ends_with("3") || all.ends_with("alt")) score -= 30;
    return score;
}

int score_content(const ColumnProfile& x, const ColumnProfile& y) {
    if (x.IsEmpty() || y.IsEmpty()) return -60;
    return x.Coordinates() < 0.5 || y.Coordinates() < 0.5 ? -60 : 0;
}

class Finder {
public:
    Finder(const ColumnHeader& header, const std::vector<ColumnProfile>& profiles, const WantedColumns& wanted)
        : m_header(header), m_profiles(profiles), m_wanted(wanted) {}

    std::optional<Pair> ByName() {
        for (const Words& words : kWords)
            for (std::size_t x = 0; x < m_header.Count(); ++x) Consider(words, x);
        if (!m_best || m_best->Score < -50) return std::nullopt;
        return m_best;
    }

    /// Two neighbours that hold coordinates, one of which shows by its values which it is.
    std::optional<Pair> ByContent() const {
        std::vector<std::size_t> candidates;
        for (std::size_t i = 0; i < m_header.Count(); ++i)
            if (HoldsCoordinates(i)) candidates.push_back(i);
        if (candidates.size() != 2) return std::nullopt;
        const std::size_t a = candidates[0];
        const std::size_t b = candidates[1];
        if (IsLongitude(a) && !IsLongitude(b)) return Pair{a, b, PositionUnit::kDegrees, 0};
        if (IsLongitude(b) && !IsLongitude(a)) return Pair{b, a, PositionUnit::kDegrees, 0};
        return std::nullopt;
    }

private:
    void Consider(const Words& words, std::size_t x) {
        const auto place = around(without_direction(m_header.Bare(x)), words, words.X);
        if (!place || has_any(place->Before + place->Behind, kOtherPlaces) || is_corner(*place)) return;
        for (std::size_t y = 0; y < m_header.Count(); ++y) {
            if (y == x || around(without_direction(m_header.Bare(y)), words, words.Y) != place) continue;
            int score = words.Score + score_around(*place) + score_content(m_profiles[x], m_profiles[y]);
            if (m_wanted.InMetres && words.Unit != PositionUnit::kDegrees) score += 100;
            if (!m_best || score > m_best->Score) m_best = Pair{x, y, words.Unit, score};
            return;
        }
    }

    bool HoldsCoordinates(std::size_t column) const {
        const ColumnProfile& profile = m_profiles[column];
        if (has_any(m_header.Bare(column), kOtherPlaces)) return false;
        if (profile.Latitudes() > 0.9 || profile.Longitudes() > 0.9) return true;
        return profile.Fractions() > 0.8 && profile.Distinct() * 4 > profile.Filled() && profile.Min() >= -180.0 &&
               profile.Max() <= 360.0;
    }

    bool IsLongitude(std::size_t column) const {
        const ColumnProfile& profile = m_profiles[column];
        return profile.Longitudes() > 0.9 || profile.Min() < -90.0 || profile.Max() > 90.0;
    }

    const ColumnHeader& m_header;
    const std::vector<ColumnProfile>& m_profiles;
    const WantedColumns& m_wanted;
    std::optional<Pair> m_best;
};

constexpr std::array<std::string_view, 8> kZones = {"utmzone", "zone",    "gpsutmzone", "zoneutm",
                                                    "utmzona", "zonautm", "huso",       "zonenumber"};
constexpr std::array<std::string_view, 8> kNorthSouth = {"ns",    "northsouth",    "nsindicator", "latdir",
                                                         "latns", "lathemisphere", "latitudens",  "latdirection"};
constexpr std::array<std::string_view, 9> kEastWest = {
    "ew", "eastwest", "ewindicator", "londir", "lonew", "lonhemisphere", "longitudeew", "longdir", "londirection"};

/// Columns that hold both coordinates, and the order that their name tells.
struct PairName {
    std::string_view Name;
    std::optional<PairOrder> Order;
};
constexpr std::array<PairName, 44> kPairs = {{{"latlon", PairOrder::kLatitudeFirst},
                                              {"latlong", PairOrder::kLatitudeFirst},
                                              {"latlng", PairOrder::kLatitudeFirst},
                                              {"latitudelongitude", PairOrder::kLatitudeFirst},
                                              {"latitudelongitudes", PairOrder::kLatitudeFirst},
                                              {"gpslatlon", PairOrder::kLatitudeFirst},
                                              {"gpslatlong", PairOrder::kLatitudeFirst},
                                              {"latlongs", PairOrder::kLatitudeFirst},
                                              {"lonlat", PairOrder::kLongitudeFirst},
                                              {"longlat", PairOrder::kLongitudeFirst},
                                              {"lnglat", PairOrder::kLongitudeFirst},
                                              {"longitudelatitude", PairOrder::kLongitudeFirst},
                                              {"xy", PairOrder::kLongitudeFirst},
                                              {"geometry", std::nullopt},
                                              {"geom", std::nullopt},
                                              {"thegeom", std::nullopt},
                                              {"wkt", std::nullopt},
                                              {"wktgeom", std::nullopt},
                                              {"geometrywkt", std::nullopt},
                                              {"geomwkt", std::nullopt},
                                              {"footprintwkt", std::nullopt},
                                              {"shape", std::nullopt},
                                              {"location", std::nullopt},
                                              {"position", std::nullopt},
                                              {"coordinates", std::nullopt},
                                              {"coordinate", std::nullopt},
                                              {"coords", std::nullopt},
                                              {"coord", std::nullopt},
                                              {"gps", std::nullopt},
                                              {"gpsposition", std::nullopt},
                                              {"gpslocation", std::nullopt},
                                              {"gpscoordinates", std::nullopt},
                                              {"point", std::nullopt},
                                              {"loc", std::nullopt},
                                              {"pos", std::nullopt},
                                              {"koordinaten", std::nullopt},
                                              {"koordinater", std::nullopt},
                                              {"coordenadas", std::nullopt},
                                              {"coordonnees", std::nullopt},
                                              {"coordinaten", std::nullopt},
                                              {"координаты", std::nullopt},
                                              {"坐标", std::nullopt},
                                              {"座標", std::nullopt},
                                              {"좌표", std::nullopt}}};

/// What the cells of a column tell of the positions in them.
struct PairCells {
    std::size_t Positions = 0;
    std::size_t Ordered = 0;  ///< by their notation
    bool FirstIsWide = false;
    bool SecondIsWide = false;
    std::string Example;
};

PairCells pair_cells(const ColumnProfile& profile) {
    PairCells cells;
    for (const std::string& cell : profile.Values()) {
        if (is_empty_position(cell)) ++cells.Positions, ++cells.Ordered;
        const auto position = position_from_text(cell);
        if (!position) continue;
        ++cells.Positions;
        if (position->Order) ++cells.Ordered;
        cells.FirstIsWide = cells.FirstIsWide || std::abs(position->First) > 90.0;
        cells.SecondIsWide = cells.SecondIsWide || std::abs(position->Second) > 90.0;
        if (cells.Example.empty() || cell < cells.Example) cells.Example = cell;
    }
    return cells;
}

/// The order of the coordinates of one column, by its cells, its name, and what no latitude can be.
void settle_pair(const ColumnHeader& header, const ColumnProfile& profile, const std::string& name,
                 std::optional<PairOrder> named, PositionColumns& columns) {
    const PairCells cells = pair_cells(profile);
    columns.Order = named;
    if (cells.Ordered == cells.Positions) columns.Order = PairOrder::kLongitudeFirst;
    if (columns.Order) return;
    if (cells.FirstIsWide != cells.SecondIsWide) {
        columns.Order = cells.FirstIsWide ? PairOrder::kLongitudeFirst : PairOrder::kLatitudeFirst;
        return;
    }
    header.Refuse(
        fmt::format("nothing tells whether latitude or longitude comes first in positions like \"{}\"; give "
                    "--x \"{}:2\" --y \"{}:1\" for latitude, or --x \"{}:1\" --y \"{}:2\" for longitude",
                    shown(cells.Example), name, name, name, name));
}

/// The only column whose cells tell themselves that they are positions, and in which order.
std::optional<std::size_t> ordered_pairs(const ColumnHeader& header, const std::vector<ColumnProfile>& profiles) {
    constexpr std::size_t kLongest = 200;  // texts of other kinds can be very long
    const auto is_long = [](const std::string& cell) { return cell.size() > kLongest; };
    std::optional<std::size_t> found;
    for (std::size_t i = 0; i < header.Count(); ++i) {
        if (std::ranges::any_of(profiles[i].Values(), is_long)) continue;
        if (profiles[i].IsEmpty() || profiles[i].Coordinates() > 0.1 || has_any(header.Bare(i), kOtherPlaces)) continue;
        const PairCells cells = pair_cells(profiles[i]);
        if (cells.Ordered * 10 <= profiles[i].Distinct() * 9) continue;
        if (found) return std::nullopt;
        found = i;
    }
    return found;
}

/// A column that its name, or points of well-known text, show to hold positions.
bool find_pair(const ColumnHeader& header, const std::vector<ColumnProfile>& profiles, PositionColumns& columns) {
    const auto holds_pairs = [&](std::size_t i) {
        return profiles[i].Numbers() < 0.5 && !profiles[i].IsEmpty() &&
               pair_cells(profiles[i]).Positions * 10 > profiles[i].Distinct() * 9;
    };
    for (const PairName& pair : kPairs)
        for (std::size_t i = 0; i < header.Count(); ++i) {
            if ((header.Bare(i) != pair.Name && header.BareAll(i) != pair.Name) || !holds_pairs(i)) continue;
            columns.X = columns.Y = i;
            settle_pair(header, profiles[i], header.Name(i), pair.Order, columns);
            return true;
        }
    const auto found = ordered_pairs(header, profiles);
    if (!found) return false;
    columns.X = columns.Y = *found;
    columns.ByContent = true;
    settle_pair(header, profiles[*found], header.Name(*found), std::nullopt, columns);
    return true;
}

/// "COLUMN:1" and "COLUMN:2" of --x and --y.
bool named_pair(const ColumnHeader& header, const WantedColumns& wanted, PositionColumns& columns) {
    if (header.Find(wanted.X) || header.Find(wanted.Y)) return false;
    const bool longitudeFirst = wanted.X.ends_with(":1") && wanted.Y.ends_with(":2");
    const bool latitudeFirst = wanted.X.ends_with(":2") && wanted.Y.ends_with(":1");
    if (!longitudeFirst && !latitudeFirst) return false;
    const auto x = header.Find(std::string_view(wanted.X).substr(0, wanted.X.size() - 2));
    const auto y = header.Find(std::string_view(wanted.Y).substr(0, wanted.Y.size() - 2));
    if (!x || x != y) return false;
    columns.X = columns.Y = *x;
    columns.Order = longitudeFirst ? PairOrder::kLongitudeFirst : PairOrder::kLatitudeFirst;
    return true;
}

/// Parts of a degree that a column's name tells: "lat_e7", "lat*1e7".
double per_degree(const ColumnHeader& header, std::size_t column, const ColumnProfile& profile) {
    if (std::max(std::abs(profile.Min()), std::abs(profile.Max())) <= 360.0) return 1.0;
    const std::string& name = header.BareAll(column);
    if (name.ends_with("e7") || name.find("1e7") != std::string::npos) return 1e7;
    if (name.ends_with("e6") || name.find("1e6") != std::string::npos) return 1e6;
    if (name.ends_with("e5") || name.find("1e5") != std::string::npos) return 1e5;
    return 1.0;
}

/// Whether all values can be degrees and minutes in one number; `beyond`: some are no degrees.
bool can_be_of_receiver(const ColumnProfile& profile, double most, bool& beyond) {
    return std::ranges::all_of(profile.Values(), [&](const std::string& cell) {
        const auto coordinate = coordinate_from_text(cell);
        if (!coordinate) return true;
        beyond = beyond || std::abs(coordinate->Value) > most;
        return std::abs(coordinate->Value) < most * 100.0 && degrees_of_receiver(coordinate->Value).has_value();
    });
}

/// Degrees and minutes in one number, where names or letters of hemispheres make it sure.
bool is_of_receiver(const ColumnHeader& header, const std::vector<ColumnProfile>& profiles,
                    const PositionColumns& columns) {
    const ColumnProfile& x = profiles[columns.X];
    const ColumnProfile& y = profiles[columns.Y];
    const bool named = header.BareAll(columns.X).find("ddmm") != std::string::npos &&
                       header.BareAll(columns.Y).find("ddmm") != std::string::npos;
    const bool lettered = (columns.EastOrWest && columns.NorthOrSouth) || (x.Longitudes() > 0.9 && y.Latitudes() > 0.9);
    bool beyond = false;
    if (columns.Unit == PositionUnit::kLengths || (!named && !lettered)) return false;
    return can_be_of_receiver(x, 180.0, beyond) && can_be_of_receiver(y, 90.0, beyond) && beyond;
}

/// Columns of north or south and east or west, by their names, or the only two in the table that hold such letters.
void find_hemispheres(const ColumnHeader& header, const std::vector<ColumnProfile>& profiles,
                      PositionColumns& columns) {
    const auto named = [&](std::span<const std::string_view> names, auto holds) {
        const auto found = header.FindFirst(names);
        return found && (profiles[*found].*holds)() ? found : std::nullopt;
    };
    const auto only = [&](auto holds) -> std::optional<std::size_t> {
        const auto count = std::ranges::count_if(profiles, [&](const auto& profile) { return (profile.*holds)(); });
        const auto found = std::ranges::find_if(profiles, [&](const auto& profile) { return (profile.*holds)(); });
        return count == 1 ? std::optional(static_cast<std::size_t>(found - profiles.begin())) : std::nullopt;
    };
    columns.NorthOrSouth = named(kNorthSouth, &ColumnProfile::IsNorthOrSouth);
    columns.EastOrWest = named(kEastWest, &ColumnProfile::IsEastOrWest);
    const auto northOrSouth = columns.NorthOrSouth ? columns.NorthOrSouth : only(&ColumnProfile::IsNorthOrSouth);
    const auto eastOrWest = columns.EastOrWest ? columns.EastOrWest : only(&ColumnProfile::IsEastOrWest);
    if (columns.Unit == PositionUnit::kLengths || !northOrSouth || !eastOrWest) return;
    columns.NorthOrSouth = northOrSouth;
    columns.EastOrWest = eastOrWest;
}

/// What the letter O stands for beside the others: with E it is the west, with W the east.
void settle_letter_o(const ColumnHeader& header, const std::vector<ColumnProfile>& profiles, PositionColumns& columns) {
    if (!columns.EastOrWest) return;
    const auto holds = [&](char letter) {
        return std::ranges::any_of(profiles[*columns.EastOrWest].Values(),
                                   [&](const std::string& cell) { return hemisphere_from_text(cell) == letter; });
    };
    if (!holds('O')) return;
    if (holds('E') == holds('W'))
        header.Refuse(
            fmt::format("the letter O in column \"{}\" may be east (Ost) or west (Oeste, Ouest); write E or W",
                        header.Name(*columns.EastOrWest)));
    columns.LetterO = holds('E') ? 'W' : 'E';
}

/// Whether whole numbers in columns of degrees can be nothing but ten-millionths of a degree: most latitudes are above
/// 9e7, or most longitudes above 3.6e8, which no millionths and no metres are.
bool are_ten_millionths(const std::vector<ColumnProfile>& profiles, const PositionColumns& columns) {
    const ColumnProfile& x = profiles[columns.X];
    const ColumnProfile& y = profiles[columns.Y];
    if (columns.Unit != PositionUnit::kDegrees || x.Integers() < 0.9 || y.Integers() < 0.9) return false;
    const auto mostly_within = [](const ColumnProfile& profile, double least, double most) {
        const auto count = std::ranges::count_if(profile.Values(), [&](const std::string& cell) {
            const auto value = coordinate_from_text(cell);
            return value && std::abs(value->Value) > least && std::abs(value->Value) <= most;
        });
        return static_cast<double>(count) >= 0.8 * static_cast<double>(profile.Distinct());
    };
    constexpr double kPerDegree = 1e7;
    return mostly_within(y, 360.0, 90.0 * kPerDegree) && mostly_within(x, 360.0, 360.0 * kPerDegree) &&
           (mostly_within(y, 9e7, 90.0 * kPerDegree) || mostly_within(x, 3.6e8, 360.0 * kPerDegree));
}

constexpr std::array<std::string_view, 8> kDegreeWords = {"degrees", "degree", "grados", "grader",
                                                          "grade",   "grad",   "deg",    "d"};
constexpr std::array<std::string_view, 8> kMinuteWords = {"minutes", "minute", "minutos", "minuten",
                                                          "minuter", "minuti", "min",     "m"};
constexpr std::array<std::string_view, 8> kSecondWords = {"seconds",  "second", "segundos", "sekunden",
                                                          "sekunder", "sec",    "sek",      "s"};

/// A name without the word for degrees, minutes or seconds at its end.
std::string without_part(const std::string& name) {
    for (const auto& words : {kDegreeWords, kMinuteWords, kSecondWords})
        for (const std::string_view word : words)
            if (name.size() > word.size() + 2 && name.ends_with(word)) return name.substr(0, name.size() - word.size());
    return name;
}

std::optional<std::size_t> part_named(const ColumnHeader& header, const std::string& stem,
                                      std::span<const std::string_view> words) {
    for (const std::string_view word : words)
        if (const auto found = header.FindBare(stem + std::string(word))) return found;
    return std::nullopt;
}

struct PartedColumn {
    std::size_t Degrees;
    DegreeParts Parts;
};

/// Whole degrees, minutes below 60, and perhaps seconds below 60, in columns of one name but for its end.
std::optional<PartedColumn> parted_column(const ColumnHeader& header, const std::vector<ColumnProfile>& profiles,
                                          std::size_t column) {
    const std::string stem = without_part(header.Bare(column));
    auto degrees = part_named(header, stem, kDegreeWords);
    if (!degrees) degrees = header.FindBare(stem);
    const auto minutes = part_named(header, stem, kMinuteWords);
    const auto is_part = [&](std::size_t part) {
        const auto& cells = profiles[part].Values();
        const auto count = std::ranges::count_if(cells, [](const std::string& cell) {
            const auto value = coordinate_from_text(cell);
            return value && value->Value >= 0.0 && value->Value < 60.0;
        });
        return !cells.empty() && static_cast<std::size_t>(count) * 5 >= cells.size() * 4;
    };
    if (!degrees || !minutes || profiles[*degrees].Integers() < 0.9 || !is_part(*minutes)) return std::nullopt;
    auto seconds = part_named(header, stem, kSecondWords);
    if (seconds && !is_part(*seconds)) seconds.reset();
    return PartedColumn{*degrees, {*minutes, seconds}};
}

/// Degrees, minutes and seconds in columns of their own.
void find_parts(const ColumnHeader& header, const std::vector<ColumnProfile>& profiles, PositionColumns& columns) {
    if (columns.Unit == PositionUnit::kLengths) return;
    const auto x = parted_column(header, profiles, columns.X);
    const auto y = parted_column(header, profiles, columns.Y);
    if (!x || !y) return;
    columns.X = x->Degrees;
    columns.Y = y->Degrees;
    columns.PartsOfX = x->Parts;
    columns.PartsOfY = y->Parts;
}

void refuse_radians(const ColumnHeader& header, const PositionColumns& columns) {
    const std::string& name = header.BareAll(columns.X);
    if (name.find("radian") == std::string::npos && (!name.ends_with("rad") || name.ends_with("grad"))) return;
    header.Refuse(
        fmt::format("the columns \"{}\" and \"{}\" are in radians; turn them into degrees (times 57.29577951)",
                    header.Name(columns.X), header.Name(columns.Y)));
}

bool names_direction(const std::string& all, std::string_view letter, std::string_view word) {
    const auto starts = {"lon", "long", "longitude", "lat", "latitude"};
    return std::ranges::any_of(starts, [&](std::string_view start) {
        return all == std::string(start) + std::string(letter) || all == std::string(start) + std::string(word);
    });
}

}  // namespace

PositionColumns find_position(const ColumnHeader& header, const std::vector<ColumnProfile>& profiles,
                              const WantedColumns& wanted) {
    PositionColumns columns;
    if (!wanted.X.empty() && !wanted.Y.empty()) {
        if (named_pair(header, wanted, columns)) return columns;
        columns.X = header.Named(wanted.X, "--x");
        columns.Y = header.Named(wanted.Y, "--y");
        if (columns.IsPair()) {
            settle_pair(header, profiles[columns.X], header.Name(columns.X), std::nullopt, columns);
            return columns;
        }
    } else {
        Finder finder(header, profiles, wanted);
        auto found = finder.ByName();
        if (!found && find_pair(header, profiles, columns)) return columns;
        if (!found) {
            found = finder.ByContent();
            columns.ByContent = found.has_value();
        }
        if (!found)
            header.Refuse(
                "no two columns look like the position of a fix; give them by --x COLUMN --y COLUMN, if the table "
                "holds fixes");
        columns.X = found->X;
        columns.Y = found->Y;
        columns.Unit = found->Unit;
    }
    if (columns.Unit != PositionUnit::kDegrees) columns.Zone = header.FindFirst(kZones);
    find_parts(header, profiles, columns);
    find_hemispheres(header, profiles, columns);
    settle_letter_o(header, profiles, columns);
    refuse_radians(header, columns);
    columns.PerDegree = per_degree(header, columns.X, profiles[columns.X]);
    if (columns.PerDegree != per_degree(header, columns.Y, profiles[columns.Y])) columns.PerDegree = 1.0;
    if (columns.PerDegree == 1.0 && are_ten_millionths(profiles, columns)) {
        columns.PerDegree = 1e7;
        columns.PartsByContent = true;
    }
    columns.IsOfReceiver = is_of_receiver(header, profiles, columns);
    columns.WestPositive = names_direction(header.BareAll(columns.X), "w", "west") && profiles[columns.X].Min() >= 0.0;
    // "lats" beside "lons" is a plural.
    const bool isPlural = header.BareAll(columns.X).ends_with('s');
    columns.SouthPositive =
        !isPlural && names_direction(header.BareAll(columns.Y), "s", "south") && profiles[columns.Y].Min() >= 0.0;
    return columns;
}

}  // namespace wxl::tracking
