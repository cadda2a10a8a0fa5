#include "adapters/tracking/position_cells.h"

#include "adapters/tracking/cell_text.h"
#include "adapters/tracking/coordinate_text.h"
#include "adapters/tracking/number_text.h"
#include "adapters/tracking/position_text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fmt/format.h>
#include <string>
#include <string_view>

namespace wxl::tracking {

namespace {

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

}  // namespace

PositionCells::PositionCells(const TableRows& table, const Layout& layout, PositionUnit unit, std::optional<int> srid)
    : m_table(table), m_layout(layout), m_unit(unit), m_srid(srid) {}

std::optional<RowFault> PositionCells::Take(TrackingFix& fix) const {
    const PositionColumns& position = m_layout.Position;
    if (auto fault = TakeNumbers(fix)) return fault;
    if (is_placeholder(fix.X) || is_placeholder(fix.Y)) {
        // In metres, -999 is a place; in both coordinates it is none.
        const bool both = is_placeholder(fix.X) && is_placeholder(fix.Y);
        if (both || m_unit != PositionUnit::kLengths)
            return RowFault{Reason::kNoPosition, is_placeholder(fix.X) ? position.X : position.Y, {}};
    }
    // 200, 200 is what some tags send where others send 0, 0.
    if (fix.X == fix.Y && (fix.X == 0.0 || fix.X == 200.0) && SaysNoFix())
        return RowFault{Reason::kNoPosition, position.X, {}};
    const auto side_in = [&](std::size_t column) {
        const char side = hemisphere_from_text(m_table.Cell(column));
        return side == 'O' ? position.LetterO : side;
    };
    if (position.EastOrWest && side_in(*position.EastOrWest) == 'W') fix.X = -std::abs(fix.X);
    if (position.NorthOrSouth && side_in(*position.NorthOrSouth) == 'S') fix.Y = -std::abs(fix.Y);
    if (position.WestPositive) fix.X = -fix.X;
    if (position.SouthPositive) fix.Y = -fix.Y;
    return std::nullopt;
}

std::optional<RowFault> PositionCells::TakeNumbers(TrackingFix& fix) const {
    const PositionColumns& position = m_layout.Position;
    if (position.IsPair()) return TakePair(fix);
    if (auto fault = TakeCoordinate(position.X, true, fix.X)) return fault;
    return TakeCoordinate(position.Y, false, fix.Y);
}

/// Both coordinates of one cell.
std::optional<RowFault> PositionCells::TakePair(TrackingFix& fix) const {
    const PositionColumns& columns = m_layout.Position;
    const std::string_view cell = m_table.Cell(columns.X);
    if (is_empty_position(cell)) return RowFault{Reason::kNoPosition, columns.X, {}};
    const auto position = position_from_text(cell);
    const auto order = position && position->Order ? position->Order : columns.Order;
    const auto srid = srid_from_text(cell);
    const bool isOfOther = m_srid && srid && *srid != *m_srid;
    if (!position || !order || isOfOther)
        return RowFault{Reason::kPosition, columns.X,
                        fmt::format("\"{}\" in column \"{}\" is not a position; correct it, or empty the cell",
                                    shown(cell), m_table.Header()[columns.X])};
    const bool latitudeFirst = order == PairOrder::kLatitudeFirst;
    fix.X = latitudeFirst ? position->Second : position->First;
    fix.Y = latitudeFirst ? position->First : position->Second;
    return std::nullopt;
}

std::optional<RowFault> PositionCells::TakeCoordinate(std::size_t column, bool isX, double& value) const {
    const std::string_view cell = m_table.Cell(column);
    const auto coordinate = coordinate_from_text(cell);
    if (!coordinate) return NoCoordinate(column);
    if (isX ? coordinate->IsLatitude() : coordinate->IsLongitude())
        return RowFault{Reason::kPosition, column,
                        fmt::format("\"{}\" in column \"{}\" is no {}; name the columns by --x and --y", shown(cell),
                                    m_table.Header()[column], isX ? "longitude" : "latitude")};
    // A degree among parts of degrees is no part.
    const bool isDegree = std::abs(coordinate->Value) <= 360.0 && coordinate->Value != std::floor(coordinate->Value);
    if (m_layout.Position.PerDegree != 1.0 && isDegree) return NoCoordinate(column);
    value = coordinate->Value / m_layout.Position.PerDegree;
    const auto& parts = isX ? m_layout.Position.PartsOfX : m_layout.Position.PartsOfY;
    if (parts) return TakeParts(*parts, value);
    if (!m_layout.Position.IsOfReceiver) return std::nullopt;
    const auto degrees = degrees_of_receiver(value);
    if (!degrees) return NoCoordinate(column);
    value = *degrees;
    return std::nullopt;
}

/// Adds minutes and seconds; empty cells are 0.
std::optional<RowFault> PositionCells::TakeParts(const DegreeParts& parts, double& degrees) const {
    if (degrees != std::floor(degrees)) return std::nullopt;
    double unit = 60.0;
    for (const auto& column : {std::optional(parts.Minutes), parts.Seconds}) {
        if (!column || is_missing(m_table.Cell(*column))) continue;
        const auto number = number_from_text(m_table.Cell(*column));
        if (!number || *number < 0.0 || *number >= 60.0) return NoCoordinate(*column);
        degrees += std::copysign(*number / unit, degrees);
        unit *= 60.0;
    }
    return std::nullopt;
}

RowFault PositionCells::NoCoordinate(std::size_t column) const {
    return RowFault{Reason::kPosition, column,
                    fmt::format("\"{}\" in column \"{}\" is not a coordinate; correct it, or empty the cell",
                                shown(m_table.Cell(column)), m_table.Header()[column])};
}

/// Whether another column says that there was no position.
bool PositionCells::SaysNoFix() const {
    if (m_layout.Satellites) {
        const auto count = number_from_text(m_table.Cell(*m_layout.Satellites));
        if (count && *count == 0.0) return true;
    }
    return std::any_of(m_layout.Status.begin(), m_layout.Status.end(),
                       [&](std::size_t column) { return is_no_fix(m_table.Cell(column)); });
}

}  // namespace wxl::tracking
