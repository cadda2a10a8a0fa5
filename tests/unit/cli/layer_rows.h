#pragma once
#include "adapters/ogr/ogr_feature_class.h"

#include <string>
#include <vector>

namespace wxl::cli {

/// A row as it stands in a file.
struct LayerRow {
    std::vector<platform::FieldValue> Values;
    platform::Geometry Shape;
};

inline std::vector<LayerRow> layer_rows(const std::string& input) {
    const auto features = files::OgrFeatureClass::Open(input);
    const int fields = static_cast<int>(features->Table().Fields().size());
    std::vector<LayerRow> rows;
    const auto cursor = features->Find({});
    while (const auto feature = cursor->NextFeature()) {
        LayerRow row{{}, feature->Shape()};
        for (int i = 0; i < fields; ++i) row.Values.push_back(feature->Value(i));
        rows.push_back(std::move(row));
    }
    return rows;
}

/// The values of one field, row by row.
inline std::vector<platform::FieldValue> layer_column(const std::string& input, const std::string& field) {
    const auto features = files::OgrFeatureClass::Open(input);
    const auto column = static_cast<std::size_t>(features->Table().FindField(field));
    std::vector<platform::FieldValue> values;
    for (const LayerRow& row : layer_rows(input)) values.push_back(row.Values.at(column));
    return values;
}

}  // namespace wxl::cli
