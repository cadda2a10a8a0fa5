#include "movement_models/variogram.h"

#include "movement_models/chi_square.h"

#include <algorithm>
#include <cmath>

namespace wxl::movement_models {

namespace {

constexpr double kRise = 1.25;

/// Sums of the first k fixes, for the pairs of one fix with many.
struct Prefix {
    double T = 0.0;
    double X = 0.0;
    double Y = 0.0;
    double Squares = 0.0;
};

std::vector<Prefix> prefixes(const Track& track) {
    std::vector<Prefix> sums(track.Size() + 1);
    for (std::size_t i = 0; i < track.Size(); ++i) {
        const double x = track.X[i];
        const double y = track.Y[i];
        sums[i + 1] = {sums[i].T + track.Times[i], sums[i].X + x, sums[i].Y + y, sums[i].Squares + x * x + y * y};
    }
    return sums;
}

/// Pairs of one range of lags.
class PairSum {
public:
    PairSum(const Track& track, const std::vector<Prefix>& sums) : m_track(track), m_sums(sums) {}

    /// Fix i with the fixes from first to before last.
    void Add(std::size_t i, std::size_t first, std::size_t last) {
        m_pairs += static_cast<double>(last - first);
        // The difference of large sums loses digits, which only many pairs are worth.
        if (last - first > kMany) return AddMany(i, first, last);
        for (std::size_t j = first; j < last; ++j) {
            const double dx = m_track.X[j] - m_track.X[i];
            const double dy = m_track.Y[j] - m_track.Y[i];
            m_squares += dx * dx + dy * dy;
            m_lags += m_track.Times[j] - m_track.Times[i];
        }
    }

    VariogramPoint Point() const { return {m_lags / m_pairs, 0.25 * m_squares / m_pairs, m_pairs}; }
    bool IsEmpty() const { return m_pairs == 0.0; }

private:
    static constexpr std::size_t kMany = 64;

    void AddMany(std::size_t i, std::size_t first, std::size_t last) {
        const Prefix& to = m_sums[last];
        const Prefix& from = m_sums[first];
        const auto count = static_cast<double>(last - first);
        const double x = m_track.X[i];
        const double y = m_track.Y[i];
        m_squares +=
            (to.Squares - from.Squares) - 2.0 * (x * (to.X - from.X) + y * (to.Y - from.Y)) + count * (x * x + y * y);
        m_lags += (to.T - from.T) - count * m_track.Times[i];
    }

    const Track& m_track;
    const std::vector<Prefix>& m_sums;
    double m_pairs = 0.0;
    double m_squares = 0.0;
    double m_lags = 0.0;
};

/// The first bin of every point, and after the last point the bin behind it.
std::vector<double> first_bins(double bins, std::size_t mostPoints) {
    const auto most = static_cast<double>(mostPoints);
    std::vector<double> first;
    const double single = bins <= most ? bins : std::floor(most / 2.0);
    for (double b = 0.0; b <= single; b += 1.0) first.push_back(b);
    if (bins > most) {
        const double growth = std::pow(bins / single, 1.0 / (most - single));
        for (double edge = single * growth; first.back() < bins; edge *= growth)
            if (const double b = std::floor(edge); b > first.back()) first.push_back(std::min(b, bins));
    }
    first.push_back(bins + 1.0);
    first.erase(std::unique(first.begin(), first.end()), first.end());
    return first;
}

/// Mean semivariance of the pairs with lags from..to; negative without pairs.
double mean_between(const std::vector<VariogramPoint>& points, double from, double to) {
    double sum = 0.0;
    double pairs = 0.0;
    for (const VariogramPoint& point : points) {
        if (point.Lag < from || point.Lag > to) continue;
        sum += point.Semivariance * point.Pairs;
        pairs += point.Pairs;
    }
    return pairs > 0.0 ? sum / pairs : -1.0;
}

}  // namespace

std::vector<VariogramPoint> variogram_of(const Track& track, std::size_t mostPoints) {
    std::vector<VariogramPoint> points;
    if (track.Size() < 2) return points;
    const double width = track.MedianStep();
    const double longest = 0.5 * track.Duration();
    const std::vector<Prefix> sums = prefixes(track);
    const std::vector<double> bins =
        first_bins(std::floor(longest / width + 0.5), std::max<std::size_t>(mostPoints, 4));
    for (std::size_t k = 0; k + 1 < bins.size(); ++k) {
        const auto lags = [&](double bin) { return (bin - 0.5) * width; };
        PairSum sum(track, sums);
        std::size_t first = 0;
        std::size_t last = 0;
        for (std::size_t i = 0; i < track.Size(); ++i) {
            const double now = track.Times[i];
            first = std::max(first, i + 1);
            while (first < track.Size() && track.Times[first] - now < lags(bins[k])) ++first;
            last = std::max(last, first);
            while (last < track.Size() && track.Times[last] - now < lags(bins[k + 1])) ++last;
            sum.Add(i, first, last);
        }
        if (!sum.IsEmpty() && sum.Point().Lag <= longest) points.push_back(sum.Point());
    }
    return points;
}

double model_semivariance(const FittedModel& fit, double lag) {
    return 0.5 * fit.Covariance.Trace() * fit.Model.Semivariance(lag);
}

Interval variogram_interval(const VariogramPoint& point, double duration) {
    const double independent = std::max(1.0, std::floor(duration / point.Lag));
    const double degrees = 2.0 * std::min(point.Pairs, independent);
    return {point.Semivariance * degrees / chi_square_quantile(0.975, degrees), point.Semivariance,
            point.Semivariance * degrees / chi_square_quantile(0.025, degrees)};
}

bool still_rises(const std::vector<VariogramPoint>& points, double duration) {
    const double before = mean_between(points, 0.25 * duration, 0.375 * duration);
    const double after = mean_between(points, 0.375 * duration, 0.5 * duration);
    return before >= 0.0 && after > kRise * before;
}

}  // namespace wxl::movement_models
