#include "comparison/area_curve.h"

#include "comparison/convex_hull.h"
#include "comparison/kernel_sum.h"
#include "comparison/minimum_convex_polygon.h"
#include "comparison/permutation.h"
#include "comparison/quantile.h"
#include "comparison/volume_range.h"
#include "engine/kernel_reach.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace wxl::comparison {
namespace {

using platform::Point;
using Areas = std::vector<std::optional<double>>;

constexpr std::size_t kMostSizes = 200;

/// The areas of the first fixes of an order, for growing numbers of them.
class AreaMeter {
public:
    virtual ~AreaMeter() = default;

    /// Forgets the fixes of the order before.
    virtual void Begin() = 0;

    /// The area of all of `fixes`, which begin with those of the call before.
    virtual std::optional<double> Area(std::span<const Point> fixes) = 0;
};

class WholePolygonMeter final : public AreaMeter {
public:
    void Begin() override { *this = {}; }

    std::optional<double> Area(std::span<const Point> fixes) override {
        for (; m_added < fixes.size(); ++m_added) m_hull.Add(fixes[m_added]);
        return polygon_area(m_hull.Corners());
    }

private:
    GrowingHull m_hull;
    std::size_t m_added = 0;
};

/// Below 100 % the centre moves with every fix, and another set is kept.
class PolygonMeter final : public AreaMeter {
public:
    explicit PolygonMeter(double percent) : m_percent(percent) {}
    void Begin() override {}
    std::optional<double> Area(std::span<const Point> fixes) override {
        return minimum_convex_polygon(fixes, m_percent).Area;
    }

private:
    double m_percent;
};

std::optional<double> area_of_range(const KernelSum& sum, double percent) {
    const double percents[] = {percent};
    const std::int64_t cells = ranges_by_volume(sum.Cells(), percents).front().Cells;
    if (cells == 0) return std::nullopt;
    return static_cast<double>(cells) * sum.Grid().CellSize * sum.Grid().CellSize;
}

class FixedKernelMeter final : public AreaMeter {
public:
    FixedKernelMeter(const platform::RasterGeometry& grid, double bandwidth, double percent)
        : m_sum(grid), m_bandwidth(bandwidth), m_percent(percent) {}

    void Begin() override {
        m_sum.Clear();
        m_added = 0;
    }

    std::optional<double> Area(std::span<const Point> fixes) override {
        if (m_bandwidth < m_sum.Grid().CellSize) return std::nullopt;
        m_sum.Add(fixes.subspan(m_added), m_bandwidth);
        m_added = fixes.size();
        return area_of_range(m_sum, m_percent);
    }

private:
    KernelSum m_sum;
    double m_bandwidth;
    double m_percent;
    std::size_t m_added = 0;
};

class HrefKernelMeter final : public AreaMeter {
public:
    HrefKernelMeter(const platform::RasterGeometry& grid, double percent) : m_sum(grid), m_percent(percent) {}
    void Begin() override {}

    std::optional<double> Area(std::span<const Point> fixes) override {
        const double bandwidth = reference_bandwidth(fixes);
        if (!(bandwidth >= m_sum.Grid().CellSize)) return std::nullopt;
        m_sum.Clear();
        m_sum.Add(fixes, bandwidth);
        return area_of_range(m_sum, m_percent);
    }

private:
    KernelSum m_sum;
    double m_percent;
};

/// The grid of all fixes, wide enough for the bandwidth of the fewest.
platform::RasterGeometry kernel_grid(std::span<const Point> fixes, const CurveSettings& settings) {
    const platform::Extent extent = platform::bounds_of(fixes);
    const double smallest = settings.Bandwidth > 0.0 ? settings.Bandwidth : reference_bandwidth(fixes);
    const double growth = std::pow(
        static_cast<double>(fixes.size()) / static_cast<double>(std::min(settings.First, fixes.size())), 1.0 / 6);
    const double margin = engine::kUsualReach * smallest * (settings.Bandwidth > 0.0 ? 1.0 : growth);
    const double cell = settings.CellSize > 0.0 ? settings.CellSize : usual_cell_size(smallest, extent, margin);
    return covering_grid(extent, margin, cell);
}

std::unique_ptr<AreaMeter> meter_for(std::span<const Point> fixes, const CurveSettings& settings, AreaCurve& curve) {
    if (settings.Of == CurveOf::kMinimumConvexPolygon) {
        if (settings.Percent >= 100.0) return std::make_unique<WholePolygonMeter>();
        return std::make_unique<PolygonMeter>(settings.Percent);
    }
    const platform::RasterGeometry grid = kernel_grid(fixes, settings);
    curve.CellSize = grid.CellSize;
    if (settings.Bandwidth > 0.0) return std::make_unique<FixedKernelMeter>(grid, settings.Bandwidth, settings.Percent);
    return std::make_unique<HrefKernelMeter>(grid, settings.Percent);
}

/// Areas over the sizes, for one order of the fixes.
class Replicates {
public:
    Replicates(std::size_t count, std::vector<std::size_t> sizes, const std::function<void(double)>& progress)
        : m_all(static_cast<double>(count * sizes.size())), m_sizes(std::move(sizes)), m_progress(progress) {}

