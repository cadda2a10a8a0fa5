#pragma once
#include "adapters/shapefile/row_editor.h"

#include <filesystem>
#include <memory>
#include <qgsvectorlayer.h>
#include <string>

namespace wxl::qgis {

/// The shapefile on disk that a layer shows, links followed; empty for every other layer.
std::filesystem::path shapefile_of(const QgsVectorLayer& layer);

/// Changes the shapefile that a layer shows, as a whole or not at all: the provider of QGIS writes it in place, and a
/// crash would leave a torn table. Null for layers of other formats, whose providers have transactions.
std::unique_ptr<files::IRowEditor> file_editor_of(const QgsVectorLayer& layer);

/// Why the file of a layer (shapefile, GeoPackage) cannot be changed now, such as a lock of another program, as a
/// sentence; empty when it can.
std::string why_file_is_blocked(const QgsVectorLayer& layer);

/// Whether the ids of the rows rise in the layer's own order, as they do where a store numbers its rows itself. Not
/// while a layer is edited, whose new rows have ids below 0, nor for a view or a format that takes ids from the data.
bool ids_rise(const QgsVectorLayer& layer);

/// Completes a change of the layer's shapefile that was cut short, and has QGIS read the file anew.
void finish_interrupted_change(QgsVectorLayer& layer);

}  // namespace wxl::qgis
