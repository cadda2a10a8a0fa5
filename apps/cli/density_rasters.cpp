#include "apps/cli/density_rasters.h"

#include "adapters/disk/disk_file_system.h"
#include "adapters/raster/raster_dataset.h"
#include "akde/range_record.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fmt/format.h>
#include <fstream>
#include <iterator>
#include <limits>
#include <map>
#include <set>

namespace wxl::cli {

namespace {

namespace fs = std::filesystem;
namespace error_number = platform::error_number;
using platform::NumberText;

/// Of runs of kernel densities, and of ranges with limits; a folder may have both.
constexpr std::array<const char*, 2> kSummaries = {"WXL_KDE_SUMMARY.csv", akde::kRangeSummary};
constexpr const char* kSettings = "WXL_KERNEL_SETTINGS.txt";
constexpr double kUsualScaling = 1e6;

std::string text_of(const fs::path& file) {
    std::ifstream source(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(source), {}};
}

/// The rows of a comma-separated text (RFC 4180).
std::vector<std::vector<std::string>> rows_of(const std::string& text) {
    std::vector<std::vector<std::string>> rows(1, {""});
    bool quoted = false;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char c = text[at];
        std::string& cell = rows.back().back();
        if (quoted && c == '"' && at + 1 < text.size() && text[at + 1] == '"') {
            cell += text[++at];
        } else if (c == '"') {
            quoted = !quoted;
        } else if (quoted || (c != ',' && c != '\n' && c != '\r')) {
            cell += c;
        } else if (c == ',') {
            rows.back().emplace_back();
        } else if (c == '\n') {
            rows.push_back({""});
        }
    }
    return rows;
}

std::optional<double> number_in(const std::string& cell) {
    return platform::IsNumeric(cell) ? std::optional(platform::NumberFromText(cell)) : std::nullopt;
}

/// Cells of one row of a summary by the names of their columns.
class SummaryRow {
public:
    SummaryRow(const std::vector<std::string>& header, const std::vector<std::string>& cells) {
        for (std::size_t i = 0; i < std::min(header.size(), cells.size()); ++i) m_cells[header[i]] = cells[i];
    }
    std::string operator[](const std::string& column) const {
        const auto found = m_cells.find(column);
        return found == m_cells.end() ? "" : found->second;
    }

private:
    std::map<std::string, std::string> m_cells;
};

/// GRID folders have no ending, GeoTIFFs have one.
fs::path file_of(const fs::path& folder, const std::string& raster) {
    const fs::path grid = folder / raster;
    fs::path tiff = grid;
    tiff += ".tif";
    return !fs::exists(grid) && fs::exists(tiff) ? tiff : grid;
}

void name_apart(std::vector<DensityRaster>& rasters, const std::vector<std::string>& places) {
    std::map<std::string, int> counts;
    for (const DensityRaster& raster : rasters) ++counts[raster.Name];
    for (std::size_t i = 0; i < rasters.size(); ++i)
        if (counts[rasters[i].Name] > 1) rasters[i].Name = places[i];
}

/// Why the run has no density; "" where it has one. Ranges with limits have no status, and a reason then alone.
std::string failure_of(const SummaryRow& row) {
    const std::string status = row["status"];
    if (status == "0") return {};
    if (status.empty() || !row["reason"].empty()) return row["reason"];
    return "the run has no density of it (code " + status + ")";
}

std::vector<DensityRaster> rasters_of_summaries(const fs::path& folder) {
    std::vector<DensityRaster> rasters;
    std::vector<std::string> places;
    std::set<std::string> met;
    for (const char* summary : kSummaries) {
        const auto rows = rows_of(text_of(folder / summary));
        for (std::size_t i = 1; i < rows.size(); ++i) {
            const SummaryRow row(rows[0], rows[i]);
            const std::string place = row["raster"];
            if (place.empty() || !met.insert(place).second) continue;
            DensityRaster raster{row["id"], std::nullopt, number_in(row["bandwidth"]), failure_of(row),
                                 file_of(folder, place)};
            if (const auto fixes = number_in(row["n"])) raster.Fixes = static_cast<std::int64_t>(*fixes);
            rasters.push_back(std::move(raster));
            places.push_back(place);
        }
    }
    name_apart(rasters, places);
    return rasters;
}

bool is_raster(const fs::path& path) {
    if (fs::is_directory(path)) return fs::exists(path / "hdr.adf");
    return platform::EqualNoCase(path.extension().string(), ".tif");
}

std::vector<DensityRaster> rasters_by_name(const fs::path& folder) {
    std::vector<DensityRaster> rasters;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder))
        if (is_raster(entry.path()))
            rasters.push_back({entry.path().stem().string(), std::nullopt, std::nullopt, {}, entry.path()});
    std::sort(rasters.begin(), rasters.end(),
              [](const DensityRaster& a, const DensityRaster& b) { return a.Path < b.Path; });
    return rasters;
}