    Areas Measure(AreaMeter& meter, std::span<const Point> fixes) {
        Areas areas;
        meter.Begin();
        for (const std::size_t size : m_sizes) {
            areas.push_back(meter.Area(fixes.first(size)));
            ++m_done;
            if (m_progress) m_progress(static_cast<double>(m_done) / m_all);
        }
        return areas;
    }

private:
    double m_all;
    std::size_t m_done = 0;
    std::vector<std::size_t> m_sizes;
    const std::function<void(double)>& m_progress;
};

std::vector<Point> shuffled(std::span<const Point> fixes, std::uint64_t seed) {
    std::vector<Point> order;
    for (const std::size_t place : permutation(fixes.size(), seed)) order.push_back(fixes[place]);
    return order;
}

/// Median and quantiles over the replicates that have an area.
CurveSize spread_of(std::size_t n, const std::vector<Areas>& replicates, std::size_t place) {
    std::vector<double> areas;
    for (const Areas& replicate : replicates)
        if (replicate[place]) areas.push_back(*replicate[place]);
    if (areas.empty()) return {n, std::nullopt, std::nullopt, std::nullopt};
    std::sort(areas.begin(), areas.end());
    return {n, quantile(areas, 50.0), quantile(areas, 2.5), quantile(areas, 97.5)};
}

}  // namespace

std::vector<std::size_t> curve_sizes(std::size_t all, const CurveSettings& settings) {
    std::vector<std::size_t> sizes;
    if (all == 0) return sizes;
    const std::size_t span = all > settings.First ? all - settings.First : 0;
    const std::size_t step =
        settings.Step > 0 ? settings.Step : std::max<std::size_t>(1, (span + kMostSizes - 2) / (kMostSizes - 1));
    for (std::size_t n = std::max<std::size_t>(1, settings.First); n < all; n += step) sizes.push_back(n);
    sizes.push_back(all);
    return sizes;
}

std::optional<Asymptote> asymptote(std::span<const CurveSize> sizes, double tolerance) {
    if (sizes.empty() || !sizes.back().Area || !(*sizes.back().Area > 0.0)) return std::nullopt;
    const double last = *sizes.back().Area;
    std::size_t first = sizes.size() - 1;
    while (first > 0) {
        const std::optional<double>& area = sizes[first - 1].Area;
        if (!area || !(*area >= last * (1.0 - tolerance) && *area <= last * (1.0 + tolerance))) break;
        --first;
    }
    const std::size_t all = sizes.back().N;
    const std::size_t needed = std::max<std::size_t>(5, (all + 9) / 10);
    return Asymptote{sizes[first].N, all - sizes[first].N >= needed};
}

AreaCurve area_curve(std::span<const Point> fixes, const CurveSettings& settings,
                     const std::function<void(double)>& progress) {
    AreaCurve curve;
    if (fixes.empty()) return curve;
    const std::vector<std::size_t> sizes = curve_sizes(fixes.size(), settings);
    const std::unique_ptr<AreaMeter> meter = meter_for(fixes, settings, curve);
    const bool random = settings.Order == CurveOrder::kRandom;
    Replicates work(random ? settings.Replicates : 1, sizes, progress);
    if (random) {
        std::vector<Areas> replicates;
        for (std::size_t r = 0; r < settings.Replicates; ++r)
            replicates.push_back(work.Measure(*meter, shuffled(fixes, settings.Seed + r)));
        for (std::size_t i = 0; i < sizes.size(); ++i) curve.Sizes.push_back(spread_of(sizes[i], replicates, i));
    } else {
        const Areas areas = work.Measure(*meter, fixes);
        for (std::size_t i = 0; i < sizes.size(); ++i)
            curve.Sizes.push_back({sizes[i], areas[i], std::nullopt, std::nullopt});
    }
    curve.Levelling = asymptote(curve.Sizes, settings.Tolerance);
    return curve;
}

}  // namespace wxl::comparison
