// Kernel grids of 1000 x 1000 cells: the calculator beside the plain loop.
// Names: <program>/<kernel>/<fixes>/<search radius in cells>.

#include "engine/clsKernelCalculator.h"
#include "tests/support/engine_twins.h"
#include "tests/support/samples.h"

#include <benchmark/benchmark.h>

namespace {

using namespace wxl;

class SilentMessages final : public platform::IMessages {
public:
    platform::Answer Show(const platform::MessageBox& /*box*/) override { return platform::Answer::kOk; }
};

constexpr std::int32_t kCells = 1000;

tests::TwinKernel scene(const benchmark::State& state, bool adaptive) {
    tests::TwinKernel kernel;
    kernel.Points = tests::normal_sample(static_cast<std::size_t>(state.range(0)), 170.0, {500.0, 500.0}, 11);
    kernel.Columns = kernel.Rows = kCells;
    kernel.Bandwidth = static_cast<double>(state.range(1)) / 4.0;
    kernel.LimitRadius = static_cast<double>(state.range(1)) - 1.0;
    kernel.Adaptive = adaptive;
    return kernel;
}

void grid_engine(benchmark::State& state, bool adaptive) {
    const tests::TwinKernel twin = scene(state, adaptive);
    SilentMessages messages;
    for (auto _ : state) {
        engine::clsKernelCalculator calculator(messages);
        calculator.SetInputCoords(twin.Points);
        calculator.SetCellSize(1.0);
        calculator.SetColumns(kCells);
        calculator.SetRows(kCells);
        calculator.SetLimitRadius(twin.LimitRadius);
        calculator.SetManualBandwidth(twin.Bandwidth);
        calculator.SetFixedKernel(!adaptive);
        calculator.CalculateKernel();
        benchmark::DoNotOptimize(calculator.GetKernelVolume());
        if (calculator.lErrorStatus != 0) state.SkipWithError("no kernel");
    }
}

void grid_twin(benchmark::State& state, bool adaptive) {
    const tests::TwinKernel twin = scene(state, adaptive);
    for (auto _ : state) benchmark::DoNotOptimize(tests::twin_grid(twin).Volume);
}

void cases(benchmark::internal::Benchmark* bench) {
    bench->Args({3000, 95})->Args({30000, 70})->Args({300, 400})->Unit(benchmark::kMillisecond);
}

BENCHMARK_CAPTURE(grid_engine, fixed, false)->Apply(cases);
BENCHMARK_CAPTURE(grid_twin, fixed, false)->Apply(cases)->Iterations(1);
BENCHMARK_CAPTURE(grid_engine, adaptive, true)->Apply(cases);
BENCHMARK_CAPTURE(grid_twin, adaptive, true)->Apply(cases)->Iterations(1);

}  // namespace

BENCHMARK_MAIN();
