#include "engine/pair_level.h"

#include <algorithm>
#include <cmath>

namespace wxl::engine {
namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kTwoPi = 6.28318530717958;
constexpr double kFourPi = 12.56637061435916;

/// Relative errors that the comparison of scores allows for, those of the plain loop included. Measured at 3,000
/// fixes: 6E-13, most of which is the rounding of the plain loop.
constexpr double kPairsError = 1e-11;
constexpr double kSpectrumError = 4e-11;

/// Bandwidths further below the largest of a level are taken for this many of it, where powers of h are still numbers.
constexpr double kSmallestRatio = 1e-70;

double power_of_two_near(double value) {
    return std::ldexp(1.0, std::clamp(std::ilogb(value), -1000, 1000));
}

/// Largest decay rates in q of the functions summed, at the smallest bandwidth, and in k^2, at the largest.
double decay_of_pairs(double lowest) {
    return 0.5 / (lowest * lowest);
}

double decay_of_spectra(Criterion criterion, double highest) {
    return (criterion == Criterion::kLscv ? 1.0 : 0.5) * highest * highest;
}

double square(double value) {
    return value * value;
}

}  // namespace

double reach_of(Criterion criterion) {
    return criterion == Criterion::kLscv ? 12.5 : 10.0;
}

double highest_wave_of(Criterion criterion) {
    return criterion == Criterion::kLscv ? 8.2 : 8.9;
}

PairLevel::PairLevel(Criterion criterion, double lowest, double highest)
    : m_criterion(criterion),
      m_unit(power_of_two_near(highest)),
      m_lowest(std::max(lowest / m_unit, kSmallestRatio)),
      m_highest(highest / m_unit),
      m_pairs(decay_of_pairs(m_lowest), square(1.1 * reach_of(criterion) * m_highest)),
      m_spectra(decay_of_spectra(criterion, m_highest), square(highest_wave_of(criterion) / m_lowest)) {}

std::vector<platform::Point> PairLevel::Scaled(std::span<const platform::Point> points) const {
    std::vector<platform::Point> scaled;
    scaled.reserve(points.size());
    for (const platform::Point& point : points) scaled.push_back({point.X / m_unit, point.Y / m_unit});
    return scaled;
}

void PairLevel::Load(std::span<const platform::Point> points) {
    m_xs.clear();
    m_ys.clear();
    for (const platform::Point& point : points) {
        m_xs.push_back(point.X);
        m_ys.push_back(point.Y);
    }
    m_squares.resize(points.size());
}

/// Adds the pairs of a point with the loaded points from `first` on.
void PairLevel::AddRow(const platform::Point& point, std::size_t first, double weight) {
    const std::size_t count = m_xs.size() - first;
    if (count == 0) return;
    m_weights.assign(count, weight);
    vector_math().SquaredDistances(point.X, point.Y, &m_xs[first], &m_ys[first], m_squares.data(), count);
    m_pairs.Add({m_squares.data(), count}, m_weights);
}

void PairLevel::AddPairs(std::span<const platform::Point> points, WorkClock& clock) {
    const std::vector<platform::Point> scaled = Scaled(points);
    Load(scaled);
    for (std::size_t i = 0; i < scaled.size(); ++i) {
        AddRow(scaled[i], i + 1, 1.0);
        clock.Tick();
    }
}

void PairLevel::AddHalfPairs(std::span<const platform::Point> owners, std::span<const platform::Point> others,
                             WorkClock& clock) {
    Load(Scaled(others));
    for (const platform::Point& owner : Scaled(owners)) {
        AddRow(owner, 0, 0.5);
        clock.Tick();
    }
}

TransformBox PairLevel::BoxFor(const platform::Extent& extent) const {
    const platform::Extent scaled{extent.XMin / m_unit, extent.YMin / m_unit, extent.XMax / m_unit,
                                  extent.YMax / m_unit};
    return TransformBox::For(scaled, reach_of(m_criterion) * m_highest, highest_wave_of(m_criterion) / m_lowest);
}

