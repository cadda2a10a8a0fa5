#include "adapters/tracking/time_text.h"

#include "adapters/tracking/cell_text.h"
#include "adapters/tracking/time_numbers.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <initializer_list>

namespace wxl::tracking {

namespace {

constexpr std::int64_t kSecondsPerDay = 86400;

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

/// Letters, and the bytes of letters beyond ASCII.
bool is_letter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || static_cast<unsigned char>(c) >= 0x80;
}

/// Takes pieces from the front of a text.
class Scanner {
public:
    explicit Scanner(std::string_view text) : m_rest(text) {}

    bool AtEnd() const { return m_rest.empty(); }
    char Peek(std::size_t at = 0) const { return at < m_rest.size() ? m_rest[at] : '\0'; }
    void Skip(std::size_t count) { m_rest.remove_prefix(std::min(count, m_rest.size())); }
    std::string_view Rest() const { return m_rest; }

    bool Take(char wanted) {
        if (Peek() != wanted) return false;
        Skip(1);
        return true;
    }

    bool TakeAny(std::string_view wanted) {
        if (AtEnd() || wanted.find(Peek()) == std::string_view::npos) return false;
        Skip(1);
        return true;
    }

    void SkipBlanks() {
        while (Peek() == ' ') Skip(1);
    }

    std::size_t DigitsAhead() const {
        std::size_t count = 0;
        while (is_digit(Peek(count))) ++count;
        return count;
    }

    /// `count` digits that are known to stand there.
    int Number(std::size_t count) {
        int value = 0;
        for (std::size_t i = 0; i < count; ++i) value = value * 10 + (m_rest[i] - '0');
        Skip(count);
        return value;
    }

    std::string_view Word() {
        std::size_t length = 0;
        while (length < m_rest.size() && is_letter(m_rest[length])) ++length;
        const std::string_view word = m_rest.substr(0, length);
        Skip(length);
        return word;
    }

