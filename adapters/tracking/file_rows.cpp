#include "adapters/tracking/file_rows.h"

#include "adapters/gdal/gdal_support.h"
#include "adapters/tracking/cell_text.h"
#include "adapters/tracking/number_text.h"
#include "adapters/tracking/position_text.h"
#include "adapters/tracking/utm_rows.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <set>
#include <span>
#include <utility>

namespace wxl::tracking {

namespace {

using platform::Trim;

constexpr std::size_t kLongestName = 254;  // of a text field of a shapefile, in bytes
constexpr std::int64_t kRowsBetweenProgress = 4096;
constexpr double kMostUnreadable = 0.2;

bool says_no(std::string_view cell) {
    return is_one_of(cell, {"false", "f", "0", "no", "n"});
}
bool says_yes(std::string_view cell) {
    return is_one_of(cell, {"true", "t", "1", "yes", "y"});
}

std::string counted(std::int64_t count, const char* noun) {
    return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

}  // namespace

FileRows::FileRows(std::unique_ptr<std::istream> source, const std::string& name, std::size_t index, Tracking& owner,
                   const std::optional<Dialect>& dialect)
    : m_table(std::move(source), name, dialect), m_index(index), m_owner(&owner) {}

void FileRows::ReadAll(const std::string& animal, const std::function<void(std::uint64_t)>& progress) {
    m_options = &m_owner->m_options;
    m_unit = m_options->Unit;
    m_table.ReadHeader();
    Facts().HeaderMissing = m_table.HeaderIsMissing();
    m_table.TakeSample();
    m_table.CheckRowNames();
    FindColumns();
    m_positions.emplace(m_table, m_layout, m_unit, Facts().Srid);
    if (!m_layout.Id) {
        m_lastAnimal = m_owner->AnimalIndex(animal);
        m_hasLastAnimal = true;
    }
    DecideTimes();
    FindOthers();
    const std::size_t firstFix = m_owner->Fixes.size();
    // Fixes are not moved about as they become more.
    m_owner->Fixes.reserve(firstFix + m_table.MostRows());
    m_table.Restart();
    while (m_table.Next()) {
        TakeRow();
        if (progress && m_rows % kRowsBetweenProgress == 0) progress(m_table.Position());
    }
    Facts().Rows = m_rows;
    m_owner->Rows += m_rows;
    if (static_cast<double>(m_unreadable) > kMostUnreadable * static_cast<double>(m_rows)) {
        const std::string share =
            m_unreadable == 1 ? "" : fmt::format(" ({} of {} rows are like it)", m_unreadable, m_rows);
        platform::Raise(platform::error_number::kTypeMismatch, m_firstTrouble + share);
    }
    SettlePositions(firstFix);
    if (m_times) m_times->TellNumbers(std::span(m_owner->Fixes).subspan(firstFix), Facts());
}

void FileRows::DecideTimes() {
    if (!m_layout.Time) return;
    m_times.emplace(m_table, *m_layout.Time, *m_options);
    m_times->Decide(Facts());
}

void FileRows::FindColumns() {
    WantedColumns wanted = m_options->Columns;
    wanted.NoId = wanted.NoId || (!m_options->Animal.empty() && wanted.Id.empty());
    m_layout = find_layout(m_table.Header(), m_table.Profiles(), wanted,
                           fmt::format("{}, line {}", m_table.Name(), m_table.HeaderLine()));
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
    for (const std::string& cell : m_table.Profiles()[position.X].Values())
        if (const auto srid = srid_from_text(cell)) named.insert(*srid);
    if (named.empty()) return;
    const std::string column = m_table.Header()[position.X];
    if (named.size() > 1)
        platform::Raise(platform::error_number::kTypeMismatch,
                        fmt::format("{}: the positions in column \"{}\" are in several coordinate systems (SRID {}); "
                                    "import those of each from a file of its own",
                                    m_table.Name(), column, fmt::join(named, ", ")));
    try {
        const auto reference = files::ReferenceFromText(fmt::format("EPSG:{}", *named.begin()));
        if (!files::has_places(reference)) platform::Raise(platform::error_number::kTypeMismatch, "no places");
        m_unit = reference.IsGeographic ? PositionUnit::kDegrees : PositionUnit::kLengths;
    } catch (const platform::RuntimeError&) {
        platform::Raise(
            platform::error_number::kTypeMismatch,
            fmt::format("{}: the SRID {} of the positions in column \"{}\" is no coordinate system of a map "
                        "that EPSG lists; name it by --from-crs EPSG:n",
                        m_table.Name(), *named.begin(), column));
    }
    Facts().Srid = *named.begin();
}

void FileRows::TellColumns() {
    FileFacts& facts = Facts();
    const PositionColumns& position = m_layout.Position;
    facts.X = m_table.Header()[position.X];
    facts.Y = m_table.Header()[position.Y];
    if (position.IsPair()) {
        const bool latitudeFirst = position.Order == PairOrder::kLatitudeFirst;
        facts.X += latitudeFirst ? ":2" : ":1";
        facts.Y += latitudeFirst ? ":1" : ":2";
    }
    facts.PerDegree = position.PerDegree;
    facts.PartsByContent = position.PartsByContent;
    if (position.PartsOfX) facts.MinutesOfX = m_table.Header()[position.PartsOfX->Minutes];
    if (position.PartsOfY) facts.MinutesOfY = m_table.Header()[position.PartsOfY->Minutes];
    facts.IsOfReceiver = position.IsOfReceiver;
    facts.PositionByContent = position.ByContent;
    facts.NamedLengths = position.Unit == PositionUnit::kLengths;
    facts.MadeNegative = position.WestPositive || position.SouthPositive;
    if (m_layout.Id) facts.Id = m_table.Header()[*m_layout.Id];
    if (m_layout.OtherId) facts.OtherId = m_table.Header()[*m_layout.OtherId];
    if (!m_layout.Time) return;
    for (const std::size_t column : m_layout.Time->Columns) facts.Time.push_back(m_table.Header()[column]);
    facts.TimeByContent = m_layout.Time->ByContent;
    facts.TimeIsLocal = m_layout.Time->IsLocal && !m_layout.Time->IsUtc;
    facts.TimeIsUtc = m_layout.Time->IsUtc;
    if (m_layout.Time->UnusedClock) facts.UnusedClock = m_table.Header()[*m_layout.Time->UnusedClock];
    if (m_layout.Time->NamedZone) facts.ZoneOfClock = m_table.Header()[*m_layout.Time->NamedZone];
}

/// The columns that are kept beside the others' roles.
void FileRows::FindOthers() {
    std::vector<bool> taken(m_table.Header().size(), false);
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
    for (std::size_t i = 0; i < m_table.Header().size(); ++i) {
        // A column without a name and without cells is a separator at the ends of the lines.
        if (taken[i] || (m_table.Header()[i].empty() && m_table.Profiles()[i].IsEmpty())) continue;
        const std::size_t other = m_owner->OtherIndex(m_table.Header()[i].empty() ? "row" : m_table.Header()[i]);
        m_others.emplace_back(i, other);
        if (m_columnOf.size() <= other) m_columnOf.resize(other + 1);
        m_columnOf[other] = i;
    }
}

void FileRows::Leave(const RowFault& fault) {
    if (!fault.What.empty() && m_unreadable++ == 0) m_firstTrouble = m_table.Place() + ": " + fault.What;
    if (!m_owner->Rejected.IsListened()) return m_owner->Rejected.Count(fault.Why);
    const auto& column = fault.Column;
    m_owner->Rejected.Add({m_table.Name(), m_table.Line(), fault.Why, column ? m_table.Header()[*column] : "",
                           column ? to_utf8(m_table.Cell(*column)) : ""});
}

bool FileRows::CellsFit() const {
    const auto& cells = m_table.Cells();
    if (cells.size() == m_table.Header().size()) return true;
    const auto isEmpty = [](std::string_view cell) { return Trim(cell).empty(); };
    const auto beyond = static_cast<std::ptrdiff_t>(m_table.Header().size());
    if (cells.size() > m_table.Header().size() && std::all_of(cells.begin() + beyond, cells.end(), isEmpty))
        return true;
    // Programs leave out empty cells at the end of a row; one that ends within a cell that counts may be cut.
    return cells.size() < m_table.Header().size() && cells.size() > m_lastRole + 1;
}

void FileRows::TakeRow() {
    ++m_rows;
    TrackingFix fix;
    if (const auto fault = Take(fix)) return Leave(*fault);
    fix.Place = (static_cast<std::uint64_t>(m_index) << 48U) | m_table.Offset();
    fix.Line = static_cast<std::uint32_t>(m_table.Line());
    if (!fix.HasTime()) ++Facts().WithoutTime;
    if (m_layout.Position.Zone) {
        const std::string zone(m_table.Cell(*m_layout.Position.Zone));
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

/// Takes animal, position and time of the current row, or tells why it is left out.
std::optional<RowFault> FileRows::Take(TrackingFix& fix) {
    if (!CellsFit())
        return RowFault{Reason::kCells, std::nullopt,
                        fmt::format("{} cells where the header has {}; correct the row, or delete it",
                                    m_table.Cells().size(), m_table.Header().size())};
    if (auto fault = WhyNoFix()) return fault;
    if (auto fault = m_positions->Take(fix)) return fault;
    if (m_times)
        if (auto fault = m_times->Take(fix, Facts())) return fault;
    TakeAnimal(fix);
    return WhyFiltered();
}

/// Why the current row is no fix of an animal; nothing when it is one.
std::optional<RowFault> FileRows::WhyNoFix() const {
    if (m_layout.Visible && says_no(m_table.Cell(*m_layout.Visible)))
        return RowFault{Reason::kNotVisible, *m_layout.Visible, {}};
    for (const std::size_t column : m_layout.Outlier)
        if (says_yes(m_table.Cell(column))) return RowFault{Reason::kOutlier, column, {}};
    for (const std::size_t column : {m_layout.Position.X, m_layout.Position.Y})
        if (is_missing(m_table.Cell(column))) return RowFault{Reason::kNoPosition, column, {}};
    if (m_layout.Id && is_missing(m_table.Cell(*m_layout.Id))) return RowFault{Reason::kNoAnimal, *m_layout.Id, {}};
    return std::nullopt;
}

void FileRows::TakeAnimal(TrackingFix& fix) {
    if (m_layout.Id) {
        const std::string_view cell = m_table.Cell(*m_layout.Id);
        if (!m_hasLastAnimal || cell != m_lastCell) {
            const std::string name = to_utf8(cell);
            if (name.size() > kLongestName)
                m_table.Refuse(
                    fmt::format("the animal's name in column \"{}\" is longer than 254 bytes; shorten it, or choose "
                                "another column by --id",
                                m_table.Header()[*m_layout.Id]));
            m_lastAnimal = m_owner->AnimalIndex(name);
            m_lastCell = cell;
            m_hasLastAnimal = true;
        }
    }
    fix.Animal = m_lastAnimal;
}

/// Which filter of the user leaves out the current row; nothing when all let it pass.
std::optional<RowFault> FileRows::WhyFiltered() {
    if (m_options->MaxDop) {
        const auto dop = number_from_text(m_table.Cell(*m_layout.Dop));
        if (!dop) ++Facts().WithoutDop;
        if (dop && *dop > *m_options->MaxDop) return RowFault{Reason::kDop, *m_layout.Dop, {}};
    }
    if (m_options->ArgosClasses.empty()) return std::nullopt;
    if (m_options->ArgosClasses.contains(platform::UpperCase(m_table.Cell(*m_layout.ArgosClass)))) return std::nullopt;
    return RowFault{Reason::kArgosClass, *m_layout.ArgosClass, {}};
}

void FileRows::TakeOthers() {
    const bool decimalComma = m_table.Separator() != ',';
    for (const auto& [column, other] : m_others) m_owner->Others[other].Type.Take(m_table.Cell(column), decimalComma);
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
                                    m_table.Name(), facts.X, facts.Y));
    if (!mostly) return SettleDegrees(firstFix);
    const auto swapped = std::count_if(fixes.begin() + static_cast<std::ptrdiff_t>(firstFix), fixes.end(),
                                       [](auto& fix) { return std::abs(fix.X) <= 90.0 && std::abs(fix.Y) <= 360.0; });
    if (static_cast<double>(swapped) > (1.0 - kMostUnreadable) * static_cast<double>(all))
        platform::Raise(platform::error_number::kTypeMismatch,
                        fmt::format("{}: column \"{}\" holds latitudes beyond 90 degrees, as if longitude and latitude "
                                    "were swapped; if they are, give --x \"{}\" --y \"{}\"",
                                    m_table.Name(), facts.Y, facts.Y, facts.X));
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
    return position.Unit == PositionUnit::kDegrees && m_table.Profiles()[position.X].Integers() > 0.9 &&
           m_table.Profiles()[position.Y].Integers() > 0.9;
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
    Facts().Zone = m_table.Header()[*m_layout.Position.Zone];
    const std::string place = fmt::format("{}: column \"{}\"", m_table.Name(), Facts().Zone);
    project_utm_rows(std::span(m_owner->Fixes).subspan(firstFix), m_zones, m_zoneOf, place);
    m_zoneOf = {};
}

void FileRows::SeekTo(const TrackingFix& fix) {
    m_table.Seek(fix.Offset(), fix.Line);
    m_table.Next();
}

std::string_view FileRows::Other(std::size_t other) const {
    if (other >= m_columnOf.size() || !m_columnOf[other]) return {};
    return m_table.Cell(*m_columnOf[other]);
}

}  // namespace wxl::tracking
