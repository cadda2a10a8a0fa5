#pragma once
#include "apps/cli/json_values.h"
#include "apps/cli/text_output.h"
#include "comparison/overlap.h"
#include "pictures/heat_map_picture.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace wxl::cli {

/// An animal as the results of wxl overlap tell it.
struct ComparedAnimal {
    std::string Name;
    Json Id;
    std::optional<std::int64_t> Fixes;
    std::optional<double> Bandwidth;
    double Volume = 0.0;          ///< of the distribution on the grid, as it was computed
    std::string Status;           ///< "ok", or why there is no distribution
    Json Times = Json::object();  ///< facts on its times, where they were read
};

/// What wxl overlap found.
struct ComparedRanges {
    std::vector<ComparedAnimal> Animals;
    comparison::DensitySet Densities;
    std::vector<comparison::PairOverlap> Pairs;
};

/// The indices by their names, in the order of the options.
std::vector<std::string> index_names(const std::string& option);

/// Values are told to six digits: they are no more exact.
double told(double value);

Json json_of(const ComparedRanges& ranges);

/// range_of, animal, index, percent, conditional, value: both directions of each pair. Where an index does not depend
/// on the percentage, that cell is empty and the row stands once.
TextTable long_table(const ComparedRanges& ranges, const std::vector<std::string>& indices);

/// The first table of an index as a picture.
pictures::HeatMapPicture heat_map(const ComparedRanges& ranges, const std::string& index);

/// Animals, then a matrix for each index; beyond 20 animals the largest values.
void print_ranges(const ComparedRanges& ranges, const std::vector<std::string>& indices, Console& console);

}  // namespace wxl::cli
