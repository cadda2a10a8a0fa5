#pragma once
// One step of the continuous-velocity models: how position and velocity pass on, and how much noise comes in between.
// Plain numbers and Taylor numbers take the same road.

#include "movement_models/taylor.h"

#include <array>
#include <cmath>
#include <cstddef>

namespace wxl::movement_models {

/// Position r and velocity v after a step: r <- c0 r + g v, v <- c1 r + g' v, and the covariance Q of what is added.
template <class T>
struct StepCoefficients {
    T C0;
    T Fall;  ///< 1 - c0, with its own digits
    T C1;
    T G;  ///< seconds
    T GPrime;
    T Q11;
    T Q12;  ///< per second
    T Q22;  ///< per square second
};

/// The steps of OUF, or with equal time scales of OUf.
template <class T>
class StepModel {
public:
    StepModel(const T& tau1, const T& tau2)
        : m_rate1(1.0 / tau1),
          m_rate2(1.0 / tau2),
          m_f(0.5 * (m_rate1 + m_rate2)),
          m_c(0.5 * (m_rate2 - m_rate1)),
          m_omega2(m_rate1 * m_rate2),
          m_tau1(tau1),
          m_tau2(tau2) {}

    /// OUf.
    explicit StepModel(const T& tau)
        : m_rate1(1.0 / tau),
          m_rate2(m_rate1),
          m_f(m_rate1),
          m_c(0.0),
          m_omega2(m_rate1 * m_rate1),
          m_tau1(tau),
          m_tau2(tau) {}

    /// Variance of the velocity, in units of the position's variance per square second.
    const T& Omega2() const { return m_omega2; }

    StepCoefficients<T> Step(double seconds) const {
        using std::exp;
        if (seconds <= 0.5 * value_of(m_tau2)) return ShortStep(seconds);
        StepCoefficients<T> step = seconds * value_of(m_c) <= kSmall ? NearScales(seconds) : FarScales(seconds);
        step.C1 = -(m_omega2 * step.G);
        if (value_of(m_tau1) <= 10.0 * value_of(m_tau2))
            ByDifferences(step);
        else
            ByExponentials(seconds, step);
        step.Q12 = 2.0 * m_f * m_omega2 * step.G * step.G;
        return step;
    }

private:
    static constexpr double kSmall = 0.5;
    static constexpr std::size_t kOrders = 7;    ///< of the series in the squared difference of the rates
    static constexpr std::size_t kMoments = 19;  ///< M_m, of which the last only starts the recurrence

    /// e^(-f s) times the even series of cosh(c s) and sinh(c s)/(c s): nothing cancels where the scales are near.
    StepCoefficients<T> NearScales(double s) const {
        using std::expm1;
        const T x = m_c * s;
        const T square = x * x;
        T cosine = kCosh[kOrders];
        T sine = kSinh[kOrders];
        for (std::size_t j = kOrders; j-- > 1;) {
            cosine = cosine * square + kCosh[j];
            sine = sine * square + kSinh[j];
        }
        // Both without their first term, 1.
        cosine = cosine * square;
        sine = sine * square;
        const T fs = m_f * s;
        const T loss = -expm1(-fs);
        const T decay = 1.0 - loss;
        const T ratio = fs * (1.0 + sine);
        StepCoefficients<T> step;
        step.C0 = decay * (1.0 + cosine + ratio);
        step.Fall = (loss - fs * decay) - decay * (cosine + fs * sine);
        step.G = decay * (1.0 + sine) * s;
        step.GPrime = decay * (1.0 + cosine - ratio);
        return step;
    }

    StepCoefficients<T> FarScales(double s) const {
        using std::exp;
        const T slow = exp(-(m_rate1 * s));
        const T fast = exp(-(m_rate2 * s));
        const T mean = 0.5 * (slow + fast);
        StepCoefficients<T> step;
        step.G = (slow - fast) / (2.0 * m_c);
        step.C0 = mean + m_f * step.G;
        step.Fall = 1.0 - step.C0;
        step.GPrime = mean - m_f * step.G;
        return step;
    }

