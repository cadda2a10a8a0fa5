#pragma once
// Datasets on disk that hold given rows.

#include "tests/contract/vector_contract.h"

#include <filesystem>

namespace wxl::contract {

/// Writes FOLDER/NAME.shp or FOLDER/NAME.gpkg and returns its path.
std::filesystem::path WriteShapefile(const std::filesystem::path& folder,
                                     const platform::FeatureClassDefinition& definition, const std::vector<Row>& rows);
std::filesystem::path WriteGeoPackage(const std::filesystem::path& folder,
                                      const platform::FeatureClassDefinition& definition, const std::vector<Row>& rows);

}  // namespace wxl::contract
