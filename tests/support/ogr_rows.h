#pragma once
// Rows of a file as OGR gives them and as a cursor of the adapter does.

#include "adapters/ogr/ogr_feature_class.h"
#include "adapters/ogr/ogr_source.h"
#include "platform/values.h"

#include <algorithm>
#include <cmath>
#include <ostream>
#include <string>
#include <vector>

namespace wxl::tests {

/// Object ID, location and the cells asked for.
struct ReadRow {
    std::int64_t OID;
    platform::Geometry Shape;
    std::vector<platform::FieldValue> Cells;

    /// Coordinates that are no numbers are equal.
    friend bool operator==(const ReadRow& a, const ReadRow& b) {
        const auto same = [](double x, double y) { return x == y || (std::isnan(x) && std::isnan(y)); };
        return a.OID == b.OID && a.Cells == b.Cells && a.Shape.Type == b.Shape.Type && a.Shape.Parts == b.Shape.Parts &&
               same(a.Shape.Location.X, b.Shape.Location.X) && same(a.Shape.Location.Y, b.Shape.Location.Y);
    }

    friend std::ostream& operator<<(std::ostream& out, const ReadRow& row) {
        out << row.OID << " (" << row.Shape.Location.X << ", " << row.Shape.Location.Y << ")";
        for (const auto& cell : row.Cells) out << " [" << cell.index() << ": " << platform::ValueText(cell) << "]";
        return out;
    }
};

inline bool is_asked(const platform::Search& search, const std::string& column) {
    return search.Fields.empty() ||
           std::find(search.Fields.begin(), search.Fields.end(), column) != search.Fields.end();
}

inline std::vector<ReadRow> rows_by_ogr(const std::filesystem::path& file, const platform::Search& search) {
    files::OgrSource source(file, "", files::Sources::kPlain);
    const auto fields = files::fields_of(source.Layer());
    std::vector<ReadRow> rows;
    const CPLErrorHandlerPusher quiet(CPLQuietErrorHandler);
    for (const auto& feature : source.Layer()) {
        ReadRow row{feature->GetFID(), files::shape_of(feature->GetGeometryRef()), {}};
        for (int i = 0; i < feature->GetFieldCount(); ++i)
            if (is_asked(search, fields[static_cast<std::size_t>(i)].Name))
                row.Cells.push_back(files::value_of(*feature, i));
        rows.push_back(std::move(row));
    }
    return rows;
}

inline std::vector<ReadRow> rows_by_cursor(platform::IFeatureClass& features, const platform::Search& search) {
    const auto fields = features.Table().Fields();
    std::vector<ReadRow> rows;
    const auto cursor = features.Find(search);
    while (const auto feature = cursor->NextFeature()) {
        ReadRow row{feature->OID(), feature->Shape(), {}};
        for (std::size_t i = 0; i < fields.size(); ++i)
            if (is_asked(search, fields[i].Name)) row.Cells.push_back(feature->Value(static_cast<int>(i)));
        rows.push_back(std::move(row));
    }
    return rows;
}

}  // namespace wxl::tests
