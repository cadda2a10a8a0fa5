#pragma once
// The settings of a run as values: what a face of the program (form, command line, Processing) hands to an analysis.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace wxl::analysis {

/// How the bandwidth of a run is found.
enum class BandwidthMethod { kLscv, kBcv, kHref, kManual, kProportion, kAdHoc };

/// Whether the method searches: LSCV and BCV do.
constexpr bool is_search(BandwidthMethod method) {
    return method == BandwidthMethod::kLscv || method == BandwidthMethod::kBcv;
}

/// Whether a bandwidth is not known before it is computed, so that plans stand on HREF instead.
constexpr bool is_planned_with_href(BandwidthMethod method) {
    return is_search(method) || method == BandwidthMethod::kAdHoc;
}

/// Whether the method takes the user's own numbers, a list of bandwidths or of proportions.
constexpr bool is_list(BandwidthMethod method) {
    return method == BandwidthMethod::kManual || method == BandwidthMethod::kProportion;
}

/// Where the rasters of a run lie.
enum class ExtentMode { kFull, kMinimum, kReference };

/// A number beside its text as typed, which reports repeat.
struct TypedNumber {
    std::string Text = {};
    std::optional<double> Value = {};  ///< nothing where the text is no number
    friend bool operator==(const TypedNumber&, const TypedNumber&) = default;
};

/// Numbers separated by commas, beside their text as typed.
struct TypedNumbers {
    std::string Text = {};
    std::vector<double> Values = {};           ///< in the order typed; empty where a piece is no number
    std::optional<std::string> NoNumber = {};  ///< the first piece that is none
    friend bool operator==(const TypedNumbers&, const TypedNumbers&) = default;
};

/// A cell size as typed, and the side of the cells that a run makes of it.
struct CellSize {
    std::string Text = {};
    double Typed = 0.0;         ///< map units; 0 where the text is no number
    double Side = 0.0;          ///< Typed rounded half to even, a whole number of map units; below 1: none can be used
    bool OfBandwidths = false;  ///< every distribution has cells that suit its bandwidth (fitting_cell_size)
    friend bool operator==(const CellSize&, const CellSize&) = default;
};

/// How far kernels reach.
struct Reach {
    enum class Kind { kUsual, kWhole, kBandwidths };

    Kind How = Kind::kUsual;
    std::string Text = {};    ///< "" as usual, "whole", or a number of bandwidths
    double Bandwidths = 0.0;  ///< of kBandwidths, above 0
    friend bool operator==(const Reach&, const Reach&) = default;
};

/// What decides a run, and how its results are named.
struct Settings {
    std::string LayerName = {};
    std::string Where = {};  ///< SQL condition that chose the fixes; empty: none that is known
    std::string IdField = {};
    bool SelectedOnly = false;
    bool Rescale = false;
    bool FixedKernel = true;
    BandwidthMethod Method = BandwidthMethod::kHref;
    TypedNumbers Bandwidths = {};   ///< map units; of kManual
    TypedNumbers Proportions = {};  ///< of HREF; of kProportion
    std::int32_t AdHocParts = 1;    ///< in which a range may lie and counts as whole; of kAdHoc
    Reach KernelReach = {};
    std::string OutputFolder = {};
    std::string Prefix = {};
    CellSize Cells = {};
    TypedNumber ScalingFactor = {};
    bool Verbose = false;
    ExtentMode Mode = ExtentMode::kFull;
    TypedNumber Buffer = {};  ///< map units; of kFull
    std::string ReferenceName = {};
    bool Isopleths = false;
    TypedNumbers Percentages = {};
    bool Lines = false;
    bool Polygons = false;
    bool Donuts = false;
    TypedNumbers ConvexPercentages = {};  ///< of the fixes, a minimum convex polygon for each; empty: none are wanted
    bool Silent = false;
    bool Html = false;                    ///< a page of the results is wanted
    std::string RasterFormat = "GRID";    ///< or "GTiff"
    std::size_t AnimalsPerSubfolder = 0;  ///< 0: no sub-folders of the output folder
    bool GeoPackage = false;              ///< all ranges in one package are wanted
    bool AsksSearchesOnly = false;        ///< fixes at one place are asked about where LSCV or BCV meets them only
    friend bool operator==(const Settings&, const Settings&) = default;
};

/// The numbers of the chosen method, one distribution of every animal for each; a single 0 for methods without a list.
std::vector<double> values_of(const Settings& settings);

/// The list of the chosen method; an empty one for methods without.
const TypedNumbers& list_of(const Settings& settings);

}  // namespace wxl::analysis
