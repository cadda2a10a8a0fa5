// Times and coordinates of any kind through models, bandwidth, weights, density and areas.

#include "akde/animal_range.h"
#include "fuzz/fuzz_input.h"
#include "movement_models/fit.h"
#include "movement_models/weights.h"

#include <algorithm>
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

class Silence final : public akde::IListener {
public:
    void Progress(double, std::string_view) override {}
    void EndProgress() override {}
    void Note(std::string_view line) override { require(!line.empty(), "a note says something"); }
    void Problem(std::string_view line) override { require(!line.empty(), "a problem says something"); }
    bool IsStopped() const override { return false; }
};

akde::TimedAnimal animal_of(const std::vector<double>& times, const std::vector<platform::Point>& fixes) {
    akde::TimedAnimal animal;
    animal.Id = std::int64_t{1};
    animal.Fixes = fixes;
    for (const double time : times)
        animal.Times.push_back({static_cast<std::int64_t>(std::floor(time)), time - std::floor(time)});
    return animal;
}

/// A grid of 40 cells across, as the command makes it of thousands.
void check_range(const akde::AnimalModels& fitted, bool optimal, akde::IListener& listener) {
    constexpr double kAcross = 40.0;
    const akde::Smoothing smoothing = akde::smoothing_of(fitted, optimal, listener);
    const platform::Extent extent = platform::bounds_of(smoothing.Fixes);
    const double reach = 4.0 * std::sqrt(std::max(smoothing.Matrix.XX, smoothing.Matrix.YY));
    const double side = std::max(extent.Width(), extent.Height()) + 2.0 * reach;
    const platform::RasterGeometry grid{extent.XMin - reach, extent.YMin - reach, side / kAcross, 40, 40};
    if (!(grid.CellSize > 0.0) || !std::isfinite(grid.CellSize * grid.CellSize)) return;
    akde::AnimalRange range;
    const std::int32_t fault = fuzz::fault_of([&] {
        range = akde::range_on(smoothing, fitted.Chosen->DofArea, grid, {95.0, 50.0}, listener);
    });
    // Fixes far apart with a narrow kernel: cells of a fortieth of the whole may miss it.
    require(fault == 0 || !akde::coarse_cells_text(smoothing.Matrix, grid.CellSize).empty(),
            "only cells coarser than the kernel are refused");
    if (fault != 0) return;
    require(std::isfinite(range.Volume) && range.Volume > 0.0, "a volume");
    double before = 0.0;
    for (const akde::RangeIsopleth& isopleth : range.Isopleths) {
        require(std::isfinite(isopleth.Area) && isopleth.Area >= 0.0, "an area");
        require(isopleth.Bound == "low" || isopleth.Area >= before || range.Isopleths.size() < 6, "limits in order");
        before = isopleth.Area;
    }
}

void check(fuzz::FuzzInput& input) {
    std::vector<double> times;
    std::vector<platform::Point> fixes;
    draw(input, times, fixes);
    Silence listener;
    const akde::TimedAnimal animal = animal_of(times, fixes);
    const akde::AnimalModels fitted = akde::fit_animal(animal, input.Flag(), {}, listener);
    akde::report_animal(fitted, true, listener);
    require(!fitted.Verdict.Text.empty(), "a sentence for every animal");
    if (!fitted.Chosen) return;
    require(fitted.Models.size() == 8, "eight models");
    require(std::isfinite(fitted.Chosen->LogLikelihood) && fitted.Chosen->Covariance.Determinant() > 0.0,
            "numbers of the best model");
    check_bandwidth(fitted.Track.Fixes, *fitted.Chosen);
    check_range(fitted, input.Flag(), listener);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzInput input(data, size);
    check(input);
    return 0;
}
