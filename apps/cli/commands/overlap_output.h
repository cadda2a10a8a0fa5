#pragma once
#include "apps/cli/json_values.h"
#include "apps/cli/text_output.h"
#include "comparison/index_table.h"

#include <string>
#include <vector>

namespace wxl::cli {

/// What wxl overlap found.
struct OverlapResult {
    comparison::ComparedRanges Ranges;
    std::vector<Json> Ids;    ///< of the animals
    std::vector<Json> Times;  ///< facts on their times, where they were read; else empty objects
    platform::SpatialReference Reference;
};

/// The indices by their names, in the order of the options.
std::vector<const comparison::IndexKind*> indices_of(const std::string& option);

Json json_of(const OverlapResult& result);

/// Animals, then a matrix for each index; beyond 20 animals the largest values.
void print_ranges(const comparison::ComparedRanges& ranges, const std::vector<const comparison::IndexKind*>& indices,
                  Console& console);

}  // namespace wxl::cli