    bool TakeWord(std::string_view word) {
        if (!platform::EqualNoCase(m_rest.substr(0, word.size()), word) || is_letter(Peek(word.size()))) return false;
        Skip(word.size());
        return true;
    }

private:
    std::string_view m_rest;
};

std::optional<std::int64_t> days_of(int year, int month, int day) {
    if (year < 1 || year > 9999 || month < 1 || month > 12 || day < 1) return std::nullopt;
    const std::chrono::year_month_day date{std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                                           std::chrono::day(static_cast<unsigned>(day))};
    if (!date.ok()) return std::nullopt;
    return std::chrono::sys_days(date).time_since_epoch().count();
}

std::optional<std::int64_t> days_of_year(int year, int day) {
    const auto first = days_of(year, 1, 1);
    const bool leap = std::chrono::year(year).is_leap();
    if (!first || day < 1 || day > (leap ? 366 : 365)) return std::nullopt;
    return *first + day - 1;
}

int whole_year(int number, std::size_t digits) {
    if (digits > 2) return number;
    return number < 70 ? 2000 + number : 1900 + number;
}

/// A number of a date and the count of its digits.
struct Part {
    int Value;
    std::size_t Digits;
};

/// Three numbers in an order; the year has two or four digits, the others one or two.
std::optional<std::int64_t> days_in_order(const std::array<Part, 3>& parts, DateOrder order) {
    const std::size_t year = order == DateOrder::kYearMonthDay ? 0 : 2;
    const std::size_t month = order == DateOrder::kMonthDayYear ? 0 : 1;
    const std::size_t day = 3 - year - month;
    if (parts[year].Digits != 2 && parts[year].Digits != 4) return std::nullopt;
    if (parts[month].Digits > 2 || parts[day].Digits > 2) return std::nullopt;
    return days_of(whole_year(parts[year].Value, parts[year].Digits), parts[month].Value, parts[day].Value);
}

/// Months by the first letters of their names, small and without accents, in the languages of many tables.
struct MonthName {
    std::string_view Start;
    int Month;
};
constexpr std::array<MonthName, 154> kMonths = {
    {{"jan", 1},    {"ene", 1},    {"gen", 1},    {"sty", 1},     {"janv", 1},   {"led", 1},      {"oca", 1},
     {"tammi", 1},  {"ian", 1},    {"sij", 1},    {"sau", 1},     {"янв", 1},    {"січ", 1},      {"ιαν", 1},
     {"feb", 2},    {"fev", 2},    {"lut", 2},    {"uno", 2},     {"sub", 2},    {"helmi", 2},    {"velj", 2},
     {"vas", 2},    {"фев", 2},    {"лют", 2},    {"φεβ", 2},     {"mar", 3},    {"mrz", 3},      {"mrt", 3},
     {"maa", 3},    {"maerz", 3},  {"brez", 3},   {"ozu", 3},     {"kov", 3},    {"мар", 3},      {"бер", 3},
     {"μαρ", 3},    {"apr", 4},    {"avr", 4},    {"abr", 4},     {"kwi", 4},    {"dub", 4},      {"nis", 4},
     {"huhti", 4},  {"tra", 4},    {"bal", 4},    {"апр", 4},     {"кві", 4},    {"απρ", 4},      {"may", 5},
     {"mai", 5},    {"mei", 5},    {"maj", 5},    {"mag", 5},     {"kve", 5},    {"touko", 5},    {"svi", 5},
     {"geg", 5},    {"maig", 5},   {"мая", 5},    {"май", 5},     {"тра", 5},    {"jun", 6},      {"juin", 6},
     {"giu", 6},    {"cze", 6},    {"cerven", 6}, {"cervn", 6},   {"cvn", 6},    {"haz", 6},      {"kesa", 6},
     {"lipanj", 6}, {"lipnja", 6}, {"bir", 6},    {"juuni", 6},   {"iun", 6},    {"июн", 6},      {"чер", 6},
     {"ιουν", 6},   {"jul", 7},    {"juil", 7},   {"lug", 7},     {"lip", 7},    {"cervenec", 7}, {"cervenc", 7},
     {"cvc", 7},    {"tem", 7},    {"heina", 7},  {"srpanj", 7},  {"srpnja", 7}, {"lie", 7},      {"juuli", 7},
     {"iul", 7},    {"июл", 7},    {"лип", 7},    {"ιουλ", 7},    {"aug", 8},    {"aou", 8},      {"ago", 8},
     {"agu", 8},    {"avg", 8},    {"sie", 8},    {"srp", 8},     {"elo", 8},    {"kolovoz", 8},  {"rugp", 8},
     {"авг", 8},    {"сер", 8},    {"αυγ", 8},    {"sep", 9},     {"sept", 9},   {"set", 9},      {"wrz", 9},
     {"zar", 9},    {"eyl", 9},    {"syys", 9},   {"ruj", 9},     {"rugs", 9},   {"szept", 9},    {"сен", 9},
     {"вер", 9},    {"σεπ", 9},    {"oct", 10},   {"okt", 10},    {"out", 10},   {"ott", 10},     {"paz", 10},
     {"rij", 10},   {"eki", 10},   {"loka", 10},  {"spa", 10},    {"окт", 10},   {"жов", 10},     {"οκτ", 10},
     {"nov", 11},   {"lis", 11},   {"kas", 11},   {"marras", 11}, {"stu", 11},   {"lap", 11},     {"noi", 11},
     {"ноя", 11},   {"лис", 11},   {"νοε", 11},   {"dec", 12},    {"dez", 12},   {"dic", 12},     {"gru", 12},
     {"des", 12},   {"pro", 12},   {"ara", 12},   {"joulu", 12},  {"дек", 12},   {"гру", 12},     {"δεκ", 12}}};

/// The month whose name starts so; the longest start counts ("marraskuu" is no March).
std::optional<int> month_starting(std::string_view word) {
    const MonthName* best = nullptr;
    for (const MonthName& name : kMonths)
        if (word.starts_with(name.Start) && (best == nullptr || name.Start.size() > best->Start.size())) best = &name;
    return best == nullptr ? std::nullopt : std::optional(best->Month);
}

std::optional<int> month_named(std::string_view word) {
    return month_starting(bare_name(to_utf8(word)));
}

/// Days of the week in full, or short where no month is called so.
bool is_weekday(std::string_view word) {
    constexpr std::array<std::string_view, 7> kStarts = {"mon", "tue", "wed", "thu", "fri", "sat", "sun"};
    constexpr std::array<std::string_view, 59> kNames = {
        "mo",        "di",      "mi",       "do",        "fr",        "sa",        "so",      "montag",  "dienstag",
        "mittwoch",  "freitag", "samstag",  "sonnabend", "sonntag",   "lun",       "lundi",   "mardi",   "mer",
        "mercredi",  "jeu",     "jeudi",    "ven",       "vendredi",  "sam",       "samedi",  "dim",     "dimanche",
        "lunes",     "martes",  "mie",      "miercoles", "jue",       "jueves",    "vie",     "viernes", "sab",
        "sabado",    "dom",     "domingo",  "lunedi",    "martedi",   "mercoledi", "gio",     "giovedi", "venerdi",
        "domenica",  "segunda", "terca",    "quarta",    "quinta",    "sexta",     "maandag", "dinsdag", "woensdag",
        "donderdag", "vrijdag", "zaterdag", "zondag",    "donnerstag"};
    const std::string bare = bare_name(to_utf8(word));
    return std::ranges::any_of(kStarts, [&](std::string_view day) { return bare.starts_with(day); }) ||
           std::ranges::find(kNames, bare) != kNames.end();
}

void skip_weekday(Scanner& scanner) {
    if (!is_letter(scanner.Peek())) return;
    Scanner ahead = scanner;
    if (!is_weekday(ahead.Word())) return;
    while (ahead.TakeAny(",. ")) continue;
    scanner = ahead;
}

/// Whether four digits that only their place makes a year can be one of a fix.
bool is_packed_year(int year) {
    return year >= 1800 && year <= 2100;
}

/// Digits without separators: 20180509, 2018129, 180509.
std::optional<std::int64_t> take_packed_date(Scanner& scanner, std::size_t digits, DateOrder order) {
    if (digits == 7) {
        const int year = scanner.Number(4);
        return is_packed_year(year) ? days_of_year(year, scanner.Number(3)) : std::nullopt;
    }
    std::array<Part, 3> parts{};
    const bool yearFirst = digits == 8 || order == DateOrder::kYearMonthDay;
    for (std::size_t i = 0; i < 3; ++i) {
        const std::size_t width = digits == 8 && i == 0 ? 4 : 2;
        parts[i] = {scanner.Number(width), width};
    }
    if (digits == 8 && !is_packed_year(parts[0].Value)) return std::nullopt;
    return days_in_order(parts, yearFirst ? DateOrder::kYearMonthDay : order);
}

/// A part of a date and the separator behind it.
std::optional<Part> take_part(Scanner& scanner) {
    const std::size_t digits = scanner.DigitsAhead();
    if (digits == 0 || digits > 4) return std::nullopt;
    return Part{scanner.Number(digits), digits};
}

void skip_separators(Scanner& scanner) {
    while (scanner.TakeAny("-/., ")) continue;
}

/// Skips words that say nothing: "at", "um", "de".
void skip_words(Scanner& scanner, std::initializer_list<std::string_view> words) {
    for (bool any = true; any;) {
        any = false;
        for (const std::string_view word : words) {
            if (!scanner.TakeWord(word)) continue;
            while (scanner.TakeAny(". ")) continue;
            any = true;
        }
    }
}

/// Behind a time of day: "13:05 Uhr", "1305 h".
void skip_hour_word(Scanner& scanner) {
    Scanner ahead = scanner;
    ahead.SkipBlanks();
    for (const std::string_view word : {"Uhr", "uur", "hrs", "hr", "hs", "h"}) {
        if (!ahead.TakeWord(word)) continue;
        scanner = ahead;
        return;
    }
}

bool take_mark(Scanner& scanner, std::initializer_list<std::string_view> marks) {
    for (const std::string_view mark : marks) {
        if (!scanner.Rest().starts_with(mark)) continue;
        scanner.Skip(mark.size());
        scanner.SkipBlanks();
        return true;
    }
    return false;
}

/// What stands behind a year in Chinese, Japanese and Korean.
bool take_year_mark(Scanner& scanner) {
    return take_mark(scanner, {"年", "년"});
}

/// Month and day with their marks, as the year before them has its own.
std::optional<std::int64_t> take_marked_date(Scanner& scanner, const Part& year) {
    const auto month = take_part(scanner);
    if (!month || !take_mark(scanner, {"月", "월"})) return std::nullopt;
    const auto day = take_part(scanner);
    if (!day || !take_mark(scanner, {"日", "일"})) return std::nullopt;
    return days_in_order({year, *month, *day}, DateOrder::kYearMonthDay);
}

/// The end of "7th", "1er".
void skip_ordinal(Scanner& scanner) {
    for (const std::string_view end : {"st", "nd", "rd", "th", "er"})
        if (scanner.TakeWord(end)) return;
}

/// Day, month by name and year, the first of them taken already.
std::optional<std::int64_t> take_named_month(Scanner& scanner, const Part& first) {
    if (take_year_mark(scanner)) return take_marked_date(scanner, first);
    skip_words(scanner, {"de", "of", "do"});
    const auto month = month_named(scanner.Word());
    skip_separators(scanner);
    skip_words(scanner, {"de", "del", "do"});
    const auto last = take_part(scanner);
    if (!month || !last) return std::nullopt;
    if (scanner.Peek() == '.' && !is_digit(scanner.Peek(1))) scanner.Skip(1);
    const bool yearFirst = first.Digits == 4;
    const Part& year = yearFirst ? first : *last;
    const Part& day = yearFirst ? *last : first;
    if (day.Digits > 2 || (year.Digits != 2 && year.Digits != 4)) return std::nullopt;
    return days_of(whole_year(year.Value, year.Digits), *month, day.Value);
}

/// "Feb 13, 2009".
std::optional<std::int64_t> take_date_after_month(Scanner& scanner) {
    const auto month = month_named(scanner.Word());
    skip_separators(scanner);
    const auto day = take_part(scanner);
    skip_ordinal(scanner);
    if (scanner.Peek() == '/') return std::nullopt;  // "mar 08/05/2018" has a day of the week
    skip_separators(scanner);
    const auto year = take_part(scanner);
    if (!month || !day || !year || day->Digits > 2 || (year->Digits != 2 && year->Digits != 4)) return std::nullopt;
    return days_of(whole_year(year->Value, year->Digits), *month, day->Value);
}

/// Three numbers with a separator between them, or the year and its day.
struct NumericDate {
    std::array<Part, 3> Parts{};
    char Separator = '\0';
    bool IsYearAndDay = false;
};

std::optional<NumericDate> take_numeric_date(Scanner& scanner, const Part& first) {
    NumericDate date;
    date.Separator = scanner.Peek();
    scanner.Skip(1);
    scanner.SkipBlanks();
    const auto second = take_part(scanner);
    if (!second) return std::nullopt;
    date.Parts = {first, *second, {}};
    date.IsYearAndDay = first.Digits == 4 && second->Digits == 3;
    if (date.IsYearAndDay) return date;
    if (!scanner.Take(date.Separator)) return std::nullopt;
    scanner.SkipBlanks();
    const auto third = take_part(scanner);
    if (!third) return std::nullopt;
    date.Parts[2] = *third;
    // Hungarian, Croatian and Korean dates end in a point, too.
    if (date.Separator == '.' && scanner.Peek() == '.' && !is_digit(scanner.Peek(1))) scanner.Skip(1);
    return date;
}

/// The order that the text itself shows.
std::optional<DateOrder> plain_order(const NumericDate& date) {
    if (date.Parts[0].Digits == 4) return DateOrder::kYearMonthDay;
    if (date.Separator == '.') return DateOrder::kDayMonthYear;
    return std::nullopt;
}

std::optional<std::int64_t> take_date(Scanner& scanner, DateOrder order) {
    skip_weekday(scanner);
    const std::size_t digits = scanner.DigitsAhead();
    if (digits == 0) return take_date_after_month(scanner);
    if (digits >= 6 && digits <= 8) return take_packed_date(scanner, digits, order);
    const auto first = take_part(scanner);
    if (!first) return std::nullopt;
    skip_ordinal(scanner);
    Scanner ahead = scanner;
    skip_separators(ahead);
    if (is_letter(ahead.Peek()) && ahead.Peek() != 'T') {
        scanner = ahead;
        return take_named_month(scanner, *first);
    }
    // Cameras write 2018:05:09.
    const bool isCamera = scanner.Peek() == ':' && first->Digits == 4;
    if (!isCamera && std::string_view("-/.").find(scanner.Peek()) == std::string_view::npos) return std::nullopt;
    const auto date = take_numeric_date(scanner, *first);
    if (!date) return std::nullopt;
    if (date->IsYearAndDay) return days_of_year(date->Parts[0].Value, date->Parts[1].Value);
    return days_in_order(date->Parts, plain_order(*date).value_or(order));
}

/// Hour 1 to 12 with its half of the day.
std::optional<int> hour_of_half(Scanner& scanner, int hour) {
    Scanner ahead = scanner;
    ahead.SkipBlanks();
    // Greek: before and after noon.
    for (const std::string_view mark : {"πμ", "π.μ.", "μμ", "μ.μ."}) {
        if (!ahead.Rest().starts_with(mark)) continue;
        if (hour < 1 || hour > 12) return std::nullopt;
        ahead.Skip(mark.size());
        scanner = ahead;
        return hour % 12 + (mark.starts_with("μ") ? 12 : 0);
    }
    const bool after = platform::EqualNoCase(ahead.Rest().substr(0, 1), "p");
    const bool before = platform::EqualNoCase(ahead.Rest().substr(0, 1), "a");
    if (!after && !before) return hour;
    ahead.Skip(1);
    if (ahead.Take('.')) ahead.Take(' ');
    if (!ahead.TakeAny("mM")) return hour;
    ahead.Take('.');
    if (hour < 1 || hour > 12) return std::nullopt;
    scanner = ahead;
    return hour % 12 + (after ? 12 : 0);
}

/// Seconds and what is left of one.
std::optional<int> take_seconds(Scanner& scanner) {
    const std::size_t digits = scanner.DigitsAhead();
    if (digits < 1 || digits > 2) return std::nullopt;
    const int seconds = scanner.Number(digits);
    Scanner ahead = scanner;
    // Some loggers part thousandths by a colon.
    const bool colon = ahead.Peek() == ':' && Scanner(ahead.Rest().substr(1)).DigitsAhead() == 3;
    if ((colon && ahead.Take(':')) || (ahead.TakeAny(".,") && ahead.DigitsAhead() > 0)) {
        ahead.Skip(ahead.DigitsAhead());
        scanner = ahead;
    }
    return seconds;
}

struct TimeOfDay {
    int Hour = 0;
    int Minute = 0;
    int Second = 0;
};

/// 1459, 145905 or 145905.25: digits alone, three of them with the hour in one.
std::optional<TimeOfDay> take_packed_time(Scanner& scanner, std::size_t digits) {
    TimeOfDay time;
    time.Hour = scanner.Number(digits % 2 == 1 ? 1 : 2);
    time.Minute = scanner.Number(2);
    if (digits < 5) return time;
    const auto seconds = take_seconds(scanner);
    if (!seconds) return std::nullopt;
    time.Second = *seconds;
    return time;
}

/// The "m", "min" or ":" of 14h59min05s.
bool take_minute_mark(Scanner& scanner) {
    if (!scanner.TakeAny("m:")) return false;
    if (scanner.Rest().starts_with("in")) scanner.Skip(2);
    scanner.SkipBlanks();
    return true;
}

bool take_hour_mark(Scanner& scanner) {
    return take_mark(scanner, {"时", "時", "시"});
}

/// Hour, minute and second with their marks in Chinese, Japanese or Korean.
std::optional<TimeOfDay> take_marked_time(Scanner& scanner) {
    TimeOfDay time;
    time.Hour = scanner.Number(scanner.DigitsAhead());
    take_hour_mark(scanner);
    if (scanner.AtEnd()) return time;
    const auto minute = take_part(scanner);
    if (!minute || !take_mark(scanner, {"分", "분"})) return std::nullopt;
    time.Minute = minute->Value;
    if (scanner.AtEnd()) return time;
    const auto second = take_seconds(scanner);
    if (!second || !take_mark(scanner, {"秒", "초"})) return std::nullopt;
    time.Second = *second;
    return time;
}

std::optional<TimeOfDay> take_parted_time(Scanner& scanner) {
    TimeOfDay time;
    time.Hour = scanner.Number(scanner.DigitsAhead());
    const char mark = scanner.Peek();
    scanner.Skip(1);
    const bool hourMark = mark == 'h' || mark == 'H';
    const std::size_t digits = scanner.DigitsAhead();
    if (hourMark && digits == 0) return time;
    if (digits < 1 || digits > 2) return std::nullopt;
    time.Minute = scanner.Number(digits);
    const bool more = hourMark ? take_minute_mark(scanner) && scanner.DigitsAhead() > 0 : scanner.Take(mark);
    if (!more) return time;
    const auto seconds = take_seconds(scanner);
    if (!seconds) return std::nullopt;
    if (hourMark) scanner.TakeAny("s");
    time.Second = *seconds;
    return time;
}

/// Seconds since midnight.
std::optional<std::int64_t> take_clock(Scanner& scanner) {
    const std::size_t digits = scanner.DigitsAhead();
    if (digits == 0 || digits > 6) return std::nullopt;
    const char mark = scanner.Peek(digits);
    const bool parted = digits <= 2 && (mark == ':' || mark == '.' || mark == 'h' || mark == 'H');
    std::optional<TimeOfDay> time;
    if (parted) {
        time = take_parted_time(scanner);
    } else if (digits <= 2 && static_cast<unsigned char>(mark) >= 0x80) {
        Scanner ahead = scanner;
        ahead.Skip(digits);
        if (!take_hour_mark(ahead)) return std::nullopt;
        time = take_marked_time(scanner);
    } else if (digits >= 3) {
        time = take_packed_time(scanner, digits);
    } else {
        time = TimeOfDay{scanner.Number(digits), 0, 0};
        const std::size_t before = scanner.Rest().size();
        const auto hour = hour_of_half(scanner, time->Hour);
        if (!hour || scanner.Rest().size() == before) return std::nullopt;  // "5" alone is no time, "5 pm" is
        time->Hour = *hour;
        return time->Hour * 3600;
    }
    if (!time) return std::nullopt;
    const auto hour = hour_of_half(scanner, time->Hour);
    if (!hour || time->Minute > 59 || time->Second > 60) return std::nullopt;
    if (*hour > 24 || (*hour == 24 && (time->Minute > 0 || time->Second > 0))) return std::nullopt;
    return *hour * 3600 + time->Minute * 60 + time->Second;
}

/// The same behind the half of the day in Chinese, Japanese or Korean.
std::optional<std::int64_t> take_clock_of_half(Scanner& scanner, bool isAfternoon) {
    constexpr std::int64_t kHalf = kSecondsPerDay / 2;
    const auto seconds = take_clock(scanner);
    if (!seconds || *seconds >= kHalf + 3600) return std::nullopt;
    return *seconds % kHalf + (isAfternoon ? kHalf : 0);
}

/// Seconds since midnight, with the half of the day before them where there is one.
std::optional<std::int64_t> take_time_of_day(Scanner& scanner) {
    if (take_mark(scanner, {"上午", "午前", "오전"})) return take_clock_of_half(scanner, false);
    if (take_mark(scanner, {"下午", "午後", "午后", "오후"})) return take_clock_of_half(scanner, true);
    return take_clock(scanner);
}

struct Zone {
    bool Given = false;
    std::int64_t Seconds = 0;  ///< east of UTC
    bool IsAbbreviated = false;
};

/// "CET", "EST": letters that stand for several zones.
bool take_abbreviation(Scanner& scanner) {
    std::size_t length = 0;
    while (scanner.Peek(length) >= 'A' && scanner.Peek(length) <= 'Z') ++length;
    if (length < 2 || length > 5 || is_letter(scanner.Peek(length)) || is_digit(scanner.Peek(length))) return false;
    scanner.Skip(length);
    return true;
}

/// What is told of a zone in brackets behind its offset: "[Europe/Amsterdam]", "(CEST)".
void skip_bracket(Scanner& scanner) {
    Scanner ahead = scanner;
    ahead.SkipBlanks();
    if (ahead.Peek() != '[' && ahead.Peek() != '(') return;
    const char end = ahead.Peek() == '[' ? ']' : ')';
    const std::size_t length = ahead.Rest().find(end);
    if (length == std::string_view::npos) return;
    ahead.Skip(length + 1);
    scanner = ahead;
}

/// Offset after a sign: +02:00, +0200, +02, +2.
std::optional<Zone> take_signed_offset(Scanner& scanner) {
    const bool west = scanner.Peek() == '-';
    if (!scanner.TakeAny("+-")) return std::nullopt;
    const std::size_t digits = scanner.DigitsAhead();
    if (digits == 0 || digits == 3 || digits > 4) return std::nullopt;
    const int hours = scanner.Number(std::min<std::size_t>(digits, 2));
    int minutes = 0;
    const bool colon = scanner.Take(':');
    if (colon && scanner.DigitsAhead() != 2) return std::nullopt;
    if (colon || digits == 4) minutes = scanner.Number(2);
    if (hours > 18 || minutes > 59) return std::nullopt;
    const std::int64_t seconds = hours * 3600 + minutes * 60;
    return Zone{true, west ? -seconds : seconds};
}

/// The zone at the front, or none given.
std::optional<Zone> take_zone(Scanner& scanner) {
    scanner.SkipBlanks();
    if (scanner.TakeWord("Z")) return Zone{true, 0};
    if (take_mark(scanner, {"(UTC)", "[UTC]", "(GMT)"})) return Zone{true, 0};
    for (const std::string_view name : {"UTC", "GMT"}) {
        if (!scanner.TakeWord(name)) continue;
        scanner.SkipBlanks();
        if (scanner.Peek() == '+' || scanner.Peek() == '-') return take_signed_offset(scanner);
        return Zone{true, 0};
    }
    if (scanner.Peek() == '+' || scanner.Peek() == '-') return take_signed_offset(scanner);
    if (take_abbreviation(scanner)) return Zone{false, 0, true};
    return Zone{};
}

/// 05:00:00
bool starts_with_seconds(const Scanner& scanner) {
    Scanner ahead = scanner;
    for (const char mark : {':', ':', '\0'}) {
        const std::size_t digits = ahead.DigitsAhead();
        if (digits < 1 || digits > 2) return false;
        ahead.Skip(digits);
        if (mark != '\0' && !ahead.Take(mark)) return false;
    }
    return true;
}

/// What stands between a date and a time of day.
bool take_joint(Scanner& scanner) {
    if (scanner.Peek() == 'T' || scanner.Peek() == 't' || scanner.Peek() == '_') {
        scanner.Skip(1);
        return true;
    }
    bool any = false;
    while (scanner.TakeAny(" ,")) any = true;
    if (any)
        skip_words(scanner,
                   {"at", "um", "om", "kl", "klo", "kello", "a", "las", "à", "às", "alle", "ore", "godz", "o", "в"});
    if (any) return true;
    // 2018/05/09-14:59:05; less than that may be the offset of a date.
    Scanner ahead = scanner;
    if (!ahead.TakeAny("-:") || !starts_with_seconds(ahead)) return false;
    scanner = ahead;
    return true;
}

bool at_end(Scanner& scanner) {
    scanner.SkipBlanks();
    return scanner.AtEnd() || scanner.Peek() == '/';
}

TimeText time_of(std::int64_t days, std::int64_t ofDay, const Zone& zone) {
    return {days * kSecondsPerDay + ofDay - zone.Seconds, zone.Given, true, zone.IsAbbreviated};
}

bool starts_with_time_of_day(const Scanner& scanner) {
    if (scanner.Peek(2) != ':' && scanner.Peek(1) != ':') return false;
    const std::size_t digits = scanner.DigitsAhead();
    return (digits == 1 || digits == 2) && scanner.Peek(digits) == ':';
}

/// "14:59:05 9-May-2018"
std::optional<TimeText> time_before_date(Scanner scanner, DateOrder order) {
    const auto ofDay = take_time_of_day(scanner);
    skip_hour_word(scanner);
    if (!ofDay || !scanner.TakeAny(" ,")) return std::nullopt;
    scanner.SkipBlanks();
    skip_words(scanner, {"on"});
    const auto days = take_date(scanner, order);
    if (!days) return std::nullopt;
    const auto zone = take_zone(scanner);
    if (!zone || !at_end(scanner)) return std::nullopt;
    return time_of(*days, *ofDay, *zone);
}

/// "Wed May  9 14:59:05 2018", as C prints times, and "Wed May  9 14:59:05 UTC 2018".
std::optional<TimeText> time_within_date(Scanner scanner) {
    skip_weekday(scanner);
    const auto month = month_named(scanner.Word());
    scanner.SkipBlanks();
    const auto day = take_part(scanner);
    scanner.SkipBlanks();
    if (!month || !day || !starts_with_time_of_day(scanner)) return std::nullopt;
    const auto ofDay = take_time_of_day(scanner);
    const auto zone = take_zone(scanner);
    scanner.SkipBlanks();
    const auto year = take_part(scanner);
    if (!ofDay || !zone || !year || year->Digits != 4 || !at_end(scanner)) return std::nullopt;
    const auto days = days_of(year->Value, *month, day->Value);
    if (!days) return std::nullopt;
    return time_of(*days, *ofDay, *zone);
}

std::optional<TimeText> calendar_time(std::string_view text, DateOrder order) {
    Scanner scanner(text);
    if (starts_with_time_of_day(scanner)) return time_before_date(scanner, order);
    if (is_letter(scanner.Peek()))
        if (const auto time = time_within_date(scanner)) return time;
    // 201805091459 and 20180509145905 are a date and a time of day.
    const std::size_t packed = scanner.DigitsAhead();
    const bool joined = packed == 12 || packed == 14;
    Scanner date(joined ? text.substr(0, 8) : text);
    const auto days = take_date(date, order);
    if (!days || (joined && !date.AtEnd())) return std::nullopt;
    if (joined) {
        scanner.Skip(8);
    } else {
        scanner = date;
        if (at_end(scanner)) return TimeText{*days * kSecondsPerDay, false, false, false};
        scanner = date;
        // The mark of the day parts a date from the time behind it.
        const char before = text[text.size() - scanner.Rest().size() - 1];
        const bool isMarked = is_letter(before) || before == ' ';
        if (!take_joint(scanner) && !isMarked) return std::nullopt;
    }
    const auto ofDay = take_time_of_day(scanner);
    if (!ofDay) return std::nullopt;
    skip_hour_word(scanner);
    const auto zone = take_zone(scanner);
    if (!zone) return std::nullopt;
    if (zone->Given) skip_bracket(scanner);
    if (!at_end(scanner)) return std::nullopt;
    return time_of(*days, *ofDay, *zone);
}

}  // namespace

