#include "isopleths/edge_closing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <span>
#include <utility>

namespace wxl::isopleths {

using platform::ContourLine;
using platform::Point;

namespace {

/// Appends one side of the raster to the edge's profile: its corner, then its cells' centres in the order given.
void append_side(std::vector<EdgeNode>& profile, double start, std::span<const double> cells, double cellSize) {
    profile.push_back({start, cells.front()});
    for (std::size_t i = 0; i < cells.size(); ++i)
        profile.push_back({start + (static_cast<double>(i) + 0.5) * cellSize, cells[i]});
}

std::vector<double> reversed(const std::vector<double>& cells) {
    return {cells.rbegin(), cells.rend()};
}

double value_between(const EdgeNode& a, const EdgeNode& b, double position) {
    const double share = (position - a.Position) / (b.Position - a.Position);
    if (share == 0.0) return a.Value;
    return a.Value * (1.0 - share) + b.Value * share;
}

/// How much of a straight slope from one value to another lies at or above `lowest`, from 0 to 1.
double share_above(double a, double b, double lowest) {
    const auto [low, high] = std::minmax(a, b);
    if (low >= lowest) return 1.0;
    if (high < lowest) return 0.0;
    return (high - lowest) / (high - low);
}

/// One end of an open line, on the outer edge.
struct LineEnd {
    double Position = 0.0;
    std::size_t Line = 0;
    bool IsLast = false;  ///< the line's last vertex, not its first
};

/// The ends of one level's open lines in the order in which the edge meets them, and which stretches between them are
/// at or above the level.
class EdgeWalk {
public:
    EdgeWalk(std::vector<std::vector<Point>> lines, std::vector<LineEnd> ends, double lowest, const OuterEdge& edge)
        : m_lines(std::move(lines)), m_ends(std::move(ends)), m_edge(edge) {
        std::stable_sort(m_ends.begin(), m_ends.end(),
                         [](const LineEnd& a, const LineEnd& b) { return a.Position < b.Position; });
        m_orderOf.resize(2 * m_lines.size());
        for (std::size_t i = 0; i < m_ends.size(); ++i) m_orderOf[Key(m_ends[i].Line, m_ends[i].IsLast)] = i;
        m_evenIsHigh = EvenStretchesAreHigh(lowest);
    }

    std::vector<Ring> Rings() const {
        std::vector<Ring> rings;
        std::vector<bool> done(m_lines.size(), false);
        for (std::size_t first = 0; first < m_lines.size(); ++first) {
            if (done[first]) continue;
            Ring ring;
            LineEnd start{0.0, first, false};
            do {
                done[start.Line] = true;
                AppendLine(start, ring);
                start = CrossStretch({0.0, start.Line, !start.IsLast}, ring);
            } while (start.Line != first);
            ring.push_back(ring.front());
            rings.push_back(std::move(ring));
        }
        return rings;
    }

private:
    static std::size_t Key(std::size_t line, bool isLast) { return 2 * line + (isLast ? 1 : 0); }

    /// Stretches are high and low in turn, so one decision serves all. Every stretch votes with all of its length: a
    /// single cell at the level, whose contour has no width, decides nothing wherever it stands.
    bool EvenStretchesAreHigh(double lowest) const {
        double vote = 0.0;
        for (std::size_t i = 0; i < m_ends.size(); ++i) {
            const double from = m_ends[i].Position;
            const double to = i + 1 < m_ends.size() ? m_ends[i + 1].Position : m_ends[0].Position + m_edge.Length();
            const double excess = m_edge.HighLessLow(from, to, lowest);
            vote += i % 2 == 0 ? excess : -excess;
        }
        return vote >= 0.0;
    }

    void AppendLine(const LineEnd& start, Ring& ring) const {
        const std::vector<Point>& line = m_lines[start.Line];
        if (start.IsLast)
            ring.insert(ring.end(), line.rbegin(), line.rend());
        else
            ring.insert(ring.end(), line.begin(), line.end());
    }

    /// Goes from a line's end along the high stretch there to the next line's end.
    LineEnd CrossStretch(const LineEnd& from, Ring& ring) const {
        const std::size_t order = m_orderOf[Key(from.Line, from.IsLast)];
        const std::size_t count = m_ends.size();
        const bool clockwise = (order % 2 == 0) == m_evenIsHigh;
        const LineEnd& to = m_ends[(clockwise ? order + 1 : order + count - 1) % count];
        std::vector<Point> corners;
        if (clockwise) {
            AppendCorners(m_ends[order], to, order + 1 == count, corners);
        } else {
            AppendCorners(to, m_ends[order], order == 0, corners);
            std::reverse(corners.begin(), corners.end());
        }
        ring.insert(ring.end(), corners.begin(), corners.end());
        return to;
    }

    void AppendCorners(const LineEnd& from, const LineEnd& to, bool pastStart, std::vector<Point>& corners) const {
        m_edge.AppendCorners(from.Position, pastStart ? to.Position + m_edge.Length() : to.Position, corners);
    }

