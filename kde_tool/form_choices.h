#pragma once
#include <optional>
#include <string>

namespace wxl::kde_tool {

class frmKDE;

/// Settings of a run given by name, as commands and algorithms take them. A choice that is not given leaves what a
/// settings file or the form's defaults say. Texts are what a user would type.
struct FormChoices {
    std::optional<std::string> Prefix;
    std::optional<std::string> CellSize;
    std::optional<std::string> Scaling;
    std::optional<std::string> Bandwidth;  ///< "href", "lscv", "bcv", "prop:P[,P...]", or bandwidths "H[,H...]"
    std::optional<std::string> Extent;     ///< "full" (buffer suggested), "full:BUFFER", "min" or "ref:RASTER LAYER"
    std::optional<std::string> Isopleths;  ///< percentages
    bool Adaptive = false;
    bool Rescale = false;
    bool Independence = false;
    bool Lines = false;
    bool Polygons = false;
    bool Donuts = false;
    bool VerboseLog = false;
    bool Html = false;  ///< the page of the results
    std::string RasterFormat = "GRID";
    std::string Reach;  ///< of the kernels: "" as usual, "whole", or a number of bandwidths
};

/// Whether a text is a number above 0.
bool IsPositiveNumber(const std::string& text);

/// Chooses on a loaded form with layer and ID field what was given: kernel, bandwidth, texts of the output page,
/// isopleths and extent. The output folder is the caller's.
void Choose(const FormChoices& choices, frmKDE& form);

/// Turns the pages as a user does before a run, so that the largest reference bandwidth is known, and sets the buffer:
/// to `buffer`, or without one to a width that suits the bandwidths.
void TurnPages(const FormChoices& choices, const std::optional<std::string>& buffer, frmKDE& form);

/// The buffer of "full:BUFFER"; nothing for other extents.
std::optional<std::string> GivenBuffer(const std::optional<std::string>& extent);

}  // namespace wxl::kde_tool