std::optional<DateOrder> date_order_from(std::string_view text) {
    if (platform::EqualNoCase(text, "dmy")) return DateOrder::kDayMonthYear;
    if (platform::EqualNoCase(text, "mdy")) return DateOrder::kMonthDayYear;
    if (platform::EqualNoCase(text, "ymd")) return DateOrder::kYearMonthDay;
    return std::nullopt;
}

std::optional<TimeText> time_from_text(std::string_view text, const TimeFormat& format) {
    const std::string_view trimmed = platform::Trim(text);
    return format.Kind == TimeKind::kCalendar ? calendar_time(trimmed, format.Order)
                                              : time_from_number(trimmed, format.Kind);
}

std::optional<std::int64_t> time_of_day_from_text(std::string_view text) {
    Scanner scanner(platform::Trim(text));
    const auto seconds = take_time_of_day(scanner);
    skip_hour_word(scanner);
    if (!seconds || !scanner.AtEnd()) return std::nullopt;
    return seconds;
}

bool is_time_of_day(std::string_view text) {
    Scanner scanner(platform::Trim(text));
    if (!take_time_of_day(scanner)) return false;
    skip_hour_word(scanner);
    if (scanner.AtEnd()) return true;
    // "10.5 KM" is a length.
    if (text.find(':') == std::string_view::npos || !take_zone(scanner)) return false;
    skip_bracket(scanner);
    scanner.SkipBlanks();
    return scanner.AtEnd();
}

