#include "adapters/files/tracking_csv.h"

#include "adapters/files/tracking_columns.h"
#include "platform/runtime_error.h"
#include "platform/text.h"
#include "tracking_times/timestamps.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <fmt/format.h>
#include <numeric>
#include <optional>
#include <string_view>
#include <unordered_map>

namespace wxl::files {

namespace {

using platform::EqualNoCase;
using platform::Trim;

constexpr std::size_t kLongestName = 254;  // of a text field of a shapefile, in bytes
constexpr std::int64_t kRowsBetweenProgress = 4096;

std::string to_utf8(std::string_view bytes) {
    return platform::IsUtf8(bytes) ? std::string(bytes) : platform::FromWindows1252(bytes);
}

/// A cell for a message: short, and without anything that could move a terminal's cursor.
std::string shown(std::string_view cell) {
    constexpr std::size_t kLongest = 40;
    std::string text = to_utf8(cell.substr(0, kLongest));
    for (char& c : text)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = '?';
    return cell.size() > kLongest ? text + "..." : text;
}

bool is_missing(std::string_view cell) {
    constexpr std::array<std::string_view, 5> kWords = {"NA", "N/A", "NaN", "null", "none"};
    return cell.empty() ||
           std::any_of(kWords.begin(), kWords.end(), [&](std::string_view word) { return EqualNoCase(cell, word); });
}

bool is_one_of(std::string_view cell, std::initializer_list<std::string_view> words) {
    return std::any_of(words.begin(), words.end(), [&](std::string_view word) { return EqualNoCase(cell, word); });
}

bool says_no(std::string_view cell) {
    return is_one_of(cell, {"false", "f", "0", "no", "n"});
}
bool says_yes(std::string_view cell) {
    return is_one_of(cell, {"true", "t", "1", "yes", "y"});
}

/// Reads the rows of one file.
class Rows {
public:
    Rows(CsvReader& reader, const TrackingColumns& wanted) : m_reader(reader) {
        ReadHeader();
        m_layout = find_tracking_columns(m_header, wanted, Place());
        m_tracking.Columns = {m_header[m_layout.Id], m_header[m_layout.X], m_header[m_layout.Y],
                              m_layout.Time ? m_header[*m_layout.Time] : ""};
        if (m_layout.OtherId) m_tracking.OtherId = m_header[*m_layout.OtherId];
    }

    void TakeRow() {
        if (m_reader.Cells().size() != m_header.size())
            Refuse(fmt::format("{} cells where the header has {}; correct the row, or delete it",
                               m_reader.Cells().size(), m_header.size()));
        ++m_rows;
        if (std::int64_t* counter = WhyLeftOut()) {
            ++*counter;
            return;
        }
        TrackingFix fix;
        fix.X = Coordinate(m_layout.X);
        fix.Y = Coordinate(m_layout.Y);
        fix.Seconds = Seconds();
        fix.Animal = AnimalIndex();
        fix.Line = static_cast<std::uint32_t>(m_reader.Line());
        if (!fix.HasTime()) ++m_tracking.WithoutTime;
        m_tracking.Fixes.push_back(fix);
    }

    Tracking Finish() {
        if (m_tracking.Fixes.empty()) RefuseWithoutFixes();
        SortAnimals();
        const auto before = [](const TrackingFix& a, const TrackingFix& b) {
            if (a.Animal != b.Animal) return a.Animal < b.Animal;
            if (a.HasTime() != b.HasTime()) return a.HasTime();
            if (a.Seconds != b.Seconds) return a.Seconds < b.Seconds;
            return a.Line < b.Line;
        };
        std::sort(m_tracking.Fixes.begin(), m_tracking.Fixes.end(), before);
        return std::move(m_tracking);
    }

private:
    void ReadHeader() {
        if (!m_reader.Next())
            platform::Raise(platform::error_number::kTypeMismatch,
                            m_reader.Name() + " is empty: it needs a header row and one row per fix");
        for (const std::string_view cell : m_reader.Cells()) m_header.push_back(to_utf8(Trim(cell)));
        if (m_header.size() == 1)
            Refuse(fmt::format("the header is in one piece: \"{}\"; separate the columns by commas, semicolons or tabs",
                               shown(m_reader.Cells()[0])));
    }

    std::string Place() const { return fmt::format("{}, line {}", m_reader.Name(), m_reader.Line()); }

    std::string_view Cell(std::size_t column) const { return Trim(m_reader.Cells()[column]); }

    [[noreturn]] void Refuse(const std::string& what) const {
        platform::Raise(platform::error_number::kTypeMismatch, Place() + ": " + what);
    }

    /// The counter of the reason why the current row is no fix of an animal; null when it is one.
    std::int64_t* WhyLeftOut() {
        LeftOutRows& leftOut = m_tracking.LeftOut;
        if (m_layout.Visible && says_no(Cell(*m_layout.Visible))) return &leftOut.NotVisible;
        for (const std::size_t column : m_layout.Outlier)
            if (says_yes(Cell(column))) return &leftOut.Outliers;
        if (is_missing(Cell(m_layout.X)) || is_missing(Cell(m_layout.Y))) return &leftOut.WithoutPosition;
        if (is_missing(Cell(m_layout.Id))) return &leftOut.WithoutAnimal;
        return nullptr;
    }

