#include "adapters/tracking/file_rows.h"

#include "adapters/gdal/gdal_support.h"
#include "adapters/gdal/projection.h"
#include "adapters/tracking/cell_text.h"
#include "adapters/tracking/coordinate_text.h"
#include "adapters/tracking/number_text.h"
#include "adapters/tracking/position_text.h"
#include "adapters/tracking/time_columns.h"
#include "adapters/tracking/time_numbers.h"
#include "adapters/tracking/utm_rows.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <set>
#include <span>

namespace wxl::tracking {

namespace {

using platform::Trim;

constexpr std::size_t kLongestName = 254;  // of a text field of a shapefile, in bytes
constexpr std::int64_t kRowsBetweenProgress = 4096;
constexpr std::size_t kSampleRows = 1000;
constexpr double kMostUnreadable = 0.2;
constexpr std::size_t kMostColumns = 32767;

bool says_no(std::string_view cell) {
    return is_one_of(cell, {"false", "f", "0", "no", "n"});
}
bool says_yes(std::string_view cell) {
    return is_one_of(cell, {"true", "t", "1", "yes", "y"});
}

/// Whether a word about a fix says that there was none.
bool is_no_fix(std::string_view cell) {
    std::string word = bare_name(cell, true);
    if (cell == "0" || cell == "V") return true;
    constexpr std::array<std::string_view, 9> kWords = {"nofix",  "fail",   "unresolved", "invalid", "nosat",
                                                        "sensor", "unsucc", "missed",     "notval"};
    return word == "no" || word == "none" || word == "false" ||
           std::any_of(kWords.begin(), kWords.end(),
                       [&](std::string_view part) { return word.find(part) != std::string::npos; });
}

bool is_number_cell(std::string_view cell) {
    return number_from_text(Trim(cell)).has_value();
}

/// Whether a row holds numbers or times where a header would hold names.
bool looks_like_data(const std::vector<std::string_view>& cells) {
    const auto tells = [](std::string_view cell) {
        const std::string_view text = Trim(cell);
        const auto time = time_from_text(text, {});
        return is_number_cell(text) || (time && time->HasTimeOfDay);
    };
    return std::count_if(cells.begin(), cells.end(), tells) >= 2;
}

std::string counted(std::int64_t count, const char* noun) {
    return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

}  // namespace

FileRows::FileRows(std::unique_ptr<std::istream> source, const std::string& name, std::size_t index, Tracking& owner,
                   const std::optional<Dialect>& dialect)
    : m_source(std::move(source)),
      m_reader(dialect ? CsvReader(*m_source, name, *dialect) : CsvReader(*m_source, name)),
      m_index(index),
      m_owner(&owner) {}

void FileRows::ReadAll(const std::string& animal, const std::function<void(std::uint64_t)>& progress) {
    m_options = &m_owner->m_options;
    m_unit = m_options->Unit;
    ReadHeader();
    TakeSample();
    CheckRowNames();
    FindColumns();
    if (!m_layout.Id) {
        m_lastAnimal = m_owner->AnimalIndex(animal);
        m_hasLastAnimal = true;
    }
    DecideTimes();
    FindOthers();
    const std::size_t firstFix = m_owner->Fixes.size();
    ReserveFixes();
    m_reader.Seek(m_dataStart.Offset, m_dataStart.Line);
    while (NextRow()) {
        TakeRow();
        if (progress && m_rows % kRowsBetweenProgress == 0) progress(m_reader.Position());
    }
    Facts().Rows = m_rows;
    m_owner->Rows += m_rows;
    if (static_cast<double>(m_unreadable) > kMostUnreadable * static_cast<double>(m_rows)) {
        const std::string share =
            m_unreadable == 1 ? "" : fmt::format(" ({} of {} rows are like it)", m_unreadable, m_rows);
        platform::Raise(platform::error_number::kTypeMismatch, m_firstTrouble + share);
    }
    SettlePositions(firstFix);
    TellNumbers(firstFix);
}

/// What the numbers of the column of times were taken for, and which days that makes them.
void FileRows::TellNumbers(std::size_t firstFix) {
    FileFacts& facts = Facts();
    facts.Numbers = m_format.Kind;
    constexpr std::size_t kDecimalsOfSeconds = 5;
    if (m_decimals > 0 && m_decimals < kDecimalsOfSeconds) facts.DecimalsOfDays = m_decimals;
    for (const TrackingFix& fix : std::span(m_owner->Fixes).subspan(firstFix)) {
        if (m_format.Kind == TimeKind::kCalendar) return;
        if (!fix.HasTime()) continue;
        facts.FirstTime = std::min(facts.FirstTime.value_or(fix.Seconds), fix.Seconds);
        facts.LastTime = std::max(facts.LastTime.value_or(fix.Seconds), fix.Seconds);
    }
}

/// Room for as many fixes as the rows of the sample let expect, so that they are not moved about as they become more.
void FileRows::ReserveFixes() {
    m_source->clear();
    const auto here = m_source->tellg();
    m_source->seekg(0, std::ios::end);
    const auto end = m_source->tellg();
    m_source->seekg(here);
    if (end <= 0 || m_sampleRows == 0 || m_sampleEnd <= m_dataStart.Offset) return;
    const double perRow = static_cast<double>(m_sampleEnd - m_dataStart.Offset) / static_cast<double>(m_sampleRows);
    const double rows = static_cast<double>(end) / perRow * 1.05;
    m_owner->Fixes.reserve(m_owner->Fixes.size() + static_cast<std::size_t>(rows) + 1);
}

void FileRows::ReadHeader() {
    if (!m_reader.Next())
        platform::Raise(platform::error_number::kTypeMismatch,
                        m_reader.Name() + " is empty: it needs a header row and one row per fix");
    const auto& cells = m_reader.Cells();
    if (cells.size() == 1)
        Refuse(fmt::format("the header is in one piece: \"{}\"; separate the columns by commas, semicolons or tabs",
                           shown(cells[0])));
    if (cells.size() > kMostColumns)
        Refuse(fmt::format("the header has {} columns, and at most {} are read: keep those that matter", cells.size(),
                           kMostColumns));
    for (const std::string_view cell : cells) m_header.push_back(to_utf8(Trim(cell)));
    m_dataStart = {m_reader.Offset(), m_reader.Line()};
    m_headerLine = m_reader.Line();
    if (looks_like_data(cells)) {
        NameColumns();
        return;
    }
    if (!m_reader.Next()) {
        // Nothing follows the header.
        m_dataStart = {m_reader.Position(), m_reader.Line()};
        return;
    }
    m_dataStart = {m_reader.Offset(), m_reader.Line()};
    const auto& first = m_reader.Cells();
    // Names of rows stand before the columns and have no heading of their own; a last cell that is always empty has
    // none either.
    if (first.size() != m_header.size() + 1) return;
    const bool atEnd = Trim(first.back()).empty();
    m_hasRowNames = !atEnd;
    m_header.insert(atEnd ? m_header.end() : m_header.begin(), "");
}

/// Names for the columns of a table that has none.
void FileRows::NameColumns() {
    Facts().HeaderMissing = true;
    for (std::size_t i = 0; i < m_header.size(); ++i) m_header[i] = fmt::format("column {}", i + 1);
}

void FileRows::TakeSample() {
    m_profiles.resize(m_header.size());
    m_reader.Seek(m_dataStart.Offset, m_dataStart.Line);
    for (std::size_t row = 0; row < kSampleRows && NextRow(); ++row) {
        if (m_reader.Cells().size() != m_header.size()) continue;
        for (std::size_t i = 0; i < m_header.size(); ++i) m_profiles[i].Take(Cell(i));
        m_sampleEnd = m_reader.Offset();
        m_sampleRows = row;
    }
}

/// Names of rows differ from one another; a first column that repeats itself is one of the header's, and some cell
/// holds the separator.
void FileRows::CheckRowNames() const {
    if (!m_hasRowNames || m_profiles.front().IsEmpty()) return;
    const auto is_srid = [](const ColumnProfile& profile) {
        return std::ranges::any_of(profile.Values(), [](const std::string& cell) { return cell.starts_with("SRID="); });
    };
    if (m_profiles.front().AllDistinct() && std::ranges::none_of(m_profiles, is_srid)) return;
    platform::Raise(
        platform::error_number::kTypeMismatch,
        fmt::format("{}, line {}: the header has {} cells, and the rows have {}; name each column, and put cells "
                    "that hold the separator in quotes",
                    m_reader.Name(), m_headerLine, m_header.size() - 1, m_header.size()));
}

void FileRows::FindColumns() {
    WantedColumns wanted = m_options->Columns;
    wanted.NoId = wanted.NoId || (!m_options->Animal.empty() && wanted.Id.empty());
    m_layout = find_layout(m_header, m_profiles, wanted, fmt::format("{}, line {}", m_reader.Name(), m_headerLine));
    m_lastRole = std::max(m_layout.Position.X, m_layout.Position.Y);
    for (const auto& parts : {m_layout.Position.PartsOfX, m_layout.Position.PartsOfY})
        if (parts) m_lastRole = std::max({m_lastRole, parts->Minutes, parts->Seconds.value_or(0)});
    if (m_layout.Id) m_lastRole = std::max(m_lastRole, *m_layout.Id);
    if (m_layout.Time)
        for (const std::size_t column : m_layout.Time->Columns) m_lastRole = std::max(m_lastRole, column);
    TellColumns();
    FindSystem();
}

/// The coordinate system that the positions name themselves, unless the user does.
void FileRows::FindSystem() {
    const PositionColumns& position = m_layout.Position;
    if (!position.IsPair() || m_unit != PositionUnit::kUnknown) return;
    std::set<int> named;
    for (const std::string& cell : m_profiles[position.X].Values())
        if (const auto srid = srid_from_text(cell)) named.insert(*srid);
    if (named.empty()) return;
    const std::string column = m_header[position.X];
    if (named.size() > 1)
        platform::Raise(platform::error_number::kTypeMismatch,
                        fmt::format("{}: the positions in column \"{}\" are in several coordinate systems (SRID {}); "
                                    "import those of each from a file of its own",
                                    m_reader.Name(), column, fmt::join(named, ", ")));
    try {
        const auto reference = files::ReferenceFromText(fmt::format("EPSG:{}", *named.begin()));
        if (!files::has_places(reference)) platform::Raise(platform::error_number::kTypeMismatch, "no places");
        m_unit = reference.IsGeographic ? PositionUnit::kDegrees : PositionUnit::kLengths;
    } catch (const platform::RuntimeError&) {
        platform::Raise(
            platform::error_number::kTypeMismatch,
            fmt::format("{}: the SRID {} of the positions in column \"{}\" is no coordinate system of a map "
                        "that EPSG lists; name it by --from-crs EPSG:n",
                        m_reader.Name(), *named.begin(), column));
    }
    Facts().Srid = *named.begin();
}

void FileRows::TellColumns() {
    FileFacts& facts = Facts();
    const PositionColumns& position = m_layout.Position;
    facts.X = m_header[position.X];
    facts.Y = m_header[position.Y];
    if (position.IsPair()) {
        const bool latitudeFirst = position.Order == PairOrder::kLatitudeFirst;
        facts.X += latitudeFirst ? ":2" : ":1";
        facts.Y += latitudeFirst ? ":1" : ":2";
    }
    facts.PerDegree = position.PerDegree;
    facts.PartsByContent = position.PartsByContent;
    if (position.PartsOfX) facts.MinutesOfX = m_header[position.PartsOfX->Minutes];
    if (position.PartsOfY) facts.MinutesOfY = m_header[position.PartsOfY->Minutes];
    facts.IsOfReceiver = position.IsOfReceiver;
    facts.PositionByContent = position.ByContent;
    facts.NamedLengths = position.Unit == PositionUnit::kLengths;
    facts.MadeNegative = position.WestPositive || position.SouthPositive;
    if (m_layout.Id) facts.Id = m_header[*m_layout.Id];
    if (m_layout.OtherId) facts.OtherId = m_header[*m_layout.OtherId];
    if (!m_layout.Time) return;
    for (const std::size_t column : m_layout.Time->Columns) facts.Time.push_back(m_header[column]);
    facts.TimeByContent = m_layout.Time->ByContent;
    facts.TimeIsLocal = m_layout.Time->IsLocal && !m_layout.Time->IsUtc;
    facts.TimeIsUtc = m_layout.Time->IsUtc;
    if (m_layout.Time->UnusedClock) facts.UnusedClock = m_header[*m_layout.Time->UnusedClock];
    if (m_layout.Time->NamedZone) facts.ZoneOfClock = m_header[*m_layout.Time->NamedZone];
}

/// The columns that are kept beside the others' roles.
void FileRows::FindOthers() {
    std::vector<bool> taken(m_header.size(), false);
    taken[m_layout.Position.X] = true;
    taken[m_layout.Position.Y] = true;
    for (const auto& parts : {m_layout.Position.PartsOfX, m_layout.Position.PartsOfY}) {
        if (!parts) continue;
        taken[parts->Minutes] = true;
        if (parts->Seconds) taken[*parts->Seconds] = true;
    }
    if (m_layout.Id) taken[*m_layout.Id] = true;
    if (m_layout.Time)
        for (const std::size_t column : m_layout.Time->Columns) taken[column] = true;
    for (std::size_t i = 0; i < m_header.size(); ++i) {
        // A column without a name and without cells is a separator at the ends of the lines.
        if (taken[i] || (m_header[i].empty() && m_profiles[i].IsEmpty())) continue;
        const std::size_t other = m_owner->OtherIndex(m_header[i].empty() ? "row" : m_header[i]);
        m_others.emplace_back(i, other);
        if (m_columnOf.size() <= other) m_columnOf.resize(other + 1);
        m_columnOf[other] = i;
    }
}

bool FileRows::NextRow() {
    while (m_reader.Next())
        if (!IsBlankRow()) return true;
    return false;
}

/// Rows of nothing, or of dashes, as reports have them between groups and at their ends.
bool FileRows::IsBlankRow() const {
    return std::ranges::all_of(m_reader.Cells(), [](std::string_view cell) {
        return cell.find_first_not_of(" -=\t\"") == std::string_view::npos;
    });
}

std::string_view FileRows::Cell(std::size_t column) const {
    const auto& cells = m_reader.Cells();
    return column < cells.size() ? Trim(cells[column]) : std::string_view();
}

std::string FileRows::Place() const {
    return fmt::format("{}, line {}", m_reader.Name(), m_reader.Line());
}

void FileRows::Refuse(const std::string& what) const {
    platform::Raise(platform::error_number::kTypeMismatch, Place() + ": " + what);
}

void FileRows::Leave(Reason why, std::optional<std::size_t> column) {
    if (!m_owner->Rejected.IsListened()) return m_owner->Rejected.Count(why);
    m_owner->Rejected.Add(
        {m_reader.Name(), m_reader.Line(), why, column ? m_header[*column] : "", column ? to_utf8(Cell(*column)) : ""});
}

void FileRows::LeaveUnreadable(Reason why, std::optional<std::size_t> column, const std::string& what) {
    if (m_unreadable++ == 0) m_firstTrouble = Place() + ": " + what;
    Leave(why, column);
}

bool FileRows::CellsFit() {
    const auto& cells = m_reader.Cells();
    if (cells.size() == m_header.size()) return true;
    const auto isEmpty = [](std::string_view cell) { return Trim(cell).empty(); };
    const auto beyond = static_cast<std::ptrdiff_t>(m_header.size());
    if (cells.size() > m_header.size() && std::all_of(cells.begin() + beyond, cells.end(), isEmpty)) return true;
    // Programs leave out empty cells at the end of a row; one that ends within a cell that counts may be cut.
    return cells.size() < m_header.size() && cells.size() > m_lastRole + 1;
}

void FileRows::TakeRow() {
    ++m_rows;
    if (!CellsFit())
        return LeaveUnreadable(Reason::kCells, std::nullopt,
                               fmt::format("{} cells where the header has {}; correct the row, or delete it",
                                           m_reader.Cells().size(), m_header.size()));
    if (WhyNoFix()) return;
    TrackingFix fix;
    if (!TakePosition(fix) || !TakeTime(fix) || !TakeAnimal(fix) || !PassesFilters()) return;
    fix.Place = (static_cast<std::uint64_t>(m_index) << 48U) | m_reader.Offset();
    fix.Line = static_cast<std::uint32_t>(m_reader.Line());
    if (!fix.HasTime()) ++Facts().WithoutTime;
    if (m_layout.Position.Zone) {
        const std::string zone(Cell(*m_layout.Position.Zone));
        if (m_zones.empty() || m_zones.back() != zone) {
            const auto known = std::find(m_zones.begin(), m_zones.end(), zone);
            if (known == m_zones.end() && m_zones.size() < 250) m_zones.push_back(zone);
        }
        const auto known = std::find(m_zones.begin(), m_zones.end(), zone);
        m_zoneOf.push_back(static_cast<std::uint8_t>(known - m_zones.begin()));
    }
    m_owner->Fixes.push_back(fix);
    TakeOthers();
}

/// The reason why the current row is no fix of an animal, told already; nothing when it is one.
std::optional<Reason> FileRows::WhyNoFix() {
    const auto leave = [&](Reason why, std::size_t column) {
        Leave(why, column);
        return std::optional(why);
    };
    if (m_layout.Visible && says_no(Cell(*m_layout.Visible))) return leave(Reason::kNotVisible, *m_layout.Visible);
    for (const std::size_t column : m_layout.Outlier)
        if (says_yes(Cell(column))) return leave(Reason::kOutlier, column);
    for (const std::size_t column : {m_layout.Position.X, m_layout.Position.Y})
        if (is_missing(Cell(column))) return leave(Reason::kNoPosition, column);
    if (m_layout.Id && is_missing(Cell(*m_layout.Id))) return leave(Reason::kNoAnimal, *m_layout.Id);
    return std::nullopt;
}

bool FileRows::TakePosition(TrackingFix& fix) {
    const PositionColumns& position = m_layout.Position;
    if (position.IsPair() ? !TakePair(fix)
                          : !TakeCoordinate(position.X, true, fix.X) || !TakeCoordinate(position.Y, false, fix.Y))
        return false;
    if (is_placeholder(fix.X) || is_placeholder(fix.Y)) {
        // In metres, -999 is a place; in both coordinates it is none.
        const bool both = is_placeholder(fix.X) && is_placeholder(fix.Y);
        if (both || m_unit != PositionUnit::kLengths) {
            Leave(Reason::kNoPosition, is_placeholder(fix.X) ? position.X : position.Y);
            return false;
        }
    }
    // 200, 200 is what some tags send where others send 0, 0.
    if (fix.X == fix.Y && (fix.X == 0.0 || fix.X == 200.0) && SaysNoFix()) {
        Leave(Reason::kNoPosition, position.X);
        return false;
    }
    const auto side_in = [&](std::size_t column) {
        const char side = hemisphere_from_text(Cell(column));
        return side == 'O' ? position.LetterO : side;
    };
    if (position.EastOrWest && side_in(*position.EastOrWest) == 'W') fix.X = -std::abs(fix.X);
    if (position.NorthOrSouth && side_in(*position.NorthOrSouth) == 'S') fix.Y = -std::abs(fix.Y);
    if (position.WestPositive) fix.X = -fix.X;
    if (position.SouthPositive) fix.Y = -fix.Y;
    return true;
}

/// Both coordinates of one cell.
bool FileRows::TakePair(TrackingFix& fix) {
    const PositionColumns& columns = m_layout.Position;
    const std::string_view cell = Cell(columns.X);
    if (is_empty_position(cell)) {
        Leave(Reason::kNoPosition, columns.X);
        return false;
    }
    const auto position = position_from_text(cell);
    const auto order = position && position->Order ? position->Order : columns.Order;
    const auto srid = srid_from_text(cell);
    const bool isOfOther = Facts().Srid && srid && *srid != *Facts().Srid;
    if (!position || !order || isOfOther) {
        LeaveUnreadable(Reason::kPosition, columns.X,
                        fmt::format("\"{}\" in column \"{}\" is not a position; correct it, or empty the cell",
                                    shown(cell), m_header[columns.X]));
        return false;
    }
    const bool latitudeFirst = order == PairOrder::kLatitudeFirst;
    fix.X = latitudeFirst ? position->Second : position->First;
    fix.Y = latitudeFirst ? position->First : position->Second;
    return true;
}

bool FileRows::TakeCoordinate(std::size_t column, bool isX, double& value) {
    const std::string_view cell = Cell(column);
    const auto coordinate = coordinate_from_text(cell);
    if (!coordinate) return LeaveCoordinate(column);
    if (isX ? coordinate->IsLatitude() : coordinate->IsLongitude()) {
        LeaveUnreadable(Reason::kPosition, column,
                        fmt::format("\"{}\" in column \"{}\" is no {}; name the columns by --x and --y", shown(cell),
                                    m_header[column], isX ? "longitude" : "latitude"));
        return false;
    }
    // A degree among parts of degrees is no part.
    const bool isDegree = std::abs(coordinate->Value) <= 360.0 && coordinate->Value != std::floor(coordinate->Value);
    if (m_layout.Position.PerDegree != 1.0 && isDegree) return LeaveCoordinate(column);
    value = coordinate->Value / m_layout.Position.PerDegree;
    const auto& parts = isX ? m_layout.Position.PartsOfX : m_layout.Position.PartsOfY;
    if (parts) return TakeParts(*parts, value);
    if (!m_layout.Position.IsOfReceiver) return true;
    const auto degrees = degrees_of_receiver(value);
    if (!degrees) return LeaveCoordinate(column);
    value = *degrees;
    return true;
}

/// Adds minutes and seconds; empty cells are 0.
bool FileRows::TakeParts(const DegreeParts& parts, double& degrees) {
    if (degrees != std::floor(degrees)) return true;
    double unit = 60.0;
    for (const auto& column : {std::optional(parts.Minutes), parts.Seconds}) {
        if (!column || is_missing(Cell(*column))) continue;
        const auto number = number_from_text(Cell(*column));
        if (!number || *number < 0.0 || *number >= 60.0) return LeaveCoordinate(*column);
        degrees += std::copysign(*number / unit, degrees);
        unit *= 60.0;
    }
    return true;
}

/// Leaves out the row for a cell that is no coordinate; false.
bool FileRows::LeaveCoordinate(std::size_t column) {
    LeaveUnreadable(Reason::kPosition, column,
                    fmt::format("\"{}\" in column \"{}\" is not a coordinate; correct it, or empty the cell",
                                shown(Cell(column)), m_header[column]));
    return false;
}

/// Whether another column says that there was no position.
bool FileRows::SaysNoFix() const {
    if (m_layout.Satellites) {
        const auto count = number_from_text(Cell(*m_layout.Satellites));
        if (count && *count == 0.0) return true;
    }
    return std::any_of(m_layout.Status.begin(), m_layout.Status.end(),
                       [&](std::size_t column) { return is_no_fix(Cell(column)); });
}

std::string_view FileRows::TimeCell() {
    const TimeColumns& time = *m_layout.Time;
    if (time.Columns.size() > 1)
        return joined_time(
            time, [this](std::size_t column) { return Cell(column); }, m_joined);
    const std::string_view cell = Cell(time.Columns.front());
    return is_missing(cell) ? std::string_view() : cell;
}

bool FileRows::TakeTime(TrackingFix& fix) {
    if (!m_layout.Time) return true;
    std::optional<TimeText> time;
    std::string_view text;
    if (m_format.Kind == TimeKind::kSheetDays && m_layout.Time->Columns.size() > 1) {
        text = Cell(m_layout.Time->Columns[0]);
        if (is_missing(text)) return true;
        time = time_from_text(text, m_format);
        const std::string_view part = Cell(m_layout.Time->Columns[1]);
        const auto share = number_from_text(part);
        const auto ofDay =
            share ? std::optional<std::int64_t>(std::llround(*share * 86400.0)) : time_of_day_from_text(part);
        if (time && ofDay) time->Seconds += *ofDay;
    } else {
        text = TimeCell();
        if (text.empty()) return true;
        time = time_from_text(text, m_format);
    }
    if (!time) {
        LeaveUnreadable(
            Reason::kTime, m_layout.Time->Columns.front(),
            fmt::format("\"{}\" in column \"{}\" is no time that can be read; name the column of times by --time "
                        "COLUMN, empty the cell to keep the fix without a time, or import without times by --no-time",
                        shown(text), fmt::join(Facts().Time, "\" and \"")));
        return false;
    }
    if (time->HasAbbreviation && !m_options->Zone) {
        LeaveUnreadable(
            Reason::kTime, m_layout.Time->Columns.front(),
            fmt::format("\"{}\" in column \"{}\" names a time zone by letters that several zones share; say "
                        "which it is by --time-zone NAME (UTC, Europe/Paris)",
                        shown(text), fmt::join(Facts().Time, "\" and \"")));
        return false;
    }
    if (time->Seconds % 86400 == 0) ++Facts().Midnights;
    if (m_format.Kind == TimeKind::kSheetDays && time->Seconds % 60 != 0) {
        const std::size_t mark = text.find_first_of(".,");
        if (mark != std::string_view::npos) m_decimals = std::max(m_decimals, text.size() - mark - 1);
    }
    fix.Seconds = time->Seconds;
    if (time->IsUtc || !m_options->Zone || m_layout.Time->IsUtc) return true;
    const UtcTime utc = m_options->Zone->ToUtc(time->Seconds);
    if (utc.Said == UtcTime::Clock::kTwice) ++Facts().ClockTwice;
    if (utc.Said == UtcTime::Clock::kNever) ++Facts().ClockNever;
    fix.Seconds = utc.Seconds;
    return true;
}

bool FileRows::TakeAnimal(TrackingFix& fix) {
    if (m_layout.Id) {
        const std::string_view cell = Cell(*m_layout.Id);
        if (!m_hasLastAnimal || cell != m_lastCell) {
            const std::string name = to_utf8(cell);
            if (name.size() > kLongestName)
                Refuse(
                    fmt::format("the animal's name in column \"{}\" is longer than 254 bytes; shorten it, or choose "
                                "another column by --id",
                                m_header[*m_layout.Id]));
            m_lastAnimal = m_owner->AnimalIndex(name);
            m_lastCell = cell;
            m_hasLastAnimal = true;
        }
    }
    fix.Animal = m_lastAnimal;
    return true;
}

bool FileRows::PassesFilters() {
    if (m_options->MaxDop) {
        const auto dop = number_from_text(Cell(*m_layout.Dop));
        if (!dop) ++Facts().WithoutDop;
        if (dop && *dop > *m_options->MaxDop) {
            Leave(Reason::kDop, *m_layout.Dop);
            return false;
        }
    }
    if (m_options->ArgosClasses.empty()) return true;
    if (m_options->ArgosClasses.contains(platform::UpperCase(Cell(*m_layout.ArgosClass)))) return true;
    Leave(Reason::kArgosClass, *m_layout.ArgosClass);
    return false;
}

void FileRows::TakeOthers() {
    const bool decimalComma = m_reader.Separator() != ',';
    for (const auto& [column, other] : m_others) m_owner->Others[other].Type.Take(Cell(column), decimalComma);
}

void FileRows::DecideTimes() {
    if (!m_layout.Time) return;
    m_format.Kind = KindOfNumbers();
    if (m_format.Kind == TimeKind::kCalendar) DecideOrder();
}

/// What the numbers of a column of times are, by their size; kCalendar: texts.
TimeKind FileRows::KindOfNumbers() {
    const TimeColumns& time = *m_layout.Time;
    const ColumnProfile& profile = m_profiles[time.Columns.front()];
    if (time.How != TimeColumns::Style::kTogether || profile.FullTimes() + profile.Dates() > 0.5)
        return TimeKind::kCalendar;
    const auto kind = profile.NumberKind();
    // Days of a modified Julian date look like days of a spreadsheet of forty years later.
    const bool isOther = bare_name(m_header[time.Columns.front()], true).find("julian") != std::string::npos ||
                         bare_name(m_header[time.Columns.front()], true).find("mjd") != std::string::npos;
    if (kind && !isOther) {
        RefuseRounded(profile);
        return *kind;
    }
    if (profile.Numbers() > 0.9 && time.Columns.size() == 1) RefuseNumbers();
    return TimeKind::kCalendar;
}

/// Stops where a spreadsheet rounded most of the numbers, and seconds are lost.
void FileRows::RefuseRounded(const ColumnProfile& profile) const {
    const auto& cells = profile.Values();
    const auto rounded = std::ranges::count_if(cells, [](const std::string& cell) { return is_rounded(cell); });
    if (static_cast<std::size_t>(rounded) * 2 <= cells.size()) return;
    platform::Raise(
        platform::error_number::kTypeMismatch,
        fmt::format(
            "{}: the times in column \"{}\" are numbers that were rounded when the table was saved, like \"{}\"; "
            "save it with all digits, or import without times by --no-time",
            m_reader.Name(), m_header[m_layout.Time->Columns.front()],
            shown(*std::ranges::find_if(cells, [](const std::string& cell) { return is_rounded(cell); }))));
}

/// Stops at numbers that are no times, such as seconds since a start.
void FileRows::RefuseNumbers() {
    const std::size_t column = m_layout.Time->Columns.front();
    std::optional<double> least;
    std::optional<double> most;
    m_reader.Seek(m_dataStart.Offset, m_dataStart.Line);
    while (NextRow()) {
        const auto number = number_from_text(Cell(column));
        if (!number || is_placeholder(*number)) continue;
        least = std::min(least.value_or(*number), *number);
        most = std::max(most.value_or(*number), *number);
    }
    platform::Raise(
        platform::error_number::kTypeMismatch,
        fmt::format("{}: the numbers in column \"{}\", {} to {}, are no times of a kind that is known: seconds or "
                    "milliseconds since 1970, days of a spreadsheet (20000 to 80000), or dates in digits (20180509, "
                    "180509, 2018129); name a column with a date by --time COLUMN, or import without times by "
                    "--no-time",
                    m_reader.Name(), m_header[column], platform::NumberText(least.value_or(0.0)),
                    platform::NumberText(most.value_or(0.0))));
}

bool FileRows::SampleNeedsOrder() {
    constexpr unsigned kAny = 7;
    m_reader.Seek(m_dataStart.Offset, m_dataStart.Line);
    for (std::size_t row = 0; row < kSampleRows && NextRow(); ++row)
        if (possible_orders(TimeCell()) != kAny) return true;
    return false;
}

/// The order of day and month, by all dates of the file: the one that makes fewest of them impossible.
void FileRows::DecideOrder() {
    if (m_options->Order) m_format.Order = *m_options->Order;
    if (m_options->Order || !SampleNeedsOrder()) return;
    std::array<std::int64_t, 3> impossible{};
    std::string example;
    m_reader.Seek(m_dataStart.Offset, m_dataStart.Line);
    while (NextRow()) {
        const std::string_view text = TimeCell();
        const unsigned possible = possible_orders(text);
        if (possible == 0) continue;
        if (example.empty() && possible != 7) example = text;
        for (unsigned order = 0; order < 3; ++order)
            if ((possible & (1U << order)) == 0) ++impossible[order];
    }
    const auto least = std::min_element(impossible.begin(), impossible.end());
    if (std::count(impossible.begin(), impossible.end(), *least) > 1)
        platform::Raise(platform::error_number::kTypeMismatch,
                        fmt::format("{}: no row decides whether day or month comes first in dates like \"{}\" (column "
                                    "\"{}\"); say it by --date-order dmy|mdy|ymd",
                                    m_reader.Name(), shown(example), fmt::join(Facts().Time, "\" and \"")));
    m_format.Order = static_cast<DateOrder>(least - impossible.begin());
    Facts().Order = m_format.Order;
}

/// Finds out what the positions are, and leaves out those that cannot be.
void FileRows::SettlePositions(std::size_t firstFix) {
    FileFacts& facts = Facts();
    if (m_unit == PositionUnit::kLengths) {
        facts.IsLengths = true;
        return;
    }
    auto& fixes = m_owner->Fixes;
    const auto offMap = [](const TrackingFix& fix) {
        return fix.X < -180.0 || fix.X > 360.0 || fix.Y < -90.0 || fix.Y > 90.0;
    };
    const auto beyond = std::count_if(fixes.begin() + static_cast<std::ptrdiff_t>(firstFix), fixes.end(), offMap);
    const auto all = fixes.size() - firstFix;
    const bool mostly = static_cast<double>(beyond) > kMostUnreadable * static_cast<double>(all);
    if (mostly && m_layout.Position.Zone && m_unit == PositionUnit::kUnknown) return ProjectZones(firstFix);
    if (facts.NamedLengths && m_unit == PositionUnit::kUnknown)
        platform::Raise(platform::error_number::kTypeMismatch,
                        fmt::format("{}: the columns \"{}\" and \"{}\" are in metres, of a coordinate system that the "
                                    "file does not tell; name it by --from-crs EPSG:n",
                                    m_reader.Name(), facts.X, facts.Y));
    if (!mostly) return SettleDegrees(firstFix);
    const auto swapped = std::count_if(fixes.begin() + static_cast<std::ptrdiff_t>(firstFix), fixes.end(),
                                       [](auto& fix) { return std::abs(fix.X) <= 90.0 && std::abs(fix.Y) <= 360.0; });
    if (static_cast<double>(swapped) > (1.0 - kMostUnreadable) * static_cast<double>(all))
        platform::Raise(platform::error_number::kTypeMismatch,
                        fmt::format("{}: column \"{}\" holds latitudes beyond 90 degrees, as if longitude and latitude "
                                    "were swapped; if they are, give --x \"{}\" --y \"{}\"",
                                    m_reader.Name(), facts.Y, facts.Y, facts.X));
    const auto first = std::find_if(fixes.begin() + static_cast<std::ptrdiff_t>(firstFix), fixes.end(), offMap);
    platform::Raise(
        platform::error_number::kTypeMismatch,
        fmt::format(
            "{}: the position {}, {} is not in degrees{}; name the coordinate system by --from-crs EPSG:n{}",
            m_owner->PlaceOf(*first), first->X, first->Y,
            beyond == 1
                ? ""
                : fmt::format(" ({} of {} are not)", beyond, counted(static_cast<std::int64_t>(all), "position")),
            MayBeParts() ? ", or, if these are parts of a degree, call the columns lat_e7 and lon_e7 (e6, e5)" : ""));
}

/// Whether whole numbers stand in columns whose names say degrees.
bool FileRows::MayBeParts() const {
    const PositionColumns& position = m_layout.Position;
    return position.Unit == PositionUnit::kDegrees && m_profiles[position.X].Integers() > 0.9 &&
           m_profiles[position.Y].Integers() > 0.9;
}

/// Leaves out what is off the map, and brings longitudes below 180.
void FileRows::SettleDegrees(std::size_t firstFix) {
    auto& fixes = m_owner->Fixes;
    const auto begin = fixes.begin() + static_cast<std::ptrdiff_t>(firstFix);
    const auto off = std::stable_partition(begin, fixes.end(), [](const TrackingFix& fix) {
        return fix.X >= -180.0 && fix.X <= 360.0 && fix.Y >= -90.0 && fix.Y <= 90.0;
    });
    for (auto fix = off; fix != fixes.end(); ++fix)
        m_owner->Reject(*fix, Reason::kPosition, Facts().X + ", " + Facts().Y, fmt::format("{}, {}", fix->X, fix->Y));
    fixes.erase(off, fixes.end());
    for (auto fix = fixes.begin() + static_cast<std::ptrdiff_t>(firstFix); fix != fixes.end(); ++fix) {
        if (fix->X <= 180.0) continue;
        fix->X -= 360.0;
        ++Facts().Over180;
    }
}

void FileRows::ProjectZones(std::size_t firstFix) {
    Facts().Zone = m_header[*m_layout.Position.Zone];
    const std::string place = fmt::format("{}: column \"{}\"", m_reader.Name(), Facts().Zone);
    project_utm_rows(std::span(m_owner->Fixes).subspan(firstFix), m_zones, m_zoneOf, place);
    m_zoneOf = {};
}

void FileRows::SeekTo(const TrackingFix& fix) {
    m_reader.Seek(fix.Offset(), fix.Line);
    m_reader.Next();
}

std::string_view FileRows::Other(std::size_t other) const {
    if (other >= m_columnOf.size() || !m_columnOf[other]) return {};
    return Cell(*m_columnOf[other]);
}

}  // namespace wxl::tracking
