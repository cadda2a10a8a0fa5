// How often the 95 % limits of an area hold the true one: tracks drawn from each model, fitted as wxl models does and
// smoothed as wxl akde does. coverage_study [TRACKS [FIRST_SEED]] prints one row a model, then rows of longer tracks.

#include "bench/drawn_tracks.h"
#include "movement_models/bandwidth.h"
#include "movement_models/density.h"
#include "movement_models/fit.h"

#include <cstdio>
#include <cstdlib>
#include <numbers>

namespace {

using namespace wxl;
using namespace wxl::movement_models;

constexpr Matrix2 kRange{4e6, 1e6, 1e6};
constexpr double kHour = 3600.0;

struct Design {
    Autocorrelation Model;
    std::size_t Fixes;
    double MeanStep;
};

const Design kDesigns[] = {{{ModelKind::kIid, {}}, 60, 24 * kHour},
                           {{ModelKind::kOu, {24 * kHour, 0}}, 600, 3 * kHour},
                           {{ModelKind::kCritical, {10 * kHour, 0}}, 600, 3 * kHour},
                           {{ModelKind::kOuf, {24 * kHour, 4 * kHour}}, 600, 3 * kHour}};

/// The same two models with ever more fixes: what becomes of the bias.
const Design kLonger[] = {{{ModelKind::kIid, {}}, 240, 24 * kHour},
                          {{ModelKind::kIid, {}}, 960, 24 * kHour},
                          {{ModelKind::kOu, {24 * kHour, 0}}, 2400, 3 * kHour},
                          {{ModelKind::kOu, {24 * kHour, 0}}, 9600, 3 * kHour}};

/// Tracks whose limits hold the truth, of how many.
struct Count {
    int Holds = 0;
    int Below = 0;  ///< the truth is below the limits
    int All = 0;
    double Ratio = 0.0;  ///< sum of area over truth

    void Add(double area, double dof, double truth) {
        const auto limits = area_interval(area, dof);
        if (!limits) return;
        ++All;
        Ratio += area / truth;
        if (truth < limits->Low)
            ++Below;
        else if (truth <= limits->High)
            ++Holds;
    }
};

/// Gaussian area of the density's second moments, corrected as its areas are: what the correction is made to set right.
double moment_area(const Track& track, const FittedModel& model, const Bandwidth& bandwidth) {
    const auto n = static_cast<double>(track.Size());
    Matrix2 sums;
    double x = 0.0;
    double y = 0.0;
    for (std::size_t i = 0; i < track.Size(); ++i) {
        x += track.X[i] / n;
        y += track.Y[i] / n;
    }
    for (std::size_t i = 0; i < track.Size(); ++i) {
        sums.XX += (track.X[i] - x) * (track.X[i] - x) / n;
        sums.XY += (track.X[i] - x) * (track.Y[i] - y) / n;
        sums.YY += (track.Y[i] - y) * (track.Y[i] - y) / n;
    }
    const Matrix2 kernel = model.Covariance.Scaled(bandwidth.Squared);
    const Matrix2 all{sums.XX + kernel.XX, sums.XY + kernel.XY, sums.YY + kernel.YY};
    return -2.0 * std::log(0.05) * std::numbers::pi * std::sqrt(all.Determinant()) / bandwidth.Bias;
}

double kernel_area(const Track& track, const FittedModel& model, const Bandwidth& bandwidth) {
    const Matrix2 matrix = model.Covariance.Scaled(bandwidth.Squared);
    std::vector<platform::Point> fixes;
    for (std::size_t i = 0; i < track.Size(); ++i) fixes.push_back({track.X[i], track.Y[i]});
    const auto geometry = grid_around(fixes, matrix, advised_cell_size(matrix));
    engine::KernelGrid grid;
    grid.Reset(geometry.Columns, geometry.Rows);
    engine::WorkClock clock;
    add_density(fixes, bandwidth.Weights, matrix, geometry, grid, clock);
    return VolumeCurve(grid, geometry.CellSize * geometry.CellSize).AreaOf(0.95) / bandwidth.Bias;
}

void study(const Design& design, int tracks, std::uint64_t seed) {
    const double truth = -2.0 * std::log(0.05) * std::numbers::pi * std::sqrt(kRange.Determinant());
    Count gaussian;
    Count kernel;
    Count moments;
    int right = 0;
    int few = 0;
    double dof = 0.0;
    for (int i = 0; i < tracks; ++i) {
        const Track track = bench::drawn_track(design.Model, kRange, design.Fixes, design.MeanStep,
                                               seed + static_cast<std::uint64_t>(i));
        const ModelChoice choice = choose_model(track, Estimation::kPhreml, false);
        const FittedModel* chosen = choice.Chosen();
        if (chosen == nullptr || !(chosen->DofArea > 10.0)) {
            ++few;
            continue;
        }
        right += chosen->Model.Kind == design.Model.Kind ? 1 : 0;
        dof += chosen->DofArea;
        gaussian.Add(chosen->GaussianArea(0.95), chosen->DofArea, truth);
        const Bandwidth bandwidth = uniform_bandwidth(track, chosen->Model);
        moments.Add(moment_area(track, *chosen, bandwidth), chosen->DofArea, truth);
        kernel.Add(kernel_area(track, *chosen, bandwidth), chosen->DofArea, truth);
    }
    const auto share = [](int part, int all) { return all > 0 ? 100.0 * part / all : 0.0; };
    std::printf("| %s | %d | %d | %.1f | %.1f %% | %.1f %% | %.3f | %.1f %% | %.3f | %.1f %% | %.3f |\n",
                std::string(model_name(design.Model.Kind)).c_str(), tracks, few, dof / std::max(1, gaussian.All),
                share(right, gaussian.All), share(gaussian.Holds, gaussian.All),
                gaussian.Ratio / std::max(1, gaussian.All), share(moments.Holds, moments.All),
                moments.Ratio / std::max(1, moments.All), share(kernel.Holds, kernel.All),
                kernel.Ratio / std::max(1, kernel.All));
    std::fflush(stdout);
}

}  // namespace

int main(int count, char** arguments) {
    const int tracks = count > 1 ? std::atoi(arguments[1]) : 400;
    const std::uint64_t seed = count > 2 ? std::strtoull(arguments[2], nullptr, 10) : 1;
    std::printf(
        "| model | tracks | DOF <= 10 | mean DOF | model found | Gaussian area held | mean/truth | "
        "Gaussian of the density's moments held | mean/truth | AKDE area held | mean/truth |\n");
    std::printf("|---|---|---|---|---|---|---|---|---|---|---|\n");
    for (const Design& design : kDesigns) study(design, tracks, seed);
    for (const Design& design : kLonger) study(design, tracks, seed);
}
