#include "movement_models/likelihood.h"

#include "movement_models/step_coefficients.h"

#include <cmath>
#include <numbers>

namespace wxl::movement_models {

namespace {

/// Nearer scales than this share of the longer are equal.
constexpr double kEqualScales = 1e-4;

/// Sum of logarithms by few logarithms: the product is taken as long as it stays a normal number.
class LogSum {
public:
    void Add(double s) {
        m_product *= s;
        if (m_product > kSmallest) return;
        m_sum += std::log(m_product);
        m_product = 1.0;
    }
    double Sum() const { return m_sum + std::log(m_product); }

private:
    static constexpr double kSmallest = 1e-200;
    double m_product = 1.0;
    double m_sum = 0.0;
};

/// The same with derivatives, whose logarithms need no logarithm but that of the value.
template <std::size_t N>
class TaylorLogSum {
public:
    void Add(const Taylor<N>& s) {
        m_values.Add(s.Value);
        const double r = 1.0 / s.Value;
        m_rest += composed(s, 0.0, r, -r * r);
    }
    Taylor<N> Sum() const { return m_rest + m_values.Sum(); }

private:
    LogSum m_values;
    Taylor<N> m_rest;
};

template <class T>
struct LogSumOf;
template <>
struct LogSumOf<double> {
    using Type = LogSum;
};
template <std::size_t N>
struct LogSumOf<Taylor<N>> {
    using Type = TaylorLogSum<N>;
};

/// A value for x, y and the column of ones.
template <class T>
struct Columns {
    T X;
    T Y;
    T One;
};

/// Gathers the residuals of every fix.
template <class T>
class Whitened {
public:
    void Add(const Columns<T>& e, const T& variance) {
        m_logs.Add(variance);
        const T precision = 1.0 / variance;
        const T u = precision * e.One;
        const T x = precision * e.X;
        m_weight += u * e.One;
        m_ux += u * e.X;
        m_uy += u * e.Y;
        m_xx += x * e.X;
        m_xy += x * e.Y;
        m_yy += precision * e.Y * e.Y;
    }

