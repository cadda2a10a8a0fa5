#include "adapters/raster/contour_operation.h"

#include "adapters/gdal/gdal_support.h"
#include "platform/contour_step.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cpl_string.h>
#include <exception>
#include <gdal_alg.h>
#include <iterator>
#include <ogrsf_frmts.h>
#include <utility>

namespace wxl::files {

namespace error_number = platform::error_number;

namespace {

/// The band of a ScaledRaster. GDAL asks for whole rows as doubles, which bypass its block cache.
class ScaledBand final : public GDALRasterBand {
public:
    ScaledBand(GDALDataset& owner, platform::IRasterBand& source, double scale)
        : m_source(source), m_scale(scale), m_row(static_cast<std::size_t>(owner.GetRasterXSize())) {
        poDS = &owner;
        nBand = 1;
        nRasterXSize = owner.GetRasterXSize();
        nRasterYSize = owner.GetRasterYSize();
        eDataType = GDT_Float64;
        nBlockXSize = nRasterXSize;
        nBlockYSize = 1;
    }

    /// What reading a row threw; GDAL's own code must not be left by an exception.
    std::exception_ptr Failure() const { return m_failure; }

protected:
    CPLErr IReadBlock(int /*column*/, int row, void* cells) override { return Read(row, static_cast<double*>(cells)); }

    CPLErr IRasterIO(GDALRWFlag flag, int column, int row, int columns, int rows, void* data, int dataColumns,
                     int dataRows, GDALDataType type, GSpacing cellSpace, GSpacing rowSpace,
                     GDALRasterIOExtraArg* extra) override {
        const bool wholeRow = flag == GF_Read && column == 0 && columns == nRasterXSize && rows == 1 &&
                              dataColumns == columns && dataRows == 1 && type == GDT_Float64 &&
                              cellSpace == GSpacing{sizeof(double)};
        if (wholeRow) return Read(row, static_cast<double*>(data));
        return GDALRasterBand::IRasterIO(flag, column, row, columns, rows, data, dataColumns, dataRows, type, cellSpace,
                                         rowSpace, extra);
    }

private:
    CPLErr Read(int row, double* cells) {
        try {
            m_source.ReadRow(row, m_row);
        } catch (...) {
            m_failure = std::current_exception();
            return CE_Failure;
        }
        std::transform(m_row.begin(), m_row.end(), cells,
                       [this](float cell) { return static_cast<double>(cell) * m_scale; });
        return CE_None;
    }

    platform::IRasterBand& m_source;
    double m_scale;
    std::vector<float> m_row;
    std::exception_ptr m_failure;
};

/// A raster as GDAL sees it, each cell multiplied by a power of two, in columns and rows instead of map units.
class ScaledRaster final : public GDALDataset {
public:
    ScaledRaster(platform::IRasterBand& source, double scale) {
        const auto geometry = source.Geometry();
        nRasterXSize = geometry.Columns;
        nRasterYSize = geometry.Rows;
        SetBand(1, new ScaledBand(*this, source, scale));  // owns it from here
    }

    CPLErr GetGeoTransform(double* transform) override {
        static constexpr std::array<double, 6> kCells = {0.0, 1.0, 0.0, 0.0, 0.0, 1.0};
        std::copy(kCells.begin(), kCells.end(), transform);
        return CE_None;
    }

    ScaledBand& Band() { return *static_cast<ScaledBand*>(GetRasterBand(1)); }
};

/// Takes contour lines as GDAL makes them, straight into the result.
class LineCollector final : public OGRLayer {
public:
    /// `scaled` are the levels given to GDAL, ascending, and `levels` what they stand for.
    LineCollector(const platform::RasterGeometry& geometry, const std::vector<double>& levels,
                  const std::vector<double>& scaled)
        : m_geometry(geometry), m_levels(levels), m_scaled(scaled), m_definition(new OGRFeatureDefn("contour")) {
        m_definition->Reference();
        m_definition->SetGeomType(wkbLineString);
        OGRFieldDefn value("VALUE", OFTReal);
        m_definition->AddFieldDefn(&value);
    }
    ~LineCollector() override { m_definition->Release(); }
    LineCollector(const LineCollector&) = delete;
    LineCollector& operator=(const LineCollector&) = delete;

    std::vector<platform::ContourLine> Take() { return std::move(m_lines); }
    std::exception_ptr Failure() const { return m_failure; }

