// Movement models and AKDE bandwidths of irregular tracks, beside the dense matrix up to 2,000 fixes. Names:
// <what>/<model>/<fixes>.

#include "bench/drawn_tracks.h"
#include "movement_models/fit.h"
#include "movement_models/weights.h"
#include "tests/unit/movement_models/dense_twin.h"

#include <benchmark/benchmark.h>
#include <sys/resource.h>

namespace {

using namespace wxl;
using namespace wxl::movement_models;

constexpr Autocorrelation kOu{ModelKind::kOu, {86400, 0}};
constexpr Autocorrelation kCritical{ModelKind::kCritical, {20000, 0}};
constexpr Autocorrelation kOuf{ModelKind::kOuf, {86400, 3600}};

Track track_of(const benchmark::State& state) {
    return bench::drawn_track(kOuf, {4e6, 1e6, 1e6}, static_cast<std::size_t>(state.range(0)), 600.0, 5);
}

void tell(benchmark::State& state) {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    state.counters["peak_MB"] = static_cast<double>(usage.ru_maxrss) / 1024.0;
    state.counters["us_per_fix"] =
        benchmark::Counter(static_cast<double>(state.range(0)) * 1e-6,
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void likelihood(benchmark::State& state, const Autocorrelation& model) {
    const Track track = track_of(state);
    for (auto _ : state) benchmark::DoNotOptimize(filter(track, model).LogDeterminant);
    tell(state);
}

void likelihood_twin(benchmark::State& state, const Autocorrelation& model) {
    const Track track = track_of(state);
    for (auto _ : state) benchmark::DoNotOptimize(tests::dense_sums(track, model).LogDeterminant);
    tell(state);
}

void choice(benchmark::State& state) {
    const Track track = track_of(state);
    for (auto _ : state) benchmark::DoNotOptimize(choose_model(track, Estimation::kPhreml, false).Models.size());
    tell(state);
}

void bandwidth(benchmark::State& state, const Autocorrelation& model) {
    const Track track = track_of(state);
    for (auto _ : state) benchmark::DoNotOptimize(uniform_bandwidth(track, model).Squared);
    tell(state);
}

/// Every pair at every bandwidth of the search.
void bandwidth_twin(benchmark::State& state, const Autocorrelation& model) {
    const Track track = track_of(state);
    const std::size_t n = track.Size();
    const auto sum = [&](auto&& term) {
        double all = 0.0;
        for (std::size_t i = 0; i < n; ++i)
            for (std::size_t j = 0; j < n; ++j)
                all += term(i == j ? 0.0 : model.Semivariance(std::abs(track.Times[j] - track.Times[i])));
        return all / (static_cast<double>(n) * static_cast<double>(n));
    };
    const auto error = [&](double h) {
        return 0.5 * sum([h](double gamma) { return 1.0 / (gamma + h); }) - 2.0 / (2.0 + h) + 0.5;
    };
    const auto slope = [&](double h) {
        return -0.5 * sum([h](double gamma) { return 1.0 / ((gamma + h) * (gamma + h)); }) +
               2.0 / ((2.0 + h) * (2.0 + h));
    };
    for (auto _ : state)
        benchmark::DoNotOptimize(best_bandwidth(independent_bandwidth(static_cast<double>(n)), error, slope));
    tell(state);
}

void weights(benchmark::State& state, const Autocorrelation& model) {
    const Track track = track_of(state);
    for (auto _ : state) benchmark::DoNotOptimize(optimal_bandwidth(track, model).Squared);
    tell(state);
}

void sizes(benchmark::internal::Benchmark* bench) {
    bench->RangeMultiplier(10)->Range(1000, 1000000)->Unit(benchmark::kMillisecond);
}

void once(benchmark::internal::Benchmark* bench) {
    bench->RangeMultiplier(10)->Range(1000, 1000000)->Iterations(1)->Unit(benchmark::kMillisecond);
}

BENCHMARK_CAPTURE(likelihood, OU, kOu)->Apply(sizes);
BENCHMARK_CAPTURE(likelihood, OUf, kCritical)->Apply(sizes);
BENCHMARK_CAPTURE(likelihood, OUF, kOuf)->Apply(sizes);
BENCHMARK_CAPTURE(likelihood_twin, OUF, kOuf)->Arg(1000)->Arg(2000)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(choice)->Arg(3500)->Apply(once);
BENCHMARK_CAPTURE(bandwidth, OUF, kOuf)->Arg(3500)->Apply(sizes);
BENCHMARK_CAPTURE(bandwidth_twin, OUF, kOuf)->Arg(1000)->Arg(2000)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(weights, OU, kOu)->Arg(3500)->Apply(once);
BENCHMARK_CAPTURE(weights, OUF, kOuf)->Arg(3500)->Apply(once);

}  // namespace

BENCHMARK_MAIN();
