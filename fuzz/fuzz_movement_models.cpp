// Times and coordinates of any kind through models, bandwidth, weights and density.

#include "fuzz/fuzz_input.h"
#include "movement_models/density.h"
#include "movement_models/fit.h"
#include "movement_models/variogram.h"
#include "movement_models/verdict.h"
#include "movement_models/weights.h"

#include <cmath>
#include <numeric>

namespace {

using namespace wxl;
using namespace wxl::movement_models;
using fuzz::require;

/// Times that repeat, stand still, jump by years or run backwards; places that do the same.
void draw(fuzz::FuzzInput& input, std::vector<double>& times, std::vector<platform::Point>& fixes) {
    const double unit = std::ldexp(1.0, input.Between(-8, 20));
    const double metre = std::ldexp(1.0, input.Between(-20, 30));
    const platform::Point origin = input.Flag() ? platform::Point{512345.0, 5834567.0} : platform::Point{};
    double now = 0.0;
    platform::Point place = origin;
    const int count = input.Between(0, 40);
    for (int i = 0; i < count; ++i) {
        now += unit * input.Between(-1, 20);
        if (input.Between(0, 5) > 0)
            place = {origin.X + metre * input.Take<std::int16_t>(), origin.Y + metre * input.Take<std::int16_t>()};
        times.push_back(now);
        fixes.push_back(place);
    }
}

void check_bandwidth(const Track& track, const FittedModel& model) {
    for (const Bandwidth& bandwidth : {uniform_bandwidth(track, model.Model), optimal_bandwidth(track, model.Model)}) {
        require(bandwidth.Squared > 0.0 && bandwidth.Squared <= 2.0 + 1e-12,
                "a bandwidth between 0 and that of one fix");
        require(std::isfinite(bandwidth.Bias) && bandwidth.Bias > 0.0, "a correction");
        const double sum = std::accumulate(bandwidth.Weights.begin(), bandwidth.Weights.end(), 0.0);
        require(std::abs(sum - 1.0) < 1e-9, "weights of sum 1");
    }
}

void check(fuzz::FuzzInput& input) {
    std::vector<double> times;
    std::vector<platform::Point> fixes;
    draw(input, times, fixes);
    const PreparedTrack track = prepare_track(times, fixes);
    require(track.Problem == TrackProblem::kNone || !problem_text(track).empty(), "a sentence for every problem");
    if (track.Problem != TrackProblem::kNone) return;
    const ModelChoice choice = choose_model(track.Fixes, Estimation::kPhreml, track.OnALine);
    require(choice.Models.size() == 8, "eight models");
    const FittedModel* chosen = choice.Chosen();
    if (chosen == nullptr) return;
    require(std::isfinite(chosen->LogLikelihood) && chosen->Covariance.Determinant() > 0.0,
            "numbers of the best model");
    const auto variogram = variogram_of(track.Fixes, 20);
    require(!verdict_of(track, *chosen, still_rises(variogram, track.Fixes.Duration())).Text.empty(), "a verdict");
    check_bandwidth(track.Fixes, *chosen);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzInput input(data, size);
    check(input);
    return 0;
}
