#include "adapters/tracking/time_columns.h"

#include "adapters/tracking/cell_text.h"
#include "adapters/tracking/number_text.h"
#include "adapters/tracking/time_text.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fmt/format.h>
#include <span>
#include <utility>

namespace wxl::tracking {

namespace {

using platform::Trim;

bool has(const std::string& name, std::string_view part) {
    return name.find(part) != std::string::npos;
}

bool has_any(const std::string& name, std::span<const std::string_view> parts) {
    return std::any_of(parts.begin(), parts.end(), [&](std::string_view part) { return has(name, part); });
}

constexpr std::array<std::string_view, 30> kTimeWords = {
    "time",        "date",     "stamp", "datum",    "fecha", "zeit",     "hora", "heure", "klokka",     "epoch",
    "acquisition", "tidpunkt", "tijd",  "datetime", "utc",   "recorded", "дата", "время", "ημερομηνια", "日期",
    "时间",        "時間",     "日付",  "日時",     "時刻",  "날짜",     "시간", "일시",  "paivamaara", "tarih"};
constexpr std::array<std::string_view, 19> kWholeTimeWords = {
    "t",   "tid", "dato", "data", "when",    "begin", "dt",  "t1",  "ts", "tscorrected",
    "час", "ωρα", "aika", "saat", "godzina", "czas",  "cas", "ido", "ora"};
constexpr std::array<std::string_view, 4> kUtcWords = {"utc", "gmt", "zulu", "unix"};
constexpr std::array<std::string_view, 4> kLocalWords = {"local", "lmt", "localtime", "lokal"};
constexpr std::array<std::string_view, 16> kOfMessage = {
    "scts",   "msg",      "txdate", "txtime",   "receive", "message", "sent",         "upload",
    "uplink", "transmit", "import", "download", "update",  "created", "transmission", "server"};
constexpr std::array<std::string_view, 17> kOfOtherThings = {
    "deploy", "birth", "capture", "mortality", "sunrise", "sunset",    "release",  "hatch", "moult",
    "first",  "last",  "onset",   "timezone",  "used",    "timetoget", "modified", "ttf"};
constexpr std::array<std::string_view, 4> kOfStart = {"start", "begin", "end", "stop"};
constexpr std::array<std::string_view, 20> kDateWords = {
    "date", "datum", "fecha", "dato",       "data", "day",  "jour", "yearday",    "dag", "utcdate",
    "dia",  "tag",   "дата",  "ημερομηνια", "日期", "日付", "날짜", "paivamaara", "pvm", "tarih"};

bool speaks_of_time(const std::string& bare) {
    return has_any(bare, kTimeWords) ||
           std::find(kWholeTimeWords.begin(), kWholeTimeWords.end(), bare) != kWholeTimeWords.end();
}

/// Hour, minute and second in one number, as 90500 for 9:05.
bool is_clock(const ColumnProfile& profile) {
    return profile.Clocks() > 0.9 && (profile.LongestWhole() == 5 || profile.LongestWhole() == 6);
}

struct Candidate {
    std::size_t Column;
    int Score;
    bool NeedsTimeOfDay;
    bool ByContent;
};

class Finder {
public:
    Finder(const ColumnHeader& header, const std::vector<ColumnProfile>& profiles, const PositionColumns& position)
        : m_header(header), m_profiles(profiles), m_position(position) {}

    std::optional<Candidate> Best() const {
        std::optional<Candidate> best;
        for (std::size_t i = 0; i < m_header.Count(); ++i) {
            if (i == m_position.X || i == m_position.Y) continue;
            const auto candidate = Judged(i);
            if (candidate && (!best || candidate->Score > best->Score)) best = candidate;
        }
        return best;
    }

    /// The column with the time of day that belongs to the dates of another.
    std::optional<std::size_t> TimeOfDayFor(std::size_t date) const {
        std::optional<std::size_t> best;
        int most = 0;
        for (std::size_t i = 0; i < m_header.Count(); ++i) {
            const int score = i == date ? 0 : Belongs(date, i);
            if (score <= most) continue;
            most = score;
            best = i;
        }
        return best;
    }

