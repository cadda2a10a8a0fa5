#pragma once
#include <string>

namespace wxl::kde_tool {

/// How the bandwidth of a run is found.
enum class BandwidthMethod { kLscv, kBcv, kHref, kManual, kProportion };

/// Where the rasters of a run lie.
enum class ExtentMode { kFull, kMinimum, kReference };

/// What the dialog held when the run was started. Texts are as typed.
struct RunInputs {
    std::string LayerName = {};
    std::string Source = {};  ///< of the point layer, PATH or PATH:LAYER; empty: no file that is known
    std::string Where = {};   ///< SQL condition that chose the fixes; empty: none that is known
    std::string IdField = {};
    bool SelectedOnly = false;
    bool Rescale = false;
    bool FixedKernel = true;
    BandwidthMethod Method = BandwidthMethod::kHref;
    std::string BandwidthText = {};
    std::string ProportionText = {};
    std::string OutputFolder = {};
    std::string Prefix = {};
    std::string CellSizeText = {};
    std::string ScalingText = {};
    bool Verbose = false;
    ExtentMode Mode = ExtentMode::kFull;
    std::string BufferText = {};
    std::string ReferenceName = {};
    bool Isopleths = false;
    std::string IsoplethText = {};
    bool Lines = false;
    bool Polygons = false;
    bool Donuts = false;
    bool Silent = false;
    bool Html = false;           ///< a page of the results is wanted
    std::string ReachText = {};  ///< of the kernels: "" as usual, "whole", or a number of bandwidths
};

}  // namespace wxl::kde_tool