    void ResetReading() override {}
    OGRFeature* GetNextFeature() override { return nullptr; }
    OGRFeatureDefn* GetLayerDefn() override { return m_definition; }
    int TestCapability(const char* capability) override { return EQUAL(capability, OLCSequentialWrite); }

protected:
    OGRErr ICreateFeature(OGRFeature* feature) override {
        try {
            const auto* line = feature->GetGeometryRef()->toLineString();
            platform::ContourLine contour{LevelOf(feature->GetFieldAsDouble(0)), VerticesOf(*line)};
            if (contour.Vertices.size() > 1) m_lines.push_back(std::move(contour));
            return OGRERR_NONE;
        } catch (...) {
            m_failure = std::current_exception();
            return OGRERR_FAILURE;
        }
    }

private:
    double LevelOf(double scaled) const {
        const auto after = std::lower_bound(m_scaled.begin(), m_scaled.end(), scaled);
        auto nearest = after == m_scaled.end() ? std::prev(after) : after;
        if (nearest != m_scaled.begin() && scaled - *std::prev(nearest) < *nearest - scaled) --nearest;
        return m_levels[static_cast<std::size_t>(nearest - m_scaled.begin())];
    }

    std::vector<platform::Point> VerticesOf(const OGRLineString& line) const {
        std::vector<platform::Point> vertices;
        vertices.reserve(static_cast<std::size_t>(line.getNumPoints()));
        for (int i = 0; i < line.getNumPoints(); ++i) {
            const platform::Point vertex = ToMap(line.getX(i), line.getY(i));
            if (vertices.empty() || !(vertices.back() == vertex)) vertices.push_back(vertex);
        }
        return vertices;
    }

    /// Contours pass a cell at their very level some 1e-15 cells beside its centre, and through ridges of such cells on
    /// both sides. Put on the centre, what has no width has none in the coordinates either, wherever the map's origin
    /// lies.
    static double OntoCentre(double place) {
        constexpr double kBeside = 1e-9;  // cells
        const double centre = std::floor(place) + 0.5;
        return std::abs(place - centre) <= kBeside ? centre : place;
    }

    /// Column and row to map units; the raster's edges come out exactly as its bounds have them.
    platform::Point ToMap(double givenColumn, double givenRow) const {
        const double column = OntoCentre(givenColumn);
        const double row = OntoCentre(givenRow);
        const double y = row == m_geometry.Rows ? m_geometry.OriginY
                                                : m_geometry.OriginY + (m_geometry.Rows - row) * m_geometry.CellSize;
        return {m_geometry.OriginX + column * m_geometry.CellSize, y};
    }

    platform::RasterGeometry m_geometry;
    const std::vector<double>& m_levels;
    const std::vector<double>& m_scaled;
    OGRFeatureDefn* m_definition;
    std::vector<platform::ContourLine> m_lines;
    std::exception_ptr m_failure;
};

std::vector<double> ascending(std::span<const double> levels) {
    std::vector<double> sorted(levels.begin(), levels.end());
    for (const double level : sorted)
        if (!std::isfinite(level))
            platform::Raise(error_number::kInvalidCall, "A contour level is not a finite number.");
    std::sort(sorted.begin(), sorted.end());
    sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
    return sorted;
}

/// GDAL moves cells that lie within 1e-6 of a level, whatever the size of the values: densities are often smaller than
/// that as a whole. Multiplied by this power of two (which changes no digit) the largest level lies near 2^29, so that
/// only cells equal to a level are moved, and by a step that a double still resolves.
double scale_for(const std::vector<double>& levels, platform::IRasterBand& band) {
    double largest = std::max(std::abs(levels.front()), std::abs(levels.back()));
    if (largest == 0.0) {
        const platform::RasterStatistics statistics = band.ComputeStatistics();
        largest = std::max(std::abs(statistics.Minimum), std::abs(statistics.Maximum));
    }
    return platform::ContourScale(largest);
}

std::string text_of(const std::vector<double>& levels) {
    std::string text;
    for (const double level : levels) {
        std::array<char, 40> digits{};
        // The shortest text that reads back as the same number, whatever the locale.
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), level).ptr;
        if (!text.empty()) text += ',';
        text.append(digits.data(), end);
    }
    return text;
}

}  // namespace

std::vector<platform::ContourLine> ContourOperation::Contours(platform::IRasterDataset& raster,
                                                              std::span<const double> levels) {
    if (levels.empty()) return {};
    const std::vector<double> sorted = ascending(levels);
    const auto band = raster.Band();
    const double scale = scale_for(sorted, *band);
    std::vector<double> scaled = sorted;
    for (double& level : scaled) level *= scale;

    const GdalErrors errors;
    ScaledRaster source(*band, scale);
    LineCollector lines(band->Geometry(), sorted, scaled);
    CPLStringList options;
    options.SetNameValue("FIXED_LEVELS", text_of(scaled).c_str());
    options.SetNameValue("ELEV_FIELD", "0");
    const CPLErr result = GDALContourGenerateEx(GDALRasterBand::ToHandle(&source.Band()), OGRLayer::ToHandle(&lines),
                                                options.List(), nullptr, nullptr);
    if (source.Band().Failure()) std::rethrow_exception(source.Band().Failure());
    if (lines.Failure()) std::rethrow_exception(lines.Failure());
    if (result != CE_None || errors.Failed())
        platform::Raise(error_number::kInvalidCall,
                        "The raster \"" + raster.Name() + "\" could not be contoured: " + errors.Text());
    return lines.Take();
}

}  // namespace wxl::files
