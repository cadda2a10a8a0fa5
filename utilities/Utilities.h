#pragma once
#include "platform/controls.h"
#include "platform/features.h"
#include "platform/map.h"
#include "platform/services.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace wxl::utilities {

/// Fields that every new shapefile starts with, and what its geometry column is to hold.
struct ShapeFields {
    std::vector<platform::Field> Fields;  ///< "OID" (object identifier), "Shape" (geometry), in this order
    platform::ShapeType Shape = platform::ShapeType::kPolygon;
    platform::SpatialReference Reference;
};

/// The rasters of one folder.
struct RasterWorkspace {
    platform::IRasterWorkspace* Store = nullptr;
    std::filesystem::path Folder;
};

/// What the dialog, the analysis run and the isopleths share: layers of the map, datasets in folders, fields and their
/// values, measurements of shapes.
///
/// Procedures with a handler of their own (LayerExists, ListLayers, FillFieldList, OpenShapefile, OpenTin,
/// OpenRasterDataset, DeleteFile, AddNewField, GetUniqueValues, TableAdd...) never throw: a fault is shown in a box
/// titled "Error" whose text is "PROCEDURE: " with the error number, a carriage return and the description, and the
/// procedure returns none, false, -1 or an empty list. In all other procedures a RuntimeError passes to the caller.
///
/// The layer procedures need ConnectToApplication first (RuntimeError 91 without); the others do not.
class Utilities {
public:
    explicit Utilities(const platform::Services& services);

    /// Sets the application, its document and the document's focus map, which every layer procedure uses.
    void ConnectToApplication(std::shared_ptr<platform::IApplication> application);
    const std::shared_ptr<platform::IApplication>& Application() const { return m_application; }
    const std::shared_ptr<platform::IMxDocument>& Document() const { return m_document; }
    const std::shared_ptr<platform::IMap>& FocusMap() const { return m_map; }

    // Layers. Searched are all layers of the map in the order of the table of contents, inside groups too, but not the
    // groups themselves.

    /// The first layer of exactly that name (case counts); RuntimeError 91 when there is none. No handler.
    platform::Layer GetLayerByName(const std::string& sName);

    /// Whether a layer of exactly that name is in the map.
    bool LayerExists(const std::string& sName);

    /// Appends the names of the map's layers of a kind to the combo box. False when the map has no layers (and after a
    /// fault), else true, even when no layer is of that kind.
    ///
    /// Kinds: 1 every layer; 2 raster layers; 3, 4, 5 feature layers of points, polylines (or dimensions,
    /// whatever their shape), polygons; 6 annotation layers; 7 feature layers with a shape whose name ends in ".gis"
    /// (lower case); 8 mesh layers; 9 TIN layers; 10 polygon layers of simple features; 11 layers that are neither
    /// raster nor TIN. Any other kind adds nothing.
    bool ListLayers(int iKind, platform::ComboBox& combo);

    /// Appends the names of a feature layer's fields to the combo box, without the geometry field. False when the
    /// layer is no feature layer or after a fault.
    bool FillFieldList(const platform::Layer& layer, platform::ComboBox& combo);

    // Folders and datasets

    /// A folder for temporary files: the system's, without its trailing separator; else "c:\temp", "c:\tmp" or "c:\",
    /// the first that exists.
    std::string GetTempFolder();

    /// A new shapefile NAME.shp with the fields of CreateShapeFields. It is written under a temporary name until the
    /// caller hands it to IShapefileWorkspace::Publish; one that is never published leaves nothing behind.
    ///
    /// When NAME.shp exists: without `bOverwrite` a "File Error" box is shown and null returned; with it every file
    /// NAME.* of the folder is deleted first, read-only ones too. Null as well when the folder is missing. No handler:
    /// RuntimeError 5 for a name that is no plain name (separators, wildcards) and for z or m values, which no store
    /// holds; both are refused before anything is deleted. 70 when the folder cannot be written.
    /// @param reference none: an unknown coordinate system
    std::shared_ptr<platform::IFeatureClass> CreateOutputShapefile(
        const std::filesystem::path& sFolder, const std::string& sName, platform::ShapeType geometryType, bool bHasZ,
        bool bHasM, const std::optional<platform::SpatialReference>& reference, bool bOverwrite);