std::shared_ptr<platform::IRasterDataset> open(const DensityRaster& raster, bool allowIndirect) {
    return opened(allowIndirect, [&](files::Sources sources) { return files::OpenRaster(raster.Path, sources); });
}

std::string geometry_text(const platform::RasterGeometry& grid) {
    return fmt::format("{} x {} cells of {} from ({}, {})", grid.Columns, grid.Rows, NumberText(grid.CellSize),
                       NumberText(grid.OriginX), NumberText(grid.OriginY));
}

/// 0 for a cell without a value.
double density_of(float cell, double scaling, const DensityRaster& raster) {
    if (std::isnan(cell) || cell == std::numeric_limits<float>::lowest()) return 0.0;
    if (cell < 0.0F || std::isinf(cell))
        platform::Raise(error_number::kInvalidCall,
                        fmt::format("{} is no density raster: it has a cell of {}", raster.Path.string(),
                                    NumberText(static_cast<double>(cell))));
    return static_cast<double>(cell) / scaling;
}

}  // namespace

std::vector<DensityRaster> rasters_in(const fs::path& folder) {
    const bool told =
        std::ranges::any_of(kSummaries, [&](const char* summary) { return fs::exists(folder / summary); });
    std::vector<DensityRaster> rasters = told ? rasters_of_summaries(folder) : rasters_by_name(folder);
    if (rasters.empty())
        platform::Raise(error_number::kFileNotFound,
                        folder.string() +
                            " holds no density rasters: name the output folder of wxl kde, or a point "
                            "layer with --id-field FIELD");
    return rasters;
}

ReadFiles tables_in(const fs::path& folder) {
    ReadFiles read;
    for (const char* name : {kSummaries[0], kSummaries[1], kSettings})
        if (fs::exists(folder / name)) read.Add(folder / name);
    return read;
}

RasterFrame common_frame(const std::vector<DensityRaster>& rasters, bool allowIndirect) {
    std::optional<RasterFrame> frame;
    const DensityRaster* first = nullptr;
    for (const DensityRaster& raster : rasters) {
        if (!raster.Failure.empty()) continue;
        const auto dataset = open(raster, allowIndirect);
        const platform::RasterGeometry grid = dataset->Band()->Geometry();
        if (frame && frame->Grid != grid)
            platform::Raise(error_number::kInvalidCall,
                            fmt::format("the rasters lie on different grids: {} has {}, and {} has {}; compare rasters "
                                        "of one run with --extent full or ref:RASTER",
                                        first->Path.string(), geometry_text(frame->Grid), raster.Path.string(),
                                        geometry_text(grid)));
        if (frame) continue;
        frame = {grid, dataset->Reference()};
        first = &raster;
    }
    return frame.value_or(RasterFrame{{0.0, 0.0, 1.0, 1, 1}, {}});
}

std::vector<double> densities_of(const DensityRaster& raster, double scaling, bool allowIndirect) {
    const auto band = open(raster, allowIndirect)->Band();
    const platform::RasterGeometry grid = band->Geometry();
    std::vector<float> row(static_cast<std::size_t>(grid.Columns));
    std::vector<double> cells;
    cells.reserve(row.size() * static_cast<std::size_t>(grid.Rows));
    for (std::int32_t i = 0; i < grid.Rows; ++i) {
        band->ReadRow(i, row);
        for (const float cell : row) cells.push_back(density_of(cell, scaling, raster));
    }
    return cells;
}

double scaling_in(const fs::path& folder) {
    if (!fs::exists(folder / kSettings)) return kUsualScaling;
    std::string line;
    std::ifstream settings(folder / kSettings, std::ios::binary);
    while (std::getline(settings, line)) {
        if (platform::Trim(line.substr(0, line.find('\r'))) != "[SCALING]" || !std::getline(settings, line)) continue;
        const auto value = number_in(line.substr(0, line.find('\r')));
        if (value && *value > 0.0) return *value;
    }
    return kUsualScaling;
}

}  // namespace wxl::cli
