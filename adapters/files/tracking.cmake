# Tracking files as people have them: separated values, read without a GIS library.
find_package(fmt REQUIRED)

wxl_room(adapter_files_tracking
  SOURCES
    csv_reader.cpp
    tracking_columns.cpp
    tracking_csv.cpp
  DEPENDS
    wxl_platform
    wxl_tracking_times
  PRIVATE_DEPENDS
    fmt::fmt)

wxl_room(adapter_files_projection SOURCES projection.cpp DEPENDS wxl_platform wxl_adapter_gdal PRIVATE_DEPENDS fmt::fmt)
