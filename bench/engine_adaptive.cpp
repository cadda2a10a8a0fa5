// Local bandwidth factors of the adaptive kernel: the pilot density beside the plain loop. Names: <program>/<fixes>.

#include "engine/pilot_density.h"
#include "tests/support/engine_twins.h"
#include "tests/support/samples.h"

#include <benchmark/benchmark.h>

namespace {

using namespace wxl;

std::vector<platform::Point> sample(const benchmark::State& state) {
    return tests::normal_sample(static_cast<std::size_t>(state.range(0)), 800.0, {512345.0, 5834567.0}, 21);
}

void pilot_engine(benchmark::State& state) {
    const std::vector<platform::Point> points = sample(state);
    const double bandwidth = tests::twin_href(points);
    for (auto _ : state) {
        engine::WorkClock clock;
        benchmark::DoNotOptimize(engine::pilot_density(points, bandwidth, clock).data());
    }
}

void pilot_twin(benchmark::State& state) {
    const std::vector<platform::Point> points = sample(state);
    const double bandwidth = tests::twin_href(points);
    for (auto _ : state) benchmark::DoNotOptimize(tests::twin_pilot(points, bandwidth).data());
}

BENCHMARK(pilot_engine)->Arg(3000)->Arg(30000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(pilot_twin)->Arg(3000)->Arg(30000)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
