#include "results_page/isopleth_paths.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <utility>

namespace wxl::results_page {
namespace {

using platform::Point;

/// Distance of `p` from the stretch between `a` and `b`.
double distance_from(const Point& p, const Point& a, const Point& b) {
    const double dx = b.X - a.X;
    const double dy = b.Y - a.Y;
    const double length = dx * dx + dy * dy;
    const double t = length > 0.0 ? std::clamp(((p.X - a.X) * dx + (p.Y - a.Y) * dy) / length, 0.0, 1.0) : 0.0;
    return std::hypot(p.X - a.X - t * dx, p.Y - a.Y - t * dy);
}

std::vector<std::vector<Point>> scaled(std::span<const platform::ContourLine> lines, const MapScale& scale) {
    std::vector<std::vector<Point>> result;
    for (const platform::ContourLine& line : lines) {
        std::vector<Point> points;
        points.reserve(line.Vertices.size());
        for (const Point& vertex : line.Vertices) points.push_back(scale.At(vertex));
        result.push_back(std::move(points));
    }
    return result;
}

bool is_speck(std::span<const Point> line, double tolerance) {
    const platform::Extent bounds = platform::bounds_of(line);
    return bounds.Width() < tolerance && bounds.Height() < tolerance;
}

std::size_t point_count(const std::vector<std::vector<Point>>& lines) {
    std::size_t count = 0;
    for (const auto& line : lines) count += line.size();
    return count;
}

std::vector<std::vector<Point>> simplified_lines(const std::vector<std::vector<Point>>& lines, double tolerance) {
    std::vector<std::vector<Point>> kept;
    for (const auto& line : lines)
        if (!is_speck(line, tolerance)) kept.push_back(simplified(line, tolerance));
    return kept;
}

/// Tenths of a picture unit as a number without needless characters: ".5", "-12", "3.4".
std::string tenths_text(std::int64_t tenths) {
    const std::int64_t size = tenths < 0 ? -tenths : tenths;
    std::string text = tenths < 0 ? "-" : "";
    if (size >= 10 || size == 0) text += std::to_string(size / 10);
    if (size % 10 != 0) text += "." + std::to_string(size % 10);
    return text;
}

/// Appends steps from point to point in relative coordinates, which are short.
void append_line(const std::vector<Point>& line, std::string& path) {
    const auto tenths = [](double value) { return static_cast<std::int64_t>(std::llround(value * 10.0)); };
    std::int64_t x = tenths(line.front().X);
    std::int64_t y = tenths(line.front().Y);
    path += "M" + tenths_text(x) + " " + tenths_text(y) + "l";
    std::string separator;
    for (std::size_t i = 1; i < line.size(); ++i) {
        const std::int64_t nextX = tenths(line[i].X);
        const std::int64_t nextY = tenths(line[i].Y);
        for (const std::int64_t step : {nextX - std::exchange(x, nextX), nextY - std::exchange(y, nextY)}) {
            const std::string text = tenths_text(step);
            path += (text.starts_with('-') ? "" : separator) + text;
            separator = " ";
        }
    }
    if (line.front() == line.back()) path += "z";
}

}  // namespace

std::string tenth(double value) {
    return tenths_text(static_cast<std::int64_t>(std::llround(value * 10.0)));
}

std::vector<Point> simplified(std::span<const Point> line, double tolerance) {
    if (line.size() < 3) return {line.begin(), line.end()};
    std::vector<bool> kept(line.size(), false);
    kept.front() = kept.back() = true;
    std::vector<std::pair<std::size_t, std::size_t>> stretches = {{0, line.size() - 1}};
    while (!stretches.empty()) {
        const auto [first, last] = stretches.back();
        stretches.pop_back();
        std::size_t farthest = first;
        double distance = tolerance;
        for (std::size_t i = first + 1; i < last; ++i) {
            const double here = distance_from(line[i], line[first], line[last]);
            if (here > distance) {
                distance = here;
                farthest = i;
            }
        }
        if (farthest == first) continue;
        kept[farthest] = true;
        stretches.emplace_back(first, farthest);
        stretches.emplace_back(farthest, last);
    }
    std::vector<Point> result;
    for (std::size_t i = 0; i < line.size(); ++i)
        if (kept[i]) result.push_back(line[i]);
    return result;
}

std::string svg_path(std::span<const platform::ContourLine> lines, const MapScale& scale, double tolerance,
                     std::size_t mostPoints) {
    std::vector<std::vector<Point>> shown = simplified_lines(scaled(lines, scale), tolerance);
    while (point_count(shown) > mostPoints) {
        tolerance *= 2.0;
        shown = simplified_lines(shown, tolerance);
    }
    std::string path;
    for (const std::vector<Point>& line : shown)
        if (line.size() > 1) append_line(line, path);
    return path;
}

}  // namespace wxl::results_page
