#pragma once
#include "adapters/gdal/gdal_support.h"

#include <filesystem>
#include <gdal_priv.h>
#include <ogrsf_frmts.h>
#include <string>
#include <vector>

namespace wxl::cli {

/// What GDAL reads of a layer of a package: a line of all its fields for each row.
inline std::vector<std::string> rows_of(const std::filesystem::path& package, const std::string& layer) {
    files::RegisterGdal();
    const files::GdalDatasetPtr dataset(GDALDataset::Open(package.c_str(), GDAL_OF_VECTOR | GDAL_OF_READONLY));
    std::vector<std::string> rows;
    if (!dataset || dataset->GetLayerByName(layer.c_str()) == nullptr) return rows;
    for (const auto& feature : *dataset->GetLayerByName(layer.c_str())) {
        std::string row;
        for (int i = 0; i < feature->GetFieldCount(); ++i)
            row += (i == 0 ? "" : "|") + std::string(feature->GetFieldAsString(i));
        rows.push_back(row);
    }
    return rows;
}

}  // namespace wxl::cli
