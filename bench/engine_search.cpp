// LSCV and BCV searches over the default range: the optimiser beside the plain loop. Names: <program>/<score>/<fixes>.

#include "engine/clsLSCV.h"
#include "tests/support/engine_twins.h"
#include "tests/support/samples.h"

#include <benchmark/benchmark.h>
#include <sys/resource.h>

namespace {

using namespace wxl;

class SilentMessages final : public platform::IMessages {
public:
    platform::Answer Show(const platform::MessageBox& /*box*/) override { return platform::Answer::kOk; }
};

std::vector<platform::Point> sample(const benchmark::State& state) {
    return tests::normal_sample(static_cast<std::size_t>(state.range(0)), 800.0, {512345.0, 5834567.0}, 21);
}

void search_engine(benchmark::State& state, void (engine::clsLSCV::*calculate)()) {
    const std::vector<platform::Point> points = sample(state);
    SilentMessages messages;
    for (auto _ : state) {
        engine::clsLSCV optimiser(messages);
        optimiser.SetInputCoords(points);
        (optimiser.*calculate)();
        benchmark::DoNotOptimize(optimiser.GetBandwidth());
        if (optimiser.lErrorStatus != 0) state.SkipWithError("no bandwidth");
    }
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    state.counters["peak_MB"] = static_cast<double>(usage.ru_maxrss) / 1024.0;
}

void search_twin(benchmark::State& state, tests::TwinScore score, double multiple) {
    const std::vector<platform::Point> points = sample(state);
    for (auto _ : state) {
        const double href = tests::twin_href(points);
        const double min = 0.05 * href;
        const double max = multiple * href;
        benchmark::DoNotOptimize(tests::twin_search(score, points, min, max, (max - min) / 200.0).Best);
    }
}

void sizes(benchmark::internal::Benchmark* bench) {
    bench->Arg(3000)->Arg(30000)->Arg(1000000)->Unit(benchmark::kMillisecond);
}

BENCHMARK_CAPTURE(search_engine, lscv, &engine::clsLSCV::CalculateLSCV)->Apply(sizes);
BENCHMARK_CAPTURE(search_twin, lscv, tests::TwinScore::kLscv, 2.0)
    ->Arg(3000)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(search_engine, bcv, &engine::clsLSCV::CalculateBCV2)->Apply(sizes);
BENCHMARK_CAPTURE(search_twin, bcv, tests::TwinScore::kBcv, 3.0)
    ->Arg(3000)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