unsigned possible_orders(std::string_view text) {
    constexpr unsigned kAny = 7;
    Scanner scanner(platform::Trim(text));
    if (starts_with_time_of_day(scanner)) {
        if (!take_time_of_day(scanner)) return kAny;
        skip_hour_word(scanner);
        scanner.SkipBlanks();
        skip_words(scanner, {"on"});
    }
    skip_weekday(scanner);
    std::array<Part, 3> parts{};
    const std::size_t digits = scanner.DigitsAhead();
    if (digits == 6) {
        for (Part& part : parts) part = {scanner.Number(2), 2};
    } else {
        const auto first = take_part(scanner);
        if (!first || std::string_view("-/").find(scanner.Peek()) == std::string_view::npos || scanner.AtEnd())
            return kAny;
        if (is_letter(scanner.Peek(1))) return kAny;
        const auto date = take_numeric_date(scanner, *first);
        if (!date || date->IsYearAndDay || plain_order(*date)) return kAny;
        parts = date->Parts;
    }
    unsigned possible = 0;
    for (const DateOrder order : {DateOrder::kDayMonthYear, DateOrder::kMonthDayYear, DateOrder::kYearMonthDay})
        if (days_in_order(parts, order)) possible |= 1U << static_cast<unsigned>(order);
    return possible;
}

}  // namespace wxl::tracking