    double Coordinate(std::size_t column) const {
        std::string_view text = Cell(column);
        std::string withPoint;
        const bool decimalComma =
            std::count(text.begin(), text.end(), ',') == 1 && text.find('.') == std::string_view::npos;
        if (m_reader.Separator() != ',' && decimalComma) {
            withPoint = text;
            withPoint[withPoint.find(',')] = '.';
            text = withPoint;
        }
        if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
        double value = 0.0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value))
            Refuse(fmt::format("\"{}\" in column \"{}\" is not a coordinate; {}", shown(Cell(column)), m_header[column],
                               decimalComma && m_reader.Separator() == ','
                                   ? "write numbers with a decimal point, or separate the columns by semicolons"
                                   : "correct it, or empty the cell"));
        return value;
    }

    /// The time of the current row: the cell, or date and time of day from two.
    std::string TimeText() {
        const std::string cell(Cell(*m_layout.Time));
        constexpr std::size_t kDateAlone = 10;
        if (!m_layout.TimeOfDay || cell.size() > kDateAlone) return cell;
        const std::string_view ofDay = Cell(*m_layout.TimeOfDay);
        if (is_missing(ofDay)) return cell;
        m_tracking.TimeOfDay = m_header[*m_layout.TimeOfDay];
        return tracking_times::seconds_from_timestamp(ofDay) ? std::string(ofDay) : fmt::format("{}T{}", cell, ofDay);
    }

    std::int64_t Seconds() {
        if (!m_layout.Time || is_missing(Cell(*m_layout.Time))) return TrackingFix::kNoTime;
        const std::string text = TimeText();
        const auto seconds = tracking_times::seconds_from_timestamp(text);
        if (!seconds)
            Refuse(
                fmt::format("\"{}\" in column \"{}\" is not a time like 2018-05-09 14:59:05; format the column as "
                            "yyyy-mm-dd hh:mm:ss, or empty the cell to keep the fix without a time",
                            shown(text), m_header[*m_layout.Time]));
        return *seconds;
    }

    std::uint32_t AnimalIndex() {
        const std::string_view cell = Cell(m_layout.Id);
        if (m_lastAnimal < m_tracking.Animals.size() && cell == m_lastCell) return m_lastAnimal;
        const std::string name = to_utf8(cell);
        if (name.size() > kLongestName)
            Refuse(fmt::format(
                "the animal's name in column \"{}\" is longer than 254 bytes; shorten it, or choose another "
                "column by --id",
                m_header[m_layout.Id]));
        const auto next = static_cast<std::uint32_t>(m_tracking.Animals.size());
        const auto [entry, isNew] = m_indexOf.try_emplace(name, next);
        if (isNew) m_tracking.Animals.push_back(name);
        m_lastCell = cell;
        m_lastAnimal = entry->second;
        return m_lastAnimal;
    }

    [[noreturn]] void RefuseWithoutFixes() const {
        const LeftOutRows& out = m_tracking.LeftOut;
        const std::string why =
            m_rows == 0
                ? std::string("it has a header and no rows")
                : fmt::format(
                      "of {} rows, {} are not visible, {} are outliers, {} have no position, {} have no animal in "
                      "column \"{}\" (another column: --id)",
                      m_rows, out.NotVisible, out.Outliers, out.WithoutPosition, out.WithoutAnimal,
                      m_header[m_layout.Id]);
        platform::Raise(platform::error_number::kTypeMismatch,
                        fmt::format("{} holds no fix: {}", m_reader.Name(), why));
    }

    void SortAnimals() {
        std::vector<std::string>& names = m_tracking.Animals;
        std::vector<std::uint32_t> order(names.size());
        std::iota(order.begin(), order.end(), 0U);
        std::sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) { return names[a] < names[b]; });
        std::vector<std::uint32_t> rank(names.size());
        std::vector<std::string> sorted;
        for (const std::uint32_t index : order) {
            rank[index] = static_cast<std::uint32_t>(sorted.size());
            sorted.push_back(std::move(names[index]));
        }
        names = std::move(sorted);
        for (TrackingFix& fix : m_tracking.Fixes) fix.Animal = rank[fix.Animal];
    }

    CsvReader& m_reader;
    std::vector<std::string> m_header;
    TrackingLayout m_layout;
    Tracking m_tracking;
    std::unordered_map<std::string, std::uint32_t> m_indexOf;
    std::string m_lastCell;
    std::uint32_t m_lastAnimal = 0;
    std::int64_t m_rows = 0;
};

}  // namespace

Tracking read_tracking(CsvReader& reader, const TrackingColumns& wanted,
                       const std::function<void(std::uint64_t)>& progress) {
    Rows rows(reader, wanted);
    for (std::int64_t count = 0; reader.Next(); ++count) {
        rows.TakeRow();
        if (progress && count % kRowsBetweenProgress == 0) progress(reader.Position());
    }
    return rows.Finish();
}

}  // namespace wxl::files