    void ByDifferences(StepCoefficients<T>& step) const {
        const T perVelocity = step.C1 * step.C1 / m_omega2;
        step.Q11 = 1.0 - step.C0 * step.C0 - perVelocity;
        step.Q22 = m_omega2 * (1.0 - perVelocity - step.GPrime * step.GPrime);
    }

    void ByExponentials(double s, StepCoefficients<T>& step) const {
        using std::expm1;
        const T a = -expm1(-2.0 * s * m_rate1);
        const T b = -expm1(-2.0 * s * m_f);
        const T c = -expm1(-2.0 * s * m_rate2);
        const T scale = m_f * m_omega2 / (m_c * m_c);
        step.Q11 = scale * (0.5 * m_tau1 * a - b / m_f + 0.5 * m_tau2 * c);
        step.Q22 = scale * (0.5 * m_rate1 * a - m_omega2 * b / m_f + 0.5 * m_rate2 * c);
    }

    /// The integrals of g^2 and g'^2 over a short step, as series of positive terms in the moments
    /// M_m = integral over 0..1 of x^m e^(-2 f s x).
    StepCoefficients<T> ShortStep(double s) const {
        StepCoefficients<T> step = NearScales(s);
        step.C1 = -(m_omega2 * step.G);
        const T fs = m_f * s;
        const std::array<T, kMoments> m = Moments(2.0 * fs);
        const T w = 4.0 * s * s * (m_c * m_c);
        T squares = 0.0;   // of sinh(c s)/c
        T products = 0.0;  // of sinh and cosh
        T evens = 0.0;     // of cosh
        for (std::size_t j = kOrders; j-- > 0;) {
            squares = squares * w + kSquares[j] * m[2 * j + 2];
            products = products * w + kProducts[j] * m[2 * j + 1];
            evens = evens * w + kEvens[j] * m[2 * j];
        }
        const T scale = 4.0 * m_f * m_omega2;
        step.Q11 = scale * squares * (s * s * s);
        step.Q22 = scale * (evens - fs * (products - fs * squares)) * s;
        step.Q12 = 2.0 * m_f * m_omega2 * step.G * step.G;
        return step;
    }

    /// Downwards, where every term is positive; z <= 1.
    static std::array<T, kMoments> Moments(const T& z) {
        using std::exp;
        const T decay = exp(-z);
        std::array<T, kMoments> m;
        m[kMoments - 1] = decay * (1.0 / static_cast<double>(kMoments));
        for (std::size_t k = kMoments - 1; k-- > 0;) m[k] = (decay + z * m[k + 1]) * (1.0 / static_cast<double>(k + 1));
        return m;
    }

    // 1/(2j)!, 1/(2j+1)!; 2/(2j+2)!, 2/(2j+1)!, and 1 then 1/(2 (2j)!).
    static constexpr std::array<double, kOrders + 1> kCosh = {
        1.0, 1.0 / 2, 1.0 / 24, 1.0 / 720, 1.0 / 40320, 1.0 / 3628800, 1.0 / 479001600, 1.0 / 87178291200};
    static constexpr std::array<double, kOrders + 1> kSinh = {
        1.0, 1.0 / 6, 1.0 / 120, 1.0 / 5040, 1.0 / 362880, 1.0 / 39916800, 1.0 / 6227020800, 1.0 / 1307674368000};
    static constexpr std::array<double, kOrders> kSquares = {
        1.0, 1.0 / 12, 1.0 / 360, 1.0 / 20160, 1.0 / 1814400, 1.0 / 239500800, 1.0 / 43589145600};
    static constexpr std::array<double, kOrders> kProducts = {2.0,          1.0 / 3,        1.0 / 60,        1.0 / 2520,
                                                              1.0 / 181440, 1.0 / 19958400, 1.0 / 3113510400};
    static constexpr std::array<double, kOrders> kEvens = {1.0,         1.0 / 4,       1.0 / 48,       1.0 / 1440,
                                                           1.0 / 80640, 1.0 / 7257600, 1.0 / 958003200};

    T m_rate1;
    T m_rate2;
    T m_f;
    T m_c;
    T m_omega2;
    T m_tau1;
    T m_tau2;
};

}  // namespace wxl::movement_models
