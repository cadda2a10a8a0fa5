#include "isopleths/rings.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <numeric>
#include <unordered_map>
#include <utility>

namespace wxl::isopleths {

using platform::Geometry;
using platform::Point;

namespace {

bool west_then_south(const Point& a, const Point& b) {
    return a.X != b.X ? a.X < b.X : a.Y < b.Y;
}

enum class Side { kLeft, kRight, kUnsure };

/// On which side of the line through two points the third lies (looking from `from` to `to`). Unsure when rounding may
/// have decided; the bound is that of Shewchuk (1997), "Adaptive precision floating-point arithmetic".
Side side_of(const Point& from, const Point& to, const Point& point) {
    const double left = (from.X - point.X) * (to.Y - point.Y);
    const double right = (from.Y - point.Y) * (to.X - point.X);
    const double bound = 3.3306690738754716e-16 * (std::abs(left) + std::abs(right));
    if (left - right > bound) return Side::kLeft;
    if (right - left > bound) return Side::kRight;
    return Side::kUnsure;
}

/// One side of a ring.
struct Segment {
    std::uint32_t Ring = 0;
    std::uint32_t Start = 0;  ///< index of its first vertex in the ring
};

/// The segments of all rings by bands of y about as high as a segment.
class BandIndex {
public:
    explicit BandIndex(std::span<const Ring> rings) : m_rings(rings) {
        ChooseBands();
        std::vector<std::size_t> next(m_count + 1, 0);
        ForEachEntry([&](std::size_t band, const Segment&) { ++next[band + 1]; });
        std::partial_sum(next.begin(), next.end(), next.begin());
        m_starts = next;
        m_segments.resize(next.back());
        ForEachEntry([&](std::size_t band, const Segment& segment) { m_segments[next[band]++] = segment; });
    }

    std::span<const Segment> At(double y) const {
        const std::size_t band = BandOf(y);
        return std::span(m_segments).subspan(m_starts[band], m_starts[band + 1] - m_starts[band]);
    }

private:
    void ChooseBands() {
        double lowest = m_rings.front().front().Y;
        double highest = lowest;
        double climb = 0.0;
        std::size_t segments = 0;
        for (const Ring& ring : m_rings) {
            for (std::size_t i = 0; i < ring.size(); ++i) {
                lowest = std::min(lowest, ring[i].Y);
                highest = std::max(highest, ring[i].Y);
                if (i > 0) climb += std::abs(ring[i].Y - ring[i - 1].Y);
            }
            segments += ring.size();
        }
        const double bands = climb > 0.0 ? (highest - lowest) / climb * static_cast<double>(segments) : 1.0;
        m_count = static_cast<std::size_t>(std::clamp(bands, 1.0, static_cast<double>(segments)));
        m_lowest = lowest;
        m_height = (highest - lowest) / static_cast<double>(m_count);
    }

    std::size_t BandOf(double y) const {
        if (!(m_height > 0.0)) return 0;
        const double band = std::clamp((y - m_lowest) / m_height, 0.0, static_cast<double>(m_count - 1));
        return static_cast<std::size_t>(band);
    }

    template <class Action>
    void ForEachEntry(Action&& action) const {
        for (std::size_t r = 0; r < m_rings.size(); ++r) {
            const Ring& ring = m_rings[r];
            for (std::size_t i = 0; i + 1 < ring.size(); ++i) {
                const std::size_t first = BandOf(std::min(ring[i].Y, ring[i + 1].Y));
                const std::size_t last = BandOf(std::max(ring[i].Y, ring[i + 1].Y));
                const Segment segment{static_cast<std::uint32_t>(r), static_cast<std::uint32_t>(i)};
                for (std::size_t band = first; band <= last; ++band) action(band, segment);
            }
        }
    }

