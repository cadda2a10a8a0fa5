// Shapefiles of any bytes through the adapter of files on disk: read as by OGR alone or refused, changed or refused,
// never half.

#include "adapters/ogr/ogr_feature_class.h"
#include "adapters/ogr/shapefile_workspace.h"
#include "fuzz/patched_files.h"
#include "fuzz/scratch_files.h"
#include "platform/text.h"
#include "tests/support/ogr_rows.h"

#include <cmath>

namespace {

using namespace wxl;
using fuzz::require;
namespace fs = std::filesystem;

constexpr int kFixes = 4;

/// A shapefile of four fixes, by extension; without a .prj, as its translation takes as long as a hundred inputs.
fuzz::Files good_files(const fs::path& folder) {
    using platform::FieldType;
    files::ShapefileWorkspace shapefiles;
    const auto created = shapefiles.Create(
        folder,
        {"good",
         platform::ShapeType::kPoint,
         {{"animal", FieldType::kText, 4, 0}, {"Time2", FieldType::kInteger, 10, 0}, {"v", FieldType::kDouble, 12, 3}},
         {}});
    const auto cursor = created->Insert();
    for (int i = 0; i < kFixes; ++i) {
        const std::vector<platform::FieldValue> values = {std::string("a"), std::int64_t{1500000000 + i}, i + 0.5};
        cursor->Insert(platform::Geometry::OfPoint({500000.0 + i, 6000000.0 + 2 * i}), values);
    }
    cursor->Flush();
    shapefiles.Publish(created);
    fuzz::Files good;
    for (const char* extension : {"dbf", "shp", "shx"})
        good[extension] = fuzz::read_bytes(folder / ("good." + std::string(extension)));
    return good;
}

std::int64_t read_all(platform::IFeatureClass& features) {
    const auto fields = features.Table().Fields();
    for (const platform::Field& field : fields) require(platform::IsUtf8(field.Name), "names in UTF-8");
    std::int64_t rows = 0;
    const auto cursor = features.Find({});
    while (const auto row = cursor->NextFeature()) {
        ++rows;
        for (std::size_t i = 0; i < fields.size(); ++i) {
            const platform::FieldValue value = row->Value(static_cast<int>(i));
            if (const auto* text = std::get_if<std::string>(&value)) require(platform::IsUtf8(*text), "texts in UTF-8");
            if (const auto* number = std::get_if<double>(&value)) require(std::isfinite(*number), "finite numbers");
        }
        fuzz::fault_of([&] { row->Shape(); });
    }
    return rows;
}

void change(platform::IFeatureClass& features) {
    const auto cursor = features.Find({});
    const int field = features.Table().FindField("Time2");
    std::int64_t number = 0;
    while (const auto row = cursor->NextFeature()) {
        if (++number % 2 == 0) {
            row->Delete();
        } else if (field >= 0) {
            row->SetValue(field, std::int64_t{7});
            row->Store();
        }
    }
    cursor->Flush();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzz::FuzzFolder folder;
    static const fuzz::Files good = good_files(folder.Path());
    fuzz::FuzzInput input(data, size);
    for (const auto& [extension, bytes] : fuzz::files_of(input, good))
        fuzz::write_bytes(folder.Path() / ("l." + extension), bytes);
    const std::string path = folder.Path() / "l.shp";

    std::shared_ptr<files::OgrFeatureClass> features;
    if (fuzz::fault_of([&] { features = files::OgrFeatureClass::Open(path); }) != 0) return 0;
    fuzz::fault_of([&] {
        features->Bounds();
        const std::int64_t rows = read_all(*features);
        require(rows == features->FeatureCount(), "as many rows as counted");
        require(tests::rows_by_cursor(*features, {}) == tests::rows_by_ogr(path, {}), "the rows that OGR gives");
    });
    // A change keeps the rows that it does not delete, and the file stays one that can be opened.
    std::int64_t left = 0;
    const std::int32_t fault = fuzz::fault_of([&] {
        change(*features);
        left = features->FeatureCount();
        features->Table().AddField({"new", platform::FieldType::kDouble, 0, 0});
    });
    features.reset();
    features = files::OgrFeatureClass::Open(path);
    if (fault == 0) require(features->FeatureCount() == left, "rows stay after a change");
    return 0;
}