    std::vector<std::vector<Point>> m_lines;
    std::vector<LineEnd> m_ends;
    std::vector<std::size_t> m_orderOf;  ///< place of each line's two ends among m_ends
    const OuterEdge& m_edge;
    bool m_evenIsHigh = false;
};

/// Whether a ring is wider than rounding makes it: contours at the very height of a peak or a ridge are drawn some
/// 1e-15 cells wide, and whether anything of that is left depends on how far away the map's origin lies.
bool encloses_something(const Ring& ring, double cellSize) {
    constexpr double kNoWidth = 1e-9;  // cells
    double length = 0.0;
    for (std::size_t i = 1; i < ring.size(); ++i)
        length += std::hypot(ring[i].X - ring[i - 1].X, ring[i].Y - ring[i - 1].Y);
    return ring.size() >= 4 && std::abs(clockwise_area(ring)) > kNoWidth * cellSize * length;
}

}  // namespace

OuterEdge::OuterEdge(const platform::RasterGeometry& geometry, const SurfaceEdge& edge)
    : m_geometry(geometry), m_bounds(geometry.Bounds()) {
    const double cell = geometry.CellSize;
    const double width = m_bounds.Width();
    const double height = m_bounds.Height();
    append_side(m_profile, 0.0, edge.North, cell);
    append_side(m_profile, width, edge.East, cell);
    append_side(m_profile, width + height, reversed(edge.South), cell);
    append_side(m_profile, 2.0 * width + height, reversed(edge.West), cell);
    m_profile.push_back({Length(), edge.North.front()});
}

std::optional<double> OuterEdge::PositionOf(const Point& point) const {
    const double tolerance = m_geometry.CellSize * 1e-6;
    const double width = m_bounds.Width();
    const double height = m_bounds.Height();
    const double east = std::clamp(point.X - m_bounds.XMin, 0.0, width);
    const double south = std::clamp(m_bounds.YMax - point.Y, 0.0, height);

    struct Candidate {
        double Distance;
        double Position;
    };
    const std::array<Candidate, 4> sides = {{{std::abs(point.Y - m_bounds.YMax), east},
                                             {std::abs(point.X - m_bounds.XMax), width + south},
                                             {std::abs(point.Y - m_bounds.YMin), 2.0 * width + height - east},
                                             {std::abs(point.X - m_bounds.XMin), 2.0 * (width + height) - south}}};
    const auto nearest =
        std::ranges::min_element(sides, [](const auto& a, const auto& b) { return a.Distance < b.Distance; });
    if (!(nearest->Distance <= tolerance)) return std::nullopt;
    return nearest->Position < Length() ? nearest->Position : 0.0;
}

std::vector<EdgeNode>::const_iterator OuterEdge::NodeAfter(double position) const {
    return std::upper_bound(m_profile.begin() + 1, m_profile.end() - 1, position,
                            [](double p, const EdgeNode& node) { return p < node.Position; });
}

double OuterEdge::ValueAt(double position) const {
    const auto after = NodeAfter(position);
    return value_between(*std::prev(after), *after, position);
}

double OuterEdge::HighLessLow(double from, double to, double lowest) const {
    if (to > Length()) return HighLessLow(from, Length(), lowest) + HighLessLow(0.0, to - Length(), lowest);
    double excess = 0.0;
    EdgeNode last{from, ValueAt(from)};
    for (auto node = NodeAfter(from); last.Position < to; ++node) {
        const EdgeNode next = node->Position < to ? *node : EdgeNode{to, ValueAt(to)};
        excess += (next.Position - last.Position) * (2.0 * share_above(last.Value, next.Value, lowest) - 1.0);
        last = next;
    }
    return excess;
}

void OuterEdge::AppendCorners(double from, double to, std::vector<Point>& vertices) const {
    const double width = m_bounds.Width();
    const double height = m_bounds.Height();
    const std::array<std::pair<double, Point>, 4> corners = {
        {{width, {m_bounds.XMax, m_bounds.YMax}},
         {width + height, {m_bounds.XMax, m_bounds.YMin}},
         {2.0 * width + height, {m_bounds.XMin, m_bounds.YMin}},
         {2.0 * (width + height), {m_bounds.XMin, m_bounds.YMax}}}};
    for (const double turn : {0.0, Length()}) {
        for (const auto& [position, corner] : corners) {
            if (position + turn > from && position + turn < to) vertices.push_back(corner);
        }
    }
}

Ring OuterEdge::WholeEdge() const {
    const Point start{m_bounds.XMin, m_bounds.YMax};
    return {
        start, {m_bounds.XMax, m_bounds.YMax}, {m_bounds.XMax, m_bounds.YMin}, {m_bounds.XMin, m_bounds.YMin}, start};
}

std::vector<Ring> closed_contours(std::vector<ContourLine> lines, double lowest, const OuterEdge& edge) {
    std::vector<Ring> rings;
    std::vector<std::vector<Point>> open;
    std::vector<LineEnd> ends;
    for (ContourLine& line : lines) {
        if (line.Vertices.size() < 2) continue;
        if (line.Vertices.front() == line.Vertices.back()) {
            rings.push_back(std::move(line.Vertices));
            continue;
        }
        const auto first = edge.PositionOf(line.Vertices.front());
        const auto last = edge.PositionOf(line.Vertices.back());
        if (first && last) {
            ends.push_back({*first, open.size(), false});
            ends.push_back({*last, open.size(), true});
            open.push_back(std::move(line.Vertices));
        } else {
            line.Vertices.push_back(line.Vertices.front());
            rings.push_back(std::move(line.Vertices));
        }
    }

    if (!open.empty())
        std::ranges::move(EdgeWalk(std::move(open), std::move(ends), lowest, edge).Rings(), std::back_inserter(rings));
    else if (edge.HighLessLow(0.0, edge.Length(), lowest) > 0.0)
        rings.push_back(edge.WholeEdge());

    rings = simple_rings(rings);
    std::erase_if(rings, [&](const Ring& ring) { return !encloses_something(ring, edge.CellSize()); });
    sort_by_area(rings);
    return rings;
}

}  // namespace wxl::isopleths