    /// The object identifier and geometry fields of a new shapefile; RuntimeError 5 for z or m values.
    ShapeFields CreateShapeFields(platform::ShapeType geometryType, bool bHasZ, bool bHasM,
                                  const platform::SpatialReference& reference) const;

    /// The dataset of that name (no extension), or none.
    std::shared_ptr<platform::IFeatureClass> OpenShapefile(const std::filesystem::path& sFolder,
                                                           const std::string& sName);
    std::shared_ptr<platform::IRasterDataset> OpenRasterDataset(const std::filesystem::path& sFolder,
                                                                const std::string& sName);

    /// Where the triangulated network of that name lies, or none.
    std::optional<std::filesystem::path> OpenTin(const std::filesystem::path& sFolder, const std::string& sName);

    /// RuntimeError 76 when there is no such folder. No handler.
    RasterWorkspace OpenRasterWorkspace(const std::filesystem::path& sFolder) const;

    /// Deletes the first that exists of: shapefile, raster, TIN, plain file (read-only files are kept and reported).
    /// True when something was deleted; false without a message when nothing of that name exists.
    bool DeleteFile(const std::filesystem::path& sFolder, const std::string& sName);

    /// What the last DeleteFile found: "DeleteFile", a carriage return and "Detected shapefile." (or raster, tin,
    /// regular file); only the name when it found nothing. Error reports carry it.
    const std::string& DeleteFileTrace() const { return m_deleteFileTrace; }

    // Fields and values

    /// Adds a field and returns its index, or -1 after a box "AddNewField: ..." that names the field and its type.
    /// A name that the table has already is refused (RuntimeError 5, reported).
    /// @param length, precision none: the store's default
    int AddNewField(const std::string& sName, platform::ITable& table, platform::FieldType type,
                    std::optional<int> length = std::nullopt, std::optional<int> precision = std::nullopt);

    /// Distinct values of a field over all rows, ascending: numbers by size, texts by their bytes. Rows without a
    /// value do not count. One pass.
    std::vector<platform::FieldValue> GetUniqueValues(platform::IFeatureClass& table, const std::string& sField);

    // Measurements. Each writes measurement x factor, in units of the class's spatial reference, into a double field of
    // every feature; features without a shape measure 0. A double field of that name is used again, a field of another
    // type is deleted and made anew. A factor of 0 is set to 1. The switch gives the host a turn after every feature,
    // so that its windows answer during long work. True when done.

    /// Length of lines; an empty field name is set to "LENGTH".
    bool TableAddLength(platform::IFeatureClass& featureClass, std::string& sField, double& dFactor, bool bYield);

    /// Area of polygons in square units; the factor applies to the area.
    bool TableAddArea(platform::IFeatureClass& featureClass, std::string& sField, double& dFactor, bool bYield);

    /// Length of the polygons' boundaries.
    bool TableAddPerim(platform::IFeatureClass& featureClass, std::string& sField, double& dFactor, bool bYield);

private:
    struct Measurement;
    std::vector<platform::Layer> LayersInGroupsToo() const;
    void DeleteSiblings(const std::filesystem::path& sFolder, const std::string& sName);
    bool DeleteDetected(const std::filesystem::path& sFolder, const std::string& sName);
    bool AddMeasurement(const Measurement& measurement, platform::IFeatureClass& featureClass,
                        const std::string& sField, double& dFactor, bool bYield);
    std::optional<int> MeasurementField(platform::ITable& table, const std::string& sField);
    void ShowError(const std::string& procedure, const std::string& detail = {}) const;

    platform::Services m_services;
    std::shared_ptr<platform::IApplication> m_application;
    std::shared_ptr<platform::IMxDocument> m_document;
    std::shared_ptr<platform::IMap> m_map;
    std::string m_deleteFileTrace = "DeleteFile";
};

}  // namespace wxl::utilities