void PairLevel::AddSpectrum(std::span<const platform::Point> points, WorkClock& clock) {
    AddHalfSpectrum(points, {}, clock);
}

void PairLevel::AddHalfSpectrum(std::span<const platform::Point> owners, std::span<const platform::Point> others,
                                WorkClock& clock) {
    platform::Extent extent = platform::bounds_of(owners);
    for (const platform::Point& point : others) extent.Include(point);
    const TransformBox box = BoxFor(extent);
    const double highest = highest_wave_of(m_criterion) / m_lowest;
    PointTransform ofOwners(box, highest);
    ofOwners.Transform(Scaled(owners), clock);
    std::unique_ptr<PointTransform> ofOthers;
    if (!others.empty()) {
        ofOthers = std::make_unique<PointTransform>(box, highest);
        ofOthers->Transform(Scaled(others), clock);
    }
    const double perArea = 1.0 / (box.Width() * box.Height());
    for (std::size_t i = 0; i < ofOwners.Lines(); ++i) {
        const TransformLine line = ofOwners.Line(i);
        const std::size_t count = line.Squares.size();
        m_weights.resize(count);
        for (std::size_t k = 0; k < count; ++k) m_weights[k] = square(line.Real[k]) + square(line.Imaginary[k]);
        if (ofOthers) {
            const TransformLine other = ofOthers->Line(i);
            for (std::size_t k = 0; k < count; ++k)
                m_weights[k] += line.Real[k] * other.Real[k] + line.Imaginary[k] * other.Imaginary[k];
        }
        for (std::size_t k = 0; k < count; ++k) m_weights[k] *= line.Weights[k] * perArea;
        m_spectra.Add(line.Squares, m_weights);
        clock.Tick();
    }
    m_selfPairs += static_cast<double>(owners.size());
}

PairSum PairLevel::At(double bandwidth) const {
    const double h = std::max(bandwidth / m_unit, kSmallestRatio);
    return m_criterion == Criterion::kLscv ? LscvAt(h) : BcvAt(h);
}

PairSum PairLevel::LscvAt(double h) const {
    const double wide = m_pairs.Sum({.Decay = 0.25 / (h * h)}) / kFourPi;
    const double narrow = 2.0 * m_pairs.Sum({.Decay = 0.5 / (h * h)}) / kTwoPi;
    PairSum sum{wide - narrow, kPairsError * (wide + narrow)};
    if (m_selfPairs > 0.0) {
        // A gaussian of scale s has the transform 2 pi s^2 exp(-k^2 s^2 / 2); here s^2 = 2 h^2 and h^2.
        const double allWide = 4.0 * kPi * h * h * m_spectra.Sum({.Decay = h * h}) / kFourPi;
        const double allNarrow = 4.0 * kPi * h * h * m_spectra.Sum({.Decay = 0.5 * h * h}) / kTwoPi;
        sum.Value += 0.5 * (allWide - allNarrow - m_selfPairs * (1.0 / kFourPi - 2.0 / kTwoPi));
        sum.Error += kSpectrumError * (std::abs(allWide) + std::abs(allNarrow));
    }
    return sum;
}

PairSum PairLevel::BcvAt(double h) const {
    const double squared = h * h;
    const DecayingFunction function{
        .Decay = 0.5 / squared, .Constant = 8.0, .Linear = -8.0 / squared, .Square = 1.0 / (squared * squared)};
    DecayingFunction magnitude = function;
    magnitude.Linear = -function.Linear;
    PairSum sum{m_pairs.Sum(function), kPairsError * m_pairs.Sum(magnitude)};
    if (m_selfPairs > 0.0) {
        // The function is h^4 times the bilaplacian of exp(-d^2 / 2 h^2): k^4 in Fourier space.
        const double all =
            2.0 * kPi * squared * m_spectra.Sum({.Decay = 0.5 * squared, .Constant = 0.0, .Square = squared * squared});
        sum.Value += 0.5 * (all - 8.0 * m_selfPairs);
        sum.Error += kSpectrumError * std::abs(all);
    }
    return sum;
}

}  // namespace wxl::engine
