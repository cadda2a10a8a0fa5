#include "adapters/tracking/utm_rows.h"

#include "adapters/gdal/gdal_support.h"
#include "adapters/gdal/projection.h"
#include "adapters/tracking/cell_text.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <fmt/format.h>

namespace wxl::tracking {

namespace {

[[noreturn]] void refuse(const std::string& place, const std::string& zone, const std::string& what) {
    platform::Raise(
        platform::error_number::kTypeMismatch,
        fmt::format("{}: \"{}\" {}; name the coordinate system by --from-crs EPSG:n", place, shown(zone), what));
}

/// Whether N and S stand for the hemispheres: no other letter stands in the column, or both do.
bool letters_are_hemispheres(const std::vector<ZoneText>& zones) {
    return std::all_of(zones.begin(), zones.end(), [](const ZoneText& zone) {
        return zone.Letter == 'N' || zone.Letter == 'S' || zone.Letter == '\0';
    });
}

bool is_south(const ZoneText& zone, bool hemispheres) {
    return hemispheres ? zone.Letter == 'S' : zone.Letter < 'N';
}

/// Northings that lie within band S (32 to 40 degrees north), and as well far south of the equator.
bool can_be_band_s(std::span<const TrackingFix> fixes) {
    return std::all_of(fixes.begin(), fixes.end(),
                       [](const TrackingFix& fix) { return fix.Y >= 3.5e6 && fix.Y <= 4.5e6; });
}

}  // namespace

std::optional<ZoneText> zone_from_text(std::string_view text) {
    std::string bare = platform::UpperCase(platform::Trim(text));
    for (const std::string_view word : {"UTM", "ZONE"})
        if (const auto at = bare.find(word); at != std::string::npos) bare.erase(at, word.size());
    std::erase(bare, ' ');
    ZoneText zone;
    std::size_t digits = 0;
    while (digits < bare.size() && bare[digits] >= '0' && bare[digits] <= '9') ++digits;
    if (digits == 0 || digits > 2 || bare.size() > digits + 1) return std::nullopt;
    for (std::size_t i = 0; i < digits; ++i) zone.Number = zone.Number * 10 + (bare[i] - '0');
    if (bare.size() > digits) zone.Letter = bare[digits];
    const bool isLetter =
        zone.Letter == '\0' || (zone.Letter >= 'C' && zone.Letter <= 'X' && zone.Letter != 'I' && zone.Letter != 'O');
    if (zone.Number < 1 || zone.Number > 60 || !isLetter) return std::nullopt;
    return zone;
}

void project_utm_rows(std::span<TrackingFix> fixes, const std::vector<std::string>& zones,
                      const std::vector<std::uint8_t>& zoneOf, const std::string& place) {
    std::vector<ZoneText> parsed;
    for (const std::string& text : zones) {
        const auto zone = zone_from_text(text);
        if (!zone) refuse(place, text, "is no UTM zone");
        if (zone->Letter == '\0') refuse(place, text, "does not tell north from south");
        parsed.push_back(*zone);
    }
    const bool hemispheres = letters_are_hemispheres(parsed);
    const bool onlyS =
        std::all_of(parsed.begin(), parsed.end(), [](const ZoneText& zone) { return zone.Letter == 'S'; });
    if (onlyS && can_be_band_s(fixes)) refuse(place, zones.front(), "may be band S, in the north, or the south");
    const auto degrees = files::ReferenceFromText("EPSG:4326");
    for (std::size_t z = 0; z < parsed.size(); ++z) {
        const auto code = files::UtmZone{parsed[z].Number, is_south(parsed[z], hemispheres)}.Code();
        std::vector<platform::Point> points;
        for (std::size_t i = 0; i < fixes.size(); ++i)
            if (zoneOf[i] == z) points.push_back({fixes[i].X, fixes[i].Y});
        if (files::project(points, files::ReferenceFromText(code), degrees))
            refuse(place, zones[z], "holds a position that the zone does not have");
        std::size_t next = 0;
        for (std::size_t i = 0; i < fixes.size(); ++i) {
            if (zoneOf[i] != z) continue;
            fixes[i].X = points[next].X;
            fixes[i].Y = points[next].Y;
            ++next;
        }
    }
}

}  // namespace wxl::tracking
