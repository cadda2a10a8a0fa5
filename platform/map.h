#pragma once
// The host application: its document, map, layers and map graphics.

#include "platform/features.h"
#include "platform/rasters.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace wxl::platform {

class IFeatureLayer {
public:
    virtual ~IFeatureLayer() = default;
    virtual std::string Name() const = 0;
    virtual std::shared_ptr<IFeatureClass> FeatureClass() = 0;
    virtual std::shared_ptr<ISelectionSet> Selection() = 0;

    /// A message that says why rows cannot be changed now (read-only, being edited, locked); empty when they can.
    virtual std::string WhyReadOnly() const = 0;

    /// Whether the layer was taken off the map; nothing but this answers then.
    virtual bool IsRemoved() const { return false; }
};

class IRasterLayer {
public:
    virtual ~IRasterLayer() = default;
    virtual std::string Name() const = 0;

    /// Mean cell size in x, size in cells, lower-left corner.
    virtual RasterGeometry Geometry() const = 0;

    /// Whether the raster is in this coordinate system, or it is not known that it is in another.
    virtual bool LiesIn(const SpatialReference& reference) const = 0;
};

/// Classes of layers that lists tell apart.
enum class LayerClass { kFeature, kRaster, kGroup, kTin, kAnnotation, kMesh, kOther };

/// Feature type codes: what the features of a layer are beyond their shape.
enum class FeatureType : std::int32_t { kSimple = 1, kDimension = 13 };

/// A layer of the map's tree. `Feature` or `Raster` is set when the layer is one.
struct Layer {
    std::string Name;
    std::string Source = {};  ///< what wxl opens a feature layer by: PATH or PATH:LAYER; empty: no file that is known
    std::vector<std::string> SourceOptions = {};  ///< options that make the layer of a tracking file
    LayerClass Class = LayerClass::kOther;
    ShapeType Shape = ShapeType::kNull;           ///< feature layers
    FeatureType Features = FeatureType::kSimple;  ///< feature layers
    std::shared_ptr<IFeatureLayer> Feature;
    std::shared_ptr<IRasterLayer> Raster;
};

/// A drawn leg of a track.
struct TrackLeg {
    Point From;
    Point To;
};

/// Graphics of one owner on the map. Places are in the coordinate system that the container was made for, whichever the
/// map has; a place that does not exist in the map's system is not drawn.
class IGraphicsContainer {
public:
    virtual ~IGraphicsContainer() = default;
    virtual void AddLeg(const TrackLeg& leg) = 0;
    virtual void DeleteLegs() = 0;
    virtual void Refresh() = 0;

    /// Whether the place exists in the map's coordinate system.
    virtual bool CanPlace(const Point& place) const = 0;

    /// Whether the place is in the part of the map on screen; true where there is no screen.
    virtual bool IsInView(const Point& place) const = 0;
    virtual void PanTo(const Point& centre) = 0;

    /// Shows `factor` times the width and height around that place: less than 1 is nearer.
    virtual void Zoom(double factor, const Point& centre) = 0;

    /// Shows all of the places.
    virtual void ZoomTo(const std::vector<Point>& places) = 0;
};

class IMap {
public:
    virtual ~IMap() = default;

    /// All layers, group layers walked recursively, in the order of the table of contents.
    virtual std::vector<Layer> Layers() = 0;

    /// Adds a dataset that stands on disk as a layer.
    virtual void AddDataset(const std::filesystem::path& dataset) = 0;

    /// A new container of track graphics of its own, for places in this coordinate system; in an unknown one they are
    /// in the map's.
    virtual std::unique_ptr<IGraphicsContainer> NewGraphics(const SpatialReference& reference) = 0;
};

/// What happens to the map while a form is open.
class IMapEvents {
public:
    virtual ~IMapEvents() = default;
    virtual void ContentsChanged() = 0;
    virtual void FocusMapChanged() = 0;
    virtual void SelectionChanged() = 0;
};

class IMxDocument {
public:
    virtual ~IMxDocument() = default;
    virtual std::shared_ptr<IMap> FocusMap() = 0;

    /// The layer highlighted in the table of contents, when there is exactly one.
    virtual std::optional<Layer> SelectedLayer() = 0;

    /// Redraws the map with its selection.
    virtual void Redraw() = 0;

    /// Sends map events to `listener` until it is set to null; the listener must outlive that.
    virtual void SetListener(IMapEvents* listener) = 0;
};

/// An extension of the host, of which only its presence matters here.
class IExtension {
public:
    virtual ~IExtension() = default;
    virtual std::string Name() const = 0;
};

class IApplication {
public:
    virtual ~IApplication() = default;
    virtual std::shared_ptr<IMxDocument> Document() = 0;

    /// The extension of that identifier, or null.
    virtual std::shared_ptr<IExtension> FindExtension(std::string_view identifier) = 0;
};

}  // namespace wxl::platform
