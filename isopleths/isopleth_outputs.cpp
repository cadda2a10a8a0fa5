#include "isopleths/isopleth_outputs.h"

#include "platform/runtime_error.h"

#include <vector>

namespace wxl::isopleths {

namespace error_number = platform::error_number;
using platform::ShapeType;

void OutputClass::Insert(const platform::Geometry& shape, std::initializer_list<double> values) const {
    const std::vector<platform::FieldValue> row(values.begin(), values.end());
    Cursor->Insert(shape, row);
}

void OutputClass::Flush() {
    if (Cursor) Cursor->Flush();
    Cursor.reset();
}

OutputClass IsoplethOutputs::Create(const OutputPlace& place, const std::string& suffix, ShapeType shape,
                                    std::initializer_list<const char*> fields) {
    OutputClass output;
    output.Class = m_utilities.CreateOutputShapefile(place.Folder, place.Name + suffix, shape, false, false,
                                                     place.Reference, false);
    if (!output.Class)
        platform::Raise(error_number::kObjectNotSet,
                        "The shapefile " + place.Name + suffix + " was not created in " + place.Folder.string() + ".");
    for (const char* field : fields) {
        if (m_utilities.AddNewField(field, output.Class->Table(), platform::FieldType::kDouble) < 0)
            platform::Raise(error_number::kSubscript, std::string("The field ") + field + " was not added.");
    }
    output.Cursor = output.Class->Insert();
    return output;
}

void IsoplethOutputs::CreateLines(const OutputPlace& place) {
    Lines = Create(place, "_line", ShapeType::kPolyline, {"ISOPLETH", "PERCENT"});
}

void IsoplethOutputs::CreatePolys(const OutputPlace& place) {
    Polys = Create(place, "_poly", ShapeType::kPolygon, {"ISOPLETH", "PERCENT"});
}

void IsoplethOutputs::CreateDonuts(const OutputPlace& place) {
    Donuts = Create(place, "_donut", ShapeType::kPolygon, {"ISOPLETH1", "ISOPLETH2", "PERCENT1", "PERCENT2"});
}

void IsoplethOutputs::Flush() {
    Lines.Flush();
    Polys.Flush();
    Donuts.Flush();
}

void IsoplethOutputs::Measure() {
    constexpr bool kYield = true;
    double factor = 1.0;
    std::string length = "LENGTH";
    std::string area = "AREA";
    std::string perimeter = "PERIMETER";
    if (Lines) m_utilities.TableAddLength(*Lines.Class, length, factor, kYield);
    for (const OutputClass* polygons : {&Polys, &Donuts}) {
        if (!*polygons) continue;
        m_utilities.TableAddArea(*polygons->Class, area, factor, kYield);
        m_utilities.TableAddPerim(*polygons->Class, perimeter, factor, kYield);
    }
}

}  // namespace wxl::isopleths
