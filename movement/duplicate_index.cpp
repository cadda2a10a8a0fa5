#include "movement/duplicate_index.h"

#include "movement/time2.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <cmath>

namespace wxl::movement {

using namespace wxl::platform;

namespace {

/// The location of a fix that has a usable one.
std::optional<Point> location_of(const IFeature& fix) {
    const Geometry shape = fix.Shape();
    if (shape.IsNull() || !std::isfinite(shape.Location.X) || !std::isfinite(shape.Location.Y)) return std::nullopt;
    return shape.Location;
}

}  // namespace

void Time2Index::Add(std::size_t row, const IFeature& fix) {
    if (m_unreadable) return;
    try {
        m_rows[time2_of(fix.Value(m_field))].emplace(fix.OID(), row);
    } catch (const RuntimeError& error) {
        // Met again by the first fix that is compared with all others.
        m_unreadable = Unreadable{row, error};
    }
}

void Time2Index::TakeDuplicates(const IFeature& kept, const std::function<void(std::size_t)>& take) {
    std::vector<std::size_t> rows;
    const auto group = m_rows.find(time2_of(kept.Value(m_field)));
    if (group != m_rows.end()) {
        const auto first = group->second.upper_bound(kept.OID());
        for (auto duplicate = first; duplicate != group->second.end(); ++duplicate) rows.push_back(duplicate->second);
        group->second.erase(first, group->second.end());
    }
    std::sort(rows.begin(), rows.end());
    for (const std::size_t row : rows) take(row);
    if (m_unreadable) throw m_unreadable->Error;
}

// Cells are twice as wide as the tolerance, so that rounding in the division never puts two fixes that coincide more
// than one cell apart. Without a tolerance every pair of coordinates is a cell of its own.
LocationIndex::LocationIndex(double tolerance) : m_tolerance(tolerance), m_cellSize(2.0 * tolerance) {}

std::size_t LocationIndex::CellHash::operator()(const Cell& cell) const {
    const std::size_t x = std::hash<double>()(cell.X);
    const std::size_t y = std::hash<double>()(cell.Y);
    return x ^ (y * 0x9E3779B97F4A7C15ULL + (x << 6U) + (x >> 2U));
}

LocationIndex::Cell LocationIndex::CellOf(const Point& location) const {
    if (m_tolerance == 0.0) return {location.X, location.Y};
    return {std::floor(location.X / m_cellSize), std::floor(location.Y / m_cellSize)};
}

bool LocationIndex::Coincide(const Point& a, const Point& b) const {
    if (a == b) return true;
    return std::hypot(a.X - b.X, a.Y - b.Y) <= m_tolerance;
}

void LocationIndex::Add(std::size_t row, const IFeature& fix) {
    if (const auto place = location_of(fix)) m_cells[CellOf(*place)].push_back({row, fix.OID(), *place});
}

void LocationIndex::TakeDuplicates(const IFeature& kept, const std::function<void(std::size_t)>& take) {
    const auto place = location_of(kept);
    if (!place) return;
    const Cell own = CellOf(*place);
    std::vector<std::size_t> rows;
    if (m_tolerance == 0.0) {
        TakeFromCell(own, kept, *place, rows);
    } else {
        for (const double x : {-1.0, 0.0, 1.0})
            for (const double y : {-1.0, 0.0, 1.0}) TakeFromCell({own.X + x, own.Y + y}, kept, *place, rows);
    }
    std::sort(rows.begin(), rows.end());
    for (const std::size_t row : rows) take(row);
}

void LocationIndex::TakeFromCell(const Cell& cell, const IFeature& kept, const Point& place,
                                 std::vector<std::size_t>& taken) {
    const auto found = m_cells.find(cell);
    if (found == m_cells.end()) return;
    std::erase_if(found->second, [&](const Entry& entry) {
        const bool duplicate = entry.FID != kept.OID() && Coincide(place, entry.Location);
        if (duplicate) taken.push_back(entry.Row);
        return duplicate;
    });
}

void AnimalIndex::Add(std::size_t row, const IFeature& fix) {
    FieldValue animal = fix.Value(m_field);
    if (!utilities::names_an_animal(animal)) return;
    auto& index = m_animals[std::move(animal)];
    if (!index) index = m_make();
    index->Add(row, fix);
}

void AnimalIndex::TakeDuplicates(const IFeature& kept, const std::function<void(std::size_t)>& take) {
    const auto animal = m_animals.find(kept.Value(m_field));
    if (animal != m_animals.end()) animal->second->TakeDuplicates(kept, take);
}

double xy_tolerance(const SpatialReference& reference) {
    constexpr double kTolerance = 0.001;  // metres
    if (reference.IsGeographic || !(reference.MetersPerUnit > 0.0)) return 0.0;
    return kTolerance / reference.MetersPerUnit;
}

}  // namespace wxl::movement
