#include "adapters/tracking/date_text.h"

#include "adapters/tracking/cell_text.h"

#include <algorithm>
#include <chrono>
#include <string>

namespace wxl::tracking {

namespace {

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

void skip_separators(Scanner& scanner) {
    while (scanner.TakeAny("-/., ")) continue;
}

/// What stands behind a year in Chinese, Japanese and Korean.
bool take_year_mark(Scanner& scanner) {
    return scanner.TakeMark({"年", "년"});
}

/// Month and day with their marks, as the year before them has its own.
std::optional<std::int64_t> take_marked_date(Scanner& scanner, const Part& year) {
    const auto month = take_part(scanner);
    if (!month || !scanner.TakeMark({"月", "월"})) return std::nullopt;
    const auto day = take_part(scanner);
    if (!day || !scanner.TakeMark({"日", "일"})) return std::nullopt;
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
    scanner.SkipWords({"de", "of", "do"});
    const auto month = month_named(scanner.Word());
    skip_separators(scanner);
    scanner.SkipWords({"de", "del", "do"});
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

}  // namespace

std::optional<std::int64_t> days_of(int year, int month, int day) {
    if (year < 1 || year > 9999 || month < 1 || month > 12 || day < 1) return std::nullopt;
    const std::chrono::year_month_day date{std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                                           std::chrono::day(static_cast<unsigned>(day))};
    if (!date.ok()) return std::nullopt;
    return std::chrono::sys_days(date).time_since_epoch().count();
}

std::optional<std::int64_t> days_in_order(const std::array<Part, 3>& parts, DateOrder order) {
    const std::size_t year = order == DateOrder::kYearMonthDay ? 0 : 2;
    const std::size_t month = order == DateOrder::kMonthDayYear ? 0 : 1;
    const std::size_t day = 3 - year - month;
    if (parts[year].Digits != 2 && parts[year].Digits != 4) return std::nullopt;
    if (parts[month].Digits > 2 || parts[day].Digits > 2) return std::nullopt;
    return days_of(whole_year(parts[year].Value, parts[year].Digits), parts[month].Value, parts[day].Value);
}

std::optional<int> month_named(std::string_view word) {
    return month_starting(bare_name(to_utf8(word)));
}

void skip_weekday(Scanner& scanner) {
    if (!is_letter(scanner.Peek())) return;
    Scanner ahead = scanner;
    if (!is_weekday(ahead.Word())) return;
    while (ahead.TakeAny(",. ")) continue;
    scanner = ahead;
}

std::optional<Part> take_part(Scanner& scanner) {
    const std::size_t digits = scanner.DigitsAhead();
    if (digits == 0 || digits > 4) return std::nullopt;
    return Part{scanner.Number(digits), digits};
}

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

}  // namespace wxl::tracking