    std::span<const Ring> m_rings;
    std::size_t m_count = 1;
    double m_lowest = 0.0;
    double m_height = 0.0;
    std::vector<std::size_t> m_starts;
    std::vector<Segment> m_segments;
};

/// The larger rings around a point of ring `own`, ascending; `unsure` when one of them passes through the point.
std::vector<std::uint32_t> rings_around(std::span<const Ring> rings, const BandIndex& index, std::size_t own,
                                        const Point& point, bool& unsure) {
    std::vector<std::uint32_t> met;
    unsure = false;
    for (const Segment& segment : index.At(point.Y)) {
        if (segment.Ring >= own) continue;
        const Point& a = rings[segment.Ring][segment.Start];
        const Point& b = rings[segment.Ring][segment.Start + 1];
        if (std::min(a.X, b.X) > point.X) continue;
        if (std::max(a.Y, b.Y) < point.Y || std::min(a.Y, b.Y) > point.Y) continue;
        const Side side = side_of(a, b, point);
        const bool isWest = std::max(a.X, b.X) < point.X;
        if (side == Side::kUnsure && !isWest) unsure = true;
        if ((a.Y > point.Y) == (b.Y > point.Y)) continue;
        // The point lies east of the segment when it is on its right going up, on its left going down.
        if (isWest || side == (b.Y > a.Y ? Side::kRight : Side::kLeft)) met.push_back(segment.Ring);
    }

    std::sort(met.begin(), met.end());
    std::vector<std::uint32_t> around;
    for (std::size_t i = 0; i < met.size();) {
        const auto last = static_cast<std::size_t>(std::upper_bound(met.begin(), met.end(), met[i]) - met.begin());
        if ((last - i) % 2 == 1) around.push_back(met[i]);
        i = last;
    }
    return around;
}

struct PlaceHash {
    std::size_t operator()(const Point& place) const {
        return std::hash<double>()(place.X) ^ (std::hash<double>()(place.Y) * 0x9E3779B97F4A7C15U);
    }
};

/// Walks along a closed line; a vertex that was met before closes a piece, which leaves the way.
void cut_apart(const Ring& ring, std::vector<Ring>& pieces) {
    constexpr std::size_t kSmallest = 3;  // different vertices
    std::vector<Point> way;
    std::unordered_map<Point, std::size_t, PlaceHash> metAt(2 * ring.size());
    for (const Point& vertex : ring) {
        const auto [met, isNew] = metAt.try_emplace(vertex, way.size());
        if (isNew) {
            way.push_back(vertex);
            continue;
        }
        const auto first = way.begin() + static_cast<std::ptrdiff_t>(met->second);
        if (way.end() - first >= static_cast<std::ptrdiff_t>(kSmallest)) {
            Ring& piece = pieces.emplace_back(first, way.end());
            piece.push_back(vertex);
        }
        for (auto left = first + 1; left != way.end(); ++left) metAt.erase(*left);
        way.erase(first + 1, way.end());
    }
}

}  // namespace

double clockwise_area(std::span<const Point> ring) {
    double twice = 0.0;
    for (std::size_t i = 1; i + 1 < ring.size(); ++i) {
        const Point a{ring[i].X - ring[0].X, ring[i].Y - ring[0].Y};
        const Point b{ring[i + 1].X - ring[0].X, ring[i + 1].Y - ring[0].Y};
        twice += b.X * a.Y - a.X * b.Y;
    }
    return twice / 2.0;
}

std::vector<Ring> simple_rings(const std::vector<Ring>& rings) {
    std::vector<Ring> simple;
    for (const Ring& ring : rings) cut_apart(ring, simple);
    return simple;
}

void sort_by_area(std::vector<Ring>& rings) {
    struct Key {
        double Area;
        Point Corner;
        std::size_t Index;
    };
    std::vector<Key> keys;
    for (std::size_t i = 0; i < rings.size(); ++i)
        keys.push_back({std::abs(clockwise_area(rings[i])), *std::ranges::min_element(rings[i], west_then_south), i});
    std::stable_sort(keys.begin(), keys.end(), [](const Key& a, const Key& b) {
        return a.Area != b.Area ? a.Area > b.Area : west_then_south(a.Corner, b.Corner);
    });
    std::vector<Ring> sorted;
    sorted.reserve(rings.size());
    for (const Key& key : keys) sorted.push_back(std::move(rings[key.Index]));
    rings = std::move(sorted);
}

std::vector<Nesting> nesting_of(std::span<const Ring> rings) {
    std::vector<Nesting> nesting(rings.size());
    if (rings.size() < 2) return nesting;
    const BandIndex index(rings);
    for (std::size_t own = 1; own < rings.size(); ++own) {
        std::vector<std::uint32_t> around;
        bool unsure = true;
        for (std::size_t i = 0; unsure && i + 1 < rings[own].size(); ++i)
            around = rings_around(rings, index, own, rings[own][i], unsure);
        nesting[own].Depth = around.size();
        if (!around.empty()) nesting[own].Parent = around.back();
    }
    return nesting;
}

double area_of(const Geometry& polygon) {
    double area = 0.0;
    for (const Ring& ring : polygon.Parts) area += clockwise_area(ring);
    return area;
}

std::int32_t outer_rings_of(const Geometry& polygon) {
    return static_cast<std::int32_t>(
        std::ranges::count_if(polygon.Parts, [](const Ring& ring) { return clockwise_area(ring) > 0.0; }));
}

std::vector<Geometry> polygons_of(std::vector<Ring> rings) {
    const std::vector<Nesting> nesting = nesting_of(rings);
    std::vector<Geometry> polygons;
    std::vector<std::size_t> polygonOf(rings.size(), Nesting::kNone);
    for (std::size_t i = 0; i < rings.size(); ++i) {
        const bool isHole = nesting[i].Depth % 2 == 1;
        if ((clockwise_area(rings[i]) > 0.0) == isHole) std::reverse(rings[i].begin(), rings[i].end());
        if (isHole && polygonOf[nesting[i].Parent] != Nesting::kNone) {
            polygons[polygonOf[nesting[i].Parent]].Parts.push_back(std::move(rings[i]));
        } else {
            polygonOf[i] = polygons.size();
            polygons.push_back({platform::ShapeType::kPolygon, {}, {std::move(rings[i])}});
        }
    }
    return polygons;
}

Geometry collected(std::vector<Geometry> polygons) {
    Geometry shape;
    for (Geometry& polygon : polygons) {
        if (polygon.IsNull()) continue;
        shape.Type = platform::ShapeType::kPolygon;
        std::ranges::move(polygon.Parts, std::back_inserter(shape.Parts));
    }
    return shape;
}

}  // namespace wxl::isopleths