    FilterSums<T> Sums() const {
        FilterSums<T> sums;
        sums.LogDeterminant = m_logs.Sum();
        sums.Weight = m_weight;
        sums.MeanX = m_ux / m_weight;
        sums.MeanY = m_uy / m_weight;
        sums.XX = m_xx - sums.MeanX * m_ux;
        sums.XY = m_xy - sums.MeanX * m_uy;
        sums.YY = m_yy - sums.MeanY * m_uy;
        return sums;
    }

private:
    typename LogSumOf<T>::Type m_logs;
    T m_weight = 0.0;
    T m_ux = 0.0;
    T m_uy = 0.0;
    T m_xx = 0.0;
    T m_xy = 0.0;
    T m_yy = 0.0;
};

Columns<double> fix_of(const Track& track, std::size_t i) {
    return {track.X[i], track.Y[i], 1.0};
}

template <class T>
Columns<T> first_of(const Track& track) {
    return {T(track.X[0]), T(track.Y[0]), T(1.0)};
}

FilterSums<double> independent_sums(const Track& track) {
    Whitened<double> sums;
    for (std::size_t i = 0; i < track.Size(); ++i) sums.Add(fix_of(track, i), 1.0);
    return sums.Sums();
}

template <class T>
FilterSums<T> ou_sums(const Track& track, const T& tau) {
    using std::exp;
    using std::expm1;
    Whitened<T> sums;
    sums.Add(first_of<T>(track), T(1.0));
    const T rate = 1.0 / tau;
    double step = -1.0;
    T g = 0.0;
    T rest = 0.0;
    T variance = 0.0;
    for (std::size_t i = 1; i < track.Size(); ++i) {
        const Columns<double> last = fix_of(track, i - 1);
        const Columns<double> now = fix_of(track, i);
        // Most tracks repeat their steps.
        if (const double length = track.Times[i] - track.Times[i - 1]; length != step) {
            step = length;
            rest = -expm1(-(rate * step));
            g = exp(-(rate * step));
            variance = rest * (1.0 + g);
        }
        sums.Add({now.X - last.X + rest * last.X, now.Y - last.Y + rest * last.Y, rest}, variance);
    }
    return sums.Sums();
}

/// The fix is exact, so that after each of them only the velocity is uncertain: no subtraction that could cancel.
template <class T>
FilterSums<T> velocity_sums(const Track& track, const StepModel<T>& model) {
    Whitened<T> sums;
    sums.Add(first_of<T>(track), T(1.0));
    Columns<T> v{T(0.0), T(0.0), T(0.0)};
    T p = model.Omega2();
    StepCoefficients<T> step{};
    T noise = 0.0;
    double length = -1.0;
    for (std::size_t i = 1; i < track.Size(); ++i) {
        const Columns<double> last = fix_of(track, i - 1);
        const Columns<double> now = fix_of(track, i);
        if (const double seconds = track.Times[i] - track.Times[i - 1]; seconds != length) {
            length = seconds;
            step = model.Step(seconds);
            noise = step.Q11 * step.Q22 - step.Q12 * step.Q12;
        }
        const T gp = step.G * p;
        const T variance = step.G * gp + step.Q11;
        const T precision = 1.0 / variance;
        const T gain = (gp * step.GPrime + step.Q12) * precision;
        const Columns<T> e{now.X - last.X + step.Fall * last.X - step.G * v.X,
                           now.Y - last.Y + step.Fall * last.Y - step.G * v.Y, step.Fall - step.G * v.One};
        v = {step.C1 * last.X + step.GPrime * v.X + gain * e.X, step.C1 * last.Y + step.GPrime * v.Y + gain * e.Y,
             step.C1 + step.GPrime * v.One + gain * e.One};
        p = (p * (step.GPrime * step.GPrime * step.Q11 - 2.0 * step.G * step.GPrime * step.Q12 +
                  step.G * step.G * step.Q22) +
             noise) *
            precision;
        sums.Add(e, variance);
    }
    return sums.Sums();
}

double fixes_less(std::size_t fixes, Criterion criterion) {
    return static_cast<double>(fixes) - (criterion == Criterion::kReml ? 1.0 : 0.0);
}

double log_determinant(const FilterSums<double>& sums, std::size_t fixes, RangeShape shape, Criterion criterion) {
    const double m = fixes_less(fixes, criterion);
    return 2.0 * (log_size(sums, shape) - std::log(shape == RangeShape::kIsotropic ? 2.0 * m : m));
}

}  // namespace

FilterSums<double> filter(const Track& track, const Autocorrelation& model) {
    const auto [tau1, tau2] = model.Scales;
    switch (model.Kind) {
        case ModelKind::kIid:
            return independent_sums(track);
        case ModelKind::kOu:
            return ou_sums(track, tau1);
        case ModelKind::kCritical:
            return velocity_sums(track, StepModel<double>(tau1));
        case ModelKind::kOuf:
            break;
    }
    if (tau1 - tau2 < kEqualScales * tau1) return velocity_sums(track, StepModel<double>(tau1));
    return velocity_sums(track, StepModel<double>(tau1, tau2));
}

FilterSums<Taylor<1>> filter_with_slopes(const Track& track, ModelKind kind, double tau) {
    const Taylor<1> scale = Taylor<1>::Exponential(tau, 0);
    if (kind == ModelKind::kOu) return ou_sums(track, scale);
    return velocity_sums(track, StepModel<Taylor<1>>(scale));
}

FilterSums<Taylor<2>> filter_with_slopes(const Track& track, const TimeScales& scales) {
    const auto tau1 = Taylor<2>::Exponential(scales.Position, 0);
    const auto tau2 = Taylor<2>::Exponential(scales.Velocity, 1);
    return velocity_sums(track, StepModel<Taylor<2>>(tau1, tau2));
}

Matrix2 profiled_covariance(const FilterSums<double>& sums, std::size_t fixes, RangeShape shape, Criterion criterion) {
    const double m = fixes_less(fixes, criterion);
    if (shape == RangeShape::kAnisotropic) return {sums.XX / m, sums.XY / m, sums.YY / m};
    const double variance = sums.Trace() / (2.0 * m);
    return {variance, 0.0, variance};
}

double profiled_log_likelihood(const FilterSums<double>& sums, std::size_t fixes, RangeShape shape,
                               Criterion criterion) {
    const auto n = static_cast<double>(fixes);
    const double m = fixes_less(fixes, criterion);
    const double ml = -n * std::log(2.0 * std::numbers::pi) - 0.5 * m * log_determinant(sums, fixes, shape, criterion) -
                      sums.LogDeterminant - m;
    return criterion == Criterion::kMl ? ml : ml - std::log(sums.Weight);
}

double log_likelihood(const FilterSums<double>& sums, std::size_t fixes, const Matrix2& covariance,
                      Criterion criterion) {
    const auto n = static_cast<double>(fixes);
    const double determinant = covariance.Determinant();
    const double distance =
        (covariance.YY * sums.XX - 2.0 * covariance.XY * sums.XY + covariance.XX * sums.YY) / determinant;
    const double ml =
        -n * std::log(2.0 * std::numbers::pi) - 0.5 * n * std::log(determinant) - sums.LogDeterminant - 0.5 * distance;
    return criterion == Criterion::kMl ? ml : ml + 0.5 * std::log(determinant) - std::log(sums.Weight);
}

}  // namespace wxl::movement_models
