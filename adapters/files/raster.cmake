# Disk, GDAL and rasters.
find_package(GDAL CONFIG REQUIRED)
find_package(SQLite3 REQUIRED)
find_library(PROJ_LIBRARY proj REQUIRED)

wxl_room(adapter_disk SOURCES posix_error.cpp disk_output_file.cpp disk_file_system.cpp file_identities.cpp folder_lock.cpp input_file.cpp system_clock.cpp write_fence.cpp DEPENDS wxl_platform)
wxl_room(
  adapter_gdal
  SOURCES
  database_check.cpp
  gdal_support.cpp
  grid_fence.cpp
  source_rules.cpp
  sqlite_fence.cpp
  DEPENDS
  wxl_platform
  wxl_adapter_disk
  GDAL::GDAL
  SQLite::SQLite3
  PRIVATE_DEPENDS
  ${PROJ_LIBRARY})
wxl_room(
  adapter_files_raster
  SOURCES
  contour_operation.cpp
  grid_layout.cpp
  grid_writer.cpp
  png_encoder.cpp
  raster_dataset.cpp
  raster_workspace.cpp
  raster_writing.cpp
  tiff_writer.cpp
  DEPENDS
  wxl_platform
  wxl_adapter_disk
  wxl_adapter_gdal)
