#include "adapters/tracking/dialect.h"

#include "platform/text.h"

#include <algorithm>
#include <array>
#include <map>
#include <vector>

namespace wxl::tracking {

namespace {

constexpr std::size_t kLinesLookedAt = 200;
constexpr std::string_view kSeparators = "\t;,|";

bool is_line_end(char c) {
    return c == '\n' || c == '\r';
}

bool is_blank(char c) {
    return c == ' ' || c == '\t';
}

struct Line {
    std::string_view Text;
    std::size_t Start;
    std::int64_t Number;
    bool IsComment = false;
};

std::vector<Line> lines_of(std::string_view text, std::size_t start, std::int64_t number) {
    std::vector<Line> lines;
    while (start < text.size() && lines.size() < kLinesLookedAt) {
        std::size_t end = start;
        while (end < text.size() && !is_line_end(text[end])) ++end;
        const std::string_view line = text.substr(start, end - start);
        lines.push_back({line, start, number++, line.starts_with('#')});
        start = end + (text.substr(end, 2) == "\r\n" ? 2U : 1U);
    }
    return lines;
}

/// Whether nothing but separators, quotes and blanks stands in the line.
bool says_nothing(std::string_view line) {
    return line.find_first_not_of("\t;,| \"") == std::string_view::npos;
}

/// End of a cell in quotes whose opening quote stands at `at`, or the end of the line.
std::size_t after_quotes(std::string_view line, std::size_t at) {
    for (++at; at < line.size(); ++at) {
        if (line[at] != '"') continue;
        if (at + 1 < line.size() && line[at + 1] == '"') {
            ++at;
        } else {
            return at + 1;
        }
    }
    return at;
}

std::size_t blank_parted_cells(std::string_view line) {
    std::size_t cells = 0;
    std::size_t at = 0;
    while (at < line.size()) {
        while (at < line.size() && is_blank(line[at])) ++at;
        if (at == line.size()) break;
        ++cells;
        if (line[at] == '"') at = after_quotes(line, at);
        while (at < line.size() && !is_blank(line[at])) ++at;
    }
    return cells;
}

std::size_t cells_of(std::string_view line, char separator) {
    if (separator == ' ') return blank_parted_cells(line);
    std::size_t cells = 1;
    for (std::size_t at = 0; at < line.size(); ++at, ++cells) {
        if (line[at] == '"') at = after_quotes(line, at);
        while (at < line.size() && line[at] != separator) ++at;
        if (at >= line.size()) break;
    }
    return cells;
}

bool is_row(const Line& line) {
    return !line.IsComment && !says_nothing(line.Text);
}

/// How well a separator parts the lines.
struct Fit {
    std::size_t Cells = 0;  ///< of the lines of the table
    std::size_t Lines = 0;  ///< that have so many
};

/// The number of cells that most cells stand in: a long head of short lines does not outvote a wide table.
Fit fit_of(const std::vector<Line>& lines, char separator) {
    std::map<std::size_t, std::size_t> counts;
    for (const Line& line : lines)
        if (is_row(line)) ++counts[cells_of(line.Text, separator)];
    Fit best;
    for (const auto& [cells, count] : counts) {
        if (cells >= 2 && count * (cells - 1) >= best.Lines * (std::max<std::size_t>(best.Cells, 1) - 1))
            best = {cells, count};
    }
    return best;
}

bool is_better(const Fit& a, const Fit& b) {
    // A separator that also stands in the heading parts a line more than a decimal comma does.
    if (a.Lines != b.Lines) return a.Lines > b.Lines;
    return a.Cells > b.Cells;
}

char best_separator(const std::vector<Line>& lines, Fit& fit) {
    char best = ',';
    for (const char separator : kSeparators) {
        const Fit candidate = fit_of(lines, separator);
        if (candidate.Cells < 2 || !is_better(candidate, fit)) continue;
        fit = candidate;
        best = separator;
    }
    // Decimal commas and dates have separators, too, but not in each line.
    const auto all = static_cast<std::size_t>(std::count_if(lines.begin(), lines.end(), is_row));
    if (fit.Cells >= 2 && fit.Lines * 2 > all) return best;
    const Fit blanks = fit_of(lines, ' ');
    if (blanks.Cells < 2 || blanks.Lines <= fit.Lines) return best;
    fit = blanks;
    return ' ';
}

bool is_number(std::string_view cell) {
    return !cell.empty() && platform::IsNumeric(cell);
}

/// Whether a cell of the line is a number, as headings are not.
bool looks_like_data(std::string_view line, char separator) {
    std::size_t at = 0;
    while (at <= line.size()) {
        std::size_t end = at;
        while (end < line.size() && line[end] != separator) ++end;
        if (is_number(platform::Trim(line.substr(at, end - at)))) return true;
        at = end + 1;
    }
    return false;
}

/// The line before the table that names its columns in a comment; null for none.
const Line* heading_in_comment(const std::vector<Line>& lines, std::size_t first, char separator, std::size_t cells) {
    if (!looks_like_data(lines[first].Text, separator)) return nullptr;
    while (first > 0 && !lines[first - 1].IsComment && says_nothing(lines[first - 1].Text)) --first;
    if (first == 0 || !lines[first - 1].IsComment) return nullptr;
    const Line& comment = lines[first - 1];
    return cells_of(comment.Text.substr(1), separator) == cells ? &comment : nullptr;
}

bool begins_table(const Line& line, const Line* next, char separator, const Fit& fit) {
    if (line.IsComment || says_nothing(line.Text)) return false;
    const std::size_t cells = cells_of(line.Text, separator);
    if (cells == fit.Cells) return true;
    // Names of rows without a heading, or a heading without the separator that ends every row.
    return cells + 1 == fit.Cells && next != nullptr && cells_of(next->Text, separator) == fit.Cells &&
           !looks_like_data(line.Text, separator);
}

void find_start(const std::vector<Line>& lines, const Fit& fit, Dialect& dialect) {
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (!begins_table(lines[i], i + 1 < lines.size() ? &lines[i + 1] : nullptr, dialect.Separator, fit)) continue;
        const Line* heading = heading_in_comment(lines, i, dialect.Separator, fit.Cells);
        dialect.Start = heading != nullptr ? heading->Start + 1 : lines[i].Start;
        dialect.Line = heading != nullptr ? heading->Number : lines[i].Number;
        return;
    }
}

/// Start of the first line that is no comment, for texts in which nothing is parted.
void skip_comments(const std::vector<Line>& lines, Dialect& dialect) {
    for (const Line& line : lines) {
        if (line.IsComment || platform::Trim(line.Text).empty()) continue;
        dialect.Start = line.Start;
        dialect.Line = line.Number;
        return;
    }
}

/// Takes the line "sep=;" by which spreadsheets tell each other the separator.
bool take_separator_line(std::string_view text, Dialect& dialect) {
    constexpr std::string_view kKey = "sep=";
    const std::string_view rest = text.substr(dialect.Start);
    const std::size_t length = kKey.size() + 1;
    if (rest.size() < length || !platform::EqualNoCase(rest.substr(0, kKey.size()), kKey)) return false;
    if (kSeparators.find(rest[kKey.size()]) == std::string_view::npos) return false;
    if (rest.size() > length && !is_line_end(rest[length])) return false;
    dialect.Separator = rest[kKey.size()];
    dialect.Start += length + (rest.substr(length, 2) == "\r\n" ? 2U : rest.size() > length ? 1U : 0U);
    ++dialect.Line;
    return true;
}

}  // namespace

Dialect find_dialect(std::string_view text) {
    Dialect dialect;
    if (text.starts_with("\xEF\xBB\xBF")) dialect.Start = 3;
    if (take_separator_line(text, dialect)) return dialect;
    const std::vector<Line> lines = lines_of(text, dialect.Start, 1);
    Fit fit;
    dialect.Separator = best_separator(lines, fit);
    if (fit.Cells >= 2) {
        find_start(lines, fit, dialect);
    } else {
        skip_comments(lines, dialect);
    }
    return dialect;
}

}  // namespace wxl::tracking
