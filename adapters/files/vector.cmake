# Geometry operators, vector data and the map document.
find_package(fmt REQUIRED)
find_path(GEOS_INCLUDE_DIR geos_c.h REQUIRED)
find_library(GEOS_C_LIBRARY geos_c REQUIRED)
add_library(wxl_geos INTERFACE)
target_include_directories(wxl_geos SYSTEM INTERFACE ${GEOS_INCLUDE_DIR})
target_link_libraries(wxl_geos INTERFACE ${GEOS_C_LIBRARY})

wxl_room(adapter_geos SOURCES geos_geometry.cpp geos_operators.cpp DEPENDS wxl_platform wxl_geos)

wxl_room(
  adapter_files_vector
  SOURCES
  dbf_cells.cpp
  dbf_file.cpp
  dbf_layout.cpp
  files_map.cpp
  ogr_class_state.cpp
  ogr_cursors.cpp
  ogr_feature_class.cpp
  ogr_source.cpp
  point_shapefile.cpp
  shapefile_check.cpp
  shapefile_editor.cpp
  shapefile_parts.cpp
  shapefile_swap.cpp
  shapefile_workspace.cpp
  shp_file.cpp
  stored_name.cpp
  transaction_editor.cpp
  unread_shapes.cpp
  DEPENDS
  wxl_platform
  wxl_adapter_disk
  wxl_adapter_gdal
  wxl_adapter_geos
  wxl_adapter_files_raster
  PRIVATE_DEPENDS
  wxl_adapter_memory_vector
  fmt::fmt)
