#pragma once
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace wxl::pictures {

/// What a picture of a matrix shows: a value for every pair of names.
struct HeatMapPicture {
    std::string Title;  ///< such as "BA"; any text
    std::vector<std::string> Names;
    std::vector<std::optional<double>> Values;  ///< row by row, Names x Names; none where there is no value
    double Full = 1.0;                          ///< value of the darkest cell; greater ones are as dark

    std::optional<double> At(std::size_t row, std::size_t column) const { return Values[row * Names.size() + column]; }
};

/// The matrix as an SVG element that stands alone as a file and inside an HTML page, of the same make as ProfileSvg:
/// the greater a value the darker its cell, values in the cells of up to 12 names, names beside up to 60. Cells without
/// a value are crossed out.
/// @param idPrefix begins the ids inside the picture; each picture of one page needs its own
std::string HeatMapSvg(const HeatMapPicture& picture, const std::string& idPrefix = "overlap");

}  // namespace wxl::pictures
