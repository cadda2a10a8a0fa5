// The largest grid, 10000 x 5000 cells, computed and written as a binary GRID: time and peak memory of the process.

#include "adapters/disk/disk_file_system.h"
#include "adapters/raster/raster_workspace.h"
#include "engine/clsKernelCalculator.h"
#include "tests/support/samples.h"

#include <benchmark/benchmark.h>
#include <filesystem>
#include <sys/resource.h>
#include <unistd.h>

namespace {

using namespace wxl;

class SilentMessages final : public platform::IMessages {
public:
    platform::Answer Show(const platform::MessageBox& /*box*/) override { return platform::Answer::kOk; }
};

void largest_grid(benchmark::State& state) {
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("wxl_bench_" + std::to_string(getpid()));
    std::filesystem::create_directory(folder);
    files::DiskFileSystem disk;
    files::DiskFolders folders;
    files::RasterWorkspace rasters(disk, folders);
    SilentMessages messages;
    for (auto _ : state) {
        engine::clsKernelCalculator calculator(
            messages, [&](const auto& where, const auto& definition) { return rasters.Create(where, definition); });
        calculator.SetInputCoords(tests::normal_sample(3000, 900.0, {5000.0, 2500.0}, 31));
        calculator.SetCellSize(1.0);
        calculator.SetColumns(10000);
        calculator.SetRows(5000);
        calculator.SetLimitRadius(300.0);
        calculator.SetManualBandwidth(75.0);
        calculator.CalculateKernel();
        if (!calculator.WriteKernelToRaster(folder, "largest", {})) state.SkipWithError("no raster");
    }
    std::filesystem::remove_all(folder);
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    state.counters["peak_MiB"] = static_cast<double>(usage.ru_maxrss) / 1024.0;
}

BENCHMARK(largest_grid)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