    std::string Name(std::size_t column) const { return m_header.BareAll(column); }

private:
    std::optional<Candidate> Judged(std::size_t column) const {
        const std::string name = Name(column);
        const ColumnProfile& profile = m_profiles[column];
        const bool named = speaks_of_time(name);
        const bool isNumber = profile.Numbers() > 0.9;
        const double full = profile.FullTimes();
        const double dates = profile.Dates();
        if (profile.IsEmpty() && !named) return std::nullopt;
        Candidate candidate{column, 0, false, !named};
        if (full + dates >= 0.5 && full >= dates && (named || (full > 0.9 && !isNumber))) {
            candidate.Score = 100;
        } else if (named && profile.NumberKind() && !IsClockBesideDate(column)) {
            candidate.Score = 95;
            candidate.NeedsTimeOfDay = profile.NumberKind() == TimeKind::kSheetDays && profile.Whole() > 0.9;
        } else if (full + dates >= 0.5 && (named || is_date_name(name) || (dates > 0.9 && !isNumber))) {
            candidate.NeedsTimeOfDay = true;
            candidate.ByContent = !named && !is_date_name(name);
            candidate.Score = TimeOfDayFor(column) ? 90 : 60;
        } else if (named && profile.TimesOfDay() < 0.5) {
            candidate.Score = 5;  // so that its cells are told to be no times
        } else {
            return std::nullopt;
        }
        candidate.Score += ScoreOfName(name, candidate.ByContent);
        // A column of some other thing is left alone, whatever it holds.
        if (has_any(name, kOfOtherThings)) return std::nullopt;
        return candidate;
    }

    /// 60500 is five past six where another column holds the date.
    bool IsClockBesideDate(std::size_t column) const {
        if (!is_clock(m_profiles[column])) return false;
        for (std::size_t i = 0; i < m_header.Count(); ++i)
            if (i != column && m_profiles[i].Dates() > 0.5 && (speaks_of_time(Name(i)) || is_date_name(Name(i))))
                return true;
        return false;
    }

    static bool is_date_name(const std::string& name) {
        return std::any_of(kDateWords.begin(), kDateWords.end(),
                           [&](std::string_view word) { return name == word || name == "gps" + std::string(word); });
    }

    static int ScoreOfName(const std::string& name, bool byContent) {
        int score = byContent ? -50 : 0;
        if (name == "timestamp" || name == "eventdate") score += 30;
        if (has(name, "fix") || has(name, "gps")) score += 20;
        if (has_any(name, kUtcWords)) score += 15;
        if (has(name, "timestamp") || has(name, "datetime") || has(name, "acquisition")) score += 5;
        if (has_any(name, kLocalWords)) score -= 35;
        if (has_any(name, kOfStart)) score -= 30;
        if (has_any(name, kOfMessage)) score -= 45;
        return score;
    }

    /// How surely the times of day of a column belong to a date; 0: not at all.
    int Belongs(std::size_t date, std::size_t column) const {
        const ColumnProfile& profile = m_profiles[column];
        const std::string name = Name(column);
        const std::string dateName = Name(date);
        const bool named =
            speaks_of_time(name) || name == "tod" || name == "uhrzeit" || name == "ora" || name == "hour";
        const bool plainText = profile.TimesOfDay() > 0.5 && profile.Numbers() < 0.5;
        const bool digits =
            named &&
            (is_clock(profile) || (profile.Whole() > 0.9 && profile.TimesOfDay() > 0.5 && profile.LongestWhole() <= 6));
        const bool shareOfDay = named && profile.Numbers() > 0.9 && profile.Min() >= 0.0 && profile.Max() < 1.0 &&
                                m_profiles[date].Numbers() > 0.9;
        const bool alsoDate = named && profile.FullTimes() > 0.5 && m_profiles[date].Dates() > 0.5;
        if (!plainText && !digits && !shareOfDay && !alsoDate) return 0;
        if (has_any(name, kOfMessage) != has_any(dateName, kOfMessage)) return 0;
        if (has_any(name, kLocalWords) != has_any(dateName, kLocalWords)) return 0;
        int score = 1;
        if (column == date + 1) score += 2;
        if (named) score += 4;
        if (has_any(name, kUtcWords) == has_any(dateName, kUtcWords)) score += 3;
        std::string partner = dateName;
        if (const std::size_t at = partner.find("date"); at != std::string::npos) partner.replace(at, 4, "time");
        if (partner == name) score += 10;
        return score;
    }

