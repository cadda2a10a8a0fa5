#pragma once
#include "engine/vector_math.h"
#include "engine/work_clock.h"
#include "platform/values.h"

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

namespace wxl::engine {

/// The periodic box in which points are transformed.
struct TransformBox {
    platform::Point Corner;   ///< lower-left corner of the points
    double CellSize = 0.0;    ///< side of the cells, which number Columns x Rows
    std::size_t Columns = 0;  ///< even
    std::size_t Rows = 0;

    double Width() const { return CellSize * static_cast<double>(Columns); }
    double Height() const { return CellSize * static_cast<double>(Rows); }
    std::size_t Cells() const { return Columns * Rows; }

    /// A box for points within `extent` that keeps them at least `apart` from their periodic images, and in which wave
    /// numbers up to `highest` come out right.
    static TransformBox For(const platform::Extent& extent, double apart, double highest);
};

/// One line of the transform: wave numbers (k, m) for all k >= 0 at one m.
struct TransformLine {
    std::span<const double> Squares;  ///< k^2 + m^2
    std::span<const double> Weights;  ///< how often a wave number counts, with its mirror image: 1 or 2
    std::span<const double> Real;
    std::span<const double> Imaginary;
};

/// F(k, m) = sum over points of exp(-i (k x + m y)), to a relative error of 1E-12: each point is spread over 16 x 16
/// cells by the window exp(b (sqrt(1 - z^2) - 1)), the grid is transformed by FFTW, and the window's own transform is
/// divided out (nonuniform fast Fourier transform, Dutt and Rokhlin 1993; window of Barnett, Magland and af Klinteberg
/// 2019).
class PointTransform {
public:
    /// RuntimeError 7 when there is no memory.
    PointTransform(const TransformBox& box, double highest);

    /// Transforms points that lie in the box's extent.
    void Transform(std::span<const platform::Point> points, WorkClock& clock);

    std::size_t Lines() const { return m_rowWaves.size(); }

    /// The wave numbers of one line that are at most `highest`, valid until the next call.
    TransformLine Line(std::size_t line);

private:
    struct Release {
        void operator()(double* cells) const;
    };
    struct Wave {
        std::size_t Index = 0;
        double Number = 0.0;
        double Gain = 0.0;  ///< what the window makes of it
    };
    std::vector<Wave> WavesUpTo(double highest, std::size_t cells, bool negative) const;
    void SpreadPoints(std::span<const platform::Point> points, WorkClock& clock);

    TransformBox m_box;
    double m_highest;
    std::size_t m_stride;
    std::unique_ptr<double[], Release> m_cells;
    std::vector<Wave> m_columnWaves;
    std::vector<Wave> m_rowWaves;
    std::vector<double> m_squares, m_weights, m_real, m_imaginary;
};

}  // namespace wxl::engine
