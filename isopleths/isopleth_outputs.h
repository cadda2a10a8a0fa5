#pragma once
// The three shapefiles of a run: created, filled, flushed, measured.

#include "platform/features.h"
#include "utilities/Utilities.h"

#include <filesystem>
#include <initializer_list>
#include <memory>
#include <string>

namespace wxl::isopleths {

/// A shapefile being filled; every field is a double.
struct OutputClass {
    std::shared_ptr<platform::IFeatureClass> Class;  ///< null when it is not wanted
    std::unique_ptr<platform::IInsertCursor> Cursor;

    explicit operator bool() const { return Class != nullptr; }
    void Insert(const platform::Geometry& shape, std::initializer_list<double> values) const;
    void Flush();
};

/// Where the outputs go.
struct OutputPlace {
    std::filesystem::path Folder;
    std::string Name;  ///< stem of the shapefiles' names
    platform::SpatialReference Reference;
};

/// Lines, polygons and donuts, as far as they are wanted.
class IsoplethOutputs {
public:
    explicit IsoplethOutputs(utilities::Utilities& utilities) : m_utilities(utilities) {}

    /// Each creates its shapefile with its fields. RuntimeError 91 when the name is taken (after a message box).
    void CreateLines(const OutputPlace& place);
    void CreatePolys(const OutputPlace& place);
    void CreateDonuts(const OutputPlace& place);

    /// Writes all features; nothing can be inserted any more.
    void Flush();

    /// Adds LENGTH to the lines, AREA and PERIMETER to the others. A fault is shown by the procedure that meets it and
    /// does not stop the rest.
    void Measure();

    OutputClass Lines;
    OutputClass Polys;
    OutputClass Donuts;

private:
    OutputClass Create(const OutputPlace& place, const std::string& suffix, platform::ShapeType shape,
                       std::initializer_list<const char*> fields);

    utilities::Utilities& m_utilities;
};

}  // namespace wxl::isopleths
