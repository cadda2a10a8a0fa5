#include "adapters/files/tracking_columns.h"

#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <span>
#include <string_view>
#include <utility>

namespace wxl::files {

namespace {

using Names = std::span<const std::string_view>;

// Names without their punctuation and in small letters, the surest first: "location-long", "location.long",
// "location_long" and "locationLong" are all "locationlong".
constexpr std::array<std::string_view, 14> kId = {"individuallocalidentifier",
                                                  "organismid",
                                                  "individualid",
                                                  "animalid",
                                                  "animalname",
                                                  "individualname",
                                                  "animal",
                                                  "individual",
                                                  "organismname",
                                                  "name",
                                                  "taglocalidentifier",
                                                  "taglocal",
                                                  "tagid",
                                                  "id"};
constexpr std::array<std::string_view, 10> kX = {
    "locationlong", "decimallongitude", "longitude", "long", "lon", "lng", "x", "easting", "utmeasting", "utmx"};
constexpr std::array<std::string_view, 10> kY = {"locationlat", "decimallatitude", "latitude",    "lat", "lat", "lat",
                                                 "y",           "northing",        "utmnorthing", "utmy"};

/// A column of times, or of dates, and the column with the time of day that belongs to that date; none: kTimeOfDay.
struct TimeNames {
    std::string_view Time;
    std::string_view TimeOfDay;
};

// Times in UTC go before local ones.
constexpr std::array<TimeNames, 17> kTime = {{{"timestamp", ""},
                                              {"eventdate", ""},
                                              {"datetime", ""},
                                              {"timestamputc", ""},
                                              {"datetimeutc", ""},
                                              {"utcdatetime", ""},
                                              {"acquisitiontime", ""},
                                              {"utcdate", "utctime"},
                                              {"gmtdate", "gmttime"},
                                              {"date", ""},
                                              {"utctime", ""},
                                              {"gmttime", ""},
                                              {"fixtime", ""},
                                              {"time", ""},
                                              {"lmtdatetime", ""},
                                              {"lmtdate", "lmttime"},
                                              {"lmttime", ""}}};
constexpr std::array<std::string_view, 6> kTimeOfDay = {"time",    "eventtime", "timeofday",
                                                        "utctime", "gmttime",   "fixtime"};
constexpr std::array<std::string_view, 1> kVisible = {"visible"};
constexpr std::array<std::string_view, 3> kOutlier = {"importmarkedoutlier", "manuallymarkedoutlier",
                                                      "algorithmmarkedoutlier"};

// What may tell animals of the same name apart.
constexpr std::array<std::string_view, 2> kNumberOfAnimal = {"tagid", "id"};

std::string bare_name(std::string_view name) {
    std::string bare;
    for (const char c : name) {
        if (c >= 'A' && c <= 'Z') bare += static_cast<char>(c - 'A' + 'a');
        if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9')) bare += c;
    }
    return bare;
}

class Header {
public:
    Header(const std::vector<std::string>& names, std::string place) : m_names(names), m_place(std::move(place)) {
        for (const std::string& name : names) m_bare.push_back(bare_name(name));
    }

    std::optional<std::size_t> FindBare(std::string_view bare) const {
        const auto found = std::find(m_bare.begin(), m_bare.end(), bare);
        if (found == m_bare.end()) return std::nullopt;
        return static_cast<std::size_t>(found - m_bare.begin());
    }

    std::optional<std::size_t> FindFirst(Names bareNames) const {
        for (const std::string_view bare : bareNames)
            if (const auto found = FindBare(bare)) return found;
        return std::nullopt;
    }

    /// The column that the user named.
    std::size_t Named(const std::string& name, const std::string& option) const {
        const auto same = [&](const std::string& other) { return platform::EqualNoCase(other, name); };
        const auto found = std::find_if(m_names.begin(), m_names.end(), same);
        if (found == m_names.end()) Refuse(fmt::format("there is no column \"{}\" for {}", name, option));
        return static_cast<std::size_t>(found - m_names.begin());
    }

    [[noreturn]] void Refuse(const std::string& what) const {
        platform::Raise(platform::error_number::kTypeMismatch,
                        fmt::format("{}: {}; the columns are: {}", m_place, what, Listed()));
    }

private:
    /// The names for a message, which must not flood the screen when the file is no table at all.
    std::string Listed() const {
        std::string listed = fmt::format("{}", fmt::join(m_names, ", "));
        for (char& c : listed)
            if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = '?';
        constexpr std::size_t kLongest = 1000;
        if (listed.size() <= kLongest) return listed;
        std::size_t cut = kLongest;
        while ((static_cast<unsigned char>(listed[cut]) & 0xC0) == 0x80) --cut;
        return listed.substr(0, cut) + " ...";
    }

    const std::vector<std::string>& m_names;
    std::string m_place;
    std::vector<std::string> m_bare;
};

std::size_t find_id(const Header& header, const std::string& wanted) {
    if (!wanted.empty()) return header.Named(wanted, "--id");
    const auto found = header.FindFirst(kId);
    if (!found) header.Refuse("no column looks like the animal's name; give it by --id COLUMN");
    return *found;
}

void find_position(const Header& header, const TrackingColumns& wanted, TrackingLayout& layout) {
    if (!wanted.X.empty() && !wanted.Y.empty()) {
        layout.X = header.Named(wanted.X, "--x");
        layout.Y = header.Named(wanted.Y, "--y");
        return;
    }
    for (std::size_t i = 0; i < kX.size(); ++i) {
        const auto x = header.FindBare(kX[i]);
        const auto y = header.FindBare(kY[i]);
        if (!x || !y) continue;
        layout.X = *x;
        layout.Y = *y;
        return;
    }
    header.Refuse("no two columns look like a position; give them by --x COLUMN --y COLUMN");
}

void find_time(const Header& header, const std::string& wanted, TrackingLayout& layout) {
    if (!wanted.empty()) layout.Time = header.Named(wanted, "--time");
    for (const TimeNames& names : kTime) {
        const auto found = header.FindBare(names.Time);
        if (!found || (layout.Time && layout.Time != found)) continue;
        layout.Time = found;
        if (!names.TimeOfDay.empty()) layout.TimeOfDay = header.FindBare(names.TimeOfDay);
        break;
    }
    if (!layout.Time) return;
    if (!layout.TimeOfDay) layout.TimeOfDay = header.FindFirst(kTimeOfDay);
    if (layout.TimeOfDay == layout.Time) layout.TimeOfDay.reset();
}

}  // namespace

TrackingLayout find_tracking_columns(const std::vector<std::string>& header, const TrackingColumns& wanted,
                                     const std::string& place) {
    const Header columns(header, place);
    TrackingLayout layout;
    layout.Id = find_id(columns, wanted.Id);
    if (wanted.Id.empty() && bare_name(header[layout.Id]).ends_with("name"))
        layout.OtherId = columns.FindFirst(kNumberOfAnimal);
    find_position(columns, wanted, layout);
    find_time(columns, wanted.Time, layout);
    layout.Visible = columns.FindFirst(kVisible);
    for (const std::string_view name : kOutlier)
        if (const auto found = columns.FindBare(name)) layout.Outlier.push_back(*found);
    return layout;
}

std::optional<std::size_t> find_animal_column(const std::vector<std::string>& names) {
    return Header(names, "").FindFirst(kId);
}

}  // namespace wxl::files
