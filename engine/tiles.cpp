#include "engine/tiles.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

namespace wxl::engine {
namespace {

/// Number of a square: row, then column.
using Place = std::pair<std::int64_t, std::int64_t>;

struct Placed {
    Place Square;
    platform::Point Position;
    std::size_t Index;
};

std::vector<Placed> placed_by_square(std::span<const platform::Point> points, double side) {
    const platform::Extent extent = platform::bounds_of(points);
    std::vector<Placed> placed;
    placed.reserve(points.size());
    for (const platform::Point& point : points) {
        const auto row = static_cast<std::int64_t>(std::floor((point.Y - extent.YMin) / side));
        const auto column = static_cast<std::int64_t>(std::floor((point.X - extent.XMin) / side));
        placed.push_back({{row, column}, point, placed.size()});
    }
    std::stable_sort(placed.begin(), placed.end(),
                     [](const Placed& a, const Placed& b) { return a.Square < b.Square; });
    return placed;
}

std::span<const Placed> points_of(const std::vector<Placed>& placed, const Place& square) {
    const auto before = [](const Placed& a, const Place& b) { return a.Square < b; };
    const auto after = [](const Place& a, const Placed& b) { return a < b.Square; };
    const auto first = std::lower_bound(placed.begin(), placed.end(), square, before);
    return {first, std::upper_bound(first, placed.end(), square, after)};
}

void add_margin(std::span<const Placed> candidates, const platform::Extent& reached, Tile& tile) {
    for (const Placed& candidate : candidates) {
        const platform::Point& p = candidate.Position;
        if (p.X >= reached.XMin && p.X <= reached.XMax && p.Y >= reached.YMin && p.Y <= reached.YMax)
            tile.Margin.push_back(p);
    }
}

}  // namespace

void for_each_tile(std::span<const platform::Point> points, double side, double reach,
                   const std::function<void(const Tile&)>& visit) {
    const std::vector<Placed> placed = placed_by_square(points, side);
    Tile tile;
    for (std::size_t first = 0; first < placed.size();) {
        const Place square = placed[first].Square;
        tile.Owners.clear();
        tile.Indexes.clear();
        tile.Margin.clear();
        platform::Extent extent;
        for (; first < placed.size() && placed[first].Square == square; ++first) {
            tile.Owners.push_back(placed[first].Position);
            tile.Indexes.push_back(placed[first].Index);
            extent.Include(placed[first].Position);
        }
        const platform::Extent reached{extent.XMin - reach, extent.YMin - reach, extent.XMax + reach,
                                       extent.YMax + reach};
        for (std::int64_t row = square.first - 1; row <= square.first + 1; ++row)
            for (std::int64_t column = square.second - 1; column <= square.second + 1; ++column)
                if (const Place near(row, column); near != square) add_margin(points_of(placed, near), reached, tile);
        visit(tile);
    }
}

}  // namespace wxl::engine
