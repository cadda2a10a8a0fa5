// Isopleths of rasters on disk, all three outputs: a large raster, and many islands at one level beside the
// step-by-step rules. Counters: largest resident size of the process so far in MiB.

#include "adapters/disk/disk_file_system.h"
#include "adapters/gdal/gdal_support.h"
#include "adapters/geos/geos_operators.h"
#include "adapters/ogr/shapefile_workspace.h"
#include "adapters/raster/contour_operation.h"
#include "adapters/raster/raster_workspace.h"
#include "isopleths/clsHISO.h"
#include "isopleths/edge_closing.h"
#include "isopleths/level_polygons.h"
#include "tests/support/samples.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/step_by_step.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cmath>
#include <functional>
#include <string>
#include <sys/resource.h>
#include <vector>

namespace {

using namespace wxl;

class SilentMessages final : public platform::IMessages {
public:
    platform::Answer Show(const platform::MessageBox& box) override {
        Last = box.Text;
        return platform::Answer::kOk;
    }
    std::string Last;
};

class SilentHost final : public platform::IHost {
public:
    void Yield() override {}
    void SetStatus(std::string_view /*text*/) override {}
};

double resident_mib() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024.0;
}

/// Gaussian hills: each is a product of one factor per column and one per row.
struct Hills {
    platform::RasterGeometry Geometry;
    std::vector<std::vector<float>> ByColumn;
    std::vector<std::vector<float>> ByRow;

    Hills(std::int32_t columns, std::int32_t rows) : Geometry{500000, 4000000, 10, columns, rows} {}

    void Add(double column, double row, double width) {
        const auto factors = [width](std::int32_t count, double centre) {
            std::vector<float> values;
            for (std::int32_t i = 0; i < count; ++i)
                values.push_back(static_cast<float>(std::exp(-0.5 * (i - centre) * (i - centre) / (width * width))));
            return values;
        };
        ByColumn.push_back(factors(Geometry.Columns, column));
        ByRow.push_back(factors(Geometry.Rows, row));
    }

    void FillRow(std::int32_t row, std::vector<float>& cells) const {
        std::ranges::fill(cells, 0.0F);
        for (std::size_t hill = 0; hill < ByColumn.size(); ++hill) {
            const float height = ByRow[hill][static_cast<std::size_t>(row)];
            if (height < 1e-12F) continue;
            for (std::size_t i = 0; i < cells.size(); ++i) cells[i] += height * ByColumn[hill][i];
        }
    }
};

/// Everything that an isopleth run needs on disk.
class Desk {
public:
    Desk() {
        files::RegisterGdal();
        files::LimitGdal();
        m_services.Messages = &m_messages;
        m_services.Host = &m_host;
        m_services.Files = &m_files;
        m_services.Folders = &m_folders;
        m_services.Rasters = &m_rasters;
        m_services.Shapefiles = &m_shapefiles;
        m_services.Geometry = &m_geometry;
        m_services.Contours = &m_contours;
    }

    std::shared_ptr<platform::IRasterDataset> Write(const Hills& hills) {
        const auto writer = m_rasters.Create(m_scratch.Path(), {"UD", "GRID", hills.Geometry, {}});
        std::vector<float> cells(static_cast<std::size_t>(hills.Geometry.Columns));
        for (std::int32_t row = 0; row < hills.Geometry.Rows; ++row) {
            hills.FillRow(row, cells);
            writer->WriteRow(cells);
        }
        return writer->Publish();
    }

    /// Empty when all went well.
    std::string Run(const std::shared_ptr<platform::IRasterDataset>& raster, std::vector<double> percentages) {
        utilities::Utilities utilities(m_services);
        isopleths::clsHISO hiso(m_services, utilities);
        hiso.SetCalculateLines(true);
        hiso.SetCalculatePolys(true);
        hiso.SetCalculateDonuts(true);
        hiso.SetIsoplethBoundaries(std::move(percentages));
        hiso.SetOutputFolder(m_scratch.Path());
        hiso.SetOutputName("run" + std::to_string(++m_runs));
        hiso.SetRasterDataset(raster);
        hiso.CreateIsopleths();
        return hiso.GetErrorStatus() == 0 ? std::string() : m_messages.Last;
    }

    files::GeosOperators& Geometry() { return m_geometry; }
    files::ContourOperation& Contours() { return m_contours; }

private:
    tests::ScratchFolder m_scratch;
    SilentMessages m_messages;
    SilentHost m_host;
    files::DiskFileSystem m_files;
    files::DiskFolders m_folders;
    files::RasterWorkspace m_rasters{m_files, m_folders};
    files::ShapefileWorkspace m_shapefiles;
    files::GeosOperators m_geometry;
    files::ContourOperation m_contours;
    platform::Services m_services;
    int m_runs = 0;
};

void run_all(benchmark::State& state, const Hills& hills, const std::vector<double>& percentages) {
    Desk desk;
    const auto raster = desk.Write(hills);
    for (auto _ : state) {
        const std::string fault = desk.Run(raster, percentages);
        if (!fault.empty()) state.SkipWithError(fault.c_str());
    }
    state.counters["MiB"] = resident_mib();
}

void fifty_million_cells(benchmark::State& state) {
    Hills hills(10000, 5000);
    hills.Add(3000, 2000, 700);
    hills.Add(6500, 3100, 500);
    hills.Add(8000, 900, 250);
    hills.Add(40, 4800, 300);
    run_all(state, hills, {50, 75, 90, 95, 99});
}

/// Hills on a lattice, near enough to each other for none to be left out and too far to merge.
Hills archipelago(std::int64_t islands) {
    const auto side = static_cast<std::int32_t>(std::ceil(std::sqrt(static_cast<double>(islands))));
    Hills hills(side * 40, side * 40);
    for (std::int32_t i = 0; i < islands; ++i) hills.Add(i % side * 40 + 20.3, i / side * 40 + 19.6, 5.0);
    return hills;
}

void islands_run(benchmark::State& state) {
    run_all(state, archipelago(state.range(0)), {50, 75, 95});
}

/// The contours of half height, which all islands have.
std::vector<isopleths::Ring> shores(Desk& desk, const Hills& hills) {
    const auto raster = desk.Write(hills);
    isopleths::SurfaceEdge edge;
    isopleths::VolumeHistogram histogram(0.0, 2.0);
    isopleths::scan_surface(*raster->Band(), nullptr, edge, histogram);
    return isopleths::closed_contours(desk.Contours().Contours(*raster, std::vector{0.5}), 0.5,
                                      isopleths::OuterEdge(hills.Geometry, std::move(edge)));
}

using Combine = std::function<platform::Geometry(const std::vector<isopleths::Ring>&, platform::IGeometryOperators&)>;

void combine_islands(benchmark::State& state, const Combine& combine) {
    Desk desk;
    const std::vector<isopleths::Ring> contours = shores(desk, archipelago(state.range(0)));
    for (auto _ : state) benchmark::DoNotOptimize(combine(contours, desk.Geometry()).Parts.size());
}

void islands_combined(benchmark::State& state) {
    combine_islands(state, isopleths::level_polygon);
}

void islands_twin(benchmark::State& state) {
    combine_islands(state, tests::step_by_step);
}

BENCHMARK(fifty_million_cells)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(islands_run)->Arg(500)->Arg(2000)->Arg(8000)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(islands_combined)->Arg(250)->Arg(500)->Arg(2000)->Arg(8000)->Unit(benchmark::kMillisecond);
BENCHMARK(islands_twin)->Arg(250)->Arg(500)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
