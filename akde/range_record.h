#pragma once
// What a run is asked for, and what becomes of its animals.

#include "akde/animal_range.h"
#include "akde/timed_animals.h"
#include "platform/values.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace wxl::akde {

/// Which grid a raster has.
enum class RangeExtent {
    kMinimum,   ///< each animal's own
    kFull,      ///< one for all animals, around all fixes
    kReference  ///< that of a raster
};

struct RangeSettings {
    TimedFields Fields;
    FitSettings Fit;
    std::filesystem::path Folder;  ///< exists
    std::string Prefix;
    std::optional<double> CellSize;  ///< map units, above 0; nothing: as advised
    double Scaling = 1e6;            ///< above 0
    RangeExtent Extent = RangeExtent::kMinimum;
    std::optional<double> Buffer;        ///< of the full extent, map units; nothing: as far as the widest kernel
    platform::RasterGeometry Reference;  ///< of the reference; of the full extent where animals are computed alone
    std::string ReferenceName;           ///< how the user called it
    std::string RasterFormat = "GRID";   ///< "GRID", "GTiff"
    std::vector<double> Percentages = {95.0, 50.0};  ///< above 0, below 100
    bool Optimal = false;                            ///< weights
    bool Lines = false;                              ///< isopleths as lines too
    bool GeoPackage = false;                         ///< RANGES.gpkg
    bool Html = false;                               ///< a page, by whoever makes the run
    std::size_t AnimalsPerSubfolder = 0;             ///< 0: no sub-folders of the output folder
    bool Overwrite = false;

    // Told on the page only:
    std::string LayerName;
    std::string Source;                      ///< of the layer; empty: no file that is known
    std::vector<std::string> SourceOptions;  ///< that make the layer of a tracking file
    std::string Where;                       ///< the condition that the fixes meet; empty: none
    bool SelectedOnly = false;
    friend bool operator==(const RangeSettings&, const RangeSettings&) = default;
};

/// What became of one animal.
struct RangeRecord {
    platform::FieldValue Id;
    std::string NamingId;
    std::size_t Given = 0;  ///< fixes
    std::size_t Used = 0;
    std::string First;  ///< time of the first used fix; "" without one
    std::string Last;
    double Duration = 0.0;  ///< seconds
    std::vector<movement_models::FittedModel> Models;
    std::optional<movement_models::FittedModel> Chosen;
    bool GivenModel = false;
    std::vector<movement_models::VariogramPoint> Variogram;
    movement_models::Verdict Verdict;
    std::vector<std::string> Notes;
    std::string Reason;       ///< why there is no range; "" where there is one
    bool NotWritten = false;  ///< there is one, and its files could not be written

    // Of a range:
    movement_models::Matrix2 Matrix;  ///< of the kernel, square map units
    double H = 0.0;                   ///< bandwidth in units of the range
    double DofBandwidth = 0.0;        ///< independent fixes that would ask for it
    double Bias = 0.0;
    double EffectiveWeights = 0.0;
    std::size_t ZeroWeights = 0;
    platform::RasterGeometry Grid;
    double Volume = 0.0;         ///< share of the distribution on the raster
    double HighestAtEdge = 0.0;  ///< density per square map unit
    std::vector<RangeIsopleth> Isopleths;
    std::string Subfolder;  ///< of the output folder, holds the files; empty: the folder itself
    std::string RasterName;
    std::vector<std::string> Files;
    std::vector<platform::Geometry> Outlines;  ///< of the isopleths, null where not drawn; for the package alone

    bool IsDone() const { return Reason.empty(); }

    /// "NAME" or "SUBFOLDER/NAME".
    std::string RasterPlace() const;

    /// The area of a percentage at a bound ("low", "est", "high"); nothing where it is not defined.
    std::optional<double> AreaAt(double percent, const std::string& bound) const;

    /// Whether an outline is cut by the edge of the raster.
    bool IsCut() const;
    friend bool operator==(const RangeRecord&, const RangeRecord&) = default;
};

/// Name of the summary in the output folder.
inline constexpr const char* kRangeSummary = "WXL_AKDE_SUMMARY.csv";

/// What a run came to.
struct RangeOutcome {
    std::size_t Done = 0;  ///< animals met
    std::size_t Failed = 0;
    bool Stopped = false;
    std::filesystem::path Summary;  ///< empty where something else has its name
    std::filesystem::path Package;  ///< empty without one
    bool NotWritten = false;        ///< something that was to be written could not be
};

}  // namespace wxl::akde
