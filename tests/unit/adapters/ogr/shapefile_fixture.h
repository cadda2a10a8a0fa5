#pragma once
#include "adapters/ogr/files_map.h"
#include "adapters/ogr/shapefile_workspace.h"
#include "platform/runtime_error.h"
#include "tests/support/scratch_folder.h"

#include <algorithm>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <set>
#include <sstream>

namespace wxl::files {

/// A shapefile "fixes.shp" of `count` points in a folder: ID "a0", "a1", ..., V 0.5, 1.5, ..., at (i, 10 i).
inline std::filesystem::path MakeFixes(const std::filesystem::path& folder, int count) {
    using namespace platform;
    ShapefileWorkspace shapefiles;
    const auto created = shapefiles.Create(
        folder, {"fixes", ShapeType::kPoint, {{"ID", FieldType::kText, 10, 0}, {"V", FieldType::kDouble, 0, 0}}, {}});
    const auto cursor = created->Insert();
    for (int i = 0; i < count; ++i) {
        const std::vector<FieldValue> values = {"a" + std::to_string(i), i + 0.5};
        cursor->Insert(Geometry::OfPoint({double(i), 10.0 * i}), values);
    }
    shapefiles.Publish(created);
    return folder / "fixes.shp";
}

/// All rows of a class, each as "FID:ID:V@x,y".
inline std::vector<std::string> RowsOf(platform::IFeatureClass& features) {
    std::vector<std::string> rows;
    const auto cursor = features.Find({});
    while (const auto feature = cursor->NextFeature()) {
        const platform::Geometry shape = feature->Shape();
        std::ostringstream row;
        row << feature->OID() << ":" << platform::ValueText(feature->Value(0)) << ":"
            << platform::ValueText(feature->Value(1)) << "@" << shape.Location.X << "," << shape.Location.Y;
        rows.push_back(row.str());
    }
    return rows;
}

inline std::string Bytes(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

inline void PutBytes(const std::filesystem::path& file, const std::string& bytes) {
    std::ofstream(file, std::ios::binary) << bytes;
}

inline std::vector<std::string> NamesIn(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

template <class Call>
platform::RuntimeError ErrorOf(Call&& call) {
    try {
        call();
    } catch (const platform::RuntimeError& error) {
        return error;
    }
    return {0, ""};
}

/// Deletes the rows with these object IDs and stores V = -1 in the others; one flush.
inline void ChangeRows(OgrFeatureClass& features, const std::set<std::int64_t>& deleted) {
    const auto cursor = features.Find({});
    while (const auto feature = cursor->NextFeature()) {
        if (deleted.contains(feature->OID())) {
            feature->Delete();
            continue;
        }
        feature->SetValue(1, -1.0);
        feature->Store();
    }
    cursor->Flush();
}

}  // namespace wxl::files