    const ColumnHeader& m_header;
    const std::vector<ColumnProfile>& m_profiles;
    const PositionColumns& m_position;
};

constexpr std::array<std::string_view, 7> kYear = {"year", "yr", "yyyy", "jahr", "annee", "ano", "ar"};
constexpr std::array<std::string_view, 8> kMonth = {"month", "mon", "monat", "mois", "mes", "maand", "mese", "mm"};
constexpr std::array<std::string_view, 8> kDay = {"day", "dayofmonth", "tag", "jour", "dia", "dag", "giorno", "dd"};
constexpr std::array<std::string_view, 8> kDayOfYear = {"doy",       "yday", "dayofyear", "julian",
                                                        "julianday", "jday", "yearday",   "jd"};
constexpr std::array<std::string_view, 10> kHour = {"hour", "hr",    "hh",  "stunde",  "heure",
                                                    "hora", "hours", "uur", "uhrzeit", "time"};
constexpr std::array<std::string_view, 4> kMinute = {"minute", "min", "mm", "minuto"};
constexpr std::array<std::string_view, 5> kSecond = {"second", "sec", "ss", "seconds", "segundo"};
constexpr std::array<std::string_view, 4> kTimeOfDay = {"time", "timeofday", "utctime", "gmttime"};

bool are_numbers(const std::vector<ColumnProfile>& profiles, std::optional<std::size_t> column) {
    return column && profiles[*column].Whole() > 0.9;
}

/// What numbers with decimals in a column of hours or times of day are.
enum class DecimalClock {
    kNone,
    kHours,      ///< 14.75 for 14:45
    kHourPoint,  ///< 14.45 for 14:45
    kShareOfDay  ///< 0.614583 for 14:45
};

std::size_t decimals_of(std::string_view cell) {
    const std::size_t mark = cell.find_first_of(".,");
    return mark == std::string_view::npos ? 0 : cell.size() - mark - 1;
}

/// Decided by what the other kind cannot be: minutes below 60 have two digits. `isClock`: the name says time of day.
DecimalClock decimal_clock(const ColumnProfile& profile, bool isClock) {
    if (profile.Numbers() < 0.9 || profile.Min() < 0.0 || profile.Max() > 24.0) return DecimalClock::kNone;
    bool canBeMinutes = true;
    bool hasMany = false;
    for (const std::string& cell : profile.Values()) {
        const std::size_t decimals = decimals_of(cell);
        hasMany = hasMany || decimals > 2;
        canBeMinutes = canBeMinutes && decimals == 2 && cell.substr(cell.size() - 2) < "60";
    }
    if (profile.Max() < 1.0) return hasMany ? DecimalClock::kShareOfDay : DecimalClock::kNone;
    if (canBeMinutes) return isClock ? DecimalClock::kHourPoint : DecimalClock::kNone;
    const bool isDecided = std::ranges::any_of(profile.Values(), [](const std::string& cell) {
        return decimals_of(cell) > 2 || (decimals_of(cell) == 2 && cell.substr(cell.size() - 2) >= "60");
    });
    return isDecided ? DecimalClock::kHours : DecimalClock::kNone;
}

bool is_named_clock(const ColumnHeader& header, std::size_t column) {
    constexpr std::array<std::string_view, 7> kClocks = {"time",       "uhrzeit", "timeofday", "ora",
                                                         "kellonaika", "utctime", "gmttime"};
    return std::ranges::find(kClocks, header.Bare(column)) != kClocks.end();
}

/// The minute beside a month: MM and mm are the same without their case.
std::optional<std::size_t> minute_column(const ColumnHeader& header, std::optional<std::size_t> month) {
    const auto minute = header.FindFirst(kMinute);
    if (!minute || minute != month) return minute;
    for (std::size_t i = *month + 1; i < header.Count(); ++i)
        if (header.Bare(i) == "mm") return i;
    return std::nullopt;
}

/// Year, month, day and hour, minute, second in columns of their own.
std::optional<TimeColumns> parted_columns(const ColumnHeader& header, const std::vector<ColumnProfile>& profiles) {
    const auto year = header.FindFirst(kYear);
    const auto dayOfYear = header.FindFirst(kDayOfYear);
    const auto month = header.FindFirst(kMonth);
    const auto day = header.FindFirst(kDay);
    if (!are_numbers(profiles, year)) return std::nullopt;
    TimeColumns columns;
    if (are_numbers(profiles, month) && are_numbers(profiles, day)) {
        columns.How = TimeColumns::Style::kYearMonthDay;
        columns.Columns = {*year, *month, *day};
    } else if (are_numbers(profiles, dayOfYear)) {
        columns.How = TimeColumns::Style::kYearAndDay;
        columns.Columns = {*year, *dayOfYear};
    } else {
        return std::nullopt;
    }
    const auto hour = header.FindFirst(kHour);
    const auto minute = minute_column(header, month);
    const auto ofDay = header.FindFirst(kTimeOfDay);
    if (hour && decimal_clock(profiles[*hour], false) == DecimalClock::kHours) {
        columns.Columns.push_back(*hour);
        columns.HoursPerUnit = 1.0;
    } else if (are_numbers(profiles, hour)) {
        columns.Columns.push_back(*hour);
        if (minute) columns.Columns.push_back(*minute);
        if (const auto second = header.FindFirst(kSecond); second && minute) columns.Columns.push_back(*second);
    } else if (ofDay && profiles[*ofDay].TimesOfDay() > 0.5) {
        columns.Columns.push_back(*ofDay);
    }
    return columns;
}

/// Hour, minute and second of a date in columns of their own.
void add_hour(TimeColumns& columns, const ColumnHeader& header, const std::vector<ColumnProfile>& profiles) {
    const auto is_part = [&](std::optional<std::size_t> column, double most) {
        return are_numbers(profiles, column) && profiles[*column].Min() >= 0.0 && profiles[*column].Max() <= most;
    };
    const auto hour = header.FindFirst(kHour);
    const ColumnProfile& date = profiles[columns.Columns.front()];
    if (date.Dates() < 0.5 || !hour || *hour == columns.Columns.front()) return;
    const DecimalClock clock = decimal_clock(profiles[*hour], is_named_clock(header, *hour));
    if (clock == DecimalClock::kNone && !is_part(hour, 24.0)) return;
    columns.How = TimeColumns::Style::kDateAndHour;
    columns.Columns.push_back(*hour);
    columns.HoursPerUnit = clock == DecimalClock::kShareOfDay ? 24.0 : clock == DecimalClock::kHours ? 1.0 : 0.0;
    if (clock != DecimalClock::kNone) return;
    const auto minute = header.FindFirst(kMinute);
    if (!is_part(minute, 59.0)) return;
    columns.Columns.push_back(*minute);
    if (const auto second = header.FindFirst(kSecond); is_part(second, 60.0)) columns.Columns.push_back(*second);
}

/// As many digits as the times of day of a column have with their leading zeros; 0 where they are no such numbers.
std::size_t clock_digits(const ColumnProfile& profile) {
    if (is_clock(profile)) return 6;
    return profile.Whole() > 0.9 && (profile.LongestWhole() == 3 || profile.LongestWhole() == 4) ? 4 : 0;
}

constexpr std::array<std::string_view, 6> kZone = {"tz",        "timezone", "utcoffset",
                                                   "gmtoffset", "tzoffset", "timezoneoffset"};

/// The offset of a clock as it stands behind a time: "+02:00", "UTC+2"; a bare number is one of hours.
std::string offset_text(std::string_view cell) {
    const bool bare = !cell.empty() && cell.front() >= '0' && cell.front() <= '9';
    return (bare ? " +" : " ") + std::string(cell);
}

bool holds_offsets(const ColumnProfile& profile) {
    return !profile.IsEmpty() && std::ranges::all_of(profile.Values(), [](const std::string& cell) {
        const auto time = time_from_text("2000-01-01 00:00" + offset_text(cell), {});
        return time && time->IsUtc;
    });
}

bool is_utc(const std::string& cell) {
    const auto time = time_from_text(cell, {});
    return time && time->IsUtc;
}

/// Times by the clock of a place, whose offset from UTC stands in another column.
void add_zone(TimeColumns& columns, const ColumnHeader& header, const std::vector<ColumnProfile>& profiles,
              bool namedByUser) {
    const ColumnProfile& first = profiles[columns.Columns.front()];
    const auto zone = header.FindFirst(kZone);
    const bool isNamed = zone && columns.Columns.size() > 1 && columns.Columns.back() == *zone;
    if (!zone || isNamed != namedByUser || columns.IsUtc || first.FullTimes() + first.Dates() < 0.5) return;
    if (!holds_offsets(profiles[*zone])) {
        if (!profiles[*zone].IsEmpty() && std::ranges::none_of(first.Values(), is_utc)) columns.NamedZone = zone;
        return;
    }
    if (!isNamed) columns.Columns.push_back(*zone);
    columns.EndsWithZone = true;
    columns.IsLocal = false;
}

/// The columns that the user named: one name, or several parted by commas.
std::vector<std::size_t> named_columns(const ColumnHeader& header, const std::string& wanted) {
    if (const auto whole = header.Find(wanted)) return {*whole};
    if (wanted.find(',') == std::string::npos) return {header.Named(wanted, "--time")};
    std::vector<std::size_t> columns;
    for (const std::string& name : platform::Split(wanted, ','))
        columns.push_back(header.Named(std::string(Trim(name)), "--time"));
    return columns;
}

void judge_name(TimeColumns& columns, const ColumnHeader& header) {
    std::string names;
    for (const std::size_t column : columns.Columns) names += header.BareAll(column) + " ";
    columns.IsUtc = has_any(names, kUtcWords);
    columns.IsLocal = has_any(names, kLocalWords);
}

bool is_whole_within(const ColumnProfile& profile, double least, double most) {
    return profile.Whole() > 0.9 && profile.Min() >= least && profile.Max() <= most;
}

/// Year, month and day, or year and day of the year, that the user named in columns of their own; day and month before
/// the year only where their values or names tell them apart.
void settle_parts(const ColumnHeader& header, const std::vector<ColumnProfile>& profiles, TimeColumns& columns) {
    auto& named = columns.Columns;
    const auto within = [&](std::size_t at, double least, double most) {
        return at < named.size() && is_whole_within(profiles[named[at]], least, most);
    };
    const auto is_called = [&](std::size_t at, std::span<const std::string_view> words) {
        return std::ranges::find(words, header.Bare(named[at])) != words.end();
    };
    if (within(0, 1800, 2100)) {
        const bool hasMonth = within(1, 1, 12) && within(2, 1, 31);
        if (hasMonth) columns.How = TimeColumns::Style::kYearMonthDay;
        if (!hasMonth && within(1, 1, 366)) columns.How = TimeColumns::Style::kYearAndDay;
        return;
    }
    if (!within(2, 1800, 2100) || !within(0, 1, 31) || !within(1, 1, 31)) return;
    const bool dayFirst = !within(0, 1, 12) || is_called(0, kDay) || is_called(1, kMonth);
    const bool monthFirst = !within(1, 1, 12) || is_called(0, kMonth) || is_called(1, kDay);
    if (dayFirst == monthFirst) return;
    columns.How = TimeColumns::Style::kYearMonthDay;
    std::swap(named[0], named[2]);
    if (monthFirst) std::swap(named[1], named[2]);
}

TimeColumns columns_named_by_user(const ColumnHeader& header, const std::vector<ColumnProfile>& profiles,
                                  const Finder& finder, const std::string& wanted) {
    TimeColumns columns;
    columns.Columns = named_columns(header, wanted);
    const ColumnProfile& first = profiles[columns.Columns.front()];
    if (columns.Columns.size() == 1 && first.FullTimes() < 0.5 && first.Dates() >= 0.5)
        if (const auto ofDay = finder.TimeOfDayFor(columns.Columns.front())) columns.Columns.push_back(*ofDay);
    settle_parts(header, profiles, columns);
    return columns;
}

void append_padded(std::string& text, std::string_view number, std::size_t width) {
    if (number.size() < width) text.append(width - number.size(), '0');
    text += number;
}

bool is_digits(std::string_view text) {
    return text.find_first_not_of("0123456789") == std::string_view::npos;
}

/// Puts the cells behind the first one.
void join_parts(const TimeColumns& columns, const std::function<std::string_view(std::size_t)>& cell,
                std::string& buffer) {
    const std::size_t count = columns.Columns.size() - (columns.EndsWithZone ? 1 : 0);
    for (std::size_t i = 1; i < count; ++i) {
        const std::string_view part = cell(columns.Columns[i]);
        if (is_missing(part)) continue;
        // The second column may hold the date, too; the first may hold the time of day already.
        const auto whole = time_from_text(part, {});
        if (whole && whole->HasTimeOfDay) {
            buffer = part;
            return;
        }
        const auto already = time_from_text(buffer, {});
        if (already && already->HasTimeOfDay) return;
        buffer += ' ';
        append_padded(buffer, part, is_digits(part) ? columns.ClockDigits : 0);
    }
}

/// A time that tells its offset itself keeps it.
void append_zone(std::string_view zone, std::string& buffer) {
    if (is_missing(zone)) return;
    const auto already = time_from_text(buffer, {});
    if (!already || !already->IsUtc) buffer += offset_text(zone);
}

/// A year of two digits in a column of its own is one from 1970 to 2069.
void complete_year(std::string& year) {
    if (year.size() == 2) year.insert(0, year < "70" ? "20" : "19");
}

/// 14:45:00 for 14.75.
std::string clock_of_hours(double hours) {
    const auto seconds = static_cast<int>(std::lround(hours * 3600.0));
    return fmt::format("{:02}:{:02}:{:02}", seconds / 3600, seconds / 60 % 60, seconds % 60);
}

/// Hour, minute and second, or a time of day, from a column on.
void append_time_of_day(const TimeColumns& columns, std::size_t from,
                        const std::function<std::string_view(std::size_t)>& cell, std::string& text) {
    const std::size_t count = columns.Columns.size() - (columns.EndsWithZone ? 1 : 0);
    for (std::size_t i = from; i < count; ++i) {
        const std::string_view part = cell(columns.Columns[i]);
        text += i == from ? ' ' : ':';
        if (columns.HoursPerUnit > 0.0) {
            text += clock_of_hours(number_from_text(part).value_or(-1.0) * columns.HoursPerUnit);
            return;
        }
        append_padded(text, part, 2);
        if (i == from && count == from + 1 && part.size() <= 2) text += ":00";
    }
}

/// A column that is called like a time of day, and is not among those of the time.
std::optional<std::size_t> unused_clock(const ColumnHeader& header, const std::vector<ColumnProfile>& profiles,
                                        const TimeColumns& columns) {
    for (std::size_t i = 0; i < header.Count(); ++i) {
        const std::string& name = header.Bare(i);
        const auto is_one_of = [&](std::span<const std::string_view> names) {
            return std::ranges::find(names, name) != names.end();
        };
        const bool isClock = is_one_of(kHour) || is_one_of(kTimeOfDay) || is_one_of(kMinute) || is_one_of(kSecond) ||
                             name.ends_with("ofday");
        const bool isTaken = std::ranges::find(columns.Columns, i) != columns.Columns.end();
        if (isClock && !isTaken && !profiles[i].IsEmpty()) return i;
    }
    return std::nullopt;
}

/// Whether the columns tell days alone.
bool are_days_alone(const TimeColumns& columns, const std::vector<ColumnProfile>& profiles) {
    if (columns.How == TimeColumns::Style::kYearMonthDay) return columns.Columns.size() == 3;
    if (columns.How == TimeColumns::Style::kYearAndDay) return columns.Columns.size() == 2;
    return columns.Columns.size() == 1 && profiles[columns.Columns.front()].Dates() >= 0.5;
}

}  // namespace

std::optional<TimeColumns> find_time(const ColumnHeader& header, const std::vector<ColumnProfile>& profiles,
                                     const WantedColumns& wanted, const PositionColumns& position) {
    if (wanted.NoTime) return std::nullopt;
    const Finder finder(header, profiles, position);
    TimeColumns columns;
    if (!wanted.Time.empty()) {
        columns = columns_named_by_user(header, profiles, finder, wanted.Time);
    } else {
        const auto best = finder.Best();
        if (!best || best->Score < 55) {
            if (auto parted = parted_columns(header, profiles)) {
                if (are_days_alone(*parted, profiles)) parted->UnusedClock = unused_clock(header, profiles, *parted);
                return parted;
            }
        }
        if (!best) return std::nullopt;
        columns.Columns = {best->Column};
        columns.ByContent = best->ByContent;
        if (best->NeedsTimeOfDay) {
            if (const auto ofDay = finder.TimeOfDayFor(best->Column)) {
                columns.Columns.push_back(*ofDay);
            } else {
                add_hour(columns, header, profiles);
            }
        }
    }
    if (are_days_alone(columns, profiles)) columns.UnusedClock = unused_clock(header, profiles, columns);
    if (columns.Columns.size() > 1) columns.ClockDigits = clock_digits(profiles[columns.Columns[1]]);
    judge_name(columns, header);
    add_zone(columns, header, profiles, !wanted.Time.empty());
    return columns;
}

std::string_view joined_time(const TimeColumns& columns, const std::function<std::string_view(std::size_t)>& cell,
                             std::string& buffer) {
    const std::string_view first = cell(columns.Columns.front());
    if (columns.Columns.size() == 1 || is_missing(first)) return is_missing(first) ? std::string_view() : first;
    buffer = first;
    switch (columns.How) {
        case TimeColumns::Style::kTogether:
            join_parts(columns, cell, buffer);
            if (columns.EndsWithZone) append_zone(cell(columns.Columns.back()), buffer);
            return buffer;
        case TimeColumns::Style::kDateAndHour:
            if (!is_missing(cell(columns.Columns[1]))) append_time_of_day(columns, 1, cell, buffer);
            if (columns.EndsWithZone) append_zone(cell(columns.Columns.back()), buffer);
            return buffer;
        case TimeColumns::Style::kYearAndDay:
            complete_year(buffer);
            buffer += '-';
            append_padded(buffer, cell(columns.Columns[1]), 3);
            append_time_of_day(columns, 2, cell, buffer);
            return buffer;
        case TimeColumns::Style::kYearMonthDay:
            complete_year(buffer);
            buffer += '-';
            buffer += cell(columns.Columns[1]);
            buffer += '-';
            buffer += cell(columns.Columns[2]);
            append_time_of_day(columns, 3, cell, buffer);
            return buffer;
    }
    return buffer;
}

}  // namespace wxl::tracking
