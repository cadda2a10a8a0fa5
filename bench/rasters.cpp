// Rasters on disk: written, read for their statistics and contoured. Beside the GRID writer runs its literal twin, one
// write per cell; the figures are bytes of cells per second.

#include "adapters/disk/disk_file_system.h"
#include "adapters/gdal/gdal_support.h"
#include "adapters/raster/contour_operation.h"
#include "adapters/raster/raster_workspace.h"
#include "tests/support/scratch_folder.h"

#include <array>
#include <benchmark/benchmark.h>
#include <bit>
#include <cmath>
#include <string>
#include <vector>

namespace {

using namespace wxl;

/// A place for rasters of `side` x `side` cells, each row of which holds two hills.
class Field {
public:
    explicit Field(std::int64_t side) : m_side(static_cast<std::int32_t>(side)) {
        files::RegisterGdal();
        files::LimitGdal();
    }

    std::shared_ptr<platform::IRasterDataset> Write(const std::string& format) {
        if (m_rasters.Exists(m_scratch.Path(), "K3")) m_rasters.Delete(m_scratch.Path(), "K3");
        const platform::RasterDefinition definition{"K3", format, {500000.0, 4649000.0, 10.0, m_side, m_side}, {}};
        const auto writer = m_rasters.Create(m_scratch.Path(), definition);
        for (std::int32_t row = 0; row < m_side; ++row) writer->WriteRow(Row(row));
        return writer->Publish();
    }

    void WriteCellByCell() {
        const auto file = m_files.OpenForWriting(m_scratch / "cells", platform::WriteMode::kReplace);
        for (std::int32_t row = 0; row < m_side; ++row) {
            for (const float cell : Row(row)) {
                const auto bytes =
                    std::bit_cast<std::array<char, 4>>(__builtin_bswap32(std::bit_cast<std::uint32_t>(cell)));
                file->Write({bytes.data(), bytes.size()});
            }
        }
        file->Close();
    }

private:
    const std::vector<float>& Row(std::int32_t row) {
        const double share = static_cast<double>(row) / m_side;
        auto& cells = m_rows[static_cast<std::size_t>(row) * m_rows.size() / static_cast<std::size_t>(m_side)];
        if (!cells.empty()) return cells;
        for (std::int32_t column = 0; column < m_side; ++column) {
            const double x = static_cast<double>(column) / m_side;
            const auto hill = [&](double left, double top, double width) {
                return std::exp(-((x - left) * (x - left) + (share - top) * (share - top)) / (width * width));
            };
            cells.push_back(static_cast<float>(hill(0.3, 0.3, 0.1) + hill(0.65, 0.6, 0.2)));
        }
        return cells;
    }

    tests::ScratchFolder m_scratch;
    files::DiskFileSystem m_files;
    files::DiskFolders m_folders;
    files::RasterWorkspace m_rasters{m_files, m_folders};
    std::int32_t m_side;
    std::array<std::vector<float>, 256> m_rows;
};

void count_cells(benchmark::State& state) {
    state.SetBytesProcessed(state.iterations() * state.range(0) * state.range(0) * 4);
}

void WriteGrid(benchmark::State& state) {
    Field field(state.range(0));
    field.Write("GRID");
    for ([[maybe_unused]] auto _ : state) field.Write("GRID");
    count_cells(state);
}

void WriteGrid_literal(benchmark::State& state) {
    Field field(state.range(0));
    field.WriteCellByCell();
    for ([[maybe_unused]] auto _ : state) field.WriteCellByCell();
    count_cells(state);
}

void WriteTiff(benchmark::State& state) {
    Field field(state.range(0));
    for ([[maybe_unused]] auto _ : state) field.Write("GTiff");
    count_cells(state);
}

void GridStatistics(benchmark::State& state) {
    Field field(state.range(0));
    const auto raster = field.Write("GRID");
    for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(raster->Band()->ComputeStatistics());
    count_cells(state);
}

void ContourGrid(benchmark::State& state) {
    Field field(state.range(0));
    const auto raster = field.Write("GRID");
    const std::array<double, 5> levels = {0.05, 0.1, 0.3, 0.6, 0.9};
    files::ContourOperation contours;
    for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(contours.Contours(*raster, levels));
    count_cells(state);
}

BENCHMARK(WriteGrid)->Arg(1000)->Arg(7071)->Unit(benchmark::kMillisecond);
BENCHMARK(WriteGrid_literal)->Arg(1000)->Arg(7071)->Unit(benchmark::kMillisecond);
BENCHMARK(WriteTiff)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(GridStatistics)->Arg(1000)->Arg(7071)->Unit(benchmark::kMillisecond);
BENCHMARK(ContourGrid)->Arg(1000)->Arg(7071)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
