#include "tests/support/engine_twins.h"

#include <algorithm>
#include <cmath>

namespace wxl::tests {
namespace {

double safe_exp(double x) {
    return x >= -1000.0 ? std::exp(x) : 0.0;
}

double natural_log(double x) {
    return std::log(x) / std::log(2.718281828);
}

double safe_log(double x) {
    return x > 0.0 ? natural_log(x) : -3.4E-300;
}

double kernel(double t) {
    return safe_exp(t * t / -2.0) / 6.28318530717958;
}

double kernel2(double t) {
    return safe_exp(t * t / -4.0) / 12.56637061435916;
}

double distance(double x1, double y1, double x2, double y2) {
    return std::sqrt((y1 - y2) * (y1 - y2) + (x1 - x2) * (x1 - x2));
}

void moments(const std::vector<platform::Point>& points, double& varianceX, double& varianceY) {
    const auto n = static_cast<double>(points.size());
    double meanX = 0.0;
    double meanY = 0.0;
    for (const auto& p : points) {
        meanX += p.X;
        meanY += p.Y;
    }
    meanX /= n;
    meanY /= n;
    varianceX = varianceY = 0.0;
    for (const auto& p : points) {
        varianceX += (p.X - meanX) * (p.X - meanX);
        varianceY += (p.Y - meanY) * (p.Y - meanY);
    }
    varianceX /= n - 1.0;
    varianceY /= n - 1.0;
}

}  // namespace

double twin_href(const std::vector<platform::Point>& points) {
    double varianceX = 0.0;
    double varianceY = 0.0;
    moments(points, varianceX, varianceY);
    return std::pow(static_cast<double>(points.size()), -1.0 / 6.0) * std::sqrt((varianceY + varianceX) / 2.0);
}

std::vector<platform::Point> twin_rescaled(const std::vector<platform::Point>& points, double& sdX, double& sdY) {
    moments(points, sdX, sdY);
    sdX = std::sqrt(sdX);
    sdY = std::sqrt(sdY);
    std::vector<platform::Point> rescaled;
    for (const auto& p : points) rescaled.push_back({p.X / sdX, p.Y / sdY});
    return rescaled;
}

std::vector<double> twin_pilot(const std::vector<platform::Point>& points, double bandwidth) {
    std::vector<double> f(points.size(), 0.0);
    for (std::size_t i = 0; i < points.size(); ++i)
        for (std::size_t j = 0; j < points.size(); ++j)
            f[i] += kernel(distance(points[i].X, points[i].Y, points[j].X, points[j].Y) / bandwidth);
    return f;
}

std::vector<double> twin_factors(const std::vector<platform::Point>& points, double bandwidth) {
    std::vector<double> f = twin_pilot(points, bandwidth);
    const auto n = static_cast<double>(points.size());
    double s = 0.0;
    for (double& value : f) {
        value = value / (n * bandwidth * bandwidth);
        s += safe_log(value);
    }
    const double g = safe_exp(s / n);
    for (double& value : f) value = safe_exp(-0.5 * safe_log(value / g));
    return f;
}

TwinGrid twin_grid(const TwinKernel& k) {
    double sdX = 1.0;
    double sdY = 1.0;
    const std::vector<platform::Point> points = k.UnitVariance ? twin_rescaled(k.Points, sdX, sdY) : k.Points;
    const std::vector<double> factors = k.Adaptive ? twin_factors(points, k.Bandwidth) : std::vector<double>();
    const double c = k.CellSize;
    const double topY = c * k.Rows + k.OriginY;
    const double x0 = c / 2.0 + k.OriginX;
    const double topCentre = topY - c / 2.0;
    const int reach = static_cast<int>(std::floor(k.LimitRadius / c)) + 1;
    const auto columns = static_cast<std::size_t>(k.Columns);
    TwinGrid grid;
    grid.Cells.assign(columns * static_cast<std::size_t>(k.Rows), 0.0);
    for (std::size_t i = 0; i < points.size(); ++i) {
        const int column = static_cast<int>(std::floor((points[i].X * sdX - k.OriginX) / c));
        const int row = static_cast<int>(std::floor((topY - points[i].Y * sdY) / c));
        const double lambda = k.Adaptive ? factors[i] : 1.0;
        for (int j = std::max(column - reach, 0); j <= std::min(column + reach, k.Columns - 1); ++j) {
            for (int r = std::max(row - reach, 0); r <= std::min(row + reach, k.Rows - 1); ++r) {
                const double u = (x0 + j * c) / sdX;
                const double v = (topCentre - c * r) / sdY;
                const double t = distance(points[i].X, points[i].Y, u, v) / (lambda * k.Bandwidth);
                grid.Cells[static_cast<std::size_t>(r) * columns + static_cast<std::size_t>(j)] +=
                    kernel(t) / (lambda * lambda);
            }
        }
    }
    const auto n = static_cast<double>(points.size());
    for (double& cell : grid.Cells) {
        cell = cell * k.ScalingFactor / (n * k.Bandwidth * k.Bandwidth) / (sdY * sdX);
        grid.Volume += cell;
    }
    grid.Volume = c * grid.Volume * c;
    return grid;
}

std::vector<double> twin_distances(const std::vector<platform::Point>& points) {
    std::vector<double> distances;
    distances.reserve(points.size() * (points.size() - 1) / 2);
    for (std::size_t i = 0; i + 1 < points.size(); ++i)
        for (std::size_t j = i + 1; j < points.size(); ++j)
            distances.push_back(distance(points[i].X, points[i].Y, points[j].X, points[j].Y));
    return distances;
}

double twin_score(TwinScore score, const std::vector<double>& distances, std::size_t count, double h) {
    const auto n = static_cast<double>(count);
    double s = 0.0;
    double result = 0.0;
    if (score == TwinScore::kLscv) {
        for (const double d : distances) {
            const double t = d / h;
            s += kernel2(t) - 2.0 * kernel(t);
        }
        s = 2.0 * s;
        s = (kernel2(0.0) - 2.0 * kernel(0.0)) * n + s;
        if (n * n * (h * h) == 0.0) return 0.0;
        result = s / (n * n * (h * h)) + 2.0 * kernel(0.0) / (n * (h * h));
    } else {
        const double pairs = (n - 2.0) * (n - 1.0);
        if (pairs > 2147483647.0 || pairs == 0.0 || h * h == 0.0) return 0.0;
        for (const double d : distances) {
            const double t = d / h;
            s += (t * t * t * t - 8.0 * (t * t) + 8.0) * safe_exp(t * t * -0.5);
        }
        s = 2.0 * s;
        result = s / (h * h * pairs * 8.0 * 3.14159265358979) + 1.0 / ((n - 1.0) * 12.56637061435916 * (h * h));
    }
    return std::isfinite(result) ? result : 0.0;
}

double TwinSearch::LargestScore() const {
    double largest = 0.0;
    for (const double value : Scores) largest = std::max(largest, std::abs(value));
    return largest;
}

TwinSearch twin_search(TwinScore score, const std::vector<platform::Point>& points, double min, double max,
                       double step) {
    const std::vector<double> distances = twin_distances(points);
    TwinSearch search;
    const auto evaluate = [&](double h) {
        search.Bandwidths.push_back(h);
        search.Scores.push_back(twin_score(score, distances, points.size(), h));
        if (search.Scores.back() < search.Scores[search.Best]) search.Best = search.Scores.size() - 1;
    };
    evaluate(min);
    double h = min + step;
    while (h <= max) {
        evaluate(h);
        h = h + step;
    }
    evaluate(max);
    return search;
}

}  // namespace wxl::tests
