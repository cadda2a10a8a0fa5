#pragma once
#include "isopleths/levels.h"
#include "isopleths/rings.h"
#include "platform/features.h"
#include "platform/rasters.h"
#include "platform/services.h"
#include "utilities/Utilities.h"

#include <cstdint>
#include <exception>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace wxl::isopleths {

class IsoplethOutputs;
struct OutputClass;

/// Status of the isopleth object; 0 is good.
namespace isopleth_status {
inline constexpr std::int32_t kNoDataset = 1001;      ///< SetRasterDataset without a dataset
inline constexpr std::int32_t kNoBand = 1002;         ///< SetRasterBand without a band
inline constexpr std::int32_t kEmptyOutput = 1004;    ///< SetOutputFolder or SetOutputName with ""
inline constexpr std::int32_t kNoRaster = 2001;       ///< neither dataset nor band was set
inline constexpr std::int32_t kNothingWanted = 2002;  ///< none of lines, polygons, donuts
inline constexpr std::int32_t kNoOutput = 2006;       ///< output folder and name not both set
inline constexpr std::int32_t kNoContours = 3000;     ///< no contour at any level
inline constexpr std::int32_t kFailed = 3001;         ///< a run-time fault, shown in a message box
}  // namespace isopleth_status

/// Isopleths of a density raster: the levels that enclose given percentages of its volume, as lines, polygons (the area
/// at or above a level) and donuts (the rings between consecutive percentages), each in a shapefile.
///
/// Order of use: setters in any order, CreateIsopleths, getters. Nothing throws. A status is never cleared, neither by
/// a later good call nor by a good run: use a new object for each raster.
///
/// Outputs are NAME_line (fields ISOPLETH, PERCENT, LENGTH), NAME_poly (ISOPLETH, PERCENT, AREA, PERIMETER) and
/// NAME_donut (ISOPLETH1, ISOPLETH2, PERCENT1, PERCENT2, AREA, PERIMETER). They appear under these names when all are
/// whole; a fault before the features were flushed leaves nothing, a later one leaves what was flushed.
class clsHISO {
public:
    /// `services` and `utilities` outlive the object.
    clsHISO(const platform::Services& services, utilities::Utilities& utilities);

    void SetCalculateLines(bool bCalculate) { m_calculateLines = bCalculate; }
    void SetCalculatePolys(bool bCalculate) { m_calculatePolys = bCalculate; }
    void SetCalculateDonuts(bool bCalculate) { m_calculateDonuts = bCalculate; }

    /// Whether GetPolygons is wanted, with outputs or without.
    void SetKeepPolygons(bool bKeep) { m_keepPolygons = bKeep; }

    /// Percentages of the volume (0 to 100) in any order; they are neither sorted nor made unique, and donuts are rings
    /// only when they increase. More than 100, an empty list, or a lower bound other than 0 fails in CreateIsopleths
    /// with status 3001.
    void SetIsoplethBoundaries(std::vector<double> dPercentages, std::int32_t lLowerBound = 0);

    /// Null: status 1001 and nothing stored. A dataset has precedence over a band.
    void SetRasterDataset(std::shared_ptr<platform::IRasterDataset> pDataset);

    /// Null: status 1002 and nothing stored.
    void SetRasterBand(std::shared_ptr<platform::IRasterBand> pBand);

    /// Empty: status 1004 and nothing stored.
    void SetOutputFolder(const std::filesystem::path& sFolder);
    void SetOutputName(const std::string& sName);

    /// Results of the last run; null when not produced.
    std::shared_ptr<platform::IFeatureClass> GetLinesFeatureClass() const { return m_lines; }
    std::shared_ptr<platform::IFeatureClass> GetPolysFeatureClass() const { return m_polys; }
    std::shared_ptr<platform::IFeatureClass> GetDonutsFeatureClass() const { return m_donuts; }

    /// isopleth_status
    std::int32_t GetErrorStatus() const { return m_errorStatus; }

    /// Largest cell value on the raster's outer edge, in raster units, at least 0. Valid after a failed run too, as
    /// soon as the edge was read.
    double GetMaxEdgeValue() const { return m_edge.MaxValue; }

    /// Levels of the last run, in raster units and in the order of the percentages; empty when they could not be found.
    const std::vector<double>& GetLevels() const { return m_levels; }

    /// Areas at or above the levels of the last run in square map units, whatever was produced; empty where a level has
    /// no contour.
    const std::vector<std::optional<double>>& GetAreas() const { return m_areas; }

    /// In how many polygons the areas of GetAreas lie; 0 where a level has no contour.
    const std::vector<std::int32_t>& GetParts() const { return m_parts; }

    /// Polygons of the levels of the last run, where they were wanted; null shapes where a level has no contour.
    const std::vector<platform::Geometry>& GetPolygons() const { return m_polygons; }

    /// Minimum and maximum of the raster of the last run.
    platform::RasterStatistics GetStatistics() const { return m_statistics; }

    /// Computes the levels, then the outputs asked for. Missing-data cells enter as the values that they hold.
    void CreateIsopleths();

private:
    using Contours = std::vector<std::vector<Ring>>;  ///< of each level, in the order of the percentages

    bool IsReady();
    void FindLevels(platform::IRasterBand& band);
    void Produce(platform::IRasterDataset& dataset);
    void InsertLines(const Contours& contours, OutputClass& lines) const;
    std::vector<platform::Geometry> Polygons(Contours contours) const;
    void InsertPolygons(const std::vector<platform::Geometry>& polygons, OutputClass& polys) const;
    void InsertDonuts(const std::vector<platform::Geometry>& polygons, const platform::Extent& bounds,
                      OutputClass& donuts) const;
    void Finish(IsoplethOutputs& outputs);
    void Publish(const OutputClass& output, std::shared_ptr<platform::IFeatureClass>& result,
                 std::exception_ptr& firstFault) const;

    platform::Services m_services;
    utilities::Utilities* m_utilities;
    std::shared_ptr<platform::IRasterDataset> m_dataset;
    std::shared_ptr<platform::IRasterBand> m_band;
    std::vector<double> m_boundaries;
    std::int32_t m_lowerBound = 0;
    bool m_calculateLines = false;
    bool m_calculatePolys = false;
    bool m_calculateDonuts = false;
    bool m_keepPolygons = false;
    std::shared_ptr<platform::IFeatureClass> m_lines;
    std::shared_ptr<platform::IFeatureClass> m_polys;
    std::shared_ptr<platform::IFeatureClass> m_donuts;
    std::filesystem::path m_outputFolder;
    std::string m_outputName;
    SurfaceEdge m_edge;
    std::vector<double> m_levels;
    std::vector<std::optional<double>> m_areas;
    std::vector<std::int32_t> m_parts;
    std::vector<platform::Geometry> m_polygons;
    platform::RasterStatistics m_statistics;
    std::int32_t m_errorStatus = 0;
};

}  // namespace wxl::isopleths
